// The SQLite layer on real database files: value round trips, error texts, statement rules,
// and a second connection holding the write lock.
#include "infrastructure/persistence/SQLiteDatabase.h"
#include "support/TestSupport.h"

#include <limits>
#include <thread>

using namespace velmar::test;

namespace {

QString errorText(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const SQLiteError& error) {
        return error.errorDescription();
    }
    return QStringLiteral("(no error)");
}

} // namespace

class SQLiteTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString freshPath(const QString& name) { return m_dir.filePath(name); }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void valuesRoundTrip()
    {
        SQLiteDatabase db;
        db.open(freshPath(QStringLiteral("values/nested/library.db"))); // makes the folders
        db.execute(QStringLiteral("CREATE TABLE t (a, b, c, d, e, f, g)"));
        const qint64 big = std::numeric_limits<qint64>::max();
        const qint64 small = std::numeric_limits<qint64>::min();
        const QByteArray bytes("\x00\x01\xff rest", 8);
        QCOMPARE(db.execute(QStringLiteral("INSERT INTO t VALUES (?, ?, ?, ?, ?, ?, ?)"),
                            {SQLiteValue::null(), SQLiteValue::blob({}), SQLiteValue::text({}),
                             SQLiteValue::integer(big), SQLiteValue::integer(small),
                             SQLiteValue::real(-2.5),
                             SQLiteValue::text(QStringLiteral("Amélie \u2014 \U0001F3AC"))}),
                 1);
        db.execute(QStringLiteral("INSERT INTO t (a, b) VALUES (?, ?)"),
                   {SQLiteValue::blob(bytes), SQLiteValue::integer(0)});

        const QList<SQLiteRow> rows = db.query(QStringLiteral("SELECT * FROM t ORDER BY rowid"));
        QCOMPARE(rows.size(), 2);
        const SQLiteRow& row = rows[0];
        QVERIFY(row[QStringLiteral("a")].isNull());
        QVERIFY(row[QStringLiteral("b")].isBlob()); // an empty blob stays a blob
        QCOMPARE(row[QStringLiteral("b")].toBlob(), QByteArray());
        QCOMPARE(row[QStringLiteral("c")], SQLiteValue::text(QString()));
        QCOMPARE(row[QStringLiteral("d")], SQLiteValue::integer(big));
        QCOMPARE(row[QStringLiteral("e")], SQLiteValue::integer(small));
        QCOMPARE(row[QStringLiteral("f")], SQLiteValue::real(-2.5));
        QCOMPARE(row[QStringLiteral("g")].toText(), QStringLiteral("Amélie \u2014 \U0001F3AC"));
        QCOMPARE(rows[1][QStringLiteral("a")].toBlob(), bytes);

        // Aliases name the columns; a later duplicate name wins.
        const auto aliased = db.query(QStringLiteral("SELECT d AS x, f AS x FROM t LIMIT 1"));
        QCOMPARE(aliased[0].size(), 1);
        QCOMPARE(aliased[0][QStringLiteral("x")], SQLiteValue::real(-2.5));
    }

    void errorsAndStatementRules()
    {
        SQLiteDatabase closed;
        QCOMPARE(errorText([&] { closed.execute(QStringLiteral("SELECT 1")); }),
                 QStringLiteral("SQLite prepare: database not open"));
        QCOMPARE(errorText([&] { closed.query(QStringLiteral("SELECT 1")); }),
                 QStringLiteral("SQLite prepare: database not open"));

        SQLiteDatabase db;
        db.open(freshPath(QStringLiteral("rules.db")));
        db.execute(QStringLiteral("CREATE TABLE t (x INTEGER)"));
        db.execute(QStringLiteral("INSERT INTO t VALUES (1)"));
        // execute is for statements without rows.
        QCOMPARE(errorText([&] { db.execute(QStringLiteral("SELECT x FROM t")); }),
                 QStringLiteral("SQLite step: another row available"));
        QVERIFY(errorText([&] {
                    db.execute(QStringLiteral("   -- nothing"));
                }).startsWith(QStringLiteral("SQLite prepare: ")));
        QCOMPARE(errorText([&] { db.execute(QStringLiteral("SELEC 1")); }),
                 QStringLiteral("SQLite prepare: near \"SELEC\": syntax error"));
        QCOMPARE(errorText([&] {
                     db.execute(QStringLiteral("UPDATE t SET x = ?"),
                                {SQLiteValue::integer(1), SQLiteValue::integer(2)});
                 }),
                 QStringLiteral("SQLite bind: column index out of range"));
        QCOMPARE(db.execute(QStringLiteral("UPDATE t SET x = 2 WHERE x = 99")), 0);

        // A query whose first step fails reports nothing and returns no rows.
        QVERIFY(db.query(QStringLiteral("SELECT abs(-9223372036854775807 - 1)")).isEmpty());

        // A multi-statement text runs its first statement only.
        db.execute(QStringLiteral("DELETE FROM t; DROP TABLE t"));
        QCOMPARE(db.query(QStringLiteral("SELECT count(*) AS n FROM t"))[0][QStringLiteral("n")],
                 SQLiteValue::integer(0));

        QCOMPARE(db.query(QStringLiteral("PRAGMA journal_mode"))[0][QStringLiteral("journal_mode")],
                 SQLiteValue::text(QStringLiteral("wal")));
        QCOMPARE(db.query(QStringLiteral("PRAGMA foreign_keys"))[0][QStringLiteral("foreign_keys")],
                 SQLiteValue::integer(1));
    }

    void openFailuresAreReported()
    {
        QFile blocker(freshPath(QStringLiteral("a-file")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        SQLiteDatabase db;
        // A folder that cannot be made (below a file): the file system's own error comes through.
        QVERIFY_THROWS_EXCEPTION(std::filesystem::filesystem_error,
                                 db.open(freshPath(QStringLiteral("a-file/sub/library.db"))));
        QVERIFY(!db.isOpen());
        QCOMPARE(errorText([&] { db.open(freshPath(QStringLiteral("a-file/library.db"))); }),
                 QStringLiteral("SQLite open: unable to open database file"));
        QVERIFY(!db.isOpen());
    }

    void aLockedDatabaseWaitsOnlyAsLongAsAsked()
    {
        const QString path = freshPath(QStringLiteral("shared.db"));
        SQLiteDatabase first;
        first.open(path);
        first.execute(QStringLiteral("CREATE TABLE t (who TEXT)"));
        SQLiteDatabase second;
        second.open(path);

        // The first connection holds the write lock for a while on another thread.
        first.execute(QStringLiteral("BEGIN IMMEDIATE"));
        first.execute(QStringLiteral("INSERT INTO t VALUES ('first')"));
        std::thread holder([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
            first.execute(QStringLiteral("COMMIT"));
        });
        // Without a busy timeout it fails at once, and says the failure is a lock.
        try {
            second.execute(QStringLiteral("INSERT INTO t VALUES ('second')"));
            QFAIL("a locked database took a write");
        } catch (const SQLiteError& error) {
            QVERIFY(error.isBusy());
            QCOMPARE(error.errorDescription(), QStringLiteral("SQLite step: database is locked"));
        }
        second.setBusyTimeout(5000);
        QCOMPARE(second.execute(QStringLiteral("INSERT INTO t VALUES ('second')")), 1);
        holder.join();
        QCOMPARE(second.query(QStringLiteral("SELECT who FROM t ORDER BY rowid")).size(), 2);
    }
};

VELMAR_TEST_MAIN(SQLiteTest)
#include "tst_sqlite.moc"
