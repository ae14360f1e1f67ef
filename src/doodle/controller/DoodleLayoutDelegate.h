#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/model/DoodleAction.h>

#include <QString>

// The host's side of a board. The board holds it weakly; when the host object
// is a QObject its destruction is noticed and the board stops calling it.
class DOODLE_EXPORT DoodleLayoutDelegate
{
public:
    virtual ~DoodleLayoutDelegate() = default;

    // Every action the local user produces; the host sends its text to the others.
    virtual void onDoodleActionGenerated(const DoodleActionPtr &action) = 0;
    // The tool bar was folded away (drawing paused) or unfolded again.
    virtual void onPauseDoodle() {}
    virtual void onRestartDoodle() {}
    // After a local clear, once the board is empty and the clear action was handed over.
    virtual void onWillCleanDoodle() {}
    // Someone cleared the board: the local user (after onWillCleanDoodle) or
    // the participant the host named as the sender of a clear.
    virtual void onDoodleCleared(const QString & /*userId*/) {}
    // The board was dismissed.
    virtual void onCloseDoodle() {}
};
