#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>
#include <QtGlobal>

// The state of a ZQDoodleButton, kept out of its public header.
class ZQDoodleButtonPrivate
{
public:
    qint64 type = 0;
    bool selected = false;
    QImage normalImage;
    QImage selectedImage;
    QRectF frame;
    QColor backgroundColor;
    double cornerRadius = 0.0;
    QColor borderColor;
    double borderWidth = 0.0;
    bool clipsToBounds = false;
    QColor titleColor = Qt::white;
    QSizeF tileSize;
    QColor markColor;
};
