#pragma once

// The main of a board benchmark: a widget application on the offscreen
// platform with a screen of the given scale, so the board's picture shows
// pixel for pixel as on such a screen, then Google Benchmark.
#include <doodle/support/DoodleScreen.h>

#include <QApplication>
#include <QByteArray>

#include <benchmark/benchmark.h>

#include <functional>

// `setUp` runs before the benchmarks are chosen (it may register more);
// `tearDown` runs while the application still exists.
inline int runBoardBenchmarks(int argc, char **argv, double scale,
                              const std::function<void()> &setUp = {},
                              const std::function<void()> &tearDown = {})
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
    QApplication app(argc, argv);
    DoodleScreen::setScaleOverride(scale);
    if (setUp)
        setUp();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (tearDown)
        tearDown();
    return 0;
}
