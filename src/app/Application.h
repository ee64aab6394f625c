#pragma once

#include <memory>
#include <QObject>
#include <QStringList>
#include <QUrl>

class PlaybackEngine;
class QQmlApplicationEngine;

/// Owns the one playback engine and the main window, and hands it the files from the command
/// line. The QML scene is destroyed before the engine, so no video item outlives the decoder.
class Application : public QObject
{
    Q_OBJECT

public:
    /// Must run before the QGuiApplication exists: picks the OpenGL scene graph and a threaded
    /// render loop, which the video surface relies on.
    static void prepareGraphics();

    Application();
    ~Application() override;

    /// Shows the main window; `files` open once the window has drawn its first frame.
    bool start(const QStringList& files);

    PlaybackEngine* engine() const { return m_engine.get(); }

private:
    void openInitialFiles();

    std::unique_ptr<PlaybackEngine> m_engine;
    std::unique_ptr<QQmlApplicationEngine> m_qml; // declared last: destroyed first
    QList<QUrl> m_pendingFiles;
};
