// Encoding and decoding speed of the text form, against the outer
// QJsonDocument::fromJson parse of the same text as the floor.
#include <doodle/model/DoodleTranslate.h>

#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

DoodleActionPtr makeStroke()
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(DoodleActionTypeStroke);
    action->setUserId(QStringLiteral("alice"));
    action->setBrushWidth(0.008f);
    action->setBrushColor(UIColorFromHexadecimalColor(0xFF1E88E5));
    for (int i = 0; i < 200; ++i) {
        const float t = float(i) / 199.0f;
        action->addPointWithPositionX(-0.8f + 1.6f * t, 0.3f * std::sin(t * 9.0f), 2);
    }
    return action;
}

DoodleActionPtr makeShape(qint64 type)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(QStringLiteral("bob"));
    action->setBrushWidth(0.006f);
    action->setBrushColor(UIColorFromHexadecimalColor(0xFF43A047));
    action->setX(-0.6f);
    action->setY(-0.55f);
    action->setWidth(0.5f);
    action->setHeight(0.3f);
    if (type == DoodleActionTypeText) {
        action->setText(QStringLiteral("Look here"));
        action->setTextSize(0.04f);
    }
    return action;
}

DoodleActionPtr makeAction(int which)
{
    switch (which) {
    case 0:
        return makeStroke();
    case 1:
        return makeShape(DoodleActionTypeRectangle);
    default:
        return makeShape(DoodleActionTypeText);
    }
}

void report(benchmark::State &state, const QString &text)
{
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * text.toUtf8().size());
}

void BM_Encode(benchmark::State &state, int which)
{
    const DoodleActionPtr action = makeAction(which);
    for (auto _ : state)
        benchmark::DoNotOptimize(DoodleTranslate::stringFromDoodleAction(action));
    report(state, DoodleTranslate::stringFromDoodleAction(action));
}

void BM_Decode(benchmark::State &state, int which)
{
    const QString text = DoodleTranslate::stringFromDoodleAction(makeAction(which));
    for (auto _ : state)
        benchmark::DoNotOptimize(DoodleTranslate::doodleActionFromString(text));
    report(state, text);
}

// The floor: the outer parse alone, from the UTF-8 bytes.
void BM_ParseFloor(benchmark::State &state, int which)
{
    const QString text = DoodleTranslate::stringFromDoodleAction(makeAction(which));
    const QByteArray utf8 = text.toUtf8();
    for (auto _ : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(utf8));
    report(state, text);
}

} // namespace

BENCHMARK_CAPTURE(BM_Encode, stroke200, 0);
BENCHMARK_CAPTURE(BM_Encode, rect, 1);
BENCHMARK_CAPTURE(BM_Encode, text, 2);
BENCHMARK_CAPTURE(BM_Decode, stroke200, 0);
BENCHMARK_CAPTURE(BM_Decode, rect, 1);
BENCHMARK_CAPTURE(BM_Decode, text, 2);
BENCHMARK_CAPTURE(BM_ParseFloor, stroke200, 0);
BENCHMARK_CAPTURE(BM_ParseFloor, rect, 1);
BENCHMARK_CAPTURE(BM_ParseFloor, text, 2);

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
