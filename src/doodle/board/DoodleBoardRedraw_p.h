#pragma once

// The board's full redraw: the replay of the whole cache into a picture with
// its savepoints, on the GUI thread or on a worker while the GUI thread keeps
// showing the previous picture. Not installed.
#include <doodle/DoodleExport.h>
#include <doodle/model/DoodlePathCache.h>

#include <QImage>
#include <QList>
#include <QObject>
#include <QPainterPath>
#include <QRect>
#include <QSizeF>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class DoodleSurface;

// A savepoint is taken every this many drawings, so an undo of a recent
// drawing replays at most twice as many, whatever the board holds; a coarse
// one, further behind, serves drawings that arrive late.
constexpr qsizetype kSavepointStep = 32;
constexpr qsizetype kCoarseStep = 256;
constexpr int kCoarseSave = 2; // the coarse one's slot

// The cache surface's picture of the first `count` cached drawings: a region
// redraw starts from it and replays only what came after.
struct DoodleSavepoint
{
    QImage picture;
    qsizetype count = -1; // -1: none
    // A drawing came in or went before `count` and is not yet drawn here: the
    // next region redraw mends the region it covers.
    bool stale = false;
};

// Two fine savepoints, then the coarse one.
using DoodleSavepoints = DoodleSavepoint[3];

// Draws cached actions, given in normalised coordinates, on one surface of a
// board of one size. It reads nothing else, so it draws alike on any thread.
class DoodleReplayPainter
{
public:
    DoodleReplayPainter(DoodleSurface &surface, const QSizeF &board)
        : m_surface(surface), m_board(board)
    {}
    // Draws the action; the rectangle it could have changed.
    QRect paint(const DoodleAction &action) const;
    // The stroke through the points; `isDot` tells when several points share one place.
    QPainterPath smoothedPath(const DoodlePointList &points, bool *isDot = nullptr) const;
    double normalWidth(double width) const { return m_board.width() * width * 0.5; }
    QPointF normalPosition(double x, double y) const;
    QRectF normalRect(const QRectF &rect) const;

    // Draws `entries` afresh on the surface, taking the savepoints as it
    // goes, and gives each entry's drawn rectangle; false when cancelled.
    bool replayAll(const QList<DoodleCacheEntry> &entries, DoodleSavepoints &saves,
                   QList<QRect> &drawn, const std::atomic<bool> *cancelled = nullptr) const;
    static void takeSavepoint(const DoodleSurface &surface, DoodleSavepoints &saves,
                              qsizetype count, bool coarse);

private:
    void paintBox(const DoodleAction &action, double lineWidth) const;
    void drawStroke(const DoodleAction &action) const;

    DoodleSurface &m_surface;
    QSizeF m_board;
};

// A full redraw under way on a worker: what it draws from, fixed when it
// starts, and what it gives back.
struct DoodleRedrawJob
{
    QList<DoodleCacheEntry> entries; // shares the cached actions, never changed
    QSize surfaceSize;
    QSizeF boardSize;
    double scale = 1;
    std::atomic<bool> cancelled{false};
    // Filled by the worker.
    QImage picture;
    QList<QRect> drawn;
    DoodleSavepoints saves;
};

// Hears of the worker's finished tasks on the GUI thread.
class DoodleWorkerInbox : public QObject
{
public:
    std::function<void()> onPosted;

protected:
    // Reads nothing of the event: the worker made it.
    bool event(QEvent *event) override;
};

// The board's worker and what it is doing. A task's work runs on the worker
// and touches nothing but its job; its ending runs on the GUI thread. Both go
// through a standard mutex, whose ordering ThreadSanitizer sees, unlike that
// of Qt's own locks.
struct DOODLE_EXPORT DoodleBackgroundRedraw
{
    DoodleBackgroundRedraw();
    ~DoodleBackgroundRedraw();
    // Cancels the job under way, if any; true if there was one.
    bool cancel();
    // Runs `work` on the worker, then `done` (if any) on the GUI thread,
    // unless the board is gone by then.
    void run(std::function<void()> work, std::function<void()> done);
    // Runs `next` on the GUI thread once the event loop has turned: with
    // timers, not posted events, so that everything else waiting gets its turn.
    void later(std::function<void()> next);

    DoodleWorkerInbox inbox;
    std::shared_ptr<DoodleRedrawJob> job; // the pending one; none when settled
    // The cache changed other than at its end while the job ran: its picture
    // is out of date, and the redraw starts again from the cache as it is.
    bool diverged = false;

private:
    struct Task
    {
        std::function<void()> work;
        std::function<void()> done;
    };
    void runNext();
    void deliver();

    std::mutex m_mutex;
    std::deque<Task> m_tasks;
    std::deque<std::function<void()>> m_done;
    QTimer m_later;
    std::function<void()> m_next;
    QThreadPool m_pool;
};
