#pragma once

#include <doodle/support/DoodleWeak.h>
#include <doodle/toolbar/ZQDoodleToolbar.h>

#include <QColor>
#include <QList>
#include <QSet>
#include <QSizeF>

// The state of a ZQDoodleToolbar, kept out of its public header.
class ZQDoodleToolbarPrivate
{
public:
    QList<ZQDoodleButton *> buttonArray;
    QSizeF buttonSize{30, 30};
    float buttonSpacing = 0.0f;
    bool horizontal = true;
    bool isHost = false;
    qint32 actionMode = 0;
    QColor brushColor;
    DoodleWeak<DoodleToolbarDelegate> delegate;
    QSet<qint64> disabledTypes;
};
