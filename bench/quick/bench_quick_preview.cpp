// The Quick board's stroke preview: one pointer move and the frame that shows
// it, on the software scene graph, for a 390 x 844 board at scale 3. At 120 Hz
// a frame has 8.3 ms. The frame is taken with grabWindow, which renders the
// scene as a frame on screen does and adds a copy of the window's pixels.
#include <DoodleBoard.h>

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QSGRendererInterface>

namespace {

const QSize kBoard(390, 844);

void sendMouse(QQuickWindow &window, QEvent::Type type, const QPointF &at)
{
    const Qt::MouseButtons buttons =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, window.mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
}

void BM_QuickStrokePreviewFrame(benchmark::State &state)
{
    QQuickWindow window;
    window.resize(kBoard);
    auto *board = new DoodleBoard(window.contentItem());
    board->setSize(kBoard);
    board->setUserId(QStringLiteral("me"));
    board->setBrushWidth(4);
    window.show();
    QCoreApplication::processEvents();
    sendMouse(window, QEvent::MouseButtonPress, {20, 20});
    int step = 0;
    for (auto _ : state) {
        // A zigzag down the board, so that every move draws a new segment.
        const double x = 20 + (step % 2 ? 350 : 0);
        const double y = 20 + (step / 2) % 800;
        ++step;
        sendMouse(window, QEvent::MouseMove, {x, y});
        benchmark::DoNotOptimize(window.grabWindow());
    }
    sendMouse(window, QEvent::MouseButtonRelease, {20, 20});
    state.counters["scale"] = window.effectiveDevicePixelRatio();
}
BENCHMARK(BM_QuickStrokePreviewFrame)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    // Without a display the offscreen platform; the screen's scale is 3
    // unless the caller chose one.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR"))
        qputenv("QT_SCALE_FACTOR", "3");
    QGuiApplication app(argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
