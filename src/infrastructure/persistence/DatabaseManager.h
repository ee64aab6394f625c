#pragma once

#include "SQLiteDatabase.h"

#include <QString>

/// Owns the player's library database: places the file, creates the schema, moves the records
/// older versions kept in the preferences store into it once, and drops history and per-file
/// settings untouched for 90 days. Nothing here throws; problems are printed.
///
/// GUI thread only.
class DatabaseManager
{
public:
    /// The process's library at `defaultDatabasePath()`, created on first use.
    static DatabaseManager& shared();
    /// $XDG_DATA_HOME/VelmarPlayer/velmarplayer.db (normally ~/.local/share/...).
    static QString defaultDatabasePath();

    /// A manager for the database file at `path` (the shared one uses the default path).
    explicit DatabaseManager(const QString& path);

    SQLiteDatabase& db() { return m_db; }
    QString path() const { return m_path; }

    /// Opens the database, creates the schema, migrates once and applies the retention rule.
    /// Safe to call again: each call opens a fresh connection and repeats the idempotent steps.
    void setup();

private:
    void createTables();
    void migrateFromUserDefaults();
    void migrateHistory(const QByteArray& json);
    void migrateBookmarks(const QByteArray& json);
    void migratePerFileSettings(const QByteArray& json);
    void cleanupExpiredData();

    QString m_path;
    SQLiteDatabase m_db;
};
