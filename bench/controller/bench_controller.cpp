// Board controller at phone size (390 x 844 points, scale 3): drawing one
// received stroke, rebuilding the board from the cache, and the cost of one
// finger move while a stroke grows.
#include <doodle/Doodle.h>

#include <QApplication>

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

const QRect kFrame(0, 0, 390, 844);

DoodleActionPtr wavyStroke(int index, int points)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(DoodleActionTypeStroke);
    action->setUserId(QStringLiteral("peer"));
    action->setBrushColor(QColor::fromHsv(index * 37 % 360, 200, 220));
    action->setBrushWidth(0.015f);
    const double y0 = std::fmod(index * 0.173, 1.8) - 0.9;
    for (int i = 0; i < points; ++i) {
        const double t = double(i) / points;
        action->addPointWithPositionX(float(t * 1.6 - 0.8), float(y0 + 0.05 * std::sin(t * 12)), 2);
    }
    return action;
}

struct PhoneBoard
{
    PhoneBoard() : board(QStringLiteral("me"))
    {
        board.resetDoodleViewFrame(kFrame);
        board.showToolBar();
    }
    DoodleLayout board;
};

void BM_ReceiveOneStroke(benchmark::State &state)
{
    PhoneBoard phone;
    int index = 0;
    for (auto _ : state) {
        phone.board.onDoodleActionReceived(QStringLiteral("peer"), wavyStroke(index++, 50));
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

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    DoodleScreen::setScaleOverride(3);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
