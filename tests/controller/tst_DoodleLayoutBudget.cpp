// A channel that caps messages: strokes go in parts that a board without
// stamps draws and undoes as a stamping board does, an action that cannot fit
// is refused, and a state goes in parts that are merged once, with a bound
// on what an incomplete hand-off holds.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <QtTest>

namespace {

const QSize kSize(240, 160);

// A long zig-zag, `count` points.
DoodleActionPtr longStroke(int count, qint64 type)
{
    QList<QPointF> points;
    for (int i = 0; i < count; ++i)
        points << QPointF(-0.9 + 1.8 * i / count, (i % 7) * 0.1 - 0.3);
    return strokeAction(QStringLiteral("ann"), points, QColor(20, 90, 200, 160), 0.03f, type);
}

} // namespace

class TestDoodleLayoutBudget : public QObject
{
    Q_OBJECT
private slots:
    void strokeInParts_data()
    {
        QTest::addColumn<qsizetype>("budget");
        QTest::addColumn<qint64>("type");
        QTest::newRow("pen, 2 KiB") << qsizetype(2048) << qint64(DoodleActionTypeStroke);
        QTest::newRow("pen, 16 KiB") << qsizetype(16384) << qint64(DoodleActionTypeStroke);
        QTest::newRow("eraser, 4 KiB") << qsizetype(4096) << qint64(DoodleActionTypeEraser);
    }
    void strokeInParts()
    {
        QFETCH(qsizetype, budget);
        QFETCH(qint64, type);
        Participant ann(QStringLiteral("ann"), kSize), ben(QStringLiteral("ben"), kSize);
        // An existing client: the specified receive rules, no stamps.
        Participant old(QStringLiteral("old"), kSize);
        for (Participant *p : {&ben, &old})
            p->board.commitLocalAction(strokeAction(p->board.userId(), {{-1, -1}, {1, 1}}));
        QStringList texts;
        ann.host.onGenerated = [&](const DoodleActionPtr &action) {
            const QString text = ann.board.doodleActionToString(action);
            texts << text;
            ben.board.onDoodleTextReceived(QStringLiteral("ann"), text);
            const DoodleActionPtr plain = old.board.stringToDoodleAction(text);
            plain->setSeqNo(0);
            old.board.onDoodleActionReceived(QStringLiteral("ann"), plain);
        };
        ann.board.setMessageBudget(budget);
        ann.board.advanceClock(100); // ordered after the others' strokes on every board
        const DoodleActionPtr whole = longStroke(1500, type);
        QVERIFY(ann.board.commitLocalAction(whole));

        QVERIFY(texts.size() > 1);
        DoodlePointList joined;
        for (const QString &text : std::as_const(texts)) {
            QVERIFY(text.toUtf8().size() <= budget);
            const DoodlePointList points = ann.board.stringToDoodleAction(text)->pathPoints();
            // Each part starts where the one before ended: joined without that point.
            for (qsizetype i = joined.isEmpty() ? 0 : 1; i < points.size(); ++i)
                joined.append(points.at(i));
        }
        QCOMPARE(joined, whole->pathPoints());
        const QSize pixels = kSize * DoodleScreen::scale();
        QCOMPARE(maxChannelDifference(ben.cache(), old.cache(), pixels), 0);

        const qsizetype parts = texts.size();
        texts.clear();
        ann.board.undo(); // one undo per part
        QCOMPARE(texts.size(), parts);
        for (Participant *p : {&ann, &ben, &old})
            QCOMPARE(p->board.doodlePathCache()->size(), p == &ann ? 0 : 1);
        QCOMPARE(maxChannelDifference(ben.cache(), old.cache(), pixels), 0);
    }

    void actionThatCannotFitIsRefused()
    {
        Participant ann(QStringLiteral("ann"), kSize);
        ann.board.setMessageBudget(600);
        auto text = boxAction(DoodleActionTypeText, QStringLiteral("ann"), {0, 0, 0, 0});
        text->setText(QString(400, QLatin1Char('w')));
        text->setTextSize(0.05f);
        LogCapture log;
        QVERIFY(!ann.board.commitLocalAction(text));
        QCOMPARE(ann.host.generated.size(), 0);
        QCOMPARE(ann.board.doodlePathCache()->size(), 0);
        QVERIFY2(log.lines()
                         .filter(QRegularExpression(
                             "^not sent: the action's text of \\d+ bytes is over the "
                             "message budget of 600 bytes$"))
                         .size() == 1,
                 qPrintable(log.lines().join('\n')));
    }

    void stateInPartsMergesOnceAndIncompleteOnesAreDropped()
    {
        Participant ann(QStringLiteral("ann"), kSize), ben(QStringLiteral("ben"), kSize);
        for (int i = 0; i < 30; ++i)
            ann.board.commitLocalAction(longStroke(60, DoodleActionTypeStroke));
        ann.board.setMessageBudget(2500);
        QList<QStringList> handOffs;
        for (int i = 0; i < 5; ++i)
            handOffs << ann.board.exportStateParts();
        QVERIFY(handOffs.first().size() > 2);
        for (const QString &part : std::as_const(handOffs.first()))
            QVERIFY(part.toUtf8().size() <= 2500 - 1024); // room for the channel's wrapping
        LogCapture log;
        // Four hand-offs held, each lacking its last part; a fifth drops the oldest.
        for (qsizetype h = 0; h < 4; ++h)
            for (qsizetype i = 0; i + 1 < handOffs.at(h).size(); ++i)
                QVERIFY(!ben.board.mergeState(handOffs.at(h).at(i)));
        QStringList fifth = handOffs.last();
        std::reverse(fifth.begin(), fifth.end()); // any order
        int merges = 0;
        for (const QString &part : std::as_const(fifth))
            merges += ben.board.mergeState(part) ? 1 : 0;
        QCOMPARE(merges, 1);
        QCOMPARE(ben.board.fingerprint(), ann.board.fingerprint());
        QCOMPARE(log.lines().filter(QStringLiteral("dropped for a newer one")).size(), 1);
        // The dropped one's last part, and a late copy, start a hand-off of their own.
        QVERIFY(!ben.board.mergeState(handOffs.first().last()));
        QVERIFY(!ben.board.mergeState(fifth.first()));
    }
};

QTEST_MAIN(TestDoodleLayoutBudget)
#include "tst_DoodleLayoutBudget.moc"
