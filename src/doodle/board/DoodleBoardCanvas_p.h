#pragma once

// What the board's logic asks of whatever shows the board: its pictures and
// the text entry. The Widgets front-end answers with its views, another
// front-end with its own items; the logic never sees a toolkit's class.
#include <doodle/board/DoodleSurface.h>

#include <QColor>
#include <QPointF>
#include <QSizeF>
#include <QString>

class DOODLE_EXPORT DoodleBoardCanvas
{
public:
    virtual ~DoodleBoardCanvas() = default;

    // Whether the board is shown yet; before that nothing is drawn.
    virtual bool isShown() const = 0;
    // The board's size in view points; empty while it is not shown.
    virtual QSizeF boardSize() const = 0;
    // The permanent picture, at the board's current bounds (showing the board
    // if it is not shown yet).
    virtual DoodleSurface &cacheSurface() = 0;
    // Preview picture `index` at the board's bounds; nullptr past the count.
    virtual DoodleSurface *previewSurface(quint64 index) = 0;
    // Empties preview `index` and closes a text entry on it; `release` gives
    // its memory back, otherwise it is kept for a shape drawn right after.
    virtual void cleanPreview(quint64 index, bool release) = 0;
    // Opens an empty one-line text entry at the point, on preview `index`.
    virtual void openTextEntry(const QPointF &point, double textSize, const QColor &color,
                               quint64 index) = 0;
    // What the open text entry holds; empty when none is open.
    virtual QString textEntryText() const = 0;
};
