#pragma once

#include "SQLiteDatabase.h"

#include <QString>

/// Owns the player's library database file: places it, creates the schema, moves the records
/// older versions kept in the preferences store into it once, and drops history and per-file
/// settings untouched for 90 days. Nothing here throws; problems are printed.
///
/// Used from one thread: the library's own (see Library).
class DatabaseManager
{
public:
    /// $XDG_DATA_HOME/VelmarPlayer/velmarplayer.db (normally ~/.local/share/...).
    static QString defaultDatabasePath();

    /// A manager for the database file at `path`.
    explicit DatabaseManager(const QString& path);

    SQLiteDatabase& db() { return m_db; }
    QString path() const { return m_path; }

    /// What `setup` found.
    struct SetupResult
    {
        enum class Outcome {
            Ready,       // open and writable
            SetAside,    // the file was not a sound database: it now lies at `setAsidePath`
                         // and a new, empty library took its place
            ReadOnly,    // open, but SQLite cannot write to the file
            Busy,        // another connection held a lock it needed: try again later
            Unavailable, // it cannot be opened at all (the reason is printed)
        };
        Outcome outcome = Outcome::Unavailable;
        QString setAsidePath;
    };

    /// Opens the database, checks that it is sound, creates what is missing of the schema and
    /// migrates once. A damaged file (or one that is no database) is kept beside the new one
    /// under a dated name, never deleted. Safe to call again: each call opens a fresh
    /// connection and repeats the idempotent steps.
    SetupResult setup();
    /// The retention rule: history and per-file settings untouched for 90 days go.
    void cleanupExpiredData();

private:
    void openChecked();
    QString setAside();
    void createTables();
    void migrateFromUserDefaults();
    void migrateHistory(const QByteArray& json);
    void migrateBookmarks(const QByteArray& json);
    void migratePerFileSettings(const QByteArray& json);
    void run(const SQLiteStatement& statement);

    QString m_path;
    SQLiteDatabase m_db;
};
