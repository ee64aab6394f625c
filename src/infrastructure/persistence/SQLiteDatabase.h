#pragma once

#include "SQLiteError.h"
#include "SQLiteValue.h"

#include <memory>
#include <QString>

struct sqlite3;

/// One SQLite connection with write-ahead logging and foreign keys. `execute` runs statements
/// that return no rows, `query` those that do; both bind positional `?` parameters. Statements
/// are prepared and finalized per call. Transactions are plain "BEGIN TRANSACTION" / "COMMIT" /
/// "ROLLBACK" statements. Throws SQLiteError; never logs.
///
/// Not thread-safe: use one instance from one thread (the GUI thread, in the player).
class SQLiteDatabase
{
public:
    SQLiteDatabase();
    ~SQLiteDatabase();
    SQLiteDatabase(const SQLiteDatabase&) = delete;
    SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;

    /// Opens (creating when missing) the database file and its parent folder. Replaces any
    /// connection held before. A folder that cannot be made throws the file system's error.
    void open(const QString& path);
    bool isOpen() const { return m_db != nullptr; }
    void close() { m_db.reset(); }
    /// SQLite opened the file for reading only (the file or its folder cannot be written).
    bool isReadOnly() const;
    /// SQLite's quick integrity check: "ok", or the first problem found. Unlike `query`, a
    /// step error throws, so that a locked file is not taken for a damaged one.
    QString checkIntegrity();
    /// How long a statement waits for a lock another connection holds before it fails as
    /// busy (SQLite's default, 0, fails at once).
    void setBusyTimeout(int milliseconds);

    /// Runs a statement that returns no rows; returns the number of rows it changed.
    int execute(const QString& sql, const QList<SQLiteValue>& parameters = {});

    /// Runs a statement and returns its rows. A step error ends the result early, silently:
    /// the caller sees the rows read so far.
    QList<SQLiteRow> query(const QString& sql, const QList<SQLiteValue>& parameters = {});

private:
    class Statement;
    struct Closer
    {
        void operator()(sqlite3* db) const;
    };

    QString lastMessage() const;
    SQLiteError lastError(SQLiteError::Kind kind) const;
    Statement prepare(const QString& sql);
    void bind(Statement& statement, const QList<SQLiteValue>& parameters);

    std::unique_ptr<sqlite3, Closer> m_db;
    int m_busyTimeoutMs = 0;
};
