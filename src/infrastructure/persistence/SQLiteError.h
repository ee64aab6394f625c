#pragma once

#include <exception>
#include <QByteArray>
#include <QString>

/// A failure of the SQLite layer, carrying SQLite's own message.
class SQLiteError : public std::exception
{
public:
    enum class Kind { Open, Prepare, Bind, Step };
    static constexpr int kCorrupt = 11; // SQLITE_CORRUPT

    /// `code` is SQLite's primary result code (SQLITE_BUSY, ...), 0 when there is none.
    SQLiteError(Kind kind, const QString& message, int code = 0)
        : m_kind(kind)
        , m_message(message)
        , m_code(code)
        , m_what(errorDescription().toUtf8())
    {}

    Kind kind() const { return m_kind; }
    QString message() const { return m_message; }
    int code() const { return m_code; }
    /// Another connection holds a lock the statement needs; it may succeed later.
    bool isBusy() const { return m_code == 5 || m_code == 6; } // SQLITE_BUSY, SQLITE_LOCKED
    /// The file is not a database, or a damaged one.
    bool isCorrupt() const { return m_code == kCorrupt || m_code == 26; } // SQLITE_NOTADB

    /// "SQLite open: ...", "SQLite prepare: ...", "SQLite bind: ..." or "SQLite step: ...".
    QString errorDescription() const
    {
        switch (m_kind) {
        case Kind::Open:
            return QStringLiteral("SQLite open: ") + m_message;
        case Kind::Prepare:
            return QStringLiteral("SQLite prepare: ") + m_message;
        case Kind::Bind:
            return QStringLiteral("SQLite bind: ") + m_message;
        case Kind::Step:
            return QStringLiteral("SQLite step: ") + m_message;
        }
        return m_message;
    }

    const char* what() const noexcept override { return m_what.constData(); }

private:
    Kind m_kind;
    QString m_message;
    int m_code;
    QByteArray m_what;
};
