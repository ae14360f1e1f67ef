#include <doodle/canvas/ZQDoodleDrawView.h>
#include <doodle/canvas/ZQDoodleView.h>
#include <doodle/support/DoodleScreen.h>

#include "LogCapture.h"

#include <QApplication>
#include <QBitmap>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLineEdit>
#include <QPainter>
#include <QtTest>

#include <cmath>

// One board call: s stroke, e eraser, r rectangle and o ellipse in the
// rectangle from a to b, > arrow from a to b, d dot at a, t text at a (w is its
// size; M a 1 MB text, E an empty one), i picture in the rectangle turned by
// code w, and T the cache canvas's own stroke that first empties it.
struct Shape
{
    char kind;
    QPointF a, b;
    double w;
    QColor color = Qt::red;
};
using Points = QList<QPointF>;
Q_DECLARE_METATYPE(Shape)

namespace {
constexpr double kScale = 2.0;

// Bounding rectangle, in points, of the pixels at least half covered.
QRectF paintedBounds(const QImage &image)
{
    const QRect box = QRegion(QBitmap::fromImage(image.createAlphaMask())).boundingRect();
    return QRectF(QPointF(box.topLeft()) / kScale, QSizeF(box.size()) / kScale);
}

// One letter per point: r, g or b for opaque red, green or blue, '.' for
// transparent, '?' for anything else and '-' where there is no picture; with
// no points, "*" when anything is painted.
QString look(const QImage &image, const Points &points)
{
    QString letters = points.isEmpty() && !paintedBounds(image).isEmpty() ? "*" : "";
    for (const QPointF &point : points) {
        const QPoint pixel = (point * kScale).toPoint();
        const QColor c = image.rect().contains(pixel) ? image.pixelColor(pixel) : QColor();
        const int main = (c.red() > 215) + 2 * (c.green() > 215) + 4 * (c.blue() > 215);
        const bool pure = c.alpha() > 215 && c.red() + c.green() + c.blue() < 295;
        letters += !c.isValid() ? '-' : c.alpha() == 0 ? '.' : pure ? "?rg?b???"[main] : '?';
    }
    return letters;
}

QImage blank(QSize points)
{
    QImage image(points * kScale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(kScale);
    image.fill(Qt::transparent);
    return image;
}

QPainterPath line(QPointF from, QPointF to)
{
    QPainterPath path(from);
    path.lineTo(to);
    return path;
}

QImage halves() // red left, blue right
{
    static const QRgb pixels[] = {0xffff0000, 0xff0000ff};
    return QImage(reinterpret_cast<const uchar *>(pixels), 2, 1, QImage::Format_ARGB32);
}

// The shape through the board: a Temp member (temp) or the Catch one.
void apply(ZQDoodleView &v, const Shape &s, quint64 i = 0, bool temp = false)
{
    const QRectF r(s.a, s.b);
    const QString text = s.kind == 'M' ? QString(1 << 20, 'm') : s.kind == 'E' ? "" : "Doodle";
    switch (s.kind) {
    case 's':
        return temp ? v.drawInTempWithPath(line(s.a, s.b), s.w, s.color, i)
                    : v.drawInCacheWithPath(line(s.a, s.b), s.w, s.color, i);
    case 'r':
        return temp ? v.rectInTempWithPath(r, s.w, s.color, i)
                    : v.rectInCatchWithPath(r, s.w, s.color, i);
    case 'o':
        return temp ? v.ellipseInTempWithPath(r, s.w, s.color, i)
                    : v.ellipseInCatchWithPath(r, s.w, s.color, i);
    case '>':
        return temp ? v.arrowInTempWithStartPoint(s.a, s.b, s.w, s.color, i)
                    : v.arrowInCatchWithStartPoint(s.a, s.b, s.w, s.color, i);
    case 'e':
        return v.eraseInCacheWithPath(line(s.a, s.b), s.w);
    case 'i':
        return v.drawImageInCache(halves(), r, qint32(s.w));
    case 'T':
        return v.cacheCanvas()->drawInTempWithPath(line(s.a, s.b), s.w, s.color);
    case 'd':
        return v.cacheCanvas()->dotInCacheWithPoint(s.a, s.w, s.color);
    default:
        return v.textInCatchWithStartPoint(s.a, text, s.w, s.color);
    }
}

// What temp canvases 0 and 1 and the cache canvas show at the probes.
QString layers(ZQDoodleView &board, const Points &probes)
{
    QString shown;
    for (auto *c : {board.getTempCanvas(0), board.getTempCanvas(1), board.cacheCanvas()})
        shown += look(c->cacheImage(), probes) + ' ';
    return shown.trimmed();
}

struct Recorder : ZQDoodleViewDelegate
{
    QStringList texts;
    void textEditDone(QLineEdit *field) override { texts << field->text(); }
};
} // namespace

class TestCanvas : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(kScale); }

    // Colour inside each shape, none outside; bad input draws nothing ("-") and
    // logs why, or draws something ("*") or the whole board ("rr" at two corners).
    void shapes_data()
    {
        QTest::addColumn<Shape>("shape");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<Points>("points");
        QTest::addColumn<QSize>("size");
        const auto row = [](const char *name, Shape shape, const char *expected,
                            Points points = {{0, 0}}, QSize size = {200, 160}) {
            QTest::newRow(name) << shape << QString(expected) << points << size;
        };
        const double nan = std::nan(""), inf = INFINITY;
        const Points corners = {{0, 0}, {199, 159}};
        row("stroke, round caps", {'s', {40, 50}, {160, 50}, 20}, "rrrr...",
            {{100, 50}, {32, 50}, {40, 58}, {167, 52}, {100, 63}, {27, 50}, {31, 41}});
        row("rectangle, mitred", {'r', {50, 50}, {150, 110}, 10}, "rrrr..",
            {{46, 46}, {154, 114}, {100, 50}, {50, 80}, {100, 80}, {43, 43}});
        // A flat rectangle is a line as long as its drag, not stretched by its miters.
        row("rectangle, flat", {'r', {20, 20}, {60, 20}, 6}, "rr.", {{20, 20}, {40, 20}, {66, 20}});
        row("dot", {'d', {50, 30}, {}, 10}, "r.", {{53, 30}, {57, 30}});
        row("ellipse, inscribed", {'o', {50, 50}, {150, 110}, 4}, "rrrr..",
            {{50, 80}, {100, 50}, {150, 80}, {100, 110}, {100, 80}, {53, 53}});
        // Width 6: apex at (180, 100), base corners at (162, 91) and (162, 109).
        const Points arrow = {{179, 100}, {160, 89.5}, {160, 110.5}, {100, 102}, {162, 85},
                              {162, 115}, {157, 106},  {100, 104},   {189, 100}};
        row("arrow head", {'>', {20, 100}, {180, 100}, 6}, "rrrr.....", arrow);
        // A red-left, blue-right picture in the lower right quarter, turned by code.
        const Points quarters = {{125, 85},  {175, 85}, {125, 135},
                                 {175, 135}, {98, 110}, {150, 58}};
        row("picture as is", {'i', {100, 60}, {200, 160}, 0}, "rbrb..", quarters);
        row("picture right", {'i', {100, 60}, {200, 160}, 1}, "rrbb..", quarters);
        row("picture down", {'i', {100, 60}, {200, 160}, 2}, "brbr..", quarters);
        row("picture left", {'i', {100, 60}, {200, 160}, 3}, "bbrr..", quarters);
        row("picture code 4", {'i', {100, 60}, {200, 160}, 4}, "rbrb..", quarters);
        row("width nan", {'s', {10, 10}, {20, 20}, nan}, "-");
        row("width < 0", {'s', {10, 10}, {20, 20}, -3}, "-");
        row("width 0", {'s', {10, 10}, {20, 20}, 0}, "*", {});
        row("width 1e30", {'s', {10, 10}, {20, 20}, 1e30}, "rr", corners);
        row("ellipse 1e30", {'o', {0, 0}, {9, 5}, 1e30}, "rr", corners);
        row("no bounds", {'s', {1, 1}, {2, 2}, 5}, "-", {{0, 0}}, {0, 0});
        row("arrow to itself", {'>', {5, 5}, {5, 5}, 4}, "-");
        row("arrow nan", {'>', {nan, 5}, {9, 5}, 4}, "-");
        row("rect inf", {'r', {0, 0}, {inf, 5}, 4}, "-");
        row("ellipse inf", {'o', {0, 0}, {inf, 5}, 4}, "-");
        row("picture nan", {'i', {nan, 0}, {4, 4}, 0}, "-");
        row("text size 0", {'t', {5, 5}, {}, 0}, "-");
        row("text size nan", {'t', {5, 5}, {}, nan}, "-");
        row("text size 1e9", {'t', {0, 0}, {}, 1e9}, "*", {});
        row("text 1 MB", {'M', {0, 0}, {}, 20}, "*", {});
        row("text empty", {'E', {5, 5}, {}, 20}, "..", {{5, 5}, {15, 15}});
    }

    void shapes()
    {
        QFETCH(Shape, shape);
        QFETCH(QString, expected);
        QFETCH(Points, points);
        QFETCH(QSize, size);
        LogCapture log;
        ZQDoodleView board;
        board.resize(size);
        apply(board, shape);
        QCOMPARE(look(board.cacheCanvas()->cacheImage(), points), expected);
        if (expected == "-" && !size.isEmpty())
            QCOMPARE(log.lines().filter("skipped").size(), 1);
    }

    // Painting in place gives the pixels of composing old picture and shape afresh,
    // also for erasing, clearing and a picture reaching past the edge.
    void inPlaceEqualsFreshComposition()
    {
        const QList<Shape> steps = {{'s', {10, 10}, {150, 90}, 9},
                                    {'e', {0, 40}, {200, 45}, 12},
                                    {'o', {60, 10}, {160, 80}, 3, QColor(0, 128, 0, 128)},
                                    {'i', {-20, 30}, {80, 60}, 0},
                                    {'T', {100, 10}, {120, 30}, 7},
                                    {'s', {5, 95}, {195, 5}, 3, Qt::blue}};
        ZQDoodleView inPlace(QRect(0, 0, 200, 100)), fresh(QRect(0, 0, 200, 100));
        for (const Shape &step : steps) {
            QImage next = blank({200, 100});
            QPainter(&next).drawImage(QRectF(0, 0, 200, 100), fresh.cacheCanvas()->cacheImage());
            // The cache canvas's own stroke starts from an empty surface on both sides.
            fresh.cacheCanvas()->setCacheImage(step.kind == 'T' ? QImage() : next);
            apply(fresh, step);
            apply(inPlace, step);
            QCOMPARE(inPlace.cacheCanvas()->cacheImage(), fresh.cacheCanvas()->cacheImage());
        }
    }

    // Shown after a resize, the old picture is stretched, exactly as one smooth
    // drawing of it gives at whole and fractional scales; drawing goes on it.
    void resizeStretchesOldPicture_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::newRow("1.5") << 1.5;
        QTest::newRow("3") << 3.0;
    }
    void resizeStretchesOldPicture()
    {
        QFETCH(double, ratio);
        ZQDoodleDrawView view;
        view.resize(100, 100);
        view.drawInCacheWithPath(line({0, 25}, {100, 25}), 50, QColor(255, 0, 0, 128));
        view.resize(150, 311);
        QImage shown(QSize(150, 311) * ratio, QImage::Format_ARGB32_Premultiplied);
        shown.setDevicePixelRatio(ratio);
        shown.fill(Qt::white);
        QImage expected = shown;
        view.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
        QPainter painter(&expected);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(0, 0, 150, 311), view.cacheImage());
        painter.end();
        QCOMPARE(shown, expected);
        view.ellipseInCacheWithRect({120, 250, 20, 20}, 2, Qt::blue);
        QCOMPARE(look(view.cacheImage(), {{140, 10}, {10, 200}, {120, 260}}), "?.b");
    }

    // A large picture stretched to a new size is repainted a band at a time;
    // every band reaches the screen.
    void everyBandOfAStretchedPictureReachesTheScreen()
    {
        ZQDoodleDrawView view;
        view.resize(1200, 1000);
        view.drawInCacheWithPath(line({0, 0}, {1200, 1000}), 40, Qt::blue);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.resize(1000, 1200);
        QImage expected(view.size() * view.devicePixelRatio(), QImage::Format_RGB32);
        expected.setDevicePixelRatio(view.devicePixelRatio());
        expected.fill(view.palette().window().color());
        QPainter painter(&expected);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(view.rect()), view.cacheImage());
        painter.end();
        const auto shown = [&view] {
            return view.screen()
                ->grabWindow(view.winId())
                .toImage()
                .convertToFormat(QImage::Format_RGB32);
        };
        QTRY_COMPARE(shown(), expected);
    }

    // A picture of another scale is resampled smoothly: a line one of its pixels
    // wide, at scale 3, partly covers the pixels either side of it at scale 2.
    void aPictureOfAnotherScaleIsResampledSmoothly()
    {
        QImage picture(30, 30, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter(&picture).fillRect(QRect(16, 0, 1, 30), Qt::red);
        picture.setDevicePixelRatio(3);
        ZQDoodleDrawView view;
        view.resize(10, 10);
        view.setCacheImage(picture);
        QImage shown = blank({10, 10});
        view.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
        QCOMPARE(look(shown, {{5, 5}, {5.5, 5}, {4, 5}}), "??.");
    }

    // A stroke repaints the rectangle around it, not the whole board.
    void repaintsOnlyTheChangedRectangle()
    {
        struct PaintSpy : QObject
        {
            QRegion painted;
            bool eventFilter(QObject *, QEvent *event) override
            {
                if (event->type() == QEvent::Paint)
                    painted |= static_cast<QPaintEvent *>(event)->region();
                return false;
            }
        } spy;
        ZQDoodleView board(QRect(0, 0, 300, 400));
        board.show();
        QVERIFY(QTest::qWaitForWindowExposed(&board));
        board.cacheCanvas()->installEventFilter(&spy);
        board.drawInCacheWithPath(line({100, 100}, {120, 110}), 6, Qt::red);
        QTRY_VERIFY(!spy.painted.isEmpty());
        const QRect bounds = spy.painted.boundingRect();
        QVERIFY(bounds.contains(QRect(97, 97, 26, 16)));
        QCOMPARE_LT(bounds.width() + bounds.height(), 60);
    }

    // The text's pixels sit where a top-aligned line laid out at the point puts them.
    void textAtThePoint()
    {
        LogCapture log;
        ZQDoodleDrawView view;
        view.resize(300, 100);
        view.textInCacheWithStartPoint({40.5, 20}, "Hello", 24, Qt::red);
        QCOMPARE(log.lines(), QStringList{"textInCacheWithStartPoint {40.5, 20},Hello,24.000000"});
        QImage expected = blank({300, 100});
        QPainter painter(&expected);
        QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        font.setPixelSize(24);
        painter.setFont(font);
        painter.drawText(QRectF(40.5, 20, 300, 100), Qt::AlignLeft | Qt::AlignTop, "Hello");
        painter.end();
        const QRectF drawn = paintedBounds(view.cacheImage()), wanted = paintedBounds(expected);
        QVERIFY(!wanted.isEmpty());
        for (auto edge : {&QRectF::left, &QRectF::top, &QRectF::right, &QRectF::bottom})
            QCOMPARE_LE(std::abs((drawn.*edge)() - (wanted.*edge)()), 1.0);
    }

    void previewAndCommit_data()
    {
        QTest::addColumn<char>("kind");
        for (char kind : {'r', 'o', '>', 's'})
            QTest::addRow("%c", kind) << kind;
    }

    // A Temp member shows only the latest shape (strokes accumulate on purpose);
    // a Catch member commits to the cache canvas and empties only its preview.
    // The temp canvases only ever grow in number.
    void previewAndCommit()
    {
        QFETCH(char, kind);
        ZQDoodleView board(QRect(0, 0, 200, 200));
        QCOMPARE(board.tempCanvasCount(), 1u);
        board.setTempCanvasCount(2);
        board.setTempCanvasCount(1);
        QCOMPARE(board.tempCanvasCount(), 2u);
        QVERIFY(!board.getTempCanvas(2) && !board.getTempCanvas(quint64(-1)));
        // Every kind paints the middle of its top edge, where the probes are.
        const QPointF a(20, 20), b(120, 120), d(40, kind == 'r' || kind == 'o' ? 30 : 0);
        const Points probes = {a + QPointF(20, 0), b + QPointF(20, 0)};
        const auto draw = [&](QPointF p, quint64 i, bool temp) {
            apply(board, {kind, p, p + d, 8}, i, temp);
        };
        draw(a, 1, true);
        draw(a, 0, true);
        draw(b, 0, true);
        QCOMPARE(layers(board, probes), kind == 's' ? "rr r. --" : ".r r. --");
        draw(b, 0, false);
        QCOMPARE(layers(board, probes), "-- r. .r");
        draw(a, 7, false); // no such temp canvas: still commits
        QCOMPARE(layers(board, probes), "-- r. rr");
    }

    // Erasing and clearing empty only the drawing, never the picture or colour behind it.
    void eraserAndClearKeepBackground()
    {
        QImage blue(10, 10, QImage::Format_ARGB32_Premultiplied);
        blue.fill(Qt::blue);
        ZQDoodleView board(QRect(0, 0, 200, 100), blue); // fitted to x 50..150
        board.setTempCanvasCount(2);
        board.setBackgroundColor(Qt::green);
        board.drawInCacheWithPath(line({0, 50}, {200, 50}), 40, Qt::red);
        board.eraseInCacheWithPath(line({100, 0}, {100, 100}), 20);
        board.drawInTempWithPath(line({0, 65}, {50, 65}), 6, Qt::blue, 1);
        // Erased, cache, cache over picture, picture, colour, preview over cache.
        const Points points = {{100, 50}, {20, 50}, {120, 50}, {120, 20}, {20, 20}, {20, 65}};
        QCOMPARE(look(board.convertViewToImage(), points), "brrbgb");
        board.clearAll();
        QCOMPARE(look(board.convertViewToImage(), points), "bgbbgg");
    }

    // The field takes the text's size and colour and the focus, and reports once.
    void textField()
    {
        Recorder recorder;
        ZQDoodleView board(QRect(0, 0, 300, 200));
        board.setDelegate(&recorder);
        board.show();
        QApplication::setActiveWindow(&board);
        QVERIFY(QTest::qWaitForWindowActive(&board));
        board.textInTempWithStartPoint({30, 40}, "ignored", 18, Qt::blue);
        QLineEdit *field = board.tempTextField();
        QVERIFY(field && field->text().isEmpty());
        QCOMPARE(QFontInfo(field->font()).pixelSize(), 18);
        QCOMPARE(field->palette().color(QPalette::Text), QColor(Qt::blue));
        QTRY_VERIFY(field->hasFocus());
        QCOMPARE(board.childAt(40, 50), field);
        QTest::keyClicks(field, "hi");
        QTest::keyClick(field, Qt::Key_Return);
        QVERIFY(!field->hasFocus());
        QTest::keyClick(field, Qt::Key_Return); // reported once only
        QCOMPARE(recorder.texts, QStringList({"hi"}));
        board.getTempCanvas(0)->cleanAllPath();
        QCOMPARE(board.childAt(40, 50), nullptr);
    }
};

QTEST_MAIN(TestCanvas)
#include "tst_canvas.moc"
