#pragma once

#include <doodle/board/DoodleTile_p.h>

#include <QRectF>
#include <QtGlobal>

// The state of a ZQDoodleButton, kept out of its public header: its type,
// its frame and the tile it paints.
class ZQDoodleButtonPrivate : public DoodleTile
{
public:
    qint64 type = 0;
    QRectF frame;
};
