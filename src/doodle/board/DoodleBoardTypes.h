#pragma once

// The board's own vocabulary, shared by every front-end.
#include <QPointF>
#include <QtGlobal>

// The tools a gesture can draw with.
enum DoodleActionMode : qint64
{
    DoodleActionModeNone = 0,
    DoodleActionModeBrush = 1,
    DoodleActionModeEraser = 2,
    DoodleActionModeRectangle = 3,
    DoodleActionModeEllipse = 4,
    DoodleActionModeArrow = 5,
    DoodleActionModeText = 6,
    // Points without drawing: every board shows a fading track.
    DoodleActionModeLaser = 7,
};

// The types of the main tool bar's buttons (their tags).
enum DoodleToolbarButtonType : qint64
{
    DoodleToolbarButtonTypeUndo = 1,
    DoodleToolbarButtonTypeColour = 2,
    DoodleToolbarButtonTypeWidth = 3,
    DoodleToolbarButtonTypeEraser = 4,
    DoodleToolbarButtonTypeOval = 5,
    DoodleToolbarButtonTypeRect = 6,
    DoodleToolbarButtonTypeArrow = 7,
    DoodleToolbarButtonTypeText = 8,
    DoodleToolbarButtonTypeClear = 9,
    DoodleToolbarButtonTypeSave = 10,
    DoodleToolbarButtonTypeClose = 11,
    DoodleToolbarButtonTypeLaser = 12,
    DoodleToolbarButtonTypeDivider = 999999,
};

// What an option picker offers.
enum ZQDoodleButtonViewType : qint64
{
    ZQDoodleButtonViewTypeColour = 0,
    ZQDoodleButtonViewTypeBrushWidth = 1,
    ZQDoodleButtonViewTypeEraserWidth = 2,
    ZQDoodleButtonViewTypeTextSize = 3,
};

// One touch of a gesture: where it is now and where it was at the previous
// event, both in the board's coordinates.
struct DoodleTouch
{
    QPointF location;
    QPointF previousLocation;
};

// What a board accepts from the other participants. An action over a limit is
// dropped with one warning naming its sender and the limit; nothing else
// changes. The defaults are far above what a person draws, and low enough
// that a hostile peer cannot exhaust memory or freeze the board.
struct DoodleReceiveLimits
{
    qsizetype textBytes = 4 * 1024 * 1024; // UTF-8 bytes of one action text
    qsizetype strokePoints = 100000;       // points of one stroke
    qsizetype textLength = 10000;          // characters of one text annotation
    qsizetype actionsPerAuthor = 20000;    // drawings one sender keeps cached
    qsizetype pointsPerAuthor = 2000000;   // stroke points one sender keeps cached
};
