#pragma once

#include <exception>
#include <QByteArray>
#include <QString>

/// The one error the decoder reports to its caller (only `MPVDecoder::load` throws it).
class MPVError : public std::exception
{
public:
    enum class Kind { CommandFailed, NotInitialized };

    static MPVError commandFailed(const QString& message) { return {Kind::CommandFailed, message}; }
    static MPVError notInitialized() { return {Kind::NotInitialized, {}}; }

    Kind kind() const { return m_kind; }
    QString message() const { return m_message; }

    /// "mpv command failed: <message>" or "mpv not initialized".
    QString errorDescription() const
    {
        return m_kind == Kind::CommandFailed ? QStringLiteral("mpv command failed: ") + m_message
                                             : QStringLiteral("mpv not initialized");
    }

    const char* what() const noexcept override { return m_what.constData(); }

private:
    MPVError(Kind kind, const QString& message)
        : m_kind(kind)
        , m_message(message)
        , m_what(errorDescription().toUtf8())
    {}

    Kind m_kind;
    QString m_message;
    QByteArray m_what;
};
