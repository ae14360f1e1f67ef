#pragma once

#include <doodle/DoodleExport.h>

#include <QColor>
#include <QImage>
#include <QSizeF>

// Bitmaps for the tool bars' images, the way a bitmap context at a scale
// makes them: transparent, `size` points at `scale` pixels a point.
class DOODLE_EXPORT DoodleBitmap
{
public:
    // A null image when the size has no area.
    static QImage create(const QSizeF &size, double scale);
    // `image` with every pixel it covers in `color`, its alpha kept
    // (source-atop over the image); a null image stays null.
    static QImage tinted(const QImage &image, const QColor &color);
};
