#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>

class NowPlayingManager;

/// The MPRIS root interface, org.mpris.MediaPlayer2: who the player is, what it opens, and the
/// two window-level commands. Quit ends the application; Raise asks the manager to bring the
/// main window forward. GUI thread only.
class MPRISRootAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ canQuit CONSTANT)
    Q_PROPERTY(bool CanRaise READ canRaise CONSTANT)
    Q_PROPERTY(bool HasTrackList READ hasTrackList CONSTANT)
    Q_PROPERTY(QString Identity READ identity CONSTANT)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry CONSTANT)
    Q_PROPERTY(QStringList SupportedUriSchemes READ supportedUriSchemes CONSTANT)
    Q_PROPERTY(QStringList SupportedMimeTypes READ supportedMimeTypes CONSTANT)

public:
    explicit MPRISRootAdaptor(NowPlayingManager* manager);

    bool canQuit() const { return true; }
    bool canRaise() const { return true; }
    bool hasTrackList() const { return false; }
    QString identity() const { return QStringLiteral("VelmarPlayer"); }
    QString desktopEntry() const { return QStringLiteral("velmarplayer"); }
    QStringList supportedUriSchemes() const { return {QStringLiteral("file")}; }
    /// The MIME types of the video files the player lists and of the images it shows.
    QStringList supportedMimeTypes() const { return m_mimeTypes; }

public Q_SLOTS:
    void Raise();
    void Quit();

private:
    NowPlayingManager* m_manager;
    QStringList m_mimeTypes;
};
