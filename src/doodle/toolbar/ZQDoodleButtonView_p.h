#pragma once

#include <doodle/support/DoodleWeak.h>
#include <doodle/toolbar/ZQDoodleButtonView.h>

// The state of a ZQDoodleButtonView, kept out of its public header.
class ZQDoodleButtonViewPrivate
{
public:
    qint64 type = ZQDoodleButtonViewTypeColour;
    qint64 selectIndex = 0;
    QColor brushColor;
    QStringList brushColorsArray;
    QList<double> brushWidthArray;
    QList<double> eraserWidthArray;
    QList<double> textSizeArray;
    float brushWidth = 0.0f;
    float eraserWidth = 0.0f;
    float textSize = 0.0f;
    QList<ZQDoodleButton *> buttonArray;
    QSizeF buttonSize;
    qint64 buttonSpacing = 0;
    QVariantList paramArr;
    DoodleWeak<ZQDoodleButtonViewDelegate> delegate;
    ZQDoodleButton *background = nullptr;
};
