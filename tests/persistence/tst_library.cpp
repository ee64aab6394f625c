// The stores over a real library file: playback history, bookmarks, per-file settings, and the
// window frame kept in the preferences.
#include "features/bookmark/BookmarkManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/window/WindowState.h"
#include "infrastructure/persistence/Library.h"
#include "infrastructure/persistence/PerFileSettingsStore.h"
#include "infrastructure/persistence/SQLiteDatabase.h"
#include "infrastructure/preferences/Preferences.h"
#include "model/TimeFormat.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QSignalSpy>

using namespace velmar::test;

namespace {

QUrl media(int n)
{
    return QUrl::fromLocalFile(QStringLiteral("/media/film %1.mkv").arg(n));
}

template <typename Manager> void load(Manager& manager)
{
    if constexpr (std::is_same_v<Manager, PlaybackHistoryManager>)
        QCoro::waitFor(manager.loadHistory());
    else if constexpr (std::is_same_v<Manager, BookmarkManager>)
        QCoro::waitFor(manager.loadBookmarks());
    else {
        manager.loadAll();
        QTRY_VERIFY(manager.loaded().isFinished());
    }
}

} // namespace

class LibraryTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_path;
    std::unique_ptr<Library> m_library;

    /// A second connection to the library file, once the library has written what it was
    /// handed: what another program (or the next start) sees.
    SQLiteDatabase& file()
    {
        m_library->waitForPendingWrites(std::chrono::seconds(5));
        static SQLiteDatabase db;
        db.open(m_path);
        return db;
    }

    qint64 rowCount(const QString& table)
    {
        return file()
            .query(QStringLiteral("SELECT count(*) AS n FROM ") + table)[0][QStringLiteral("n")]
            .toInteger();
    }

private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        static int serial = 0;
        m_path = m_dir.filePath(QStringLiteral("lib%1/velmarplayer.db").arg(++serial));
        m_library = std::make_unique<Library>(m_path);
    }

    void historyRecordsOnlyResumablePositions()
    {
        PlaybackHistoryManager history(*m_library);
        load(history);
        history.recordPosition(media(1), QStringLiteral("one"), 5.0, 100);  // the opening seconds
        history.recordPosition(media(1), QStringLiteral("one"), 95.0, 100); // the last five
        history.recordPosition(media(1), QStringLiteral("one"), qQNaN(), 100);
        QVERIFY(history.history().isEmpty());
        history.recordPosition(media(1), QStringLiteral("one"), 5.01, 100);
        QCOMPARE(history.resumePosition(media(1)), std::optional<double>(5.01));
        QCOMPARE(history.resumePosition(media(2)), std::nullopt);

        // A second file goes in front; updating the first keeps its place, id and title.
        history.recordPosition(media(2), QStringLiteral("two"), 20, 100);
        const QUuid firstId = history.history()[1].id;
        QTest::qWait(5);
        history.recordPosition(media(1), QStringLiteral("renamed"), 42, 120);
        QCOMPARE(history.history()[1].videoURL, media(1));
        QCOMPARE(history.history()[1].id, firstId);
        QCOMPARE(history.history()[1].title, QStringLiteral("one"));
        QCOMPARE(history.history()[1].lastPosition, 42.0);
        QCOMPARE(history.recentRecords(10)[0].videoURL, media(1)); // newest played first
        QCOMPARE(history.recentRecords(1).size(), 1);

        // The table agrees after a restart.
        PlaybackHistoryManager reloaded(*m_library);
        load(reloaded);
        QCOMPARE(reloaded.history().size(), 2);
        QCOMPARE(reloaded.resumePosition(media(1)), std::optional<double>(42.0));
        QCOMPARE(reloaded.history()[0].title, QStringLiteral("one"));
    }

    void historyKeepsTheFiftyNewest()
    {
        PlaybackHistoryManager history(*m_library);
        for (int i = 1; i <= 51; ++i) {
            history.recordPosition(media(i), QStringLiteral("film"), 10, 100);
            QTest::qWait(1); // distinct play times
        }
        QCOMPARE(history.history().size(), 50);
        QCOMPARE(history.history().first().videoURL, media(51));
        QCOMPARE(history.resumePosition(media(1)), std::nullopt);
        QCOMPARE(rowCount(QStringLiteral("playback_history")), 50);
        QVERIFY(file()
                    .query(QStringLiteral("SELECT 1 FROM playback_history WHERE video_url = ?"),
                           {SQLiteValue::text(media(1).toString(QUrl::FullyEncoded))})
                    .isEmpty());
    }

    void historyLoadSkipsMalformedRows()
    {
        SQLiteDatabase& db = file();
        const double now = velmar::referenceTimestampNow();
        db.execute(QStringLiteral("INSERT INTO playback_history VALUES (?, ?, 't', NULL, NULL, ?)"),
                   {SQLiteValue::text(QUuid::createUuid().toString(QUuid::WithoutBraces)),
                    SQLiteValue::text(QStringLiteral("file:///media/null.mkv")),
                    SQLiteValue::real(now)});
        db.execute(QStringLiteral("INSERT INTO playback_history VALUES ('not-a-uuid', "
                                  "'file:///bad.mkv', 't', 1, 2, ?)"),
                   {SQLiteValue::real(now)});
        PlaybackHistoryManager history(*m_library);
        load(history);
        QCOMPARE(history.history().size(), 1);
        QCOMPARE(history.history()[0].lastPosition, 0.0);
        QCOMPARE(history.history()[0].duration, 0.0);
    }

    void bookmarksKeepTheirSpacingAndOrder()
    {
        {
            BookmarkManager bookmarks(*m_library);
            QVERIFY(bookmarks.add(media(1), 10.9, QStringLiteral("first")).has_value());
            QVERIFY(!bookmarks.add(media(1), 10.0, QStringLiteral("too close")).has_value());
            QVERIFY(bookmarks.add(media(1), 11.9, QStringLiteral("a second later")).has_value());
            QVERIFY(bookmarks.add(media(2), 10.9, QStringLiteral("other file")).has_value());
            QTest::qWait(5);
            const auto early =
                bookmarks.add(media(1), 2.0, QStringLiteral("early"), QByteArray("jpg"));
            QVERIFY(early.has_value());
            QCOMPARE(bookmarks.bookmarks().size(), 4);

            bookmarks.updateThumbnail(QUuid::createUuid(), QByteArray("ignored"));
            const auto first = bookmarks.bookmarks(media(1)).at(1);
            bookmarks.updateThumbnail(first.id, QByteArray("later image"));
            QCOMPARE(bookmarks.bookmarks(media(1)).at(1).thumbnailData, QByteArray("later image"));
        }
        BookmarkManager reloaded(*m_library);
        load(reloaded);
        const QList<Bookmark> all = reloaded.bookmarks();
        QCOMPARE(all.size(), 4);
        QCOMPARE(all.first().name, QStringLiteral("early")); // newest created first
        QStringList byPosition;
        for (const Bookmark& b : reloaded.bookmarks(media(1)))
            byPosition << b.name;
        QCOMPARE(byPosition, (QStringList{QStringLiteral("early"), QStringLiteral("first"),
                                          QStringLiteral("a second later")}));
        QCOMPARE(reloaded.bookmarks(media(1))[1].thumbnailData, QByteArray("later image"));
        QCOMPARE(reloaded.bookmarks(media(2))[0].thumbnailData, std::nullopt);

        reloaded.remove(reloaded.bookmarks(media(2))[0]);
        reloaded.removeAllBookmarks(media(1));
        QVERIFY(reloaded.bookmarks().isEmpty());
        QCOMPARE(rowCount(QStringLiteral("bookmarks")), 0);
    }

    void perFileSettingsForgetDefaults()
    {
        const QUrl url = QUrl::fromLocalFile(QStringLiteral("/media/with space.mkv"));
        PerFileSettings rotated{90, {}, 0.0};
        {
            PerFileSettingsStore store(*m_library);
            store.save(rotated, url);
            QTest::qWait(10);
            rotated.audioDelay = 0.25;
            store.save(rotated, url);
            QCOMPARE(rowCount(QStringLiteral("per_file_settings")), 1);
        }
        PerFileSettingsStore reloaded(*m_library);
        load(reloaded);
        QCOMPARE(reloaded.settings(QStringLiteral("/media/with space.mkv")), rotated);

        // Disabled filters do not count, whatever their parameters.
        const PerFileSettings defaults{
            0,
            {FilterState{QStringLiteral("contrast"), false, {{QStringLiteral("value"), 1.7f}}}},
            0.0};
        reloaded.save(defaults, url);
        QCOMPARE(reloaded.settings(url.path()), std::nullopt);
        QCOMPARE(rowCount(QStringLiteral("per_file_settings")), 0);
    }

    void perFileDocumentsMustBeComplete()
    {
        SQLiteDatabase& db = file();
        const double now = velmar::referenceTimestampNow();
        auto insert = [&](const QString& path, const QString& json) {
            db.execute(QStringLiteral("INSERT INTO per_file_settings VALUES (?, ?, ?)"),
                       {SQLiteValue::text(path), SQLiteValue::text(json), SQLiteValue::real(now)});
        };
        insert(QStringLiteral("/ok"),
               QStringLiteral("{\"rotation\":180,\"audioDelay\":-0.5,\"filters\":[{\"id\":"
                              "\"deband\",\"isEnabled\":"
                              "true,\"parameters\":{\"threshold\":64}}]}"));
        insert(QStringLiteral("/no-delay"), QStringLiteral("{\"rotation\":90,\"filters\":[]}"));
        insert(QStringLiteral("/half-degree"),
               QStringLiteral("{\"rotation\":90.5,\"filters\":[],\"audioDelay\":0}"));
        insert(QStringLiteral("/not-json"), QStringLiteral("{rotation"));
        PerFileSettingsStore store(*m_library);
        load(store);
        QCOMPARE(store.cache().size(), 1);
        const auto ok = store.settings(QStringLiteral("/ok"));
        QCOMPARE(ok->rotation, 180);
        QCOMPARE(ok->filters[0].parameters[QStringLiteral("threshold")], 64.0f);
    }

    void windowFrameSurvivesAndRejectsMalformedValues()
    {
        Preferences preferences;
        preferences.remove(PreferenceKeys::windowFrame);
        const std::optional<QRectF> frame(QRectF(100, 120, 1024, 576));
        {
            WindowState saving;
            QCOMPARE(saving.loadSavedFrame(), std::nullopt);
            QCOMPARE(saving.videoAspectRatio(), 16.0 / 9.0);
            QSignalSpy frames(&saving, &WindowState::windowFrameChanged);
            saving.saveFrame(*frame);
            saving.saveFrame(*frame);
            QCOMPARE(frames.count(), 1);
            QCOMPARE(saving.loadSavedFrame(), frame);
        } // written by the time its owner has gone
        WindowState state;
        QCOMPARE(state.loadSavedFrame(), frame);

        preferences.setValue(PreferenceKeys::windowFrame, QVariantMap{{QStringLiteral("x"), 1.0},
                                                                      {QStringLiteral("y"), 2.0},
                                                                      {QStringLiteral("w"), 3.0}});
        QCOMPARE(state.loadSavedFrame(), std::nullopt);
        preferences.setValue(PreferenceKeys::windowFrame, QStringLiteral("100,120,1024,576"));
        QCOMPARE(state.loadSavedFrame(), std::nullopt);
        preferences.setValue(PreferenceKeys::windowFrame,
                             QVariantMap{{QStringLiteral("x"), QStringLiteral("left")},
                                         {QStringLiteral("y"), 2.0},
                                         {QStringLiteral("w"), 3.0},
                                         {QStringLiteral("h"), 4.0}});
        QCOMPARE(state.loadSavedFrame(), std::nullopt);
    }
};

VELMAR_TEST_MAIN(LibraryTest)
#include "tst_library.moc"
