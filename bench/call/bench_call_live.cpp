// Strokes seen while they are drawn, through a local mosquitto broker
// (started here on a free loopback port). One board draws a stroke, the
// pointer moving every 16 ms as a 60 Hz touch screen reports it; the other
// board's preview takes each report. A sample is the time from a pointer
// move to the moment the other board's preview holds that move's point: the
// report interval's wait, the broker's hop and the preview's redraw. The
// counters give its median and 99th percentile, and the bytes per second the
// drawer sends, with live strokes on (live:1) and off (live:0, the committed
// stroke alone).
#include "CallProcesses.h"

#include "BoardBench.h"

#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kMoves = 60; // a second of drawing
constexpr int kMoveMs = 16;
const QRect kFrame(0, 0, 390, 560);

// How many points of the current stroke a progress text brings up to.
qint64 pointsUpTo(const QString &text)
{
    const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
    if (!action || action->actionType() != DoodleActionTypeProgress)
        return -1;
    const QJsonObject content = DoodleTranslate::jsonToObj(action->userDefined()).toObject();
    return content.value(QStringLiteral("from")).toInteger() +
           content.value(QStringLiteral("p")).toArray().size() / 2;
}

struct Stroke
{
    QElapsedTimer clock;
    std::vector<qint64> moved; // when point i was drawn, ns
    qint64 shown = 1;          // points the other board shows
    qint64 bytes = 0;
    bool committed = false;
};

void drawStroke(DoodleLayout &board, Stroke &stroke, int number)
{
    const double y = 60 + (number * 37) % 440;
    QPointF previous(30, y);
    stroke.clock.start();
    stroke.moved = {0};
    board.touchesBegan({previous, previous});
    QEventLoop loop;
    QTimer pointer;
    int move = 0;
    QObject::connect(&pointer, &QTimer::timeout, [&] {
        if (++move > kMoves) {
            board.touchesEnded({previous, previous});
            pointer.stop();
            return;
        }
        const QPointF next(30 + move * 5.5, y + 20 * std::sin(move * 0.3));
        stroke.moved.push_back(stroke.clock.nsecsElapsed());
        board.touchesMoved({next, previous});
        previous = next;
    });
    pointer.setTimerType(Qt::PreciseTimer);
    pointer.start(kMoveMs);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, [&] {
        if (stroke.committed)
            loop.quit();
    });
    check.start(5);
    loop.exec();
}

void BM_MoveToPreviewThroughBroker(benchmark::State &state)
{
    const bool live = state.range(0) != 0;
    Broker broker(DOODLE_MOSQUITTO, "set_tcp_nodelay true");
    if (!Broker::isInstalled(DOODLE_MOSQUITTO) || !broker.start()) {
        state.SkipWithError("mosquitto could not be started (scripts/deps.sh installs it)");
        return;
    }
    DoodleLayout drawer(QStringLiteral("ann")), viewer(QStringLiteral("ben"));
    for (DoodleLayout *board : {&drawer, &viewer}) {
        board->resetDoodleViewFrame(kFrame);
        board->showToolBar();
    }
    drawer.setSendsLiveStrokes(live);
    DoodleCall sending(&drawer, "bench"), receiving(&viewer, "bench");
    std::vector<double> samples;
    Stroke stroke;
    // The viewer's board took the text before the signal: its preview holds it.
    QObject::connect(
        &receiving, &DoodleCall::actionReceived, [&](const QString &, const QString &text) {
            const qint64 now = stroke.clock.nsecsElapsed();
            stroke.bytes += text.toUtf8().size();
            const qint64 upTo = pointsUpTo(text);
            for (; stroke.shown < upTo && stroke.shown < qint64(stroke.moved.size());
                 ++stroke.shown)
                samples.push_back(double(now - stroke.moved[size_t(stroke.shown)]) / 1000.0);
            stroke.committed |= upTo < 0;
        });
    for (DoodleCall *call : {&sending, &receiving})
        call->join(QStringLiteral("127.0.0.1"), broker.port());
    if (!QTest::qWaitFor(
            [&] {
                return sending.isSettled() && receiving.isSettled() &&
                       sending.participants().size() == 1;
            },
            10000)) {
        state.SkipWithError("the boards did not join the call");
        return;
    }
    qint64 bytes = 0;
    double seconds = 0;
    int number = 0;
    for (auto _ : state) {
        stroke = Stroke();
        drawStroke(drawer, stroke, number++);
        if (!stroke.committed) {
            state.SkipWithError("the stroke did not arrive within ten seconds");
            return;
        }
        bytes += stroke.bytes;
        seconds += double(stroke.clock.nsecsElapsed()) / 1e9;
        state.SetIterationTime(double(stroke.clock.nsecsElapsed()) / 1e9);
    }
    state.counters["median_us"] = percentile(samples, 0.5);
    state.counters["p99_us"] = percentile(samples, 0.99);
    state.counters["samples"] = double(samples.size());
    state.counters["bytes_per_s"] = seconds > 0 ? double(bytes) / seconds : 0;
}
BENCHMARK(BM_MoveToPreviewThroughBroker)
    ->ArgName("live")
    ->Arg(1)
    ->Arg(0)
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return runBoardBenchmarks(argc, argv, 2);
}
