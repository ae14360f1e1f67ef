#pragma once

#include <doodle/DoodleExport.h>

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

// The watermark tiled over a saved picture: copies of a text in a grid turned
// by 30 degrees about the picture's centre, large enough to cover it.
class DOODLE_EXPORT DoodleWatermark
{
public:
    // The system font at 15 points.
    static QFont font();
    // Light grey, opaque.
    static QColor textColor();
    // Where the copies of a text measuring `textSize` go over a picture of
    // `pictureSize`, in the turned grid's coordinates, row by row. The test
    // for a new row looks at the copy just placed, so the first row holds one
    // copy more than the others and the last one fewer.
    static QList<QRectF> grid(const QSizeF &pictureSize, const QSizeF &textSize);
    // Draws `text` at every place of grid() on a painter that covers a picture of `pictureSize`.
    static void paint(QPainter &painter, const QSizeF &pictureSize, const QString &text);
    // `image` drawn again at the screen's scale, with `text` over it when
    // there is one: the picture a board saves.
    static QImage applied(const QImage &image, const QString &text);
};
