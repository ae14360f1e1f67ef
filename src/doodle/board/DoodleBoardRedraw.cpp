// The board's full redraw: the replay painter, and the worker that runs a
// full redraw off the GUI thread.
#include "DoodleBoardRedraw_p.h"
#include "DoodleSurface.h"

#include <doodle/support/DoodleLog_p.h>

#include <QCoreApplication>
#include <QEvent>

#include <utility>

#include <cmath>

QPointF DoodleReplayPainter::normalPosition(double x, double y) const
{
    return QPointF((x + 1) * m_board.width() * 0.5, (y + 1) * m_board.height() * 0.5);
}

QRectF DoodleReplayPainter::normalRect(const QRectF &rect) const
{
    const double w = m_board.width() * 0.5, h = m_board.height() * 0.5;
    return QRectF((rect.x() + 1) * w, (rect.y() + 1) * h, rect.width() * w, rect.height() * h);
}

QRect DoodleReplayPainter::paint(const DoodleAction &a) const
{
    const double lineWidth = normalWidth(a.brushWidth());
    switch (a.actionType()) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser:
        drawStroke(a);
        break;
    case DoodleActionTypeText:
        m_surface.drawText(normalPosition(a.x(), a.y()), a.text(), normalWidth(a.textSize()),
                           a.brushColor());
        break;
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle:
        paintBox(a, lineWidth);
        break;
    case DoodleActionTypeArrow:
        m_surface.drawArrow(normalPosition(a.x(), a.y()), normalPosition(a.endX(), a.endY()),
                            lineWidth, a.brushColor());
        break;
    default:
        return QRect();
    }
    return m_surface.lastPaintedRect();
}

void DoodleReplayPainter::paintBox(const DoodleAction &a, double lineWidth) const
{
    const QRectF logic(double(a.x()), double(a.y()), double(a.width()), double(a.height()));
    const QRectF rect = normalRect(logic);
    if (a.actionType() == DoodleActionTypeRectangle) {
        m_surface.drawRectangle(rect, lineWidth, a.brushColor());
    } else {
        m_surface.drawEllipse(rect, lineWidth, a.brushColor());
        DOODLE_LOG(QStringLiteral("CGRectMake %1").arg(DoodleNumber::rectText(logic)));
    }
}

void DoodleReplayPainter::drawStroke(const DoodleAction &action) const
{
    bool dot = false;
    const QPainterPath path = smoothedPath(action.pathPoints(), &dot);
    const double width = normalWidth(double(action.brushWidth()));
    const bool erase = action.actionType() != DoodleActionTypeStroke;
    if (dot)
        m_surface.drawDot(path.currentPosition(), width, action.brushColor(), erase);
    else if (!erase)
        m_surface.drawPath(path, width, action.brushColor());
    else
        m_surface.erasePath(path, width);
}

QPainterPath DoodleReplayPainter::smoothedPath(const DoodlePointList &points, bool *isDot) const
{
    // Each point is the control point of a curve that ends halfway to the next
    // one; the last curve reaches the last point. Points that are malformed or
    // not finite are skipped.
    QPainterPath path;
    QPointF previous;
    qsizetype count = 0;
    for (const DoodlePoint &point : points) {
        if (point.size() < 3)
            continue;
        const QPointF current = normalPosition(point.x(), point.y());
        if (!std::isfinite(current.x()) || !std::isfinite(current.y()))
            continue;
        if (count++ == 0) {
            path.moveTo(current);
        } else {
            path.quadTo(previous, (previous + current) / 2);
        }
        previous = current;
    }
    if (path.elementCount() > 1)
        path.quadTo(previous, previous);
    if (isDot)
        *isDot = count > 1 && path.elementCount() == 1; // several points in one place
    return path;
}

void DoodleReplayPainter::takeSavepoint(const DoodleSurface &surface, DoodleSavepoints &saves,
                                        qsizetype count, bool coarse)
{
    // A fine savepoint reuses the memory of the older fine one.
    DoodleSavepoint &save = coarse                            ? saves[kCoarseSave]
                            : saves[0].count < saves[1].count ? saves[0]
                                                              : saves[1];
    surface.copyPicture(save.picture);
    save.count = count;
    save.stale = false;
}

bool DoodleReplayPainter::replayAll(const QList<DoodleCacheEntry> &entries, DoodleSavepoints &saves,
                                    QList<QRect> &drawn, const std::atomic<bool> *cancelled) const
{
    const qsizetype count = entries.size();
    for (DoodleSavepoint &save : saves)
        save.count = -1;
    // The savepoints fall where a board that took the drawings one by one
    // has them, so the first undo after a full redraw replays no more than
    // any other.
    const qsizetype fine = count / kSavepointStep * kSavepointStep;
    const qsizetype coarse = count / kCoarseStep * kCoarseStep;
    drawn.resize(count);
    for (qsizetype i = 0; i <= count; ++i) {
        if (cancelled && cancelled->load(std::memory_order_relaxed))
            return false;
        if (i == coarse)
            takeSavepoint(m_surface, saves, i, true);
        if (i == fine - kSavepointStep || i == fine)
            takeSavepoint(m_surface, saves, i, false);
        if (i < count)
            drawn[i] = paint(*entries.at(i).action);
    }
    return true;
}

bool DoodleWorkerInbox::event(QEvent *event)
{
    if (onPosted)
        onPosted();
    return QObject::event(event);
}

DoodleBackgroundRedraw::DoodleBackgroundRedraw()
{
    // One worker per board: a cancelled job stops at its next drawing, and the
    // one that replaces it waits for that.
    m_pool.setMaxThreadCount(1);
    inbox.onPosted = [this] { deliver(); };
    m_later.setSingleShot(true);
    m_later.setInterval(0);
    QObject::connect(&m_later, &QTimer::timeout, &inbox, [this] {
        if (const std::function<void()> next = std::exchange(m_next, nullptr))
            next();
    });
}

DoodleBackgroundRedraw::~DoodleBackgroundRedraw()
{
    // The worker must not outlive the board it reports to.
    cancel();
    m_pool.waitForDone();
    // Orders the worker's last hand-over before what goes with the board.
    const std::lock_guard<std::mutex> lock(m_mutex);
}

bool DoodleBackgroundRedraw::cancel()
{
    diverged = false;
    if (!job)
        return false;
    job->cancelled = true;
    job.reset();
    return true;
}

void DoodleBackgroundRedraw::run(std::function<void()> work, std::function<void()> done)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_tasks.push_back({std::move(work), std::move(done)});
    }
    m_pool.start([this] { runNext(); });
}

void DoodleBackgroundRedraw::later(std::function<void()> next)
{
    m_next = std::move(next);
    m_later.start();
}

void DoodleBackgroundRedraw::runNext()
{
    Task task;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        task = std::move(m_tasks.front());
        m_tasks.pop_front();
    }
    task.work();
    task.work = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_done.push_back(std::move(task.done));
    }
    QCoreApplication::postEvent(&inbox, new QEvent(QEvent::User));
}

void DoodleBackgroundRedraw::deliver()
{
    std::deque<std::function<void()>> done;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        done.swap(m_done);
    }
    for (const std::function<void()> &each : done) {
        if (each)
            each();
    }
}
