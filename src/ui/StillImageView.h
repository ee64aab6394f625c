#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

/// Shows a still image scaled to fit, centred, keeping its aspect ratio.
class StillImageView : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)

public:
    explicit StillImageView(QQuickItem* parent = nullptr);

    QImage image() const { return m_image; }
    void setImage(const QImage& image);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void imageChanged();

private:
    QImage m_image;
};
