#pragma once

// What the board benchmarks share: their main, a widget application (on the
// offscreen platform unless QT_QPA_PLATFORM names another) with a screen of
// the given scale, so the board's picture shows pixel for pixel as on such a
// screen; and percentiles of samples.
#include <doodle/support/DoodleScreen.h>

#include <QApplication>
#include <QByteArray>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>
#include <vector>

// `setUp` runs before the benchmarks are chosen (it may register more);
// `tearDown` runs while the application still exists.
inline int runBoardBenchmarks(int argc, char **argv, double scale,
                              const std::function<void()> &setUp = {},
                              const std::function<void()> &tearDown = {})
{
    // Another platform (xcb under a display, say) when the caller names one.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
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

// The sample below which `fraction` of them lie; 0 without samples.
inline double percentile(std::vector<double> samples, double fraction)
{
    if (samples.empty())
        return 0;
    const auto at = samples.begin() + std::ptrdiff_t(fraction * double(samples.size() - 1));
    std::nth_element(samples.begin(), at, samples.end());
    return *at;
}
