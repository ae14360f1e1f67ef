#pragma once

// The board's core: what the board is, whatever shows it. The drawn-action
// cache, the board's pictures with their savepoints and region redraw, the
// conversions between the wire's normalised coordinates and the board's, the
// gesture under way and the limits on what others send. A front-end derives
// from it and gives it a canvas. Not installed.
#include <doodle/board/DoodleBoardCanvas_p.h>
#include <doodle/board/DoodleBoardTypes.h>
#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodlePathCache.h>

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <memory>

// The tool, width and colour a gesture was started with: everything it draws
// and the action it commits use these, whatever the tool state becomes meanwhile.
struct DoodleGestureTool
{
    qint64 mode = DoodleActionModeNone;
    double width = 0; // view points: the brush, eraser or text size
    QColor color;
};

// The cache canvas's picture of the first `count` cached drawings: a region
// redraw starts from it and replays only what came after.
struct DoodleSavepoint
{
    QImage picture;
    qsizetype count = -1; // -1: none
    // A drawing came in or went before `count` and is not yet drawn here: the
    // next region redraw mends the region it covers.
    bool stale = false;
};

class DoodleBoardCore
{
public:
    virtual ~DoodleBoardCore() = default;

    // Coordinates: normalised ("logic", -1 to 1 on each axis, sizes against
    // the width) and the board's own ("normal", view points).
    QSizeF boardSize() const { return m_canvas->boardSize(); }
    QPointF logicFromNormal(const QPointF &point) const;
    double logicFromNormalWidth(double width) const;
    double logicFromNormalHeight(double height) const;
    double normalFromLogicWidth(double width) const;
    QPointF normalFromLogicPosition(double x, double y) const;
    QRectF normalFromLogicRect(const QRectF &rect) const;
    // The point kept one brush width inside a board of that size.
    QPointF limitTouchPoint(const QPointF &point, const QSizeF &bounds) const;

    // Replay.
    DoodleSurface *cacheSurface() { return &m_canvas->cacheSurface(); }
    QRect paint(const DoodleAction &action);
    void paintBox(const DoodleAction &action, double lineWidth);
    void drawEntry(qsizetype index);
    void drawStroke(const DoodleAction &action);
    // The stroke through the points; `isDot` tells when several points share one place.
    QPainterPath smoothedPath(const DoodlePointList &points, bool *isDot = nullptr) const;
    // Draws the whole cache afresh and takes new savepoints; nothing while
    // the board is not shown.
    void redrawAll();
    // Redraws the region from the cache, from the newest savepoint that is not
    // stale, and mends the stale ones it passes.
    void redrawRegion(const QRectF &area);
    // A drawing was put at `index` (`shift` 1) or taken from it (-1).
    void shiftSavepoints(qsizetype index, int shift);
    void noteAppended();
    void dropSavepoints(qsizetype keepUpTo);
    void takeSavepoint(qsizetype count, bool coarse);
    void reapplyLiveErasure();

    // Limits on what others send.
    bool withinLimits(const QString &sender, const DoodleAction &action) const;
    bool textWithinLimit(const QString &sender, const QString &text) const;

    // The board's pictures and text entry, as the front-end shows them.
    std::unique_ptr<DoodleBoardCanvas> m_canvas;
    DoodlePathCache m_doodlePathCache; // lives as long as the board
    DoodleReceiveLimits m_limits;
    DoodleSavepoint m_saves[3]; // two fine ones, then the coarse one
    double m_brushWidth = 0;
    // The gesture under way, in the board's coordinates.
    DoodleGestureTool m_gesture;
    QPainterPath m_path;
    bool m_hasPath = false;
    QRectF m_liveErased; // what a live eraser cleared on the cache canvas
};
