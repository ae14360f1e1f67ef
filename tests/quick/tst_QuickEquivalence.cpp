// The Quick board and the Widgets board over one core: the same sessions give
// the same pixels, the same gestures the same texts, and the bars the same
// places and hit targets.
#include "../controller/BoardHarness.h"
#include "../toolbar/ToolbarTesting.h"

#include <DoodleBoard.h>
#include <doodle/board/DoodleBarLayout_p.h>
#include <doodle/board/DoodleBoardCore_p.h>

#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>

namespace {

const QSize kBoard(180, 140);
using Session = QList<DoodleActionPtr>;

DoodleActionPtr textAction(const QString &user, const QPointF &at, const QString &text)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(DoodleActionTypeText);
    action->setUserId(user);
    action->setBrushColor(QColor(20, 120, 40));
    action->setX(float(at.x()));
    action->setY(float(at.y()));
    action->setText(text);
    action->setTextSize(0.12f);
    return action;
}

// A Widgets board as a user sees it: shown, on white, its bar out of the way.
struct WidgetBoard : Participant
{
    explicit WidgetBoard(const QSize &size = kBoard) : Participant(QStringLiteral("me"), size)
    {
        board.showToolBar();
        board.hideToolBar(true);
        board.setBackgroundColor(Qt::white);
        board.view()->show();
        QApplication::setActiveWindow(board.view());
        if (!QTest::qWaitForWindowActive(board.view()))
            qWarning("the widget board's window did not become active");
    }
    QImage picture() { return board.doodleView()->convertViewToImage(); }
    QStringList texts() const
    {
        QStringList all;
        for (const DoodleActionPtr &action : host.generated)
            all << DoodleTranslate::stringFromDoodleAction(action);
        return all;
    }
};

// The Quick board alone in a window of its size; its floating button is
// hidden for the pictures, as the widget board's bar is.
struct QuickBoard
{
    explicit QuickBoard(const QSize &size = kBoard, bool chrome = false)
    {
        window.resize(size);
        board = new DoodleBoard(window.contentItem());
        board->setSize(size);
        if (QQuickItem *button = board->findChild<QQuickItem *>("doodleToolButton"))
            button->setVisible(chrome);
        board->setUserId(QStringLiteral("me"));
        // Reports of a gesture under way depend on its pace: left out, as the widget host does.
        QObject::connect(board, &DoodleBoard::actionGenerated, [this](const QString &text) {
            const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
            if (action && action->actionType() != DoodleActionTypeProgress)
                texts << text;
        });
        window.show();
        if (!QTest::qWaitForWindowExposed(&window))
            qWarning("the Quick board's window was not exposed");
    }
    QImage picture() { return window.grabWindow(); }
    // An element of the chrome, by name, and where it is on the board.
    QQuickItem *item(const QString &name) const { return board->findChild<QQuickItem *>(name); }
    QRect rectOf(const QQuickItem *found) const
    {
        return found ? found->mapRectToItem(board, QRectF(QPointF(), found->size())).toRect()
                     : QRect();
    }
    QRect rectOf(const QString &name) const { return rectOf(item(name)); }
    void tap(const QPoint &at) { QTest::mouseClick(&window, Qt::LeftButton, {}, at); }

    QQuickWindow window;
    DoodleBoard *board = nullptr;
    QStringList texts;
};

// The Quick board's picture where the widget board sits: with an aspect,
// without the margins.
QImage boardPicture(QuickBoard &quick, WidgetBoard &widget)
{
    const QRect frame = widget.board.doodleView()->geometry();
    const double scale = quick.window.effectiveDevicePixelRatio();
    return quick.picture().copy(
        QRectF(QPointF(frame.topLeft()) * scale, QSizeF(frame.size()) * scale).toAlignedRect());
}

void sendToBoth(WidgetBoard &widget, QuickBoard &quick, const DoodleActionPtr &action)
{
    const QString text = DoodleTranslate::stringFromDoodleAction(action);
    widget.board.onDoodleTextReceived(action->userId(), text);
    quick.board->receiveText(action->userId(), text);
}

void dragQuick(QQuickWindow &window, const QList<QPoint> &points)
{
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QPoint p = points.at(i);
        if (i == 0)
            QTest::mousePress(&window, Qt::LeftButton, {}, p);
        else if (i + 1 == points.size())
            QTest::mouseRelease(&window, Qt::LeftButton, {}, p);
        else
            QTest::mouseMove(&window, p);
    }
}

// Where a widget is on the board's view.
QRect onView(const QWidget *widget, const QWidget *view)
{
    return QRect(widget->mapTo(view, QPoint()), widget->size());
}

// Taps the widget board's view at `at`, on whatever child is there.
void tapWidget(QWidget *view, const QPoint &at)
{
    QWidget *target = view->childAt(at);
    QVERIFY2(target, "nothing to tap");
    QTest::mouseClick(target, Qt::LeftButton, {}, target->mapFrom(view, at));
}

} // namespace

class TestQuickEquivalence : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        qInfo("screen scale %g", DoodleScreen::scale());
    }

    void sameSessionsSamePixels_data()
    {
        QTest::addColumn<Session>("session");
        QTest::addColumn<QSizeF>("aspect");
        QTest::addColumn<bool>("worker"); // reshaped after the session, redrawn on the worker
        const QString a = QStringLiteral("anna"), b = QStringLiteral("ben");
        const auto line = [](const QString &user, double y, const QColor &color, float width) {
            return strokeAction(user, {{-0.8, y}, {-0.2, y + 0.3}, {0.4, y - 0.2}, {0.9, y}}, color,
                                width);
        };
        QTest::newRow("strokes and a dot")
            << Session{line(a, -0.5, Qt::red, 0.03f), line(b, 0.2, Qt::blue, 0.1f),
                       strokeAction(a, {{0.1, 0.1}, {0.1, 0.1}}, Qt::black, 0.05f)}
            << QSizeF() << false;
        QTest::newRow("shapes")
            << Session{boxAction(DoodleActionTypeRectangle, a, {-0.7, -0.6, 0.8, 0.5}),
                       boxAction(DoodleActionTypeEllipse, b, {-0.2, -0.1, 0.9, 0.8}, Qt::darkCyan),
                       boxAction(DoodleActionTypeArrow, a, {-0.9, 0.8, 1.6, -1.5}, Qt::magenta)}
            << QSizeF() << false;
        QTest::newRow("text, and an eraser over strokes")
            << Session{textAction(a, {-0.8, -0.3}, "Hello"), line(a, -0.2, Qt::red, 0.2f),
                       line(b, 0.3, Qt::blue, 0.1f),
                       strokeAction(b, {{-1, -1}, {0, 0}, {1, 1}}, Qt::black, 0.08f,
                                    DoodleActionTypeEraser)}
            << QSizeF() << false;
        QTest::newRow("shapes on a square board")
            << Session{boxAction(DoodleActionTypeEllipse, a, {-0.8, -0.8, 1.6, 1.6}),
                       line(b, 0.0, Qt::red, 0.05f)}
            << QSizeF(1, 1) << false;
        QTest::newRow("undo and clear")
            << Session{line(a, -0.5, Qt::red, 0.05f), line(b, 0.0, Qt::blue, 0.05f),
                       commandAction(DoodleActionTypeUndo, a),
                       commandAction(DoodleActionTypeClean, b), line(a, 0.5, Qt::darkGreen, 0.05f)}
            << QSizeF() << false;
        QTest::newRow("text and an eraser, reshaped on the worker")
            << Session{textAction(a, {-0.8, -0.3}, "Hello"), line(b, 0.0, Qt::red, 0.05f),
                       strokeAction(b, {{-1, -1}, {1, 1}}, Qt::black, 0.08f,
                                    DoodleActionTypeEraser)}
            << QSizeF(1, 1) << true;
    }

    void sameSessionsSamePixels()
    {
        QFETCH(Session, session);
        QFETCH(QSizeF, aspect);
        QFETCH(bool, worker);
        WidgetBoard widget;
        QuickBoard quick;
        DoodleBoardCore::setBackgroundRedrawFrom(worker ? 0 : kSavepointStep);
        const auto reshape = [&] {
            widget.board.setBoardAspect(aspect);
            quick.board->setBoardAspect(aspect);
        };
        if (!worker)
            reshape();
        for (const DoodleActionPtr &action : session)
            sendToBoth(widget, quick, action);
        if (worker) {
            reshape();
            QVERIFY(!quick.board->isPictureSettled());
            QTRY_VERIFY(quick.board->isPictureSettled() && widget.board.isPictureSettled());
        }
        DoodleBoardCore::setBackgroundRedrawFrom(kSavepointStep);
        const QImage w = widget.picture();
        const QImage q = boardPicture(quick, widget);
        QCOMPARE(q.size(), w.size());
        QImage blank(w.size(), QImage::Format_RGB32);
        blank.fill(Qt::white);
        QVERIFY(maxChannelDifference(w, blank, w.size()) > 0); // something to compare
        QCOMPARE(maxChannelDifference(w, q, w.size()), 0);
        QCOMPARE(quick.board->fingerprint(), QString::number(widget.board.fingerprint(), 16));
    }

    void sameGesturesSameTexts_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<QList<QPoint>>("points");
        QTest::addColumn<int>("actions");
        QTest::addColumn<QSizeF>("aspect");
        // The pointer moves to where it is lifted, for both toolkits alike.
        const QList<QPoint> path{{20, 30}, {40, 50}, {70, 60}, {110, 90}, {130, 95}, {130, 95}};
        QTest::newRow("brush") << qint64(DoodleActionModeBrush) << path << 1 << QSizeF();
        QTest::newRow("eraser") << qint64(DoodleActionModeEraser) << path << 1 << QSizeF();
        QTest::newRow("rectangle") << qint64(DoodleActionModeRectangle) << path << 1 << QSizeF();
        QTest::newRow("ellipse") << qint64(DoodleActionModeEllipse) << path << 1 << QSizeF();
        QTest::newRow("arrow") << qint64(DoodleActionModeArrow) << path << 1 << QSizeF();
        QTest::newRow("tap draws nothing")
            << qint64(DoodleActionModeBrush) << QList<QPoint>{{50, 50}, {50, 50}} << 0 << QSizeF();
        // On a square board the margins take no input and points are the board's.
        QTest::newRow("brush on a square board")
            << qint64(DoodleActionModeBrush) << path << 1 << QSizeF(1, 1);
    }

    void sameGesturesSameTexts()
    {
        QFETCH(qint64, mode);
        QFETCH(QList<QPoint>, points);
        QFETCH(int, actions);
        QFETCH(QSizeF, aspect);
        WidgetBoard widget;
        QuickBoard quick;
        widget.board.setBoardAspect(aspect);
        quick.board->setBoardAspect(aspect);
        // A stroke under the eraser, so that both erase the same pixels.
        sendToBoth(widget, quick, strokeAction("ann", {{-1, -0.5}, {1, 0.5}}, Qt::blue, 0.1f));
        const auto setUp = [mode](auto &board) {
            board.setActionMode(int(mode));
            board.setBrushWidth(5);
            board.setEraserWidth(10);
            board.setBrushColor(Qt::red);
        };
        setUp(widget.board);
        setUp(*quick.board);
        drag(widget.board.view(), Input::Mouse, points);
        dragQuick(quick.window, points);
        QCOMPARE(widget.texts().size(), actions);
        QCOMPARE(quick.texts, widget.texts());
        const QImage w = widget.picture();
        QCOMPARE(maxChannelDifference(w, boardPicture(quick, widget), w.size()), 0);
    }

    void barsAgree_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("narrow: two rows") << QSize(320, 560);
        QTest::newRow("at the two-row limit") << QSize(390, 700);
        QTest::newRow("wide: one row") << QSize(800, 600);
    }

    // Every button, picker and choice sits on the same rectangle of the board
    // on both front-ends, and a tap on a choice's centre chooses the same value.
    void barsAgree()
    {
        QFETCH(QSize, size);
        WidgetBoard widget(size);
        widget.board.hideToolBar(false);
        QuickBoard quick(size, true);
        QWidget *view = widget.board.view();
        QCOMPARE(quick.rectOf("doodleToolButton"), onView(widget.board.doodletoolButton(), view));
        QSignalSpy unfolded(quick.board, &DoodleBoard::unfolded);
        quick.tap(quick.rectOf("doodleToolButton").center());
        QCOMPARE(unfolded.count(), 1);
        QCOMPARE(quick.rectOf("doodleToolBar"), onView(widget.board.doodletoolbar(), view));
        const QList<ZQDoodleButton *> buttons = widget.board.doodletoolbar()->buttons();
        for (qsizetype i = 0; i < buttons.size(); ++i)
            QCOMPARE(quick.rectOf(quick.item("doodleToolBar")->childItems().at(i)),
                     onView(buttons.at(i), view));
        for (const DoodlePickerEntry &picker : DoodleBarLayout::pickers()) {
            ZQDoodleButton *anchor = ofType(buttons, picker.anchorType);
            tapWidget(view, onView(anchor, view).center());
            quick.tap(onView(anchor, view).center());
            const auto opened = view->findChildren<ZQDoodleButtonView *>();
            QCOMPARE(opened.size(), 1);
            QCOMPARE(quick.rectOf("doodlePicker"), onView(opened.first(), view));
            const QList<ZQDoodleButton *> choices = opened.first()->buttons();
            for (qsizetype i = 0; i < choices.size(); ++i)
                QCOMPARE(quick.rectOf(QStringLiteral("choice%1").arg(i)),
                         onView(choices.at(i), view));
            const QPoint last = onView(choices.constLast(), view).center();
            tapWidget(view, last);
            quick.tap(last);
            QCOMPARE(quick.board->brushColor(), widget.board.brushColor());
            QCOMPARE(quick.board->brushWidth(), widget.board.brushWidth());
            QCOMPARE(quick.board->eraserWidth(), widget.board.eraserWidth());
            QCOMPARE(quick.board->textSize(), widget.board.textSize());
            QCOMPARE(quick.board->actionMode(), int(widget.board.actionMode()));
            tapWidget(view, onView(anchor, view).center()); // closes it
            quick.tap(onView(anchor, view).center());
            QTRY_VERIFY(view->findChildren<ZQDoodleButtonView *>().isEmpty());
            QVERIFY(!quick.item("doodlePicker") || !quick.item("doodlePicker")->isVisible());
        }
    }
};

QTEST_MAIN(TestQuickEquivalence)
#include "tst_QuickEquivalence.moc"
