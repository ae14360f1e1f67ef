// Full redraws on the worker thread: after a resize, a late join or a
// catch-up merge, whatever happens while the worker draws, the settled
// picture is the one a fresh board draws from the cache, pixel for pixel.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <doodle/board/DoodleBoardCore_p.h>

#include <QSignalSpy>
#include <QtTest>

namespace {

const QSize kSize(160, 120);
const QSize kTurned(120, 160);

enum class Start
{
    Resize,
    TwoResizes,
    Join,
    CatchUp,
};

enum class Meanwhile
{
    Nothing,
    Receive, // a peer's drawing, as the newest
    Late,    // a peer's drawing ordered among the oldest
    Gesture, // this user's stroke, drawn and committed
    Undo,    // this user's last drawing taken back
    Eraser,  // a live eraser that ends after the swap
    Clear,   // this user's clear
};

// A mix of every kind of drawing, half transparent so that one drawn twice
// shows; stamped from `first` on.
void fill(DoodleLayout &board, int count, quint64 first)
{
    for (int i = 0; i < count; ++i) {
        const double y = -0.9 + 1.8 * i / count;
        const QColor color = QColor::fromHsv(i * 47 % 360, 200, 220, 128);
        DoodleActionPtr action;
        if (i % 7 == 3) {
            action = boxAction(DoodleActionTypeEllipse, "peer", {-0.6, y, 0.8, 0.3}, color);
        } else if (i % 11 == 5) {
            action = commandAction(DoodleActionTypeText, "peer");
            action->setX(-0.8f);
            action->setY(float(y));
            action->setText(QStringLiteral("hi %1").arg(i));
            action->setTextSize(0.15f);
            action->setBrushColor(color);
        } else {
            const qint64 type = i % 9 == 8 ? DoodleActionTypeEraser : DoodleActionTypeStroke;
            action =
                strokeAction("peer", {{-0.9, y}, {0, y + 0.2}, {0.9, y - 0.1}}, color, 0.04f, type);
        }
        board.onDoodleActionReceived(QStringLiteral("peer"), stamped(action, first + quint64(i)));
    }
}

void stroke(DoodleLayout &board, qint64 mode, bool end)
{
    board.setActionMode(mode);
    board.setBrushWidth(6);
    board.setEraserWidth(12);
    board.setBrushColor(QColor(0, 0, 255, 100));
    touchAlong(board, {{20, 30}, {90, 80}, {100, 20}}, end);
}

} // namespace

Q_DECLARE_METATYPE(Start)
Q_DECLARE_METATYPE(Meanwhile)

class TestDoodleLayoutRedraw : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        DoodleScreen::setScaleOverride(2);
        DoodleBoardCore::setBackgroundRedrawFrom(0); // every full redraw on the worker
    }
    void cleanup()
    {
        DoodleBoardCore::setBackgroundRedrawFrom(kSavepointStep);
        DoodleScreen::setScaleOverride(0);
    }

    void settledPictureEqualsReplay_data()
    {
        QTest::addColumn<Start>("start");
        QTest::addColumn<Meanwhile>("meanwhile");
        const QList<std::pair<const char *, Start>> starts = {{"resize", Start::Resize},
                                                              {"two resizes", Start::TwoResizes},
                                                              {"join", Start::Join},
                                                              {"catch-up", Start::CatchUp}};
        const QList<std::pair<const char *, Meanwhile>> meanwhiles = {
            {"nothing", Meanwhile::Nothing}, {"receive", Meanwhile::Receive},
            {"late", Meanwhile::Late},       {"gesture", Meanwhile::Gesture},
            {"undo", Meanwhile::Undo},       {"eraser", Meanwhile::Eraser},
            {"clear", Meanwhile::Clear}};
        for (const auto &[startName, start] : starts) {
            for (const auto &[name, meanwhile] : meanwhiles)
                QTest::addRow("%s, %s", startName, name) << start << meanwhile;
        }
    }
    void settledPictureEqualsReplay()
    {
        QFETCH(Start, start);
        QFETCH(Meanwhile, meanwhile);
        Participant source(QStringLiteral("source"), kSize);
        fill(source.board, 80, 10); // more than a merge redraws by regions
        Participant me(QStringLiteral("me"), kSize);
        me.board.showToolBar();
        if (start != Start::Join)
            fill(me.board, 80, 10);
        QVERIFY(Participant::settle(me.board));
        stroke(me.board, DoodleActionModeBrush, true); // this user's own, to undo
        QVERIFY(me.board.isPictureSettled());
        QSignalSpy settled(&me.board, &DoodleLayout::pictureSettled);

        QSize size = kSize;
        if (start == Start::Resize || start == Start::TwoResizes) {
            size = kTurned;
            me.board.resetDoodleViewFrame(QRect(QPoint(), kTurned));
        }
        if (start == Start::TwoResizes) {
            size = QSize(200, 90);
            me.board.resetDoodleViewFrame(QRect(QPoint(), size));
        }
        if (start == Start::CatchUp)
            fill(source.board, 70, 100); // more than a region redraw takes
        if (start == Start::Join || start == Start::CatchUp)
            QVERIFY(me.board.mergeState(source.board.exportState()));
        QVERIFY(!me.board.isPictureSettled());

        // A large state is still on its way: counted as merged.
        qsizetype expected = start == Start::CatchUp ? 151 : 81;
        switch (meanwhile) {
        case Meanwhile::Nothing:
            break;
        case Meanwhile::Receive:
            fill(me.board, 3, 1000);
            expected += 3;
            break;
        case Meanwhile::Late:
            me.board.onDoodleActionReceived(
                "early", stamped(strokeAction("early", {{-1, -1}, {1, 1}}, Qt::darkGreen), 1));
            expected += 1;
            break;
        case Meanwhile::Gesture:
            stroke(me.board, DoodleActionModeBrush, true);
            expected += 1;
            break;
        case Meanwhile::Undo:
            me.board.undo();
            expected -= 1;
            break;
        case Meanwhile::Eraser:
            stroke(me.board, DoodleActionModeEraser, false);
            break;
        case Meanwhile::Clear:
            me.board.cleanDoodle();
            // A state still on its way keeps its drawings stamped after the clear.
            expected = start == Start::Join ? 80 : start == Start::CatchUp ? 70 : 0;
            break;
        }
        QVERIFY(Participant::settle(me.board));
        QVERIFY(!settled.isEmpty());
        if (meanwhile == Meanwhile::Eraser) {
            me.board.touchesEnded({QPointF(100, 20), QPointF(100, 20)});
            expected += 1;
        }
        QCOMPARE(me.board.getAllPath().size(), expected);
        QCOMPARE(differenceFromReplay(me, size), 0);
        // The savepoints taken on the worker serve the next undo.
        me.board.onDoodleActionReceived("me",
                                        stamped(strokeAction("me", {{0, 0}, {0.5, 0.5}}), 5000));
        me.board.undo();
        QCOMPARE(differenceFromReplay(me, size), 0);
    }

    // The previous picture stays on screen, stretched, until the new one is in.
    void previousPictureShowsUntilTheSwap()
    {
        Participant me(QStringLiteral("me"), kSize);
        fill(me.board, 40, 10);
        QVERIFY(Participant::settle(me.board));
        const QImage before = me.board.doodleView()->cacheCanvas()->cacheImage();
        QSignalSpy settled(&me.board, &DoodleLayout::pictureSettled);
        me.board.resetDoodleViewFrame(QRect(QPoint(), kTurned));
        QVERIFY(!me.board.isPictureSettled());
        QCOMPARE(me.board.doodleView()->cacheCanvas()->cacheImage(), before);
        QVERIFY(settled.wait(20000));
        QCOMPARE(settled.size(), 1);
        QCOMPARE(me.cache().deviceIndependentSize(), QSizeF(kTurned));
    }

    // A large board's new picture is repainted a band at a time: every band
    // reaches the screen, which ends as a fresh rendering of the board.
    void everyBandOfTheSwappedPictureReachesTheScreen()
    {
        Participant me(QStringLiteral("me"), QSize(1200, 1000));
        fill(me.board, 40, 10);
        QWidget *window = me.board.view()->window();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        me.board.resetDoodleViewFrame(QRect(0, 0, 1000, 1200));
        QVERIFY(Participant::settle(me.board));
        const auto shown = [window] {
            return window->screen()
                ->grabWindow(window->winId())
                .toImage()
                .convertToFormat(QImage::Format_RGB32);
        };
        QTRY_COMPARE(shown(), window->grab().toImage().convertToFormat(QImage::Format_RGB32));
    }

    // A state read on the worker that would inflate past the bound is refused
    // there, in bounded memory, and leaves the board as it was.
    void compressedBombOnTheWorkerIsRefused()
    {
        Participant me(QStringLiteral("me"), kSize);
        fill(me.board, 5, 10);
        const quint64 before = me.board.fingerprint();
        const QByteArray bomb = qCompress(QByteArray(80 << 20, ' '), 9).mid(4);
        LogCapture log;
        QVERIFY(me.board.mergeState(QStringLiteral("{\"doodle_state\":2,\"deflated\":\"%1\"}")
                                        .arg(QString::fromLatin1(bomb.toBase64()))));
        QVERIFY(!me.board.isPictureSettled());
        QVERIFY(Participant::settle(me.board));
        QCOMPARE(log.lines(), QStringList{"a packed board state does not inflate within 67108864 "
                                          "bytes; not merged"});
        QCOMPARE(me.board.fingerprint(), before);
    }
};

QTEST_MAIN(TestDoodleLayoutRedraw)
#include "tst_DoodleLayoutRedraw.moc"
