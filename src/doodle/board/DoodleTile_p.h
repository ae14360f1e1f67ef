#pragma once

// The look of the bars' buttons and picker choices, whatever toolkit shows
// them: a round-cornered tile with a fill, an image per state, a title, a
// border and a ring around the selected choice. Not installed.
#include <doodle/DoodleExport.h>

#include <QColor>
#include <QFont>
#include <QImage>
#include <QRectF>
#include <QString>

class QPainter;
class QPainterPath;

class DOODLE_EXPORT DoodleTile
{
public:
    bool selected = false;
    QImage normalImage;
    QImage selectedImage;
    QColor backgroundColor;
    double cornerRadius = 0.0;
    QColor borderColor;
    double borderWidth = 0.0;
    bool clipsToBounds = false;
    QColor titleColor = Qt::white;
    // Centred in the bounds; empty fills them.
    QSizeF tileSize;
    QColor markColor;

    // The selected image while selected, when there is one; else the normal image.
    QImage currentImage() const;
    QRectF tileRect(const QRectF &bounds) const;
    // Paints the tile in `bounds`: dimmed when disabled, its content faded while pressed.
    void paint(QPainter &painter, const QRectF &bounds, bool enabled, bool down,
               const QString &title, const QFont &font) const;
    // The ring that shows where the keyboard is: `highlight` with a white line inside.
    static void paintFocusRing(QPainter &painter, const QRectF &bounds, const QColor &highlight);
    // A rounded rectangle whose radius is at most half its shorter side.
    static QPainterPath roundedShape(const QRectF &rect, double radius);
    // A bar's or picker's background: `color` in `rect` with that radius.
    static void paintBackground(QPainter &painter, const QRectF &rect, const QColor &color,
                                double radius);
};
