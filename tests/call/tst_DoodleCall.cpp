// A real call: `doodle join` participants and a mosquitto broker that this
// test starts on a free loopback port. Boards drawn at once, a late joiner and
// a broker restart end identical; actions from a plain MQTT client reach
// every board as `doodle render` draws them.
#include "CallProcesses.h"

#include "DoodleCommands.h"

#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <QRandomGenerator>
#include <QtTest>

namespace {

const QString kSize = QStringLiteral("390x560");
const QString kScale = QStringLiteral("1");

// A session of `count` actions in `color`: strokes, shapes, erasures, undos
// and, for one participant, a clear half way.
QStringList makeSession(quint32 seed, int count, const QColor &color, bool clearHalfWay)
{
    QRandomGenerator random(seed);
    const auto coordinate = [&random] { return float(random.bounded(1.6) - 0.8); };
    QStringList lines;
    for (int i = 1; i <= count; ++i) {
        auto action = std::make_shared<DoodleAction>();
        action->setBrushColor(color);
        action->setBrushWidth(0.015f);
        if (clearHalfWay && i == count / 2) {
            action->setActionType(DoodleActionTypeClean);
        } else if (i % 9 == 0) {
            action->setActionType(DoodleActionTypeUndo);
        } else if (i % 5 == 0) {
            action->setActionType(i % 10 == 0 ? DoodleActionTypeEllipse
                                              : DoodleActionTypeRectangle);
            action->setX(coordinate());
            action->setY(coordinate());
            action->setWidth(0.3f);
            action->setHeight(0.2f);
        } else {
            action->setActionType(i % 7 == 0 ? DoodleActionTypeEraser : DoodleActionTypeStroke);
            for (int p = 0; p < 8; ++p)
                action->addPointWithPositionX(coordinate(), coordinate(), 2);
        }
        lines << DoodleTranslate::stringFromDoodleAction(action);
    }
    return lines;
}

bool writeLines(const QString &path, const QStringList &lines)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(lines.join('\n').toUtf8() + '\n') > 0;
}

bool containsColor(const QImage &image, const QColor &color)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        if (std::find(line, line + argb.width(), color.rgba()) != line + argb.width())
            return true;
    }
    return false;
}

QImage picture(const QString &path)
{
    return QImage(path).convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class TestDoodleCall : public QObject
{
    Q_OBJECT
private:
    QTemporaryDir m_dir;

    // Starts `doodle join` headless for `user` in call "board".
    void join(ToolProcess &member, const Broker &broker, const QString &user,
              const QStringList &extra)
    {
        member.start(DOODLE_TOOL, QStringList{"join", "--broker", broker.address(), "--call",
                                              "board", "--user", user, "--size", kSize, "--scale",
                                              kScale, "--snapshot", m_dir.filePath(user + ".png")} +
                                      extra);
    }

private slots:
    void initTestCase()
    {
        if (!Broker::isInstalled(DOODLE_MOSQUITTO))
            QSKIP("the mosquitto broker is not installed (scripts/deps.sh installs it)");
        QVERIFY(m_dir.isValid());
    }

    void concurrentDrawingALateJoinerAndABrokerRestartEndIdentical()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        const QStringList users{"ann", "ben", "cat"};
        const QList<QColor> colors{QColor(200, 30, 30), QColor(30, 150, 30), QColor(30, 30, 200)};
        ToolProcess members[4];
        for (int i = 0; i < 3; ++i) {
            const QString session = m_dir.filePath(users[i] + ".jsonl");
            QVERIFY(writeLines(session, makeSession(quint32(i + 1), 60, colors[i], i == 1)));
            join(members[i], broker, users[i],
                 {"--play", session, "--interval", "50", "--quit-after-idle", "1"});
        }
        // A fourth joins a quarter of the way in; the broker restarts half way.
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 10/60"), 20000);
        join(members[3], broker, "dan", {"--quit-after-idle", "1"});
        QTRY_VERIFY_WITH_TIMEOUT(members[3].out().contains("connected"), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 20/60"), 20000);
        QVERIFY2(members[0].isRunning(), qPrintable(members[0].err()));
        broker.stop();
        QVERIFY(broker.start());

        QString fingerprint;
        QImage first;
        for (ToolProcess &member : members) {
            QTRY_VERIFY_WITH_TIMEOUT(!member.isRunning(), 45000);
            QVERIFY2(member.finishedWith(0), qPrintable(member.err()));
            // Every participant lived through the restart.
            QVERIFY2(member.out().contains("\nreconnected\n"), qPrintable(member.out()));
            if (fingerprint.isNull())
                fingerprint = member.lastLine();
            QCOMPARE(member.lastLine(), fingerprint);
        }
        QVERIFY(fingerprint.startsWith("fingerprint "));
        QVERIFY(fingerprint != "fingerprint 0000000000000000");
        for (const QString &user : QStringList{"ann", "ben", "cat", "dan"}) {
            const QImage image = picture(m_dir.filePath(user + ".png"));
            QCOMPARE(image.size(), QSize(390, 560));
            if (first.isNull())
                first = image;
            QVERIFY2(image == first, qPrintable(user + " differs from ann"));
        }
        // Drawings of all three players survived, the clear included.
        for (const QColor &color : colors)
            QVERIFY2(containsColor(first, color), qPrintable(color.name()));
    }

    void actionsFromAPlainClientReachEveryBoardAsRendered()
    {
        if (!Broker::isInstalled(DOODLE_MOSQUITTO_PUB))
            QSKIP("mosquitto_pub is not installed (scripts/deps.sh installs it)");
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        ToolProcess members[2];
        for (int i = 0; i < 2; ++i) {
            join(members[i], broker, QStringLiteral("viewer%1").arg(i), {"--quit-after-idle", "3"});
            QTRY_VERIFY_WITH_TIMEOUT(members[i].out().contains("connected"), 10000);
        }
        // Each line as its author would send it: on the author's own topic, in order.
        QFile session(DOODLE_SAMPLE_SESSION);
        QVERIFY(session.open(QIODevice::ReadOnly));
        while (!session.atEnd()) {
            const QString text = QString::fromUtf8(session.readLine()).trimmed();
            const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
            QVERIFY(action);
            ToolProcess publisher;
            publisher.start(DOODLE_MOSQUITTO_PUB,
                            {"-h", "127.0.0.1", "-p", QString::number(broker.port()), "-q", "1",
                             "-t", "doodle/board/" + action->userId(), "-m", text});
            QTRY_VERIFY_WITH_TIMEOUT(!publisher.isRunning(), 10000);
            QVERIFY2(publisher.finishedWith(0), qPrintable(publisher.err()));
        }
        ToolProcess render;
        const QString rendered = m_dir.filePath("rendered.png");
        render.start(DOODLE_TOOL, {"render", DOODLE_SAMPLE_SESSION, "-o", rendered, "--size", kSize,
                                   "--scale", kScale, "--background", "#00000000"});
        QTRY_VERIFY_WITH_TIMEOUT(!render.isRunning(), 20000);
        QVERIFY2(render.finishedWith(0), qPrintable(render.err()));
        const QImage expected = picture(rendered);
        for (ToolProcess &member : members) {
            QTRY_VERIFY_WITH_TIMEOUT(!member.isRunning(), 20000);
            QVERIFY2(member.finishedWith(0), qPrintable(member.err()));
            QCOMPARE(member.lastLine(), members[0].lastLine());
        }
        for (const QString user : {"viewer0", "viewer1"})
            QVERIFY2(picture(m_dir.filePath(user + ".png")) == expected, qPrintable(user));
        QVERIFY(containsColor(expected, QColor::fromRgba(4280191205u))); // the blue spiral
    }

    // A participant that leaves and comes back under the same id draws at once:
    // its new drawing must not pass for a copy of the one it drew before.
    void aRejoinersDrawingReachesTheOthers()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        ToolProcess watcher, visits[2];
        join(watcher, broker, "ben", {"--quit-after-idle", "2"});
        QTRY_VERIFY_WITH_TIMEOUT(watcher.out().contains("connected"), 10000);
        const QList<QColor> colors{QColor(200, 30, 30), QColor(30, 30, 200)};
        for (int i = 0; i < 2; ++i) {
            const QString session = m_dir.filePath(QStringLiteral("visit%1.jsonl").arg(i));
            QVERIFY(writeLines(session, makeSession(quint32(i + 7), 1, colors[i], false)));
            join(visits[i], broker, "ann",
                 {"--play", session, "--interval", "0", "--quit-after-idle", "0.3"});
            QTRY_VERIFY_WITH_TIMEOUT(!visits[i].isRunning(), 10000);
            QVERIFY2(visits[i].finishedWith(0), qPrintable(visits[i].err()));
        }
        QTRY_VERIFY_WITH_TIMEOUT(!watcher.isRunning(), 10000);
        QVERIFY2(watcher.finishedWith(0), qPrintable(watcher.err()));
        QCOMPARE(watcher.lastLine(), visits[1].lastLine());
        const QImage seen = picture(m_dir.filePath("ben.png"));
        for (const QColor &color : colors)
            QVERIFY2(containsColor(seen, color), qPrintable(color.name()));
    }

    // The tool bar's close button leaves the call (another participant hears
    // the goodbye) and ends the command.
    void theCloseButtonLeavesTheCallAndEnds()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        DoodleLayout board(QStringLiteral("watcher"));
        DoodleCall watcher(&board, QStringLiteral("closing"));
        QVERIFY(watcher.join(QStringLiteral("127.0.0.1"), broker.port()));
        QTRY_VERIFY_WITH_TIMEOUT(watcher.isConnected(), 10000);
        bool clicked = false;
        QTimer clicker;
        connect(&clicker, &QTimer::timeout, this, [&] {
            if (!watcher.participants().contains(QStringLiteral("ann")))
                return;
            for (QWidget *window : QApplication::topLevelWidgets()) {
                for (ZQDoodleButton *button : window->findChildren<ZQDoodleButton *>()) {
                    if (button->type() == 11 && button->isVisible() && !clicked) {
                        clicked = true;
                        QTest::mouseClick(button, Qt::LeftButton);
                    }
                }
            }
        });
        clicker.start(50);
        const int code =
            doodleJoin({"--broker", broker.address(), "--call", "closing", "--user", "ann"});
        QVERIFY(clicked);
        QCOMPARE(code, 0);
        QTRY_VERIFY_WITH_TIMEOUT(!watcher.participants().contains(QStringLiteral("ann")), 5000);
    }

    // A line-based observer sees one catch-up message a line, a state included.
    void aCatchUpMessageIsOneLine()
    {
        if (!Broker::isInstalled(DOODLE_MOSQUITTO_SUB))
            QSKIP("mosquitto_sub is not installed (scripts/deps.sh installs it)");
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        ToolProcess observer, ann, ben;
        // Line-buffered, as a person watching it in a terminal sees it.
        observer.start("stdbuf", {"-oL", DOODLE_MOSQUITTO_SUB, "-h", "127.0.0.1", "-p",
                                  QString::number(broker.port()), "-t", "doodle/board/+/sync", "-q",
                                  "1", "-d"});
        QTRY_VERIFY_WITH_TIMEOUT(observer.out().contains("SUBACK"), 10000);
        join(ann, broker, "ann",
             {"--play", DOODLE_SAMPLE_SESSION, "--interval", "0", "--quit-after-idle", "2"});
        QTRY_VERIFY_WITH_TIMEOUT(ann.out().contains("played 14/14"), 10000);
        join(ben, broker, "ben", {"--quit-after-idle", "1"});
        QTRY_VERIFY_WITH_TIMEOUT(!ann.isRunning() && !ben.isRunning(), 20000);
        QCOMPARE(ben.lastLine(), ann.lastLine());
        observer.stop();
        // -d adds lines of its own, "Client ..." and "Subscribed ...", one
        // PUBLISH line a message: every other line is a message.
        const QStringList lines = observer.out().split('\n', Qt::SkipEmptyParts);
        const qsizetype messages =
            lines.filter(QRegularExpression("^Client .* received PUBLISH")).size();
        QStringList kinds;
        for (const QString &line : lines) {
            if (line.startsWith("Client ") || line.startsWith("Subscribed "))
                continue;
            const QJsonObject message = QJsonDocument::fromJson(line.toUtf8()).object();
            QCOMPARE(message.value("doodle_sync").toInt(), 1);
            kinds << message.value("kind").toString();
        }
        QCOMPARE(kinds.size(), messages);
        QVERIFY2(kinds.contains("state") && kinds.contains("join"), qPrintable(kinds.join(',')));
    }

    void refusesWhatItCannotJoin_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        const QString nobody = QStringLiteral("127.0.0.1:%1").arg(freeLoopbackPort());
        const QStringList names{"--call", "c", "--user", "u"};
        const QString refused = "cannot reach the broker at " + nobody + " (Connection refused)";
        QTest::newRow("no broker listening")
            << QStringList{"--broker", nobody, "--snapshot", "x.png"} + names << 1 << refused;
        QTest::newRow("no broker listening, with a window")
            << QStringList{"--broker", nobody} + names << 1 << refused;
        QTest::newRow("no call") << QStringList{"--broker", nobody, "--user", "u"} << 2
                                 << "doodle join: missing --call NAME (the call's name)";
        QTest::newRow("a topic wildcard in the user")
            << QStringList{"--broker", nobody, "--call", "c", "--user", "u/+"} << 2 << "--user";
        QTest::newRow("bad broker address")
            << QStringList{"--broker", "127.0.0.1:http"} + names << 2 << "--broker";
        QTest::newRow("idle without a picture")
            << QStringList{"--broker", nobody, "--quit-after-idle", "1"} + names << 2
            << "--snapshot";
        QTest::newRow("unreadable session")
            << QStringList{"--broker", nobody, "--play", "/nonexistent", "--snapshot", "x.png"} +
                   names
            << 2 << "cannot read";
    }
    void refusesWhatItCannotJoin()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        ToolProcess tool;
        QElapsedTimer clock;
        clock.start();
        tool.start(DOODLE_TOOL, QStringList{"join"} + arguments);
        QTRY_VERIFY_WITH_TIMEOUT(!tool.isRunning(), 15000);
        QVERIFY2(clock.elapsed() < 10000, "took 10 s or more");
        QVERIFY2(tool.finishedWith(exitCode), qPrintable(tool.err()));
        QVERIFY2(tool.err().contains(message), qPrintable(tool.err()));
    }
};

QTEST_MAIN(TestDoodleCall)
#include "tst_DoodleCall.moc"
