// Board controller at phone size (390 x 844 points, scale 3): drawing one
// received stroke, rebuilding the board from the cache, undo on a full board,
// each against bare QPainter drawing the same strokes; the cost of one finger
// move while a stroke grows; hostile input against the receiver limits; and
// the GUI thread's longest stall in a rotation, a late join and a catch-up.
// Full redraws run on the GUI thread here, as they did before the worker,
// except where a benchmark chooses the worker.
#include "BoardBench.h"

#include <doodle/Doodle.h>
#include <doodle/board/DoodleBoardCore_p.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <functional>
#include <memory>

namespace {

const QRect kFrame(0, 0, 390, 844);

DoodleActionPtr wavyStroke(int index, int points)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(DoodleActionTypeStroke);
    action->setUserId(QStringLiteral("peer"));
    action->setBrushColor(QColor::fromHsv(index * 37 % 360, 200, 220));
    action->setBrushWidth(0.015f);
    action->setSeqNo(quint64(index) + 1);
    const double y0 = std::fmod(index * 0.173, 1.8) - 0.9;
    for (int i = 0; i < points; ++i) {
        const double t = double(i) / points;
        action->addPointWithPositionX(float(t * 1.6 - 0.8), float(y0 + 0.05 * std::sin(t * 12)), 2);
    }
    return action;
}

struct PhoneBoard
{
    // A board that has received `strokes` strokes from a peer.
    explicit PhoneBoard(qint64 strokes = 0) : board(QStringLiteral("me"))
    {
        board.resetDoodleViewFrame(kFrame);
        board.showToolBar();
        for (int i = 0; i < strokes; ++i)
            board.onDoodleActionReceived(QStringLiteral("peer"), wavyStroke(i, 50));
    }
    DoodleLayout board;
};

// Vector export of a board of 500 strokes, every tenth stroke an eraser when
// the second argument is 1: the PDF's clips grow with the erasers, the SVG's
// masks do not. Arg 0 is SVG, 1 PDF.
void BM_ExportVectors(benchmark::State &state)
{
    PhoneBoard phone;
    for (int i = 0; i < 500; ++i) {
        DoodleActionPtr stroke = wavyStroke(i, 50);
        if (state.range(1) == 1 && i % 10 == 9)
            stroke->setActionType(DoodleActionTypeEraser);
        phone.board.onDoodleActionReceived(QStringLiteral("peer"), stroke);
    }
    qint64 bytes = 0;
    for (auto _ : state) {
        const QByteArray document =
            state.range(0) == 0 ? phone.board.exportSvg() : phone.board.exportPdf();
        bytes = document.size();
        benchmark::DoNotOptimize(document.constData());
    }
    state.counters["bytes"] = double(bytes);
}
BENCHMARK(BM_ExportVectors)
    ->Args({0, 0})
    ->Args({0, 1})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);

// The same 50-point stroke as the board draws it, in view points.
QPainterPath wavyPath(int index)
{
    QPainterPath path;
    const double y0 = std::fmod(index * 0.173, 1.8) - 0.9;
    QPointF previous;
    for (int i = 0; i < 50; ++i) {
        const double t = double(i) / 50;
        const QPointF p((t * 1.6 - 0.8 + 1) * 195, (y0 + 0.05 * std::sin(t * 12) + 1) * 422);
        if (i == 0)
            path.moveTo(p);
        else
            path.quadTo(previous, (previous + p) / 2);
        previous = p;
    }
    path.quadTo(previous, previous);
    return path;
}

// The floor: bare QPainter stroking `count` such paths on a phone-sized picture.
// One path at a time takes the next of 200, as the board receives them, so
// that both touch the same spread of memory.
void BM_BareStrokes(benchmark::State &state)
{
    QImage picture(QSize(390, 844) * 3, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(3);
    picture.fill(Qt::transparent);
    const int count = int(state.range(0));
    QList<QPainterPath> paths;
    for (int i = 0; i < std::max(count, 200); ++i)
        paths << wavyPath(i);
    int next = 0;
    for (auto _ : state) {
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        for (int n = 0; n < count; ++n, next = (next + 1) % int(paths.size())) {
            painter.strokePath(paths.at(next),
                               QPen(QColor::fromHsv(next * 37 % 360, 200, 220), 5.85, Qt::SolidLine,
                                    Qt::RoundCap, Qt::RoundJoin));
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BareStrokes)->Arg(1)->Arg(1000)->Arg(5000)->Unit(benchmark::kMicrosecond);

// Undo of the local user's last stroke on a board of `range` received strokes.
void BM_UndoOnFullBoard(benchmark::State &state)
{
    PhoneBoard phone(state.range(0));
    const DoodleActionPtr mine = wavyStroke(int(state.range(0)) / 2, 50);
    quint64 stamp = 100000;
    for (auto _ : state) {
        state.PauseTiming();
        mine->setSeqNo(++stamp); // the newest drawing, as the local user's last one is
        phone.board.onDoodleActionReceived(QStringLiteral("me"), mine);
        state.ResumeTiming();
        phone.board.undo();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_UndoOnFullBoard)->Arg(1000)->Arg(5000)->Unit(benchmark::kMicrosecond);

// Undo of the local user's newest drawing when it reaches every edge of the
// board, as a sweep of the eraser does: the whole board is its region.
void BM_UndoWholeBoardSweep(benchmark::State &state)
{
    PhoneBoard phone(5000);
    const auto sweep = std::make_shared<DoodleAction>(*wavyStroke(0, 0));
    for (const QPointF corner :
         {QPointF(-1.02, -1.02), QPointF(1.02, -0.3), QPointF(-1.02, 0.4), QPointF(1.02, 1.02)})
        sweep->addPointWithPositionX(float(corner.x()), float(corner.y()), 2);
    quint64 stamp = 100000;
    for (auto _ : state) {
        state.PauseTiming();
        sweep->setSeqNo(++stamp);
        phone.board.onDoodleActionReceived(QStringLiteral("me"), sweep);
        state.ResumeTiming();
        phone.board.undo();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_UndoWholeBoardSweep)->Unit(benchmark::kMillisecond);

// A drawing that arrives 100 places late on a board of 5 000: across the
// board like the others (range 0) or in a corner nothing later touches (1).
// The replay starts at the newest savepoint before it, the coarse one, and
// mends the savepoints after it on the way; range 2 measures one arrival
// after the board was drawn afresh, when the coarse one is furthest back.
// Range 3 is the floor: the same drawing arriving on time, as the newest.
void BM_LateArrival(benchmark::State &state)
{
    PhoneBoard phone(5000);
    auto late = std::make_shared<DoodleAction>(*wavyStroke(4900, 50));
    if (state.range(0) == 1) {
        late->pathPoints().clear();
        late->addPointWithPositionX(-0.98f, 0.98f, 2);
        late->addPointWithPositionX(-0.96f, 0.97f, 2);
    }
    int round = 0;
    for (auto _ : state) {
        const QString sender = QStringLiteral("late%1").arg(round++);
        if (state.range(0) == 3)
            late->setSeqNo(quint64(1000000 + round));
        phone.board.onDoodleActionReceived(sender, late);
        state.PauseTiming();
        phone.board.undoDrawPathWithUserId(sender);
        if (state.range(0) == 2)
            phone.board.drawCachePath();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LateArrival)->Arg(0)->Arg(1)->Arg(3)->Unit(benchmark::kMicrosecond);

// The mirror of range 0: the drawing 100 places back taken back again.
void BM_UndoHundredBack(benchmark::State &state)
{
    PhoneBoard phone(5000);
    const auto late = std::make_shared<DoodleAction>(*wavyStroke(4900, 50));
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QString sender = QStringLiteral("late%1").arg(round++);
        phone.board.onDoodleActionReceived(sender, late);
        state.ResumeTiming();
        phone.board.undoDrawPathWithUserId(sender);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_UndoHundredBack)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LateArrival)->Arg(2)->Iterations(8)->Unit(benchmark::kMicrosecond);

// Undo of the local user's newest drawing right after a drawing arrived 100
// places late: the savepoints the late one passed are mended, not lost.
void BM_UndoAfterLateArrival(benchmark::State &state)
{
    PhoneBoard phone(5000);
    const auto late = std::make_shared<DoodleAction>(*wavyStroke(4900, 50));
    const DoodleActionPtr mine = wavyStroke(2500, 50);
    quint64 stamp = 100000;
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QString sender = QStringLiteral("late%1").arg(round++);
        phone.board.onDoodleActionReceived(sender, late);
        mine->setSeqNo(++stamp);
        phone.board.onDoodleActionReceived(QStringLiteral("me"), mine);
        state.ResumeTiming();
        phone.board.undo();
        state.PauseTiming();
        phone.board.undoDrawPathWithUserId(sender);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_UndoAfterLateArrival)->Unit(benchmark::kMicrosecond);

// Export of a 5 000-drawing state (range 0), its merge into an empty board
// (1), and into the board it came from, which holds all of it already (2).
void BM_StateHandOff(benchmark::State &state)
{
    PhoneBoard phone(5000);
    const QString exported = phone.board.exportState();
    for (auto _ : state) {
        if (state.range(0) == 0) {
            benchmark::DoNotOptimize(phone.board.exportState());
        } else if (state.range(0) == 2) {
            phone.board.mergeState(exported);
        } else {
            state.PauseTiming();
            PhoneBoard joiner;
            state.ResumeTiming();
            joiner.board.mergeState(exported);
        }
    }
    state.counters["bytes"] = double(exported.size());
}
BENCHMARK(BM_StateHandOff)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

// Catching up after a short drop: merging a state that brings ten drawings
// the board missed, ordered among its newest (range 0) or 100 places back (1).
void BM_CatchUpTen(benchmark::State &state)
{
    PhoneBoard phone(5000);
    const quint64 first = state.range(0) == 0 ? 4990 : 4890;
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        DoodleLayout source(QStringLiteral("source"));
        const QString owner = QStringLiteral("away%1").arg(round++);
        for (int i = 0; i < 10; ++i) {
            const DoodleActionPtr missed = wavyStroke(int(first) + i, 50);
            source.onDoodleActionReceived(owner, missed);
        }
        const QString missed = source.exportState();
        state.ResumeTiming();
        phone.board.mergeState(missed);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CatchUpTen)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// A clear ordered before every drawing of a 5 000-stroke board: it removes
// nothing, so only the fingerprint is recomputed (range 1), against a redraw
// of the board (range 0).
void BM_ClearBeforeEverything(benchmark::State &state)
{
    PhoneBoard phone(5000);
    auto clear = std::make_shared<DoodleAction>();
    clear->setActionType(DoodleActionTypeClean);
    clear->setSeqNo(1);
    int round = 0;
    for (auto _ : state) {
        if (state.range(0) == 0) {
            phone.board.drawCachePath();
        } else { // each later than the last, and still before ("peer", 1)
            const QString sender = QStringLiteral("a%1").arg(round++, 6, 10, QLatin1Char('0'));
            phone.board.onDoodleActionReceived(sender, clear);
        }
    }
    if (phone.board.getAllPath().size() != 5000)
        state.SkipWithError("the clear removed drawings");
}
BENCHMARK(BM_ClearBeforeEverything)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ReceiveOneStroke(benchmark::State &state)
{
    PhoneBoard phone;
    QList<DoodleActionPtr> strokes;
    for (int i = 0; i < 200; ++i)
        strokes << wavyStroke(i, 50);
    int index = 0;
    for (auto _ : state) {
        phone.board.onDoodleActionReceived(QStringLiteral("peer"), strokes.at(index++ % 200));
        if (index % 200 == 0) {
            state.PauseTiming();
            phone.board.cleanDoodleCaches();
            state.ResumeTiming();
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ReceiveOneStroke)->Unit(benchmark::kMicrosecond);

void BM_RebuildFromCache(benchmark::State &state)
{
    PhoneBoard phone;
    for (int i = 0; i < state.range(0); ++i)
        phone.board.doodlePathCache()->addAction(wavyStroke(i, 50));
    for (auto _ : state)
        phone.board.drawCachePath();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_RebuildFromCache)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);

// Starts a stroke and moves the finger until it holds `points` points.
QPointF growStroke(DoodleLayout &board, int points)
{
    QPointF previous(20, 400);
    board.touchesBegan({previous, previous});
    for (int i = 1; i < points; ++i) {
        const QPointF next(20 + (i % 350), 400 + 300 * std::sin(i * 0.05));
        board.touchesMoved({next, previous});
        previous = next;
    }
    return previous;
}

void BM_MoveWhileStrokeHolds(benchmark::State &state)
{
    PhoneBoard phone;
    QPointF previous = growStroke(phone.board, int(state.range(0)));
    int moves = 0;
    for (auto _ : state) {
        const QPointF next(20 + (moves * 7 % 350), 100 + (moves * 13 % 600));
        phone.board.touchesMoved({next, previous});
        previous = next;
        if (++moves % 25 == 0) { // keep the stroke at about the measured length
            state.PauseTiming();
            phone.board.touchesCancelled({previous, previous});
            phone.board.cleanDoodleCaches();
            previous = growStroke(phone.board, int(state.range(0)));
            state.ResumeTiming();
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MoveWhileStrokeHolds)->Arg(50)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

// The baseline a literal preview would pay: the whole stroke so far stroked
// onto the temp canvas at every move.
void BM_WholePathPreviewPerMove(benchmark::State &state)
{
    PhoneBoard phone;
    QPainterPath path(QPointF(20, 400));
    QPointF previous(20, 400);
    for (int i = 1; i < state.range(0); ++i) {
        const QPointF next(20 + (i % 350), 400 + 300 * std::sin(i * 0.05));
        path.quadTo(previous, (previous + next) / 2);
        previous = next;
    }
    for (auto _ : state)
        phone.board.doodleView()->drawInTempWithPath(path, 6, Qt::red);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_WholePathPreviewPerMove)->Arg(50)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

// Hostile input: a 10 MB text, a million-point stroke and 100 000 tiny
// drawings from one sender, each handled under the default limits.
void BM_HostileInput(benchmark::State &state)
{
    PhoneBoard phone;
    const QString huge = QStringLiteral("{\"PelDoodleActionTypeKey\":267,\"x\":\"") +
                         QString(10 << 20, QLatin1Char('W')) + QStringLiteral("\"}");
    const DoodleActionPtr million = wavyStroke(1, 1000000);
    auto dot = std::make_shared<DoodleAction>(*wavyStroke(2, 2));
    const DoodlePoint start = dot->pathPoints().at(0);
    dot->pathPoints() = DoodlePointList{start, start};
    // Dots with stamps of their own, so that none is a copy of another.
    QList<DoodleActionPtr> tiny;
    for (int i = 0; i < (state.range(0) == 2 ? 100000 : 0); ++i) {
        tiny << std::make_shared<DoodleAction>(*dot);
        tiny.last()->setSeqNo(quint64(i) + 1);
    }
    for (auto _ : state) {
        switch (state.range(0)) {
        case 0:
            phone.board.onDoodleTextReceived(QStringLiteral("mallory"), huge);
            break;
        case 1:
            phone.board.onDoodleActionReceived(QStringLiteral("mallory"), million);
            break;
        default:
            state.PauseTiming();
            {
                PhoneBoard fresh; // stamps once seen are not taken again
                state.ResumeTiming();
                for (const DoodleActionPtr &action : tiny) // five times the limit per sender
                    fresh.board.onDoodleActionReceived(QStringLiteral("mallory"), action);
                state.PauseTiming();
                state.counters["cached"] = double(fresh.board.doodlePathCache()->size());
            }
            state.ResumeTiming();
        }
    }
}
BENCHMARK(BM_HostileInput)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HostileInput)->Arg(2)->Iterations(3)->Unit(benchmark::kMillisecond);

// The GUI thread while a board of `strokes` strokes turns (scenario 0), a
// late joiner merges its full state (1), or the board catches up with a
// peer's state that brings 100 drawings it missed (2); the full redraw on the
// worker (worker 1) or on the GUI thread (0). A 1 ms timer records the event
// loop's longest stall ("slice_ms", wall clock, which includes time the busy
// machine gave other threads) and the most CPU time the GUI thread spent
// between two turns ("slice_cpu_ms"), the repaint of the exact picture
// included; the time is until the exact picture shows.
class StallMeter
{
public:
    static constexpr int kAfterSettledMs = 50;
    StallMeter()
    {
        m_tick.setInterval(1);
        m_tick.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_tick, &QTimer::timeout, [this] { lap(); });
    }
    // Runs `work` from the event loop and turns it until the board's exact
    // picture shows; the milliseconds that took.
    double run(const std::function<void()> &work, DoodleLayout &board)
    {
        QEventLoop loop;
        double exact = -1;
        const auto done = [&] {
            if (exact < 0 && board.isPictureSettled()) {
                exact = double(m_clock.nsecsElapsed()) / 1e6;
                loop.quit();
            }
        };
        const QMetaObject::Connection settled =
            QObject::connect(&board, &DoodleLayout::pictureSettled, done);
        m_longest = 0;
        m_longestCpu = 0;
        m_clock.start();
        m_last = 0;
        m_lastCpu = threadCpuMs();
        m_tick.start();
        QTimer::singleShot(0, [&] {
            lap();
            work();
            lap();
            done();
        });
        loop.exec();
        // The exact picture's own painting counts too.
        QTimer::singleShot(kAfterSettledMs, &loop, &QEventLoop::quit);
        loop.exec();
        m_tick.stop();
        QObject::disconnect(settled);
        return exact;
    }
    double longest() const { return m_longest; }
    double longestCpu() const { return m_longestCpu; }

private:
    static double threadCpuMs()
    {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
    }
    void lap()
    {
        const double now = double(m_clock.nsecsElapsed()) / 1e6;
        const double cpu = threadCpuMs();
        m_longest = std::max(m_longest, now - m_last);
        m_longestCpu = std::max(m_longestCpu, cpu - m_lastCpu);
        m_last = now;
        m_lastCpu = cpu;
    }
    QTimer m_tick;
    QElapsedTimer m_clock;
    double m_last = 0;
    double m_longest = 0;
    double m_lastCpu = 0;
    double m_longestCpu = 0;
};

// A peer's states after it received 100 drawings more each time, which the
// board missed.
QStringList statesWithMissed(const QString &base, int rounds)
{
    DoodleLayout source(QStringLiteral("source"));
    source.mergeState(base);
    QStringList states;
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < 100; ++i) {
            const int index = 5000 + round * 100 + i;
            source.onDoodleActionReceived(QStringLiteral("away"), wavyStroke(index, 50));
        }
        states << source.exportState();
    }
    return states;
}

// Shows the board and waits until its window has been painted once.
void showPainted(DoodleLayout &board)
{
    QWidget *window = board.view()->window();
    window->show();
    QElapsedTimer waited;
    waited.start();
    while ((!window->windowHandle() || !window->windowHandle()->isExposed()) &&
           waited.elapsed() < 2000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    QCoreApplication::processEvents();
}

void BM_GuiThreadStall(benchmark::State &state)
{
    const qint64 scenario = state.range(0);
    PhoneBoard phone(state.range(2));
    showPainted(phone.board);
    const QString full = phone.board.exportState();
    constexpr int kRounds = 4;
    const QStringList catchUps = scenario == 2 ? statesWithMissed(full, kRounds) : QStringList();
    DoodleBoardCore::setBackgroundRedrawFrom(state.range(1) ? kSavepointStep : -1);
    StallMeter meter;
    double longest = 0;
    double longestCpu = 0;
    int round = 0;
    for (auto _ : state) {
        std::unique_ptr<PhoneBoard> joiner;
        if (scenario == 1) {
            joiner = std::make_unique<PhoneBoard>();
            showPainted(joiner->board);
        }
        DoodleLayout &board = joiner ? joiner->board : phone.board;
        const int at = round++;
        const auto work = [&] {
            if (scenario == 0)
                board.resetDoodleViewFrame(at % 2 == 0 ? QRect(0, 0, 844, 390) : kFrame);
            else
                board.mergeState(scenario == 1 ? full : catchUps.at(at));
        };
        const double exact = meter.run(work, board);
        state.SetIterationTime(exact / 1e3);
        longest = std::max(longest, meter.longest());
        longestCpu = std::max(longestCpu, meter.longestCpu());
    }
    DoodleBoardCore::setBackgroundRedrawFrom(-1);
    state.counters["slice_ms"] = longest;
    state.counters["slice_cpu_ms"] = longestCpu;
}
BENCHMARK(BM_GuiThreadStall)
    ->ArgNames({"scenario", "worker", "strokes"})
    ->ArgsProduct({{0, 1, 2}, {0, 1}, {5000}})
    ->Args({0, 1, 0}) // the window system's own share of turning: an empty board
    ->Iterations(4)   // as many as the catch-up states
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// The first undo after the board turned, its redraw (and savepoints) done on
// the worker (range 1) or on the GUI thread (0).
void BM_FirstUndoAfterTurn(benchmark::State &state)
{
    PhoneBoard phone(5000);
    DoodleBoardCore::setBackgroundRedrawFrom(state.range(0) ? kSavepointStep : -1);
    const DoodleActionPtr mine = wavyStroke(2500, 50);
    quint64 stamp = 100000;
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        mine->setSeqNo(++stamp);
        phone.board.onDoodleActionReceived(QStringLiteral("me"), mine);
        phone.board.resetDoodleViewFrame(round++ % 2 == 0 ? QRect(0, 0, 844, 390) : kFrame);
        QEventLoop settle;
        while (!phone.board.isPictureSettled())
            settle.processEvents(QEventLoop::WaitForMoreEvents);
        state.ResumeTiming();
        phone.board.undo();
    }
    DoodleBoardCore::setBackgroundRedrawFrom(-1);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FirstUndoAfterTurn)->Arg(0)->Arg(1)->Iterations(6)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    return runBoardBenchmarks(argc, argv, 3, [] { DoodleBoardCore::setBackgroundRedrawFrom(-1); });
}
