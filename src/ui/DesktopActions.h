#pragma once

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <QUrl>

/// What the views ask of the desktop itself.
class DesktopActions : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// Shows a local file in the desktop's file manager; returns at once.
    Q_INVOKABLE static void revealFile(const QUrl& url);
    /// The file dialog's choices when it asks for subtitle files.
    Q_INVOKABLE static QStringList subtitleNameFilters();
};
