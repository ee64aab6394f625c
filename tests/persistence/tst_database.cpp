// The library database: exact schema, the one-time migration of legacy preference records
// (marker, idempotence, rollback), the 90-day retention, damaged and unusable files, the file as
// other tools see it, and crash safety when the writing process is killed.
#include "app/Player.h"
#include "app/UserCommands.h"
#include "engine/PlaybackEngine.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "infrastructure/persistence/DatabaseManager.h"
#include "infrastructure/persistence/Library.h"
#include "infrastructure/persistence/LibraryTables.h"
#include "infrastructure/preferences/Preferences.h"
#include "model/TimeFormat.h"
#include "support/TestSupport.h"

#include <csignal>
#include <QCoroTask>
#include <QProcess>
#include <QRandomGenerator>
#include <unistd.h>

using namespace velmar::test;

namespace {

const QString kHistoryKey = PreferenceKeys::legacyHistory;
const QString kBookmarksKey = PreferenceKeys::legacyBookmarks;
const QString kPerFileKey = PreferenceKeys::legacyPerFileSettings;

qint64 count(SQLiteDatabase& db, const QString& table)
{
    return db.query(QStringLiteral("SELECT count(*) AS n FROM ") + table)[0][QStringLiteral("n")]
        .toInteger();
}

// Played ten days ago, well inside the retention window.
const double kRecentlyPlayed = velmar::referenceTimestampNow() - 10 * 86400;

QByteArray legacyHistory()
{
    return QString::fromLatin1(
               "[{\"id\": \"0C0FFEE0-0000-4000-8000-000000000001\", \"videoURL\": "
               "\"file:///media/a.mp4\", \"title\": \"a\", \"lastPosition\": 42.5, "
               "\"duration\": 100, \"lastPlayedAt\": %1}, {\"id\": "
               "\"0C0FFEE0-0000-4000-8000-000000000002\", \"videoURL\": "
               "\"file:///media/b%20c.mkv\", \"title\": \"b c\", \"lastPosition\": 7, "
               "\"duration\": 60, \"lastPlayedAt\": %2}]")
        .arg(kRecentlyPlayed, 0, 'f', 3)
        .arg(kRecentlyPlayed + 100, 0, 'f', 3)
        .toUtf8();
}

QByteArray legacyBookmarks()
{
    return "[{\"id\": \"B00C0000-0000-4000-8000-000000000001\", \"videoURL\": "
           "\"file:///media/a.mp4\", \"time\": 12.25, \"name\": \"Opening\", "
           "\"createdAt\": 785000000, \"thumbnailData\": \"/9j/4AA=\"}, {\"id\": "
           "\"B00C0000-0000-4000-8000-000000000002\", \"videoURL\": \"file:///media/a.mp4\", "
           "\"time\": 80, \"name\": \"Credits\", \"createdAt\": 785000001}]";
}

QByteArray legacyPerFile()
{
    return "{\"/media/a.mp4\": {\"rotation\": 90, \"audioDelay\": 0.25, \"filters\": "
           "[{\"id\": \"brightness\", \"isEnabled\": true, \"parameters\": "
           "{\"value\": 0.1}}]}}";
}

void storeLegacy(const QByteArray& history, const QByteArray& bookmarks, const QByteArray& perFile)
{
    Preferences preferences;
    preferences.setData(kHistoryKey, history);
    preferences.setData(kBookmarksKey, bookmarks);
    preferences.setData(kPerFileKey, perFile);
}

/// A file or folder made read-only for everyone while this lives, root included: the mode bits
/// do not stop root, the immutable attribute does.
struct ReadOnly
{
    explicit ReadOnly(const QString& path)
        : path(path)
    {
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        chattr("+i");
        holds = !QFile(QFileInfo(path).isDir() ? path + QStringLiteral("/probe") : path)
                     .open(QIODevice::Append);
    }
    ~ReadOnly()
    {
        chattr("-i");
        QFile::setPermissions(path, QFileDevice::ReadUser | QFileDevice::WriteUser |
                                        QFileDevice::ExeUser);
    }
    void chattr(const char* change) const
    {
        if (geteuid() == 0)
            QProcess::execute(QStringLiteral("chattr"), {QLatin1String(change), path});
    }

    const QString path;
    bool holds = false; // not where nothing stops writes (root without the attribute)
};

bool anyLegacyKey()
{
    Preferences preferences;
    return preferences.contains(kHistoryKey) || preferences.contains(kBookmarksKey) ||
           preferences.contains(kPerFileKey);
}

} // namespace

class DatabaseTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_serial = 0;

    QString freshPath()
    {
        return m_dir.filePath(QStringLiteral("lib%1/velmarplayer.db").arg(++m_serial));
    }

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void firstStartMarksAndMigratesOnce()
    {
        storeLegacy(legacyHistory(), legacyBookmarks(), legacyPerFile());
        DatabaseManager manager(freshPath());
        QCOMPARE(printedLines([&] { manager.setup(); }),
                 QStringList{QStringLiteral("[DatabaseManager] UserDefaults migration completed")});
        SQLiteDatabase& db = manager.db();
        QCOMPARE(count(db, QStringLiteral("playback_history")), 2);
        QCOMPARE(count(db, QStringLiteral("bookmarks")), 2);
        QCOMPARE(count(db, QStringLiteral("per_file_settings")), 1);
        QVERIFY(!anyLegacyKey());

        const auto history = db.query(QStringLiteral(
            "SELECT * FROM playback_history WHERE id = '0C0FFEE0-0000-4000-8000-000000000002'"));
        QCOMPARE(history[0][QStringLiteral("video_url")],
                 SQLiteValue::text(QStringLiteral("file:///media/b%20c.mkv")));
        QVERIFY(qAbs(history[0][QStringLiteral("last_played_at")].toReal() -
                     (kRecentlyPlayed + 100)) < 0.01);
        const auto bookmarks =
            db.query(QStringLiteral("SELECT thumbnail_data FROM bookmarks ORDER BY time"));
        QCOMPARE(bookmarks[0][QStringLiteral("thumbnail_data")],
                 SQLiteValue::blob(QByteArray::fromBase64("/9j/4AA=")));
        QVERIFY(bookmarks[1][QStringLiteral("thumbnail_data")].isNull());
        const auto settings =
            db.query(QStringLiteral("SELECT settings_json FROM per_file_settings"));
        const auto decoded = PerFileSettings::fromJson(
            settings[0][QStringLiteral("settings_json")].toText().toUtf8());
        QVERIFY(decoded.has_value());
        QCOMPARE(decoded->rotation, 90);
        QCOMPARE(decoded->filters[0].parameters[QStringLiteral("value")], 0.1f);

        // The marker makes the next start skip the migration, even with legacy data back.
        QCOMPARE(
            db.query(QStringLiteral("SELECT value FROM schema_info WHERE key = "
                                    "'migrated_from_userdefaults'"))[0][QStringLiteral("value")],
            SQLiteValue::text(QStringLiteral("1")));
        storeLegacy(legacyHistory(), "[]", "{}");
        QVERIFY(printedLines([&] { manager.setup(); }).isEmpty());
        QVERIFY(anyLegacyKey());
    }

    void aCorruptRecordRollsEverythingBack()
    {
        storeLegacy(legacyHistory(), "[{\"id\": \"not a bookmark\"}]", legacyPerFile());
        DatabaseManager manager(freshPath());
        const QStringList lines = printedLines([&] { manager.setup(); });
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines[0].startsWith(QStringLiteral(
                     "[DatabaseManager] Migration failed (will retry next launch): ")),
                 qPrintable(lines[0]));
        // The history rows of the same run are gone with the rollback; nothing is lost.
        QCOMPARE(count(manager.db(), QStringLiteral("playback_history")), 0);
        QCOMPARE(count(manager.db(), QStringLiteral("schema_info")), 0);
        QVERIFY(Preferences().contains(kHistoryKey));
        QVERIFY(Preferences().contains(kBookmarksKey));
        QVERIFY(Preferences().contains(kPerFileKey));

        // Repaired data migrates at the next start; a row already present is skipped quietly.
        manager.db().execute(QStringLiteral("INSERT INTO playback_history VALUES "
                                            "('EXISTING', 'file:///media/a.mp4', 'kept', 1, 2, ?)"),
                             {SQLiteValue::real(kRecentlyPlayed)});
        Preferences().setData(kBookmarksKey, legacyBookmarks());
        QCOMPARE(printedLines([&] { manager.setup(); }),
                 QStringList{QStringLiteral("[DatabaseManager] UserDefaults migration completed")});
        const auto rows =
            manager.db().query(QStringLiteral("SELECT id, title FROM playback_history "
                                              "ORDER BY title"));
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows[1][QStringLiteral("title")], SQLiteValue::text(QStringLiteral("kept")));
        QVERIFY(!anyLegacyKey());
    }

    void retentionDropsStaleHistoryAndSettingsOnly()
    {
        DatabaseManager manager(freshPath());
        manager.setup();
        SQLiteDatabase& db = manager.db();
        const double now = velmar::referenceTimestampNow();
        const double day = 86400;
        auto history = [&](const QString& id, double age) {
            db.execute(QStringLiteral("INSERT INTO playback_history VALUES (?, ?, 't', 1, 2, ?)"),
                       {SQLiteValue::text(id), SQLiteValue::text(QStringLiteral("file:///") + id),
                        SQLiteValue::real(now - age)});
        };
        history(QStringLiteral("fresh"), 89 * day);
        history(QStringLiteral("stale"), 91 * day);
        db.execute(QStringLiteral("INSERT INTO per_file_settings VALUES ('/old', '{}', ?)"),
                   {SQLiteValue::real(now - 91 * day)});
        db.execute(
            QStringLiteral("INSERT INTO bookmarks VALUES ('b', 'file:///x', 1, 'n', ?, NULL)"),
            {SQLiteValue::real(now - 4000 * day)});

        QCOMPARE(printedLines([&] { manager.cleanupExpiredData(); }),
                 QStringList{QStringLiteral(
                     "[DatabaseManager] TTL cleanup: 1 history, 1 settings removed")});
        const auto left = db.query(QStringLiteral("SELECT id FROM playback_history"));
        QCOMPARE(left.size(), 1);
        QCOMPARE(left[0][QStringLiteral("id")], SQLiteValue::text(QStringLiteral("fresh")));
        QCOMPARE(count(db, QStringLiteral("per_file_settings")), 0);
        QCOMPARE(count(db, QStringLiteral("bookmarks")), 1);
    }

    // Garbage, a file cut in half, a page overwritten: each is kept aside under a dated name,
    // never touched, and a new library takes its place. A library that cannot be opened at
    // all is reported.
    void damagedLibrariesAreSetAsideForANewOne()
    {
        using Outcome = DatabaseManager::SetupResult::Outcome;
        const std::function<void(QByteArray&)> damages[] = {
            [](QByteArray& bytes) {
                for (char& byte : bytes)
                    byte = char(QRandomGenerator::global()->bounded(256));
            },
            [](QByteArray& bytes) { bytes.truncate(bytes.size() / 2); },
            [](QByteArray& bytes) { bytes.replace(4096, 4096, QByteArray(4096, '\x5a')); },
        };
        for (const auto& damage : damages) {
            const QString path = freshPath();
            {
                DatabaseManager manager(path);
                manager.setup();
                for (int i = 0; i < 40; ++i)
                    manager.db().execute(
                        QStringLiteral("INSERT INTO bookmarks VALUES (?, 'file:///a.mp4', ?, "
                                       "'mark', 0, zeroblob(3000))"),
                        {SQLiteValue::text(QString::number(i)), SQLiteValue::real(i)});
            } // closing the last connection folds the log into the file
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QByteArray bytes = file.readAll();
            file.close();
            QVERIFY(bytes.size() > 64 * 1024);
            damage(bytes);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(bytes);
            file.close();

            DatabaseManager manager(path);
            DatabaseManager::SetupResult result;
            const QStringList lines = printedLines([&] { result = manager.setup(); });
            QCOMPARE(result.outcome, Outcome::SetAside);
            QVERIFY(
                lines.contains(QStringLiteral("[DatabaseManager] Kept the damaged library as ") +
                               result.setAsidePath));
            QCOMPARE(QFileInfo(result.setAsidePath).absolutePath(), QFileInfo(path).absolutePath());
            QVERIFY(QFileInfo(result.setAsidePath)
                        .fileName()
                        .startsWith(QStringLiteral("velmarplayer.damaged-") +
                                    QDate::currentDate().toString(QStringLiteral("yyyyMMdd"))));
            QFile kept(result.setAsidePath);
            QVERIFY(kept.open(QIODevice::ReadOnly));
            QCOMPARE(kept.readAll(), bytes);
            QCOMPARE(count(manager.db(), QStringLiteral("bookmarks")), 0);
            manager.db().execute(QStringLiteral("INSERT INTO schema_info VALUES ('k', 'v')"));
        }
    }

    // The player tells the user once what is wrong with the library and plays on.
    void thePlayerSaysWhatIsWrongWithItsLibrary()
    {
        const QString path = libraryPath();
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4096, 'x'));
        file.close();
        const QUrl clip = fixtureUrl(QStringLiteral("clip30.mp4"));
        {
            TestPlayer player;
            QTRY_VERIFY(player.osdText().startsWith(
                QStringLiteral("The library was damaged: it was kept as \u201clibrary-")));
            player.open(clip);
            QCoro::waitFor(player.engine().seek(6.0));
            player.commands().addBookmark();
        }
        // The new library kept what that session stored.
        {
            TestPlayer player;
            QTRY_COMPARE(player.engine().bookmarks()->bookmarks().size(), 1);
            QVERIFY(player.engine().history()->resumePosition(clip) > 5.5);
        }

        // Nothing can be stored, which is said once however often the player tries: a folder
        // where the file should be, a library file that is read-only, and one in a read-only
        // folder.
        const std::function<std::unique_ptr<ReadOnly>()> unwritable[] = {
            [] { return QDir().mkpath(libraryPath()), std::unique_ptr<ReadOnly>(); },
            [] {
                DatabaseManager(libraryPath()).setup();
                return std::make_unique<ReadOnly>(libraryPath());
            },
            [] {
                DatabaseManager(libraryPath()).setup();
                return std::make_unique<ReadOnly>(QFileInfo(libraryPath()).absolutePath());
            },
        };
        for (const auto& makeUnwritable : unwritable) {
            freshStart();
            const auto readOnly = makeUnwritable();
            QVERIFY2(!readOnly || readOnly->holds, "this file system lets root write anyway");
            std::unique_ptr<TestPlayer> player; // it may say so the moment it starts
            const QStringList lines = printedLines([&] {
                player = std::make_unique<TestPlayer>();
                player->open(clip);
                for (double at : {6.0, 8.0}) {
                    QCoro::waitFor(player->engine().seek(at));
                    player->commands().addBookmark();
                }
                // Every write has been tried once the pictures are in and the library is idle.
                const QList<Bookmark>& kept = player->engine().bookmarks()->bookmarks();
                QTRY_VERIFY(std::all_of(kept.begin(), kept.end(), [](const Bookmark& b) {
                    return b.thumbnailData.has_value();
                }));
                QVERIFY(player->player().library().waitForPendingWrites(std::chrono::seconds(5)));
                QCoreApplication::processEvents(); // the failures reported meanwhile
            });
            QCOMPARE(lines
                         .filter(QStringLiteral("[OSDManager] History and bookmarks cannot be "
                                                "saved: the library is not writable"))
                         .size(),
                     1);
            QCOMPARE(player->engine().state().kind(), PlayerState::Kind::Playing);
            QCOMPARE(player->engine().bookmarks()->bookmarks().size(),
                     2); // this session keeps them
        }
    }

    void killedWritersNeverCorruptTheLibrary()
    {
        const QString path = freshPath();
        const QString writer =
            QCoreApplication::applicationDirPath() + QStringLiteral("/library_writer");
        QSet<QString> committedUrls;
        QSet<QString> committedBookmarks;
        for (int run = 0; run < 20; ++run) {
            QProcess process;
            process.start(writer, {path, QString::number(run)});
            QVERIFY(process.waitForStarted());
            // Kill it somewhere in its writing, however long this build takes to start up.
            QByteArray output;
            while (!output.contains("H ") && process.waitForReadyRead(10000))
                output += process.readAllStandardOutput();
            QTest::qWait(QRandomGenerator::global()->bounded(250));
            ::kill(pid_t(process.processId()), SIGKILL);
            QVERIFY(process.waitForFinished(5000));
            output += process.readAllStandardOutput();
            for (const QByteArray& line : output.split('\n')) {
                // A line cut short by the kill was never a complete report.
                if (line.startsWith("H ") && line.endsWith(".mp4"))
                    committedUrls << QString::fromUtf8(line.mid(2));
                else if (line.startsWith("B ") && line.size() == 2 + 36)
                    committedBookmarks << QString::fromUtf8(line.mid(2));
            }
        }
        QVERIFY(committedUrls.size() > 20);

        SQLiteDatabase db;
        db.open(path);
        QCOMPARE(db.query(QStringLiteral(
                     "PRAGMA integrity_check"))[0][QStringLiteral("integrity_check")],
                 SQLiteValue::text(QStringLiteral("ok")));
        QSet<QString> storedUrls;
        for (const SQLiteRow& row :
             db.query(QStringLiteral("SELECT video_url FROM playback_history")))
            storedUrls << row[QStringLiteral("video_url")].toText();
        QSet<QString> storedBookmarks;
        for (const SQLiteRow& row : db.query(QStringLiteral("SELECT id FROM bookmarks")))
            storedBookmarks << row[QStringLiteral("id")].toText();
        QVERIFY(storedUrls.contains(committedUrls));
        QVERIFY(storedBookmarks.contains(committedBookmarks));
    }
};

VELMAR_TEST_MAIN(DatabaseTest)
#include "tst_database.moc"
