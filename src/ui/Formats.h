#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

/// The player's text formats for views that compose their own rows.
class Formats : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// The one time format of the player: "00:59", "59:59", "1:00:00".
    Q_INVOKABLE static QString time(double seconds);
    /// "128 kbps", "1.5 Mbps".
    Q_INVOKABLE static QString bitrate(qint64 bitsPerSecond);
    /// "Mono", "Stereo", "5.1", "7.1", "3ch".
    Q_INVOKABLE static QString channels(int count);
    /// "48 kHz", "44.1 kHz".
    Q_INVOKABLE static QString sampleRate(int hertz);
    /// A file size in the desktop's decimal units: "2.1 MB".
    Q_INVOKABLE static QString fileSize(qint64 bytes);
    /// A date and time in the user's short format.
    Q_INVOKABLE static QString dateTime(const QDateTime& when);
    /// A playback rate with two significant digits, as C's "%.2g": "1", "0.25", "1.2".
    Q_INVOKABLE static QString rate(double rate);
};
