// A stroke drawn with the mouse on one board of the demo, once its tool bar is
// unfolded, shows up, scaled, on the other, which hears of it only through the
// text form.
#include "DemoHost.h"

#include <doodle/toolbar/ZQDoodleButton.h>

#include <QtTest>

class TestDemoPairing : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(2); }

    void aStrokeAppearsScaledOnThePeer_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::newRow("pen") << qint64(DoodleActionModeBrush);
        QTest::newRow("rectangle") << qint64(DoodleActionModeRectangle);
    }
    void aStrokeAppearsScaledOnThePeer()
    {
        QFETCH(qint64, mode);
        QTemporaryDir out;
        DemoParticipant alice(QStringLiteral("alice"), QSize(400, 600), out.path());
        DemoParticipant bob(QStringLiteral("bob"), QSize(200, 200), out.path());
        QStringList wire;
        alice.send = [&](const QString &sender, const QString &text) {
            wire << text;
            bob.receive(sender, text);
        };
        alice.board().setActionMode(mode);
        alice.board().setBrushWidth(8);
        alice.board().setBrushColor(QColor(0, 128, 255));
        alice.board().view()->show();
        QTest::mouseClick(alice.board().doodletoolButton(), Qt::LeftButton); // unfold

        // A horizontal drag across the middle of alice's board.
        QWidget *view = alice.board().view();
        QTest::mousePress(view, Qt::LeftButton, {}, {40, 300});
        for (int x = 60; x <= 360; x += 20)
            QTest::mouseMove(view, {x, 300});
        QTest::mouseRelease(view, Qt::LeftButton, {}, {370, 300});
        QCOMPARE(wire.size(), 1);

        // On bob's board (half as wide, a third as high) the line runs at y = 100
        // from x = 20 to x = 180, 4 points thick.
        const QImage cache = bob.board().doodleView()->cacheCanvas()->cacheImage();
        QCOMPARE(cache.size(), QSize(400, 400));
        for (const QPointF p : {QPointF(40, 100), QPointF(100, 100), QPointF(170, 100)}) {
            const QColor seen = cache.pixelColor((p * 2).toPoint());
            QVERIFY2(std::abs(seen.blue() - 255) <= 8 && std::abs(seen.green() - 128) <= 8 &&
                         seen.alpha() >= 247,
                     qPrintable(seen.name(QColor::HexArgb)));
        }
        for (const QPointF p : {QPointF(100, 92), QPointF(100, 108), QPointF(100, 50)})
            QCOMPARE(cache.pixelColor((p * 2).toPoint()).alpha(), 0);
    }

    // A new run numbers its pictures past those an earlier one left.
    void savedPicturesNeverReplaceEarlierOnes()
    {
        QTemporaryDir out;
        QFile earlier(out.filePath("doodle-demo-alice-7.png"));
        QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("kept") == 4);
        earlier.close();
        for (int run = 0; run < 2; ++run) {
            DemoParticipant alice(QStringLiteral("alice"), QSize(40, 30), out.path());
            alice.board().saveImage();
        }
        QCOMPARE(QDir(out.path()).entryList(QDir::Files),
                 QStringList({"doodle-demo-alice-7.png", "doodle-demo-alice-8.png",
                              "doodle-demo-alice-9.png"}));
        QVERIFY(earlier.open(QIODevice::ReadOnly));
        QCOMPARE(earlier.readAll(), QByteArray("kept"));
    }
};

QTEST_MAIN(TestDemoPairing)
#include "tst_DemoPairing.moc"
