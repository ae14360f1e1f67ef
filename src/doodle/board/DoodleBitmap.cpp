#include "DoodleBitmap_p.h"

#include <QPainter>
#include <QtMath>

QImage DoodleBitmap::create(const QSizeF &size, double scale)
{
    const QSize pixels(qCeil(size.width() * scale), qCeil(size.height() * scale));
    if (size.isEmpty() || pixels.isEmpty())
        return {};
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

QImage DoodleBitmap::tinted(const QImage &image, const QColor &color)
{
    const QSizeF size = image.deviceIndependentSize();
    QImage result = create(size, image.devicePixelRatio());
    if (result.isNull())
        return result;
    QPainter painter(&result);
    const QRectF bounds(QPointF(), size);
    painter.drawImage(bounds, image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    painter.fillRect(bounds, color);
    return result;
}
