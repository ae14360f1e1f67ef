#include <doodle/canvas/ZQDoodleDrawView.h>
#include <doodle/canvas/ZQDoodleView.h>
#include <doodle/support/DoodleScreen.h>

#include "LogCapture.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QtTest>

#include <cmath>

// One primitive call: s stroke, T stroke on an emptied surface, e eraser,
// r rectangle and o ellipse in the rectangle from a to b, > arrow from a to b,
// t text at a (w is its size), M a 1 MB text, i picture in the rectangle.
struct Shape
{
    char kind;
    QPointF a, b;
    double w;
    QColor color = QColor(255, 0, 0);
};
using Points = QList<QPointF>;
Q_DECLARE_METATYPE(Shape)

namespace {
constexpr double kScale = 2.0;
const QColor kRed(255, 0, 0);

QColor at(const QImage &image, const QPointF &point)
{
    const QPoint pixel = (point * image.devicePixelRatio()).toPoint();
    return image.rect().contains(pixel) ? image.pixelColor(pixel) : QColor();
}

bool near(const QColor &a, const QColor &b, int tolerance = 8)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance &&
           std::abs(a.alpha() - b.alpha()) <= tolerance;
}

// Bounding rectangle, in points, of the pixels that are not transparent.
QRectF paintedBounds(const QImage &image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 0)
                box |= QRect(x, y, 1, 1);
    const double ratio = image.devicePixelRatio();
    return QRectF(box.topLeft() / ratio, box.size() / ratio);
}

QByteArray text(const QPointF &point)
{
    return QByteArray::number(point.x()) + ", " + QByteArray::number(point.y());
}

QByteArray text(const QRectF &rect)
{
    return text(rect.topLeft()) + " " + text(rect.bottomRight());
}

QPainterPath line(QPointF from, QPointF to)
{
    QPainterPath path(from);
    path.lineTo(to);
    return path;
}

QImage halves()
{
    QImage picture(2, 2, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::blue);
    picture.setPixelColor(0, 0, kRed);
    picture.setPixelColor(0, 1, kRed);
    return picture;
}

void apply(ZQDoodleDrawView &v, const Shape &s)
{
    switch (s.kind) {
    case 's':
        return v.drawInCacheWithPath(line(s.a, s.b), s.w, s.color);
    case 'T':
        return v.drawInTempWithPath(line(s.a, s.b), s.w, s.color);
    case 'e':
        return v.eraseInCacheWithPath(line(s.a, s.b), s.w);
    case 'r':
        return v.rectangleInCacheWithRect(QRectF(s.a, s.b), s.w, s.color);
    case 'o':
        return v.ellipseInCacheWithRect(QRectF(s.a, s.b), s.w, s.color);
    case '>':
        return v.arrowInCacheWithStartPoint(s.a, s.b, s.w, s.color);
    case 't':
        return v.textInCacheWithStartPoint(s.a, "Doodle", s.w, s.color);
    case 'M':
        return v.textInCacheWithStartPoint(s.a, QString(1 << 20, 'm'), s.w, s.color);
    case 'i':
        return v.drawImage(halves(), QRectF(s.a, s.b));
    }
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
    void shapes_data();
    void shapes();
    void badInput_data();
    void badInput();
    void inPlaceEqualsFreshComposition();
    void resizeStretchesOldPicture();
    void repaintsOnlyTheChangedRectangle();
    void textAtThePoint();
    void tempCanvases();
    void previewAndCommit_data();
    void previewAndCommit();
    void eraserAndClearKeepBackground();
    void imageOrientation_data();
    void imageOrientation();
    void textField();
};

// Colour inside each shape and transparency outside, at places the geometry
// decides (round caps, mitred corners, the arrow head's corners).
void TestCanvas::shapes_data()
{
    QTest::addColumn<Shape>("shape");
    QTest::addColumn<Points>("inside");
    QTest::addColumn<Points>("outside");
    QTest::newRow("stroke, round caps")
        << Shape{'s', {40, 50}, {160, 50}, 20} << Points{{100, 50}, {32, 50}, {40, 58}, {167, 52}}
        << Points{{100, 63}, {27, 50}, {31, 41}};
    QTest::newRow("rectangle, mitred")
        << Shape{'r', {50, 50}, {150, 110}, 10} << Points{{46, 46}, {154, 114}, {100, 50}, {50, 80}}
        << Points{{100, 80}, {43, 43}};
    QTest::newRow("ellipse, inscribed")
        << Shape{'o', {50, 50}, {150, 110}, 4} << Points{{50, 80}, {100, 50}, {150, 80}, {100, 110}}
        << Points{{100, 80}, {53, 53}};
    // Width 6: apex at (180, 100), base corners at (162, 91) and (162, 109).
    QTest::newRow("arrow head") << Shape{'>', {20, 100}, {180, 100}, 6}
                                << Points{{179, 100}, {160, 89.5}, {160, 110.5}, {100, 102}}
                                << Points{
                                       {162, 85}, {162, 115}, {157, 106}, {100, 104}, {189, 100}};
    QTest::newRow("image") << Shape{'i', {150, 100}, {250, 160}, 0}
                           << Points{{152, 102}, {160, 150}} << Points{{148, 130}, {160, 98}};
}

void TestCanvas::shapes()
{
    QFETCH(Shape, shape);
    QFETCH(Points, inside);
    QFETCH(Points, outside);
    ZQDoodleDrawView view;
    view.resize(200, 160);
    apply(view, shape);
    const QImage image = view.cacheImage();
    QCOMPARE(image.size(), QSize(400, 320));
    for (const QPointF &point : inside)
        QVERIFY2(near(at(image, point), kRed), text(point).constData());
    for (const QPointF &point : outside)
        QVERIFY2(at(image, point).alpha() == 0, text(point).constData());
}

enum class Expect
{
    Nothing,
    Something,
    Covers
};
Q_DECLARE_METATYPE(Expect)

void TestCanvas::badInput_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Shape>("shape");
    QTest::addColumn<Expect>("expect");
    const double nan = std::nan(""), inf = INFINITY;
    const QSize normal(200, 100);
    QTest::newRow("width nan") << normal << Shape{'s', {10, 10}, {20, 20}, nan} << Expect::Nothing;
    QTest::newRow("width < 0") << normal << Shape{'s', {10, 10}, {20, 20}, -3} << Expect::Nothing;
    QTest::newRow("width 0") << normal << Shape{'s', {10, 10}, {20, 20}, 0} << Expect::Something;
    QTest::newRow("width 1e30") << normal << Shape{'s', {10, 10}, {20, 20}, 1e30} << Expect::Covers;
    QTest::newRow("no bounds") << QSize(0, 0) << Shape{'s', {1, 1}, {2, 2}, 5} << Expect::Nothing;
    QTest::newRow("arrow to itself") << normal << Shape{'>', {5, 5}, {5, 5}, 4} << Expect::Nothing;
    QTest::newRow("arrow nan") << normal << Shape{'>', {nan, 5}, {9, 5}, 4} << Expect::Nothing;
    QTest::newRow("rect inf") << normal << Shape{'r', {0, 0}, {inf, 5}, 4} << Expect::Nothing;
    QTest::newRow("ellipse 1e30") << normal << Shape{'o', {0, 0}, {9, 5}, 1e30} << Expect::Covers;
    QTest::newRow("text size 0") << normal << Shape{'t', {5, 5}, {}, 0} << Expect::Nothing;
    QTest::newRow("text size nan") << normal << Shape{'t', {5, 5}, {}, nan} << Expect::Nothing;
    QTest::newRow("text size 1e9") << normal << Shape{'t', {0, 0}, {}, 1e9} << Expect::Something;
    QTest::newRow("text 1 MB") << normal << Shape{'M', {0, 0}, {}, 20} << Expect::Something;
    QTest::newRow("image nan") << normal << Shape{'i', {nan, 0}, {4, 4}, 0} << Expect::Nothing;
}

void TestCanvas::badInput()
{
    QFETCH(QSize, size);
    QFETCH(Shape, shape);
    QFETCH(Expect, expect);
    LogCapture log;
    ZQDoodleDrawView view;
    view.resize(size);
    apply(view, shape);
    const QImage image = view.cacheImage();
    QCOMPARE(image.isNull(), expect == Expect::Nothing);
    if (expect == Expect::Nothing && !size.isEmpty())
        QVERIFY(!log.lines().isEmpty() && log.lines().constLast().contains("skipped"));
    if (expect == Expect::Covers)
        QVERIFY(near(at(image, {199, 99}), kRed) && near(at(image, {0, 99}), kRed));
    if (expect == Expect::Something)
        QVERIFY(!paintedBounds(image).isEmpty());
}

// Painting into the picture gives the same pixels as composing the old
// picture and the shape into a fresh picture for every primitive.
void TestCanvas::inPlaceEqualsFreshComposition()
{
    const QList<Shape> steps = {{'s', {10, 10}, {150, 90}, 9},
                                {'r', {30, 20}, {110, 70}, 5, Qt::blue},
                                {'e', {0, 40}, {200, 45}, 12},
                                {'o', {60, 10}, {160, 80}, 3, QColor(0, 128, 0, 128)},
                                {'>', {190, 5}, {20, 90}, 4},
                                {'t', {12, 60}, {}, 17.5, Qt::darkCyan},
                                {'i', {-20, 30}, {80, 60}, 0},
                                {'T', {100, 10}, {120, 30}, 7},
                                {'s', {5, 95}, {195, 5}, 3, Qt::black}};
    ZQDoodleDrawView inPlace, fresh;
    inPlace.resize(200, 100);
    fresh.resize(200, 100);
    for (qsizetype i = 0; i < steps.size(); ++i) {
        const QImage old = fresh.cacheImage();
        QImage next(QSize(400, 200), QImage::Format_ARGB32_Premultiplied);
        next.setDevicePixelRatio(kScale);
        next.fill(Qt::transparent);
        QPainter(&next).drawImage(QRectF(0, 0, 200, 100), old);
        // drawInTempWithPath starts from an empty surface on both sides.
        fresh.setCacheImage(steps[i].kind == 'T' ? QImage() : next);
        apply(fresh, steps[i]);
        apply(inPlace, steps[i]);
        QCOMPARE(inPlace.cacheImage(), fresh.cacheImage());
    }
}

void TestCanvas::resizeStretchesOldPicture()
{
    ZQDoodleDrawView view;
    view.resize(100, 100);
    view.drawInCacheWithPath(line({0, 25}, {100, 25}), 50, kRed);
    view.resize(200, 300);
    QImage shown(QSize(400, 600), QImage::Format_ARGB32_Premultiplied);
    shown.setDevicePixelRatio(kScale);
    shown.fill(Qt::transparent);
    view.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
    view.ellipseInCacheWithRect({150, 250, 20, 20}, 2, Qt::blue);
    const QImage image = view.cacheImage();
    QCOMPARE(image.size(), QSize(400, 600));
    for (const QImage &picture : {shown, image}) {
        QVERIFY(near(at(picture, {190, 10}), kRed) && near(at(picture, {10, 140}), kRed));
        QCOMPARE(at(picture, {100, 160}).alpha(), 0);
    }
    QVERIFY(near(at(image, {150, 260}), Qt::blue));
}

void TestCanvas::repaintsOnlyTheChangedRectangle()
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
    board.drawInCacheWithPath(line({100, 100}, {120, 110}), 6, kRed);
    QTRY_VERIFY(!spy.painted.isEmpty());
    const QRect bounds = spy.painted.boundingRect();
    QVERIFY(bounds.contains(QRect(97, 97, 26, 16)));
    QVERIFY2(bounds.width() < 40 && bounds.height() < 30, text(QRectF(bounds)).constData());
}

// The text's pixels sit where a top-aligned line laid out at the point puts them.
void TestCanvas::textAtThePoint()
{
    LogCapture log;
    ZQDoodleDrawView view;
    view.resize(300, 100);
    view.textInCacheWithStartPoint({40.5, 20}, "Hello", 24, kRed);
    QCOMPARE(log.lines(), QStringList{"textInCacheWithStartPoint {40.5, 20},Hello,24.000000"});
    QImage expected(view.cacheImage().size(), QImage::Format_ARGB32_Premultiplied);
    expected.setDevicePixelRatio(kScale);
    expected.fill(Qt::transparent);
    QPainter painter(&expected);
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(24);
    painter.setFont(font);
    painter.setPen(kRed);
    painter.drawText(QRectF(40.5, 20, 300, 100), Qt::AlignLeft | Qt::AlignTop, "Hello");
    painter.end();
    const QRectF drawn = paintedBounds(view.cacheImage()), wanted = paintedBounds(expected);
    QVERIFY(!wanted.isEmpty());
    for (auto edge : {&QRectF::left, &QRectF::top, &QRectF::right, &QRectF::bottom})
        QVERIFY2(std::abs((drawn.*edge)() - (wanted.*edge)()) <= 1.0, text(drawn).constData());
}

void TestCanvas::tempCanvases()
{
    ZQDoodleView board(QRect(0, 0, 50, 40));
    QCOMPARE(board.tempCanvasCount(), 1u);
    board.setTempCanvasCount(3);
    board.setTempCanvasCount(1);
    QCOMPARE(board.tempCanvasCount(), 3u);
    QVERIFY(!board.getTempCanvas(3) && !board.getTempCanvas(quint64(-1)));
    const QObjectList layers = board.children();
    QCOMPARE(layers.size(), 5);
    QCOMPARE(layers.at(1), board.cacheCanvas());
    QCOMPARE(layers.at(4), board.getTempCanvas(2));
    for (QObject *layer : layers)
        QCOMPARE(static_cast<QWidget *>(layer)->geometry(), QRect(0, 0, 50, 40));
    QVERIFY(board.getTempCanvas(0)->cacheImage().isNull());
    board.resize(80, 60); // hidden: no resize event until shown
    board.rectInCatchWithPath({10, 10, 20, 20}, 2, kRed);
    QCOMPARE(board.cacheCanvas()->cacheImage().size(), QSize(160, 120));
}

void TestCanvas::previewAndCommit_data()
{
    QTest::addColumn<char>("kind");
    for (char kind : {'r', 'o', '>', 's'})
        QTest::addRow("%c", kind) << kind;
}

// A Temp member shows only the latest shape (strokes accumulate on purpose);
// a Catch member commits to the cache canvas and empties the preview.
void TestCanvas::previewAndCommit()
{
    QFETCH(char, kind);
    const auto draw = [kind](ZQDoodleView &b, QPointF p, quint64 i, bool commit) {
        const QPointF q = p + QPointF(40, 30);
        if (kind == 'r')
            commit ? b.rectInCatchWithPath({p, q}, 8, kRed, i)
                   : b.rectInTempWithPath({p, q}, 8, kRed, i);
        if (kind == 'o')
            commit ? b.ellipseInCatchWithPath({p, q}, 8, kRed, i)
                   : b.ellipseInTempWithPath({p, q}, 8, kRed, i);
        if (kind == '>')
            commit ? b.arrowInCatchWithStartPoint(p, q, 8, kRed, i)
                   : b.arrowInTempWithStartPoint(p, q, 8, kRed, i);
        if (kind == 's')
            commit ? b.drawInCacheWithPath(line(p, q), 8, kRed, i)
                   : b.drawInTempWithPath(line(p, q), 8, kRed, i);
    };
    const bool accumulates = kind == 's';
    ZQDoodleView board(QRect(0, 0, 200, 200));
    board.setTempCanvasCount(2);
    draw(board, {20, 20}, 1, false);
    draw(board, {20, 20}, 0, false);
    draw(board, {120, 120}, 0, false);
    const auto painted = [](ZQDoodleDrawView *c, QPointF p) {
        return !paintedBounds(c->cacheImage()).intersected({p, QSizeF(40, 30)}).isEmpty();
    };
    QCOMPARE(painted(board.getTempCanvas(0), {20, 20}), accumulates);
    QVERIFY(painted(board.getTempCanvas(0), {120, 120}) &&
            painted(board.getTempCanvas(1), {20, 20}));
    draw(board, {120, 120}, 0, true);
    QVERIFY(board.getTempCanvas(0)->cacheImage().isNull() &&
            !board.getTempCanvas(1)->cacheImage().isNull());
    QVERIFY(painted(board.cacheCanvas(), {120, 120}) && !painted(board.cacheCanvas(), {20, 20}));
    draw(board, {20, 20}, 7, true); // no such temp canvas: still commits
    QVERIFY(painted(board.cacheCanvas(), {20, 20}));
}

void TestCanvas::eraserAndClearKeepBackground()
{
    QImage blue(10, 10, QImage::Format_ARGB32_Premultiplied);
    blue.fill(Qt::blue);
    ZQDoodleView board(QRect(0, 0, 200, 100), blue);
    board.setBackgroundColor(Qt::green);
    board.drawInCacheWithPath(line({0, 50}, {200, 50}), 40, kRed);
    board.eraseInCacheWithPath(line({100, 0}, {100, 100}), 20);
    QImage image = board.convertViewToImage();
    QCOMPARE(image.size(), QSize(400, 200));
    QVERIFY(near(at(image, {100, 50}), Qt::blue) && near(at(image, {20, 50}), kRed));
    QVERIFY(near(at(image, {120, 20}), Qt::blue) && near(at(image, {20, 20}), Qt::green));
    board.clearAll();
    image = board.convertViewToImage();
    QVERIFY(near(at(image, {100, 50}), Qt::blue) && near(at(image, {20, 50}), Qt::green));
}

void TestCanvas::imageOrientation_data()
{
    QTest::addColumn<qint32>("code");
    QTest::addColumn<QPointF>("redAt"); // the red half of a red-left, blue-right picture
    QTest::newRow("0 as is") << 0 << QPointF(25, 50);
    QTest::newRow("1 right") << 1 << QPointF(50, 25);
    QTest::newRow("2 down") << 2 << QPointF(75, 50);
    QTest::newRow("3 left") << 3 << QPointF(50, 75);
    QTest::newRow("4 as is") << 4 << QPointF(25, 50);
}

void TestCanvas::imageOrientation()
{
    QFETCH(qint32, code);
    QFETCH(QPointF, redAt);
    ZQDoodleView board(QRect(0, 0, 100, 100));
    board.drawImageInCache(halves(), {0, 0, 100, 100}, code);
    const QImage image = board.cacheCanvas()->cacheImage();
    QVERIFY(near(at(image, redAt), kRed, 40));
    QVERIFY(near(at(image, QPointF(100, 100) - redAt), Qt::blue, 40));
}

void TestCanvas::textField()
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
    QCOMPARE(field->parentWidget(), board.getTempCanvas(0));
    QCOMPARE(field->geometry(), QRect(30, 40, 150, 28));
    QCOMPARE(QFontInfo(field->font()).pixelSize(), 18);
    QCOMPARE(field->palette().color(QPalette::Text), QColor(Qt::blue));
    QTRY_VERIFY(field->hasFocus());
    QCOMPARE(board.childAt(40, 50), field);
    QTest::keyClicks(field, "hi");
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(recorder.texts, QStringList{"hi"});
    QVERIFY(!field->hasFocus());
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(recorder.texts, QStringList({"hi", "hi"}));
    board.getTempCanvas(0)->cleanAllPath();
    QVERIFY(board.getTempCanvas(0)->findChildren<QWidget *>().isEmpty());
    QCOMPARE(board.childAt(40, 50), nullptr);
}

QTEST_MAIN(TestCanvas)
#include "tst_canvas.moc"
