// Costs of the canvas at phone resolution (390 x 844 points at scale 3):
// every primitive painted in place against the same primitive composed into
// a fresh full-surface picture, one widget repaint after a small stroke, and
// the bounded cost of bad input.
#include "BoardBench.h"

#include <doodle/canvas/ZQDoodleDrawView.h>
#include <doodle/canvas/ZQDoodleView.h>

#include <QPainter>
#include <QtMath>

#include <benchmark/benchmark.h>

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

namespace {
constexpr double kScale = 3.0;
const QSize kBoard(390, 844);

using Draw = std::function<void(ZQDoodleDrawView &)>;

// A finger stroke: one move-to and quadratic segments, about 150 points long.
QPainterPath fingerStroke(QPointF origin)
{
    QPainterPath path(origin);
    for (int i = 1; i <= 20; ++i) {
        const QPointF control = origin + QPointF(7.5 * i - 3.75, 20 * std::sin(i * 0.6));
        path.quadTo(control, origin + QPointF(7.5 * i, 20 * std::sin(i * 0.6 + 0.3)));
    }
    return path;
}

QImage photo()
{
    QImage image(300, 300, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::darkYellow);
    image.setDevicePixelRatio(kScale);
    return image;
}

const std::vector<std::pair<const char *, Draw>> &primitives()
{
    static const QImage picture = photo();
    static const std::vector<std::pair<const char *, Draw>> list = {
        {"stroke",
         [](auto &v) {
             v.drawInCacheWithPath(fingerStroke({100, 300}), 5, Qt::red);
         }},
        {"eraser",
         [](auto &v) {
             v.eraseInCacheWithPath(fingerStroke({100, 310}), 20);
         }},
        {"rectangle",
         [](auto &v) {
             v.rectangleInCacheWithRect({80, 200, 100, 80}, 5, Qt::blue);
         }},
        {"ellipse",
         [](auto &v) {
             v.ellipseInCacheWithRect({80, 200, 100, 80}, 5, Qt::blue);
         }},
        {"arrow",
         [](auto &v) {
             v.arrowInCacheWithStartPoint({50, 500}, {200, 420}, 5, Qt::red);
         }},
        {"text",
         [](auto &v) {
             v.textInCacheWithStartPoint({40, 600}, "Hello doodle", 20, Qt::black);
         }},
        {"image",
         [](auto &v) {
             v.drawImage(picture, {150, 100, 100, 100});
         }},
    };
    return list;
}

void prepare(ZQDoodleDrawView &view)
{
    view.resize(kBoard);
    view.drawInCacheWithPath(fingerStroke({20, 100}), 8, Qt::green);
}

void inPlace(benchmark::State &state, const Draw &draw)
{
    ZQDoodleDrawView view;
    prepare(view);
    for (auto _ : state)
        draw(view);
}

// The baseline: a fresh full-surface picture per primitive, the old picture
// stretched into it, then the shape.
void composedFresh(benchmark::State &state, const Draw &draw)
{
    ZQDoodleDrawView view;
    prepare(view);
    for (auto _ : state) {
        const QImage old = view.cacheImage();
        QImage fresh(QSize(kBoard) * kScale, QImage::Format_ARGB32_Premultiplied);
        fresh.setDevicePixelRatio(kScale);
        fresh.fill(Qt::transparent);
        QPainter painter(&fresh);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(QPointF(), QSizeF(kBoard)), old);
        painter.end();
        view.setCacheImage(fresh);
        draw(view);
    }
}

// A preview on a temp canvas of the board: the canvas is emptied and the
// shape drawn again, as a finger moves.
void boardPreview(benchmark::State &state)
{
    ZQDoodleView board(QRect(QPoint(), kBoard));
    double shift = 0;
    for (auto _ : state) {
        shift = shift > 50 ? 0 : shift + 1;
        board.rectInTempWithPath({80 + shift, 200, 100, 80}, 5, Qt::blue);
    }
}

// One repaint of a shown board after a small stroke: only the stroke's
// rectangle, against the whole board.
void boardRepaint(benchmark::State &state, bool wholeBoard)
{
    ZQDoodleView board(QRect(QPoint(), kBoard));
    board.setBackgroundColor(Qt::white);
    board.show();
    QCoreApplication::processEvents();
    board.drawInCacheWithPath(fingerStroke({20, 100}), 8, Qt::green);
    QPainterPath small(QPointF(200, 400));
    small.quadTo(205, 395, 212, 404);
    const QRect dirty(190, 390, 30, 24);
    for (auto _ : state) {
        board.drawInTempWithPath(small, 5, Qt::red);
        if (wholeBoard)
            board.repaint();
        else
            board.repaint(dirty);
    }
}

const std::vector<std::pair<const char *, Draw>> &badInput()
{
    static const QString megabyte(1 << 20, QChar('m'));
    static const std::vector<std::pair<const char *, Draw>> list = {
        {"width 1e30",
         [](auto &v) {
             v.drawInCacheWithPath(fingerStroke({100, 300}), 1e30, Qt::red);
         }},
        {"width nan",
         [](auto &v) {
             v.drawInCacheWithPath(fingerStroke({100, 300}), NAN, Qt::red);
         }},
        {"ellipse width 1e30",
         [](auto &v) {
             v.ellipseInCacheWithRect({80, 200, 10, 8}, 1e30, Qt::blue);
         }},
        {"rectangle at 1e30",
         [](auto &v) {
             v.rectangleInCacheWithRect({-1e30, -1e30, 2e30, 2e30}, 5, Qt::blue);
         }},
        {"arrow start = end",
         [](auto &v) {
             v.arrowInCacheWithStartPoint({5, 5}, {5, 5}, 5, Qt::red);
         }},
        {"text size 1e9",
         [](auto &v) {
             v.textInCacheWithStartPoint({0, -500}, "W", 1e9, Qt::black);
         }},
        {"text 1 MB",
         [](auto &v) {
             v.textInCacheWithStartPoint({0, 0}, megabyte, 20, Qt::black);
         }},
        {"image at 1e30",
         [](auto &v) {
             v.drawImage(photo(), {-1e30, -1e30, 2e30, 2e30});
         }},
    };
    return list;
}

void registerAll()
{
    for (const auto &[name, draw] : primitives()) {
        benchmark::RegisterBenchmark((std::string("InPlace/") + name).c_str(), inPlace, draw)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((std::string("ComposedFresh/") + name).c_str(), composedFresh,
                                     draw)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("BoardPreview/rectangle", boardPreview)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("Repaint/strokeRect", boardRepaint, false)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("Repaint/wholeBoard", boardRepaint, true)
        ->Unit(benchmark::kMicrosecond);
    for (const auto &[name, draw] : badInput())
        benchmark::RegisterBenchmark((std::string("BadInput/") + name).c_str(), inPlace, draw)
            ->Unit(benchmark::kMicrosecond);
}
} // namespace

int main(int argc, char **argv)
{
    return runBoardBenchmarks(argc, argv, kScale, registerAll);
}
