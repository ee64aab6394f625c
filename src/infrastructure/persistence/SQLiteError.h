#pragma once

#include <exception>
#include <QByteArray>
#include <QString>

/// A failure of the SQLite layer, carrying SQLite's own message.
class SQLiteError : public std::exception
{
public:
    enum class Kind { Open, Prepare, Bind, Step };

    SQLiteError(Kind kind, const QString& message)
        : m_kind(kind)
        , m_message(message)
        , m_what(errorDescription().toUtf8())
    {}

    Kind kind() const { return m_kind; }
    QString message() const { return m_message; }

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
    QByteArray m_what;
};
