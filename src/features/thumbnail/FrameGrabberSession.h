#pragma once

#include "FFmpegFrameExtractor.h"

#include <memory>
#include <QImage>
#include <QString>

/// Owns one open grabber session (see FFmpegFrameExtractor.h) and turns its frames into images.
///
/// Used by one thread at a time. The thumbnail generator opens and uses sessions on the thread
/// pool and keeps them between grabs on the GUI thread; the future that carries a session back
/// orders the hand-over.
class FrameGrabberSession
{
public:
    /// Opens the file; null when it cannot be grabbed from (unreadable, no video, not a file).
    static std::unique_ptr<FrameGrabberSession> open(const QByteArray& path);

    /// The frame near `seconds`, at most `maxWidth` pixels wide; null on failure.
    QImage grab(double seconds, int maxWidth);

private:
    struct Closer
    {
        void operator()(VelmarFrameGrabber* grabber) const { velmar_grabber_close(grabber); }
    };

    explicit FrameGrabberSession(VelmarFrameGrabber* grabber);

    std::unique_ptr<VelmarFrameGrabber, Closer> m_grabber;
};

/// Takes over a grabbed frame: an sRGB image that frees the pixels when its last copy goes, or a
/// null image (with the pixels freed at once) when the frame is empty.
QImage imageFromFrame(VelmarFrame frame);
