// A board's state: stamped order, clears that cross drawings in flight, state
// hand-off to boards that were cut off or join late, fingerprints, moderation.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <doodle/board/DoodleBoardCore_p.h>

#include <QJsonDocument>

#include <QtTest>

namespace {

const QSize kBoard(160, 120);

DoodleActionPtr stampedStroke(const QString &user, quint64 stamp, double y)
{
    const QColor colour = QColor::fromHsv(int(stamp * 47 % 360), 200, 200);
    return stamped(strokeAction(user, {{-0.8, y}, {0.8, y + 0.2}}, colour, 0.05f), stamp);
}

QStringList cacheOf(DoodleLayout &board)
{
    QStringList texts;
    for (const DoodleCacheEntry &entry : board.doodlePathCache()->entries())
        texts << entry.owner + QLatin1Char(' ') + QString::number(entry.action->seqNo());
    return texts;
}

} // namespace

class TestDoodleLayoutState : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(1); }

    void arrivalOrderDoesNotMatter()
    {
        Participant a(QStringLiteral("a"), kBoard), b(QStringLiteral("b"), kBoard);
        const QList<std::pair<QString, DoodleActionPtr>> sent = {
            {"ann", stampedStroke("ann", 1, -0.5)},
            {"ben", stampedStroke("ben", 1, -0.4)},
            {"ann", stampedStroke("ann", 2, -0.3)},
            {"ben", stamped(commandAction(258, "ben"), 1)},
            {"cat", stampedStroke("cat", 3, -0.45)}};
        for (const auto &[sender, action] : sent)
            a.receive(sender, action);
        for (qsizetype i = sent.size() - 1; i >= 0; --i) // each sender's own order kept
            b.receive(sent.at(i).first, sent.at(i).second);
        QCOMPARE(cacheOf(a.board), QStringList({"ann 1", "ann 2", "cat 3"}));
        QCOMPARE(cacheOf(b.board), cacheOf(a.board));
        QCOMPARE(b.board.fingerprint(), a.board.fingerprint());
        QCOMPARE(maxChannelDifference(a.cache(), b.cache(), kBoard), 0);
        QCOMPARE(differenceFromReplay(b), 0);
        QCOMPARE(b.board.clock(), quint64(3));
        // The clock moves forward only; what is drawn next is stamped past it.
        b.board.advanceClock(2);
        QCOMPARE(b.board.clock(), quint64(3));
        b.board.advanceClock(100);
        QVERIFY(b.board.commitLocalAction(stampedStroke("b", 1, 0.6)));
        QCOMPARE(cacheOf(b.board).last(), QStringLiteral("b 101"));
    }

    void lateArrivalsOnAFullBoard()
    {
        // 400 drawings, every 23rd held back and delivered at the end, some
        // crossing what came after them and some apart from it.
        Participant board(QStringLiteral("me"), kBoard);
        const auto drawing = [](quint64 stamp) {
            const double y = double(stamp % 40) / 22.0 - 0.9;
            DoodleActionPtr action = stampedStroke("peer", stamp, y);
            if (stamp % 2 == 0) // a short one at the side
                action->pathPoints() = strokeAction("peer", {{0.85, y}, {0.9, y}})->pathPoints();
            return action;
        };
        QList<quint64> late;
        for (quint64 stamp = 1; stamp <= 400; ++stamp) {
            if (stamp % 23 == 0)
                late << stamp;
            else
                board.receive("peer", drawing(stamp));
        }
        for (const quint64 stamp : late)
            board.receive("peer", drawing(stamp));
        QCOMPARE(board.board.getAllPath().size(), 400);
        QCOMPARE(differenceFromReplay(board), 0);
        board.receive("peer", stamped(commandAction(DoodleActionTypeUndo, "peer"), 391));
        QCOMPARE(differenceFromReplay(board), 0);
    }

    void aLateArrivalApartFromLaterOnes()
    {
        // Drawn last, it lands behind savepoints that must get it too: a drawing
        // over it, taken back, redraws its region from them.
        Participant board(QStringLiteral("me"), kBoard);
        for (quint64 stamp = 2; stamp <= 100; ++stamp)
            board.receive("ann", stampedStroke("ann", stamp, double(stamp % 9) / 5 - 0.9));
        const auto right = [](quint64 stamp) {
            DoodleActionPtr action = stampedStroke("ben", stamp, 0);
            action->pathPoints() = strokeAction("ben", {{0.9, -0.5}, {0.95, 0.5}})->pathPoints();
            return action;
        };
        board.receive("ben", right(1));
        board.receive("ben", right(101));
        board.receive("ben", stamped(commandAction(DoodleActionTypeUndo, "ben"), 101));
        QCOMPARE(board.board.getAllPath().size(), 100);
        QCOMPARE(differenceFromReplay(board), 0);
    }

    void aClearCrossingADrawingInFlight_data()
    {
        QTest::addColumn<quint64>("drawingStamp");
        QTest::addColumn<bool>("kept");
        QTest::newRow("ordered before the clear: dropped") << quint64(4) << false;
        QTest::newRow("ordered after the clear: kept") << quint64(6) << true;
    }
    void aClearCrossingADrawingInFlight()
    {
        QFETCH(quint64, drawingStamp);
        QFETCH(bool, kept);
        Participant board(QStringLiteral("me"), kBoard);
        board.receive("ann", stampedStroke("ann", 2, 0));
        board.receive("ben", stamped(commandAction(DoodleActionTypeClean, "ben"), 5));
        board.receive("cat", stampedStroke("cat", drawingStamp, 0.3));
        QCOMPARE(cacheOf(board.board), kept ? QStringList{QStringLiteral("cat 6")} : QStringList());
        QCOMPARE(differenceFromReplay(board), 0);
    }

    void statesMergeAsAUnion()
    {
        // Two participants cut off from each other both drew; a third joins late.
        Participant a(QStringLiteral("a"), kBoard), b(QStringLiteral("b"), kBoard);
        for (quint64 s = 1; s <= 3; ++s) {
            a.receive("ann", stampedStroke("ann", s, -0.6 + 0.3 * double(s)));
            b.receive("ben", stampedStroke("ben", s, -0.5 + 0.3 * double(s)));
        }
        b.receive("ann", stampedStroke("ann", 1, -0.3));
        b.receive("ann", stamped(commandAction(DoodleActionTypeUndo, "ann"), 1));
        const QString stateA = a.board.exportState(), stateB = b.board.exportState();
        QVERIFY(a.board.mergeState(stateB));
        QVERIFY(b.board.mergeState(stateA));
        QCOMPARE(cacheOf(a.board), QStringList({"ben 1", "ann 2", "ben 2", "ann 3", "ben 3"}));
        QCOMPARE(cacheOf(b.board), cacheOf(a.board));
        QCOMPARE(b.board.fingerprint(), a.board.fingerprint());
        QCOMPARE(maxChannelDifference(a.cache(), b.cache(), kBoard), 0);
        QCOMPARE(differenceFromReplay(a), 0);
        // Merging again changes nothing; a late joiner catches up in one merge.
        const quint64 before = a.board.fingerprint();
        QVERIFY(a.board.mergeState(b.board.exportState()));
        QCOMPARE(a.board.fingerprint(), before);
        Participant late(QStringLiteral("late"), kBoard);
        QVERIFY(late.board.mergeState(a.board.exportState()));
        QCOMPARE(late.board.fingerprint(), before);
        QCOMPARE(maxChannelDifference(late.cache(), a.cache(), kBoard), 0);
        QVERIFY(late.board.clock() >= a.board.clock());
        // The state travels deflated, and the plain form of earlier boards still merges.
        const QByteArray packed = QByteArray::fromBase64(
            QJsonDocument::fromJson(a.board.exportState().toUtf8())["deflated"]
                .toString()
                .toLatin1());
        const QByteArray plain = qUncompress(QByteArray::fromHex("01000000") + packed);
        QVERIFY(plain.startsWith("{\"actions\":") && plain.contains("\"doodle_state\":1"));
        Participant old(QStringLiteral("old"), kBoard);
        QVERIFY(old.board.mergeState(QString::fromUtf8(plain)));
        QCOMPARE(old.board.fingerprint(), before);
        // Junk, another version and a state that would inflate past the bound
        // are refused, in bounded memory, and change nothing.
        LogCapture log;
        QVERIFY(!late.board.mergeState(QStringLiteral("{\"doodle")));
        QVERIFY(!late.board.mergeState(QStringLiteral("{\"doodle_state\":3,\"actions\":[]}")));
        const QByteArray bomb = qCompress(QByteArray(80 << 20, ' '), 9).mid(4);
        DoodleBoardCore::setBackgroundRedrawFrom(-1); // read here, not on the worker
        QVERIFY(!late.board.mergeState(QStringLiteral("{\"doodle_state\":2,\"deflated\":\"%1\"}")
                                           .arg(QString::fromLatin1(bomb.toBase64()))));
        QCOMPARE(log.lines(),
                 QStringList({"not a board state; not merged", "not a board state; not merged",
                              "a packed board state does not inflate within 67108864 bytes; not "
                              "merged"}));
        DoodleBoardCore::setBackgroundRedrawFrom(kSavepointStep);
        QCOMPARE(late.board.fingerprint(), before);
    }

    void moderation()
    {
        Participant board(QStringLiteral("me"), kBoard);
        board.receive("ann", stampedStroke("ann", 1, -0.5));
        board.receive("ben", stampedStroke("ben", 2, 0));
        board.receive("ben", stampedStroke("ben", 3, 0.5));
        board.board.setMuted(QStringLiteral("ann"), true);
        board.receive("ann", stampedStroke("ann", 4, 0.2));
        QCOMPARE(cacheOf(board.board), QStringList({"ann 1", "ben 2", "ben 3"}));
        board.board.setMuted(QStringLiteral("ann"), false);
        board.board.removeDrawingsOf(QStringLiteral("ben"));
        QCOMPARE(cacheOf(board.board), QStringList{QStringLiteral("ann 1")});
        board.receive("ben", stampedStroke("ben", 2, 0)); // a copy does not bring it back
        board.receive("ann", stampedStroke("ann", 5, 0.2));
        QCOMPARE(cacheOf(board.board), QStringList({"ann 1", "ann 5"}));
        QCOMPARE(differenceFromReplay(board), 0);
        // Ben's own board, moderated the same way, has nothing of his left to
        // undo and sends nothing: a board that still holds his drawing keeps it.
        Participant ben(QStringLiteral("ben"), kBoard);
        ben.receive("ben", stampedStroke("ben", 2, 0));
        ben.board.removeDrawingsOf(QStringLiteral("ben"));
        ben.board.undo();
        QVERIFY(ben.host.generated.isEmpty());
        board.board.reset(); // forgets the drawings, as a fresh board has none
        QCOMPARE(board.board.fingerprint(),
                 Participant(QStringLiteral("me"), kBoard).board.fingerprint());
    }

    void peersWithoutStamps()
    {
        Participant board(QStringLiteral("me"), kBoard);
        board.receive("old", strokeAction("old", {{-0.5, 0}, {0.5, 0}}));
        board.receive("ann", stampedStroke("ann", 7, 0.3));
        board.receive("old", strokeAction("old", {{-0.5, 0.5}, {0.5, 0.5}}));
        board.receive("ann", stampedStroke("ann", 7, 0.3)); // a copy, behind theirs
        // Arrival order for them; an undo without a stamp takes the sender's last.
        board.receive("old", commandAction(DoodleActionTypeUndo, "old"));
        QCOMPARE(cacheOf(board.board), QStringList({"old 0", "ann 7"}));
        board.receive("old", commandAction(DoodleActionTypeClean, "old"));
        QVERIFY(cacheOf(board.board).isEmpty());
        QCOMPARE(differenceFromReplay(board), 0);
    }

    // Drawings without a stamp travel in the state, at their place, and are
    // taken once per copy the board lacks: two equal dots are two.
    void unstampedDrawingsTravelWithTheState_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("agrees");
        const QStringList all{"old 0", "ann 1", "old 0", "old 0", "ann 2"};
        QTest::newRow("late joiner") << "" << all << true;
        QTest::newRow("holds one of the two dots") << "dot" << all << true;
        QTest::newRow("a clear here the state lacks")
            << "clear" << QStringList{QStringLiteral("ann 2")} << false;
        QTest::newRow("their author muted here")
            << "mute" << QStringList{"ann 1", "ann 2"} << false;
    }
    void unstampedDrawingsTravelWithTheState()
    {
        QFETCH(QString, before);
        QFETCH(QStringList, expected);
        QFETCH(bool, agrees);
        const DoodleActionPtr line = strokeAction("old", {{-0.6, -0.4}, {0.6, -0.4}});
        const DoodleActionPtr dot = strokeAction("old", {{0.1, 0.1}, {0.1, 0.1}}, Qt::green, 0.1f);
        Participant sender(QStringLiteral("s"), kBoard), board(QStringLiteral("me"), kBoard);
        sender.receive("old", line);
        sender.receive("ann", stampedStroke("ann", 1, -0.5));
        sender.receive("old", dot);
        sender.receive("old", dot);
        sender.receive("ann", stampedStroke("ann", 2, 0));
        if (before == QLatin1String("dot")) {
            board.receive("ann", stampedStroke("ann", 1, -0.5));
            board.receive("old", dot);
        } else if (before == QLatin1String("clear")) {
            board.receive("ben", stamped(commandAction(DoodleActionTypeClean, "ben"), 1));
        } else if (before == QLatin1String("mute")) {
            board.board.setMuted(QStringLiteral("old"), true);
        }
        const QString state = sender.board.exportState();
        QVERIFY(board.board.mergeState(state));
        QCOMPARE(cacheOf(board.board), expected);
        QCOMPARE(board.board.fingerprint() == sender.board.fingerprint(), agrees);
        if (agrees)
            QCOMPARE(maxChannelDifference(board.cache(), sender.cache(), kBoard), 0);
        QCOMPARE(differenceFromReplay(board), 0);
        const quint64 merged = board.board.fingerprint();
        QVERIFY(board.board.mergeState(state)); // twice changes nothing
        QCOMPARE(cacheOf(board.board), expected);
        QCOMPARE(board.board.fingerprint(), merged);
    }

    // Two boards with one drawing under the same stamp: their fingerprints
    // agree exactly when the drawings show the same, also when one board drew
    // it and the other decoded it from its text.
    void fingerprintSeesWhatIsDrawn_data()
    {
        QTest::addColumn<DoodleActionPtr>("first");
        QTest::addColumn<DoodleActionPtr>("second");
        QTest::addColumn<bool>("drawnHere");
        QTest::addColumn<bool>("equal");
        const auto stroke = [](float y, const QColor &color) {
            return strokeAction("ann", {{-0.31, y}, {0.123457, 0.7}, {0.5, -0.2}}, color, 0.0137f);
        };
        const auto text = [](const QString &words) {
            DoodleActionPtr action = boxAction(DoodleActionTypeText, "ann", {0.1, 0.2, 0, 0});
            action->setText(words);
            action->setTextSize(0.05f);
            return action;
        };
        const QRectF box(-0.3, -0.2, 0.45, 0.3);
        const auto arrow = boxAction(DoodleActionTypeArrow, "ann", box);
        const auto otherEnd = boxAction(DoodleActionTypeArrow, "ann", box.adjusted(0, 0, 0.1, 0));
        QTest::newRow("stroke drawn here")
            << stroke(0.2f, Qt::red) << stroke(0.2f, Qt::red) << true << true;
        QTest::newRow("text drawn here") << text("hi") << text("hi") << true << true;
        QTest::newRow("arrow drawn here") << arrow << arrow << true << true;
        QTest::newRow("a point moved")
            << stroke(0.2f, Qt::red) << stroke(0.21f, Qt::red) << false << false;
        QTest::newRow("another colour")
            << stroke(0.2f, Qt::red) << stroke(0.2f, Qt::blue) << false << false;
        QTest::newRow("other words") << text("hi") << text("ho") << false << false;
        QTest::newRow("another arrow end") << arrow << otherEnd << false << false;
    }
    void fingerprintSeesWhatIsDrawn()
    {
        QFETCH(DoodleActionPtr, first);
        QFETCH(DoodleActionPtr, second);
        QFETCH(bool, drawnHere);
        QFETCH(bool, equal);
        Participant ann(QStringLiteral("ann"), kBoard), peer(QStringLiteral("peer"), kBoard);
        if (drawnHere) {
            ann.linkTo(peer); // the drawing reaches the peer as its text
            QVERIFY(ann.board.commitLocalAction(first));
        } else {
            first->setSeqNo(1);
            second->setSeqNo(1);
            ann.receive("ann", first);
            peer.receive("ann", second);
        }
        QCOMPARE(cacheOf(peer.board), QStringList{QStringLiteral("ann 1")});
        QCOMPARE(cacheOf(ann.board), cacheOf(peer.board));
        QCOMPARE(ann.board.fingerprint() == peer.board.fingerprint(), equal);
    }

    // Copies of one drawing without a stamp each count.
    void fingerprintCountsCopies()
    {
        Participant twice(QStringLiteral("ann"), kBoard);
        const DoodleActionPtr dot = strokeAction("pub", {{0.1, 0.1}});
        twice.receive("pub", dot);
        const quint64 once = twice.board.fingerprint();
        twice.receive("pub", dot);
        QCOMPARE(twice.board.getAllPath().size(), 2);
        QVERIFY(twice.board.fingerprint() != once);
    }

    // A recorded session played as the local user's own: the peer shows what
    // this board shows, and the recording itself stays as it was.
    void recordedActionsCommittedAsOwn()
    {
        Participant me(QStringLiteral("me"), kBoard), peer(QStringLiteral("peer"), kBoard);
        me.linkTo(peer);
        const QList<DoodleActionPtr> recording = {
            stampedStroke("bob", 40, -0.5),
            boxAction(DoodleActionTypeRectangle, "bob", QRectF(-0.5, -0.2, 0.6, 0.4)),
            stampedStroke("bob", 41, 0.1), commandAction(DoodleActionTypeUndo, "bob"),
            commandAction(DoodleActionTypeSticker, "bob")};
        QList<bool> committed;
        for (const DoodleActionPtr &action : recording)
            committed << me.board.commitLocalAction(action);
        QCOMPARE(committed, QList<bool>({true, true, true, true, false}));
        QCOMPARE(cacheOf(me.board), QStringList({"me 1", "me 2"}));
        QCOMPARE(cacheOf(peer.board), cacheOf(me.board));
        QCOMPARE(peer.board.fingerprint(), me.board.fingerprint());
        QCOMPARE(maxChannelDifference(me.cache(), peer.cache(), kBoard), 0);
        QCOMPARE(me.host.generated.size(), 4);
        QCOMPARE(me.host.generated.first()->userId(), QStringLiteral("me"));
        QCOMPARE(me.host.generated.last()->seqNo(), quint64(3)); // the undo names its drawing
        QCOMPARE(recording.first()->userId(), QStringLiteral("bob"));
        QCOMPARE(recording.first()->seqNo(), quint64(40));

        QVERIFY(me.board.commitLocalAction(commandAction(DoodleActionTypeClean, "bob")));
        QCOMPARE(cacheOf(peer.board), QStringList());
    }
};

QTEST_MAIN(TestDoodleLayoutState)
#include "tst_DoodleLayoutState.moc"
