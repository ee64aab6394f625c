#include "StillImageView.h"

#include <QPainter>

StillImageView::StillImageView(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setFillColor(Qt::black);
}

void StillImageView::setImage(const QImage& image)
{
    m_image = image;
    Q_EMIT imageChanged();
    update();
}

void StillImageView::paint(QPainter* painter)
{
    if (m_image.isNull())
        return;
    const QSizeF fitted = QSizeF(m_image.size()).scaled(size(), Qt::KeepAspectRatio);
    const QRectF target(QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2),
                        fitted);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(target, m_image);
}
