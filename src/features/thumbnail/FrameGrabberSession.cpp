#include "FrameGrabberSession.h"

#include <cstdlib>
#include <QColorSpace>

std::unique_ptr<FrameGrabberSession> FrameGrabberSession::open(const QByteArray& path)
{
    VelmarFrameGrabber* grabber = velmar_grabber_open(path.constData(), 0);
    if (!grabber)
        return nullptr;
    return std::unique_ptr<FrameGrabberSession>(new FrameGrabberSession(grabber));
}

FrameGrabberSession::FrameGrabberSession(VelmarFrameGrabber* grabber)
    : m_grabber(grabber)
{}

QImage FrameGrabberSession::grab(double seconds, int maxWidth)
{
    return imageFromFrame(velmar_grabber_grab(m_grabber.get(), maxWidth, seconds));
}

QImage imageFromFrame(VelmarFrame frame)
{
    if (!frame.data || frame.width < 1 || frame.height < 1) {
        std::free(frame.data);
        return QImage();
    }
    // Video decodes opaque, so straight and premultiplied alpha are the same picture here.
    QImage image(
        frame.data, frame.width, frame.height, qsizetype(frame.width) * 4, QImage::Format_RGBA8888,
        [](void* pixels) { std::free(pixels); }, frame.data);
    if (image.isNull()) {
        std::free(frame.data);
        return QImage();
    }
    image.setColorSpace(QColorSpace::SRgb);
    return image;
}
