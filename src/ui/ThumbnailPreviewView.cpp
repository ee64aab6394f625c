#include "ThumbnailPreviewView.h"

#include <QPainter>
#include <QPainterPath>

ThumbnailPreviewView::ThumbnailPreviewView(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    relayout();
}

void ThumbnailPreviewView::setImage(const QImage& image)
{
    // The same picture comes back for every hover inside its bucket: nothing to redraw then.
    if (image.cacheKey() == m_preview.image.cacheKey())
        return;
    m_preview.image = image;
    Q_EMIT imageChanged();
    relayout();
    update();
}

void ThumbnailPreviewView::setPreviewWidth(double width)
{
    setLayoutField(m_preview.previewWidth, width);
}

void ThumbnailPreviewView::setMinHeight(double height)
{
    setLayoutField(m_preview.minHeight, height);
}

void ThumbnailPreviewView::setMaxHeight(double height)
{
    setLayoutField(m_preview.maxHeight, height);
}

void ThumbnailPreviewView::setLayoutField(double& field, double value)
{
    if (field == value)
        return;
    field = value;
    Q_EMIT layoutChanged();
    relayout();
}

void ThumbnailPreviewView::relayout()
{
    const QSizeF size = m_preview.size();
    setImplicitSize(size.width(), size.height());
}

void ThumbnailPreviewView::paint(QPainter* painter)
{
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF area(0, 0, width(), height());
    if (m_preview.showsPlaceholder()) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor::fromRgbF(0, 0, 0, ThumbnailPreview::kPlaceholderOpacity));
        painter->drawRoundedRect(area, ThumbnailPreview::kPlaceholderCornerRadius,
                                 ThumbnailPreview::kPlaceholderCornerRadius);
        return;
    }
    // The picture fills the area; a height clamped by the limits crops rather than squeezes.
    const QSizeF covering =
        QSizeF(m_preview.image.size()).scaled(area.size(), Qt::KeepAspectRatioByExpanding);
    const QRectF target(
        QPointF((width() - covering.width()) / 2, (height() - covering.height()) / 2), covering);
    QPainterPath rounded;
    rounded.addRoundedRect(area, 6, 6);
    painter->setClipPath(rounded);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(target, m_preview.image);
}
