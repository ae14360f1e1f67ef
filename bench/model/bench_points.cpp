// Heap held per stroke point: glibc's in-use heap (mallinfo2, small and
// mapped blocks, chunk headers included) before and after building strokes
// that stay alive, divided by their points. "QStringList points" builds the
// layout strokes used to hold (three strings per point) as the baseline.
#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QJsonArray>
#include <QJsonObject>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kStrokes = 100;

double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd);
}

float wave(int i, int points)
{
    const float t = float(i) / float(points - 1);
    return 0.3f * std::sin(t * 9.0f);
}

float along(int i, int points)
{
    return -0.8f + 1.6f * float(i) / float(points - 1);
}

DoodleActionPtr stroke(int points)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(DoodleActionTypeStroke);
    action->setUserId(QStringLiteral("alice"));
    action->setBrushWidth(0.008f);
    for (int i = 0; i < points; ++i)
        action->addPointWithPositionX(along(i, points), wave(i, points), 2);
    return action;
}

// Points as a client writes them when it does not use "%f": shortest decimals.
QString shortestText(int points)
{
    const auto number = [](float value) {
        return QString::number(double(value), 'g', QLocale::FloatingPointShortest);
    };
    QJsonArray texts;
    for (int i = 0; i < points; ++i) {
        const QStringList point{QStringLiteral("2"), number(along(i, points)),
                                number(wave(i, points))};
        texts.append(DoodleTranslate::objToJson(QJsonArray::fromStringList(point)));
    }
    QJsonObject object;
    object.insert(QLatin1String(PelDoodleActionTypeKey), DoodleActionTypeStroke);
    object.insert(QLatin1String(PelDoodlePositionKey), DoodleTranslate::objToJson(texts));
    return DoodleTranslate::objToJson(object);
}

template <typename Build> void measure(benchmark::State &state, Build build)
{
    const int points = int(state.range(0));
    for (auto _ : state) {
        const double before = heapInUse();
        const auto held = build(points);
        state.counters["bytes_per_point"] = (heapInUse() - before) / (kStrokes * points);
        benchmark::DoNotOptimize(held.data());
    }
}

void BM_QStringListPoints(benchmark::State &state)
{
    measure(state, [](int points) {
        std::vector<QList<QStringList>> strokes(kStrokes);
        for (QList<QStringList> &list : strokes) {
            for (int i = 0; i < points; ++i) {
                list.append(QStringList{DoodleNumber::printfD(2),
                                        DoodleNumber::printfF(double(along(i, points))),
                                        DoodleNumber::printfF(double(wave(i, points)))});
            }
        }
        return strokes;
    });
}

void BM_ActionAddedPoints(benchmark::State &state)
{
    measure(state, [](int points) {
        std::vector<DoodleActionPtr> strokes;
        for (int s = 0; s < kStrokes; ++s)
            strokes.push_back(stroke(points));
        return strokes;
    });
}

void BM_ActionDecoded(benchmark::State &state)
{
    const QString text = DoodleTranslate::stringFromDoodleAction(stroke(int(state.range(0))));
    measure(state, [&text](int) {
        std::vector<DoodleActionPtr> strokes;
        for (int s = 0; s < kStrokes; ++s)
            strokes.push_back(DoodleTranslate::doodleActionFromString(text));
        return strokes;
    });
}

void BM_ActionDecodedShortest(benchmark::State &state)
{
    const QString text = shortestText(int(state.range(0)));
    measure(state, [&text](int) {
        std::vector<DoodleActionPtr> strokes;
        for (int s = 0; s < kStrokes; ++s)
            strokes.push_back(DoodleTranslate::doodleActionFromString(text));
        return strokes;
    });
}

} // namespace

BENCHMARK(BM_QStringListPoints)->Arg(200)->Arg(2000)->Iterations(3);
BENCHMARK(BM_ActionAddedPoints)->Arg(200)->Arg(2000)->Iterations(3);
BENCHMARK(BM_ActionDecoded)->Arg(200)->Arg(2000)->Iterations(3);
BENCHMARK(BM_ActionDecodedShortest)->Arg(200)->Iterations(3);

BENCHMARK_MAIN();
