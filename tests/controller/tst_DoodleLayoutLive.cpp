// Gestures seen while they are drawn: two boards linked through the text
// form, the drawer's reports let out as the event loop turns. The preview
// must end as the committed drawing draws, go when it arrives, and leave no
// trace in the cache, the fingerprint or a picture.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <doodle/board/DoodleBoardLive_p.h>

#include <QtTest>

namespace {

const QSize kSize(240, 160);
const QList<QPointF> kPath = {{30, 40}, {60, 50}, {90, 80}, {130, 90}, {170, 60}, {200, 100}};

QImage layer(Participant &p, quint64 index)
{
    return p.board.doodleView()->getTempCanvas(index)->cacheImage();
}

bool isBlank(const QImage &image)
{
    return maxChannelDifference(image, QImage(), kSize * DoodleScreen::scale()) == 0;
}

// The drawer's actions reach the peer as text, but for the `lost`-th report.
void link(Participant &from, Participant &to, int lost = 0)
{
    from.host.onGenerated = [&from, &to, lost, n = 0](const DoodleActionPtr &action) mutable {
        if (action->actionType() == DoodleActionTypeProgress && ++n == lost)
            return;
        to.board.onDoodleTextReceived(from.board.userId(), from.board.doodleActionToString(action));
    };
}

// Moves along the path, each move's report out before the next move.
void drawSlowly(Participant &drawer, bool reported = true)
{
    drawer.board.touchesBegan({kPath.first(), kPath.first()});
    for (qsizetype i = 1; i < kPath.size(); ++i) {
        const qsizetype before = drawer.host.progress.size();
        drawer.board.touchesMoved({kPath.at(i), kPath.at(i - 1)});
        if (reported)
            QTRY_VERIFY(drawer.host.progress.size() > before);
    }
    if (!reported)
        QTest::qWait(80); // nothing to wait for: longer than two report intervals
}

void prepare(Participant &p, qint64 mode)
{
    p.board.showToolBar(); // unfolded: the board takes gestures
    p.board.setActionMode(mode);
    p.board.setBrushColor(QColor(200, 30, 30));
    p.board.setBrushWidth(6);
}

QString progressText(const QString &content)
{
    auto action = commandAction(DoodleActionTypeProgress, QStringLiteral("mallory"));
    action->setBrushWidth(0.02f);
    action->setBrushColor(Qt::red);
    action->setUserDefined(content);
    return DoodleTranslate::stringFromDoodleAction(action);
}

QString manyPoints(int count, int from = 0)
{
    const QString points = QStringList(count, QStringLiteral("0.1,0.2")).join(',');
    return QStringLiteral("{\"of\":260,\"id\":1,\"from\":%1,\"p\":[%2]}").arg(from).arg(points);
}

} // namespace

class TestDoodleLayoutLive : public QObject
{
    Q_OBJECT
private slots:
    void previewEndsAsCommitted_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<int>("lost");
        QTest::newRow("pen") << qint64(DoodleActionModeBrush) << 0;
        QTest::newRow("pen, a report lost") << qint64(DoodleActionModeBrush) << 2;
        QTest::newRow("rectangle") << qint64(DoodleActionModeRectangle) << 0;
        QTest::newRow("ellipse, a report lost") << qint64(DoodleActionModeEllipse) << 3;
        QTest::newRow("arrow") << qint64(DoodleActionModeArrow) << 0;
    }
    void previewEndsAsCommitted()
    {
        QFETCH(qint64, mode);
        QFETCH(int, lost);
        Participant ann(QStringLiteral("ann"), kSize), ben(QStringLiteral("ben"), kSize);
        link(ann, ben, lost);
        prepare(ann, mode);
        const QImage before = ben.board.imageScreenShot();
        drawSlowly(ann);
        const QImage preview = layer(ben, kDoodleRemoteLayer);
        QVERIFY(!isBlank(preview));
        // Shown, yet no part of the board's picture.
        QCOMPARE(maxChannelDifference(ben.board.imageScreenShot(), before, before.size()), 0);
        ann.board.touchesEnded({kPath.last(), kPath.last()});

        QVERIFY(isBlank(layer(ben, kDoodleRemoteLayer)));
        QCOMPARE(ann.board.doodlePathCache()->size(), 1);
        QCOMPARE(ben.board.fingerprint(), ann.board.fingerprint()); // one drawing, as ann has
        const QSize pixels = kSize * DoodleScreen::scale();
        QCOMPARE(maxChannelDifference(ben.cache(), ann.cache(), pixels), 0);
        // A stroke's preview held every point: it drew what the committed stroke draws.
        if (mode == DoodleActionModeBrush && lost == 0)
            QCOMPARE(maxChannelDifference(preview, ben.cache(), pixels), 0);
        for (const DoodleActionPtr &action : std::as_const(ann.host.progress))
            QCOMPARE(action->seqNo(), 0u);
    }

    // A board that changes size draws a peer's gesture under way again at its
    // new size: as the committed stroke then draws it.
    void previewFollowsTheSize()
    {
        Participant ann(QStringLiteral("ann"), kSize), ben(QStringLiteral("ben"), kSize);
        link(ann, ben);
        prepare(ann, DoodleActionModeBrush);
        drawSlowly(ann);
        const QSize turned(kSize.height(), kSize.width());
        ben.board.resetDoodleViewFrame(QRect(QPoint(), turned));
        const QImage preview = layer(ben, kDoodleRemoteLayer);
        ann.board.touchesEnded({kPath.last(), kPath.last()});
        QCOMPARE(preview.deviceIndependentSize(), QSizeF(turned));
        QCOMPARE(maxChannelDifference(preview, ben.cache(), turned * DoodleScreen::scale()), 0);
    }

    void previewGoes_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("reported");
        QTest::addColumn<bool>("shown");
        QTest::newRow("abandoned") << "abandon" << true << true;
        QTest::newRow("sending off") << "send off" << false << false;
        QTest::newRow("showing off") << "show off" << true << false;
        QTest::newRow("gone silent") << "silence" << true << true;
    }
    void previewGoes()
    {
        QFETCH(QString, how);
        QFETCH(bool, reported);
        QFETCH(bool, shown);
        Participant ann(QStringLiteral("ann"), kSize), ben(QStringLiteral("ben"), kSize);
        link(ann, ben);
        prepare(ann, DoodleActionModeBrush);
        ann.board.setSendsLiveStrokes(how != QLatin1String("send off"));
        ben.board.setShowsLiveStrokes(how != QLatin1String("show off"));
        drawSlowly(ann, reported);
        QCOMPARE(ann.host.progress.size() > 0, reported);
        QCOMPARE(!isBlank(layer(ben, kDoodleRemoteLayer)), shown);
        if (how == QLatin1String("abandon")) {
            // A second touch abandons the stroke; the tap that follows draws nothing.
            const QPointF tap(20, 20);
            ann.board.touchesBegan({tap, tap});
            ann.board.touchesEnded({tap, tap});
            QVERIFY(isBlank(layer(ben, kDoodleRemoteLayer)));
            QCOMPARE(ben.board.doodlePathCache()->size(), 0);
        }
        if (how == QLatin1String("silence")) // the drawer's reports stopped for good
            QTRY_VERIFY_WITH_TIMEOUT(isBlank(layer(ben, kDoodleRemoteLayer)), 5000);
    }

    void hostileReports_data()
    {
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<int>("senders"); // each sends every text
        QTest::addColumn<QString>("warning");
        const QString stop = QStringLiteral("dropped a progress message: ");
        QTest::newRow("no content") << QStringList{progressText({})} << 1 << stop + "no content";
        QTest::newRow("unknown kind")
            << QStringList{progressText("{\"of\":999,\"id\":1}")} << 1 << stop + "unknown kind";
        QTest::newRow("a point that is no number")
            << QStringList{progressText("{\"of\":260,\"id\":1,\"from\":0,\"p\":[0.1,\"x\"]}")} << 1
            << stop + "a point is not a number";
        QTest::newRow("too many points in one")
            << QStringList{progressText(manyPoints(257))} << 1 << stop + "too many points";
        QStringList growing;
        for (int i = 0; i < 5; ++i)
            growing << progressText(manyPoints(200, i * 200));
        QTest::newRow("a preview over the stroke limit")
            << growing << 1 << "dropped the preview of s0: over 500 points";
        QTest::newRow("too many senders")
            << QStringList{progressText(manyPoints(3))} << 33
            << "dropped a progress message from s32: 32 senders are live already";
    }
    void hostileReports()
    {
        QFETCH(QStringList, texts);
        QFETCH(int, senders);
        QFETCH(QString, warning);
        Participant ben(QStringLiteral("ben"), kSize);
        DoodleReceiveLimits limits;
        limits.strokePoints = 500;
        ben.board.setReceiveLimits(limits);
        LogCapture log;
        for (int sender = 0; sender < senders; ++sender) {
            for (const QString &text : std::as_const(texts))
                ben.board.onDoodleTextReceived(QStringLiteral("s%1").arg(sender), text);
        }
        QVERIFY2(log.lines().contains(warning), qPrintable(log.lines().join('\n')));
        QCOMPARE(isBlank(layer(ben, kDoodleRemoteLayer)), senders == 1);
    }

    void laserFadesAndIsInNoPicture()
    {
        Participant ann(QStringLiteral("ann"), kSize), ben(QStringLiteral("ben"), kSize);
        link(ann, ben);
        prepare(ann, DoodleActionModeLaser);
        const QImage before = ben.board.imageScreenShot();
        drawSlowly(ann);
        // Both boards show the whole track, in one colour of ann's.
        for (const QPointF &point : {kPath.at(3), kPath.last()}) {
            const QPoint at = (point * DoodleScreen::scale()).toPoint();
            const QColor own = layer(ann, kDoodleLaserLayer).pixelColor(at);
            const QColor seen = layer(ben, kDoodleLaserLayer).pixelColor(at);
            QVERIFY(own.alpha() > 64 && seen.alpha() > 64);
            QVERIFY(std::abs(seen.hsvHue() - own.hsvHue()) <= 2); // faded a little apart
        }
        QCOMPARE(maxChannelDifference(ben.board.imageScreenShot(), before, before.size()), 0);
        ann.board.touchesEnded({kPath.last(), kPath.last()});
        QCOMPARE(ann.host.generated.size(), 0);
        QCOMPARE(ben.board.doodlePathCache()->size(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(isBlank(layer(ben, kDoodleLaserLayer)), 3000);
    }
};

QTEST_MAIN(TestDoodleLayoutLive)
#include "tst_DoodleLayoutLive.moc"
