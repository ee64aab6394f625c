#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

/// The one table from the symbol names the player's models use ("play.fill", "folder", ...) to
/// the desktop's freedesktop icon names ("media-playback-start-symbolic", ...). Every icon the
/// interface shows goes through it, so a theme change or a better match is one edit here.
class SymbolIcons : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// The icon name for a symbol; an unknown symbol is a programming error: it is logged and
    /// shows the theme's "missing" icon.
    Q_INVOKABLE static QString name(const QString& symbol);
    /// Every symbol the table knows, for checking that the theme has all of them.
    static QStringList symbols();
};
