// End-to-end latency of a call: from the end of a gesture on one board to
// another board's picture holding it, three participants drawing at once. The
// same three boards run through a local mosquitto broker (started here on a
// free loopback port) and, side by side, through an in-process queued hand-off
// that stands for a channel with no network at all. Each round every board
// draws one 20-point stroke; the six arrivals of the round are the samples.
// The counters give the median and the 99th percentile over every sample; the
// time column is the mean of each round's slowest arrival. The broker runs
// with mosquitto's defaults (broker_nodelay:0) and with set_tcp_nodelay
// (broker_nodelay:1); the boards' client always disables Nagle's algorithm.
//
// All three boards share this process's GUI thread, as three participants of
// one host would; on separate machines each would have a thread of its own.
#include "CallProcesses.h"

#include "BoardBench.h"

#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace {

constexpr int kBoards = 3;
constexpr int kRoundsPerRun = 300;
const QRect kFrame(0, 0, 390, 560);

// Where each sender's gesture of the current round ended, and what arrived.
struct Round
{
    QElapsedTimer clock;
    std::array<qint64, kBoards> ended{};
    int arrivals = 0;
    std::vector<double> *samples = nullptr;

    std::function<void()> done;

    void arrived(int sender)
    {
        samples->push_back(double(clock.nsecsElapsed() - ended[size_t(sender)]) / 1000.0);
        if (++arrivals == kBoards * (kBoards - 1) && done)
            done();
    }
};

// Three boards and a way to move texts between them.
class Call
{
public:
    Call()
    {
        for (int i = 0; i < kBoards; ++i) {
            boards[size_t(i)] = std::make_unique<DoodleLayout>(QStringLiteral("user%1").arg(i));
            boards[size_t(i)]->resetDoodleViewFrame(kFrame);
            boards[size_t(i)]->showToolBar(); // unfolded: the board takes gestures
        }
    }
    virtual ~Call() = default;

    int index(const QString &user) const { return user.mid(4).toInt(); }

    // Every board draws one stroke; returns when the other boards hold all
    // three, or false after five seconds.
    bool playRound(Round &round, int number)
    {
        round.arrivals = 0;
        round.clock.start();
        for (int i = 0; i < kBoards; ++i)
            draw(*boards[size_t(i)], i, number, &round.ended[size_t(i)], round.clock);
        m_round = &round;
        // A real event loop: woken by each arrival, never polling.
        QEventLoop loop;
        round.done = [&loop] { loop.quit(); };
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        if (round.arrivals < kBoards * (kBoards - 1))
            loop.exec();
        const bool done = round.arrivals == kBoards * (kBoards - 1);
        m_round = nullptr;
        return done;
    }

    std::array<std::unique_ptr<DoodleLayout>, kBoards> boards;

protected:
    void arrived(const QString &sender)
    {
        if (m_round)
            m_round->arrived(index(sender));
    }

private:
    static void draw(DoodleLayout &board, int row, int number, qint64 *ended,
                     const QElapsedTimer &clock)
    {
        const double y = 40 + (number * 7 + row * 150) % 480;
        QPointF previous(40, y);
        board.touchesBegan({previous, previous});
        for (int i = 1; i < 20; ++i) {
            const QPointF next(40 + i * 15, y + 10 * std::sin(i * 0.7));
            board.touchesMoved({next, previous});
            previous = next;
        }
        *ended = clock.nsecsElapsed();
        board.touchesEnded({previous, previous});
    }

    Round *m_round = nullptr;
};

// Through the broker: each board joined to one call.
class BrokerCall : public Call
{
public:
    explicit BrokerCall(const Broker &broker)
    {
        for (int i = 0; i < kBoards; ++i) {
            auto call = std::make_unique<DoodleCall>(boards[size_t(i)].get(), "bench");
            QObject::connect(call.get(), &DoodleCall::actionReceived,
                             [this](const QString &sender, const QString &) { arrived(sender); });
            call->join(QStringLiteral("127.0.0.1"), broker.port());
            calls[size_t(i)] = std::move(call);
        }
    }
    bool ready()
    {
        return QTest::qWaitFor(
            [this] {
                return std::all_of(calls.begin(), calls.end(), [](const auto &call) {
                    return call->isConnected() && call->participants().size() == kBoards - 1;
                });
            },
            10000);
    }
    std::array<std::unique_ptr<DoodleCall>, kBoards> calls;
};

// In process: each generated text handed to the other boards through the event queue.
class DirectCall : public Call, public QObject
{
public:
    DirectCall()
    {
        for (int i = 0; i < kBoards; ++i) {
            hosts[size_t(i)].call = this;
            hosts[size_t(i)].from = i;
            boards[size_t(i)]->setDelegate(&hosts[size_t(i)]);
        }
    }

private:
    struct Host : DoodleLayoutDelegate
    {
        DirectCall *call = nullptr;
        int from = 0;
        void onDoodleActionGenerated(const DoodleActionPtr &action) override
        {
            const QString text = DoodleTranslate::stringFromDoodleAction(action);
            for (int to = 0; to < kBoards; ++to) {
                if (to == from)
                    continue;
                DoodleLayout *board = call->boards[size_t(to)].get();
                const QString sender = call->boards[size_t(from)]->userId();
                QMetaObject::invokeMethod(
                    call,
                    [c = call, board, sender, text] {
                        board->onDoodleTextReceived(sender, text);
                        c->arrived(sender);
                    },
                    Qt::QueuedConnection);
            }
        }
    };
    std::array<Host, kBoards> hosts;
};

void runRounds(benchmark::State &state, Call &call)
{
    std::vector<double> samples;
    Round round;
    round.samples = &samples;
    int number = 0;
    for (auto _ : state) {
        const size_t before = samples.size();
        if (!call.playRound(round, number++)) {
            state.SkipWithError("a stroke did not arrive within five seconds");
            return;
        }
        const double slowest =
            *std::max_element(samples.begin() + std::ptrdiff_t(before), samples.end());
        state.SetIterationTime(slowest / 1e6);
    }
    state.counters["median_us"] = percentile(samples, 0.5);
    state.counters["p99_us"] = percentile(samples, 0.99);
    state.counters["samples"] = double(samples.size());
}

void BM_GestureToPictureThroughBroker(benchmark::State &state)
{
    Broker broker(DOODLE_MOSQUITTO, state.range(0) != 0 ? "set_tcp_nodelay true" : "");
    if (!Broker::isInstalled(DOODLE_MOSQUITTO) || !broker.start()) {
        state.SkipWithError("mosquitto could not be started (scripts/deps.sh installs it)");
        return;
    }
    BrokerCall call(broker);
    if (!call.ready()) {
        state.SkipWithError("the three boards did not all join the call");
        return;
    }
    runRounds(state, call);
}
BENCHMARK(BM_GestureToPictureThroughBroker)
    ->ArgName("broker_nodelay")
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(kRoundsPerRun)
    ->Unit(benchmark::kMicrosecond);

void BM_GestureToPictureInProcess(benchmark::State &state)
{
    DirectCall call;
    runRounds(state, call);
}
BENCHMARK(BM_GestureToPictureInProcess)
    ->UseManualTime()
    ->Iterations(kRoundsPerRun)
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    return runBoardBenchmarks(argc, argv, 2);
}
