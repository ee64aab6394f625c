#pragma once

#include "ThumbnailPreview.h"

#include <QImage>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

/// Draws a seek-bar preview picture: the image filling the item, or, while there is none, the
/// translucent rounded placeholder. Its implicit size follows the preview's layout rule, so the
/// bubble around it grows with the video's aspect ratio.
class ThumbnailPreviewView : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
    Q_PROPERTY(double previewWidth READ previewWidth WRITE setPreviewWidth NOTIFY layoutChanged)
    Q_PROPERTY(double minHeight READ minHeight WRITE setMinHeight NOTIFY layoutChanged)
    Q_PROPERTY(double maxHeight READ maxHeight WRITE setMaxHeight NOTIFY layoutChanged)
    Q_PROPERTY(bool showsPlaceholder READ showsPlaceholder NOTIFY imageChanged)

public:
    explicit ThumbnailPreviewView(QQuickItem* parent = nullptr);

    QImage image() const { return m_preview.image; }
    void setImage(const QImage& image);
    double previewWidth() const { return m_preview.previewWidth; }
    void setPreviewWidth(double width);
    double minHeight() const { return m_preview.minHeight; }
    void setMinHeight(double height);
    double maxHeight() const { return m_preview.maxHeight; }
    void setMaxHeight(double height);
    bool showsPlaceholder() const { return m_preview.showsPlaceholder(); }

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void imageChanged();
    void layoutChanged();

private:
    void setLayoutField(double& field, double value);
    void relayout();

    ThumbnailPreview m_preview;
};
