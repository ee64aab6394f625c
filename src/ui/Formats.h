#pragma once

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
    /// A playback rate with two significant digits, as C's "%.2g": "1", "0.25", "1.2".
    Q_INVOKABLE static QString rate(double rate);
};
