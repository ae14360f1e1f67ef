#pragma once

#include <doodle/support/DoodleWeak.h>
#include <doodle/toolbar/ZQColourToolbar.h>

#include <QPointer>

// The state of a ZQColourToolbar, kept out of its public header.
class ZQColourToolbarPrivate
{
public:
    QStringList brushColorsArray;
    QColor brushColor;
    QList<ZQDoodleButton *> buttonArray;
    QPointer<ZQDoodleButton> curBrushButton;
    QSizeF buttonSize{28, 28};
    qint64 buttonSpacing = 28;
    DoodleWeak<ColourToolbarDelegate> delegate;
};
