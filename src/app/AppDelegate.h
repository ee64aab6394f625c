#pragma once

#include <memory>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <QUrl>
#include <QVariantList>

class ControlStrip;
class KeyBindingManager;
class MainWindowGeometry;
class PlaybackEngine;
class Player;
class QQmlApplicationEngine;
class UserCommands;
Q_MOC_INCLUDE("infrastructure/keybinding/KeyBindingManager.h")
Q_MOC_INCLUDE("app/ControlStrip.h")

/// The application: owns the player and its main window, opens what it is handed (command
/// line, file dialogs, drops, later launches), lists the recent files for the menus and
/// switches full screen. The QML scene goes before the player, so no video item outlives the
/// decoder. GUI thread only.
class AppDelegate : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application creates its one delegate")
    /// Filters for the "Open..." dialog.
    Q_PROPERTY(QStringList openNameFilters READ openNameFilters CONSTANT)
    Q_PROPERTY(KeyBindingManager* keyBindings READ keyBindings CONSTANT)
    Q_PROPERTY(ControlStrip* controlStrip READ controlStrip CONSTANT)
    /// Files given at start wait for the window's first frame; until they are open the window
    /// does not show the idle screen, which would only flash by.
    Q_PROPERTY(bool hasFilesToOpen READ hasFilesToOpen NOTIFY hasFilesToOpenChanged)

public:
    /// Must run before the QGuiApplication exists: picks the OpenGL scene graph and a threaded
    /// render loop, which the video surface relies on.
    static void prepareGraphics();

    /// A player whose library is the database file at `libraryPath`.
    explicit AppDelegate(const QString& libraryPath);
    ~AppDelegate() override;

    /// Shows the main window; `files` open once the window has drawn its first frame.
    bool start(const QList<QUrl>& files);

    Player& player() const { return *m_player; }
    PlaybackEngine* engine() const;
    UserCommands* commands() const;
    KeyBindingManager* keyBindings() const;
    ControlStrip* controlStrip() const;
    QQuickWindow* mainWindow() const { return m_mainWindow; }
    QStringList openNameFilters() const;
    bool hasFilesToOpen() const { return !m_pendingFiles.isEmpty() || m_openingFirstFiles; }

    /// Applies the opening rule to files and folders (several files become a playlist).
    Q_INVOKABLE void openURLs(const QList<QUrl>& urls);
    /// Opens the local files and folders of a drop by the opening rule; false when it holds
    /// none (a link from a web page, say).
    Q_INVOKABLE bool dropURLs(QList<QUrl> urls);
    Q_INVOKABLE void openRecentFile(const QUrl& url);
    /// The "Open Recent" entries, newest first: {title, url, enabled} maps, or one disabled
    /// "No Recent Files" entry. Built afresh on every call, as the menu is on every opening.
    Q_INVOKABLE QVariantList recentMenuEntries() const;
    Q_INVOKABLE void toggleFullScreen();
    /// Brings the main window to the front (for a later launch without files).
    Q_INVOKABLE void raise();

Q_SIGNALS:
    void hasFilesToOpenChanged();

private Q_SLOTS:
    /// The interface over the video is complete.
    void interfaceLoaded();

private:
    static void useIconTheme();
    void configureMainWindow();
    void openInitialFiles();

    std::unique_ptr<Player> m_player;
    std::unique_ptr<QQmlApplicationEngine> m_qml; // declared after the player: destroyed first
    QPointer<QQuickWindow> m_mainWindow;
    MainWindowGeometry* m_geometry = nullptr;
    QList<QUrl> m_pendingFiles;
    bool m_windowHasDrawn = false;
    bool m_openingFirstFiles = false;
};
