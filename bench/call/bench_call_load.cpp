// Load on one broker: C calls of P = 5 participants, each participant drawing
// two 60-point strokes a second, every participant a real board joined through
// the real client, all in this process (one GUI thread draws every board). For
// each C: the delay from a stroke's end on its board to the other boards'
// pictures holding it (median and 99th percentile, over every arrival), the
// messages per second the broker takes in and hands out, and the broker's CPU
// (share of one core) and resident memory. mosquitto is started here on a
// free loopback port with set_tcp_nodelay; the same load then runs on the
// three-node RabbitMQ cluster of examples/call/cluster, the participants of
// each call spread over its nodes (the broker columns add up the three).
#include "CallProcesses.h"

#include "BoardBench.h"

#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QElapsedTimer>
#include <QHash>
#include <QRandomGenerator>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <cmath>
#include <functional>
#include <memory>
#include <unistd.h>

namespace {

constexpr int kParticipants = 5;
constexpr int kStrokeMs = 500; // two strokes a second
constexpr int kPoints = 60;
constexpr int kRunMs = 10000;
const QRect kFrame(0, 0, 390, 560);

// The broker's CPU time in clock ticks and its resident memory in KiB, from /proc.
struct BrokerUse
{
    qint64 ticks = 0;
    qint64 rssKiB = 0;
};

BrokerUse brokerUse(qint64 pid)
{
    BrokerUse use;
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (stat.open(QIODevice::ReadOnly)) {
        // utime and stime are fields 14 and 15, after the command in parentheses.
        const QList<QByteArray> fields = stat.readAll().split(')').last().trimmed().split(' ');
        if (fields.size() > 12)
            use.ticks = fields.at(11).toLongLong() + fields.at(12).toLongLong();
    }
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmRSS:"))
                use.rssKiB = line.mid(6).trimmed().split(' ').first().toLongLong();
        }
    }
    return use;
}

// Every participant of every call, the strokes they ended and what arrived.
class Load
{
public:
    // `brokers`: the addresses participant p of every call joins through.
    Load(const std::function<QList<DoodleCallBroker>(int)> &brokers, int calls)
    {
        for (int c = 0; c < calls; ++c) {
            for (int p = 0; p < kParticipants; ++p)
                add(brokers(p), QStringLiteral("load%1").arg(c), QStringLiteral("u%1").arg(p));
        }
    }

    bool joined()
    {
        return QTest::qWaitFor(
            [this] {
                return std::all_of(m_members.begin(), m_members.end(), [](const auto &m) {
                    return m->call->isConnected() &&
                           m->call->participants().size() == kParticipants - 1;
                });
            },
            30000);
    }

    // Every participant draws on its own timer, at a phase of its own.
    void run(int msecs)
    {
        m_clock.start();
        QRandomGenerator random(1);
        for (auto &member : m_members) {
            Member *m = member.get();
            m->timer.setInterval(kStrokeMs);
            QObject::connect(&m->timer, &QTimer::timeout, [this, m] { draw(*m); });
            QTimer::singleShot(random.bounded(kStrokeMs), &m->timer, qOverload<>(&QTimer::start));
        }
        QTest::qWait(msecs);
        for (auto &member : m_members)
            member->timer.stop();
        QTest::qWait(1000); // the last strokes arrive
    }

    std::vector<double> samples; // milliseconds
    qint64 sent = 0;
    qint64 received = 0;

private:
    struct Member
    {
        std::unique_ptr<DoodleLayout> board;
        std::unique_ptr<DoodleCall> call;
        QTimer timer;
        int strokes = 0;
    };

    void add(const QList<DoodleCallBroker> &brokers, const QString &callName, const QString &user)
    {
        auto member = std::make_unique<Member>();
        member->board = std::make_unique<DoodleLayout>(user);
        member->board->resetDoodleViewFrame(kFrame);
        member->board->showToolBar();
        member->call = std::make_unique<DoodleCall>(member->board.get(), callName);
        QObject::connect(member->call.get(), &DoodleCall::actionReceived,
                         [this, callName](const QString &sender, const QString &text) {
                             arrived(callName, sender, text);
                         });
        member->call->join(brokers);
        m_members.push_back(std::move(member));
    }

    void draw(Member &m)
    {
        DoodleLayout &board = *m.board;
        const double y = 40 + (m.strokes++ * 37) % 480;
        QPointF previous(20, y);
        board.touchesBegan({previous, previous});
        for (int i = 1; i < kPoints; ++i) {
            const QPointF next(20 + i * 5.5, y + 12 * std::sin(i * 0.4));
            board.touchesMoved({next, previous});
            previous = next;
        }
        board.touchesEnded({previous, previous});
        // The stroke just sent carries the board's clock as its stamp.
        m_ended.insert(key(m.call->callName(), board.userId(), board.clock()),
                       m_clock.nsecsElapsed());
        ++sent;
    }

    void arrived(const QString &callName, const QString &sender, const QString &text)
    {
        ++received;
        const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
        const auto ended = m_ended.constFind(key(callName, sender, action ? action->seqNo() : 0));
        if (ended != m_ended.cend())
            samples.push_back(double(m_clock.nsecsElapsed() - *ended) / 1e6);
    }

    static QString key(const QString &callName, const QString &user, quint64 stamp)
    {
        return QStringLiteral("%1/%2/%3").arg(callName, user).arg(stamp);
    }

    std::vector<std::unique_ptr<Member>> m_members;
    QHash<QString, qint64> m_ended;
    QElapsedTimer m_clock;
};

BrokerUse brokerUse(const QList<qint64> &pids)
{
    BrokerUse total;
    for (const qint64 pid : pids) {
        const BrokerUse use = brokerUse(pid);
        total.ticks += use.ticks;
        total.rssKiB += use.rssKiB;
    }
    return total;
}

void runLoad(benchmark::State &state, Load &load, const QList<qint64> &brokerPids)
{
    if (!load.joined()) {
        state.SkipWithError("not every participant joined its call");
        return;
    }
    const BrokerUse before = brokerUse(brokerPids);
    QElapsedTimer clock;
    clock.start();
    for (auto _ : state) {
        load.run(kRunMs);
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    }
    const BrokerUse after = brokerUse(brokerPids);
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    state.counters["median_ms"] = percentile(load.samples, 0.5);
    state.counters["p99_ms"] = percentile(load.samples, 0.99);
    state.counters["in_per_s"] = double(load.sent) / seconds;
    state.counters["out_per_s"] = double(load.received) / seconds;
    state.counters["broker_cpu_pct"] =
        100.0 * double(after.ticks - before.ticks) / double(sysconf(_SC_CLK_TCK)) / seconds;
    state.counters["broker_rss_mib"] = double(after.rssKiB) / 1024.0;
    state.counters["lost"] = double(load.sent * (kParticipants - 1)) - double(load.samples.size());
}

void BM_CallsOnOneBroker(benchmark::State &state)
{
    Broker broker(DOODLE_MOSQUITTO, "set_tcp_nodelay true");
    if (!Broker::isInstalled(DOODLE_MOSQUITTO) || !broker.start()) {
        state.SkipWithError("mosquitto could not be started (scripts/deps.sh installs it)");
        return;
    }
    const QList<DoodleCallBroker> address{{QStringLiteral("127.0.0.1"), broker.port()}};
    Load load([&address](int) { return address; }, int(state.range(0)));
    runLoad(state, load, {broker.processId()});
}
BENCHMARK(BM_CallsOnOneBroker)
    ->ArgName("calls")
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Arg(8)
    ->Arg(12)
    ->Arg(16)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

// The cluster is started once, for every run on it, and stopped before the
// application goes.
std::unique_ptr<RabbitCluster> g_cluster;

RabbitCluster *cluster()
{
    static bool tried = false;
    if (!tried && RabbitCluster::isInstalled()) {
        tried = true;
        g_cluster = std::make_unique<RabbitCluster>(DOODLE_CLUSTER_SCRIPT);
        if (g_cluster->start().size() != 3)
            g_cluster.reset();
    }
    return g_cluster.get();
}

void BM_CallsOnACluster(benchmark::State &state)
{
    RabbitCluster *nodes = cluster();
    if (!nodes) {
        state.SkipWithError("no RabbitMQ cluster (scripts/test.sh installs rabbitmq-server)");
        return;
    }
    // Participant p starts on node p % 3 and knows the other two.
    QList<QList<DoodleCallBroker>> orders;
    for (int first = 0; first < 3; ++first) {
        QList<DoodleCallBroker> order;
        for (int i = 0; i < 3; ++i)
            order.append({QStringLiteral("127.0.0.1"), nodes->mqttPort((first + i) % 3 + 1)});
        orders.append(order);
    }
    Load load([&orders](int p) { return orders.at(p % 3); }, int(state.range(0)));
    runLoad(state, load, {nodes->processId(1), nodes->processId(2), nodes->processId(3)});
}
BENCHMARK(BM_CallsOnACluster)
    ->ArgName("calls")
    ->Arg(1)
    ->Arg(4)
    ->Arg(8)
    ->Arg(16)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char **argv)
{
    return runBoardBenchmarks(argc, argv, 2, {}, [] { g_cluster.reset(); });
}
