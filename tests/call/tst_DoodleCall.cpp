// A real call: `doodle join` participants and mosquitto brokers started on free
// loopback ports. Whatever happens to the brokers, every board ends identical;
// over TLS with passwords and an ACL nobody draws as another.
#include "CallProcesses.h"

#include "DoodleCommands.h"

#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QtTest>

#include <utility>

#include <signal.h>

#ifdef DOODLE_HAVE_QUICK
#include <DoodleBoard.h>

#include <QQuickWindow>
#endif

namespace {

const QString kSize = QStringLiteral("390x560");
const QString kScale = QStringLiteral("1");

// A session of `count` actions in `color`: strokes and erasures of `points`
// points, shapes, undos and, for one participant, a clear half way.
QStringList makeSession(quint32 seed, int count, const QColor &color, bool clearHalfWay,
                        int points = 8)
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
            for (int p = 0; p < points; ++p)
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

// The players' colours of the call tests.
const QList<QColor> kColors{QColor(200, 30, 30), QColor(30, 150, 30), QColor(30, 30, 200)};

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

#ifdef DOODLE_HAVE_QUICK
// The Quick board under `item`, or nullptr.
DoodleBoard *findQuickBoard(QQuickItem *item)
{
    if (auto *board = qobject_cast<DoodleBoard *>(item))
        return board;
    for (QQuickItem *child : item->childItems()) {
        if (DoodleBoard *board = findQuickBoard(child))
            return board;
    }
    return nullptr;
}

// The shown Quick window that holds a board.
QQuickWindow *quickJoinWindow()
{
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        auto *quick = qobject_cast<QQuickWindow *>(window);
        if (quick && quick->isVisible() && findQuickBoard(quick->contentItem()))
            return quick;
    }
    return nullptr;
}

// A stroke across the board, dragged with the mouse in its window.
void dragAcross(QQuickWindow *window, DoodleBoard *board)
{
    const auto at = [board](double x, double y) {
        return board->mapToScene(QPointF(board->width() * x, board->height() * y)).toPoint();
    };
    QTest::mousePress(window, Qt::LeftButton, {}, at(0.2, 0.3));
    for (int step = 1; step <= 10; ++step)
        QTest::mouseMove(window, at(0.2 + 0.06 * step, 0.3 + 0.04 * step));
    QTest::mouseRelease(window, Qt::LeftButton, {}, at(0.8, 0.7));
}
#endif

} // namespace

class TestDoodleCall : public QObject
{
    Q_OBJECT
private:
    QTemporaryDir m_dir;
    // The secure broker, run once for every test that needs it, and its secrets.
    QTemporaryDir m_secrets;
    std::unique_ptr<Broker> m_secure;

    // Starts `doodle join` headless for `user` in call "board".
    void join(ToolProcess &member, const QString &brokers, const QString &user,
              const QStringList &extra,
              const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        member.start(DOODLE_TOOL,
                     QStringList{"join", "--broker", brokers, "--call", "board", "--user", user,
                                 "--size", kSize, "--scale", kScale, "--snapshot",
                                 m_dir.filePath(user + ".png")} +
                         extra,
                     environment);
    }
    QString secret(const QString &file) const { return m_secrets.filePath(file); }

    // Makes the throwaway secrets with the shipped script and starts a broker
    // with the shipped configuration; false when openssl or mosquitto_passwd
    // are missing.
    bool startSecureBroker()
    {
        for (const char *tool : {"openssl", "mosquitto_passwd", "bash"}) {
            if (QStandardPaths::findExecutable(tool).isEmpty())
                return false;
        }
        const quint16 port = freeLoopbackPort();
        for (const QString &dir : {m_secrets.path(), secret("stranger")}) {
            if (QProcess::execute("bash", {DOODLE_SECURE_SCRIPT, dir, QString::number(port)}) != 0)
                return false;
        }
        QFile config(secret("mosquitto.conf"));
        if (!config.open(QIODevice::Append) || config.write(Broker::keepUserLine().toUtf8()) < 0)
            return false;
        config.close();
        m_secure = std::make_unique<Broker>(DOODLE_MOSQUITTO);
        m_secure->useConfig(config.fileName(), port);
        return m_secure->start();
    }

    QString readSecret(const QString &file) const
    {
        QFile in(secret(file));
        return in.open(QIODevice::ReadOnly) ? QString::fromUtf8(in.readAll()).trimmed() : QString();
    }
    // Starts `user` playing `count` actions in `color` (a clear half way when
    // `clear`), with the `extra` options.
    void play(ToolProcess &member, const QString &brokers, const QString &user, const QColor &color,
              quint32 seed, int count, const QStringList &extra, bool clear = false)
    {
        const QString session = m_dir.filePath(user + ".jsonl");
        QVERIFY(writeLines(session, makeSession(seed, count, color, clear)));
        join(member, brokers, user, QStringList{"--play", session} + extra);
    }
    // Starts users[i] playing `count` actions in kColors[i] through brokers[i];
    // users[clearer] clears half way.
    void playAll(ToolProcess *members, const QStringList &users, const QStringList &brokers,
                 quint32 seed, int count, const QStringList &extra, int clearer = 1)
    {
        for (int i = 0; i < users.size(); ++i)
            play(members[i], brokers[i], users[i], kColors[i], seed + quint32(i), count, extra,
                 i == clearer);
    }
    // Sends `text` on `topic` with mosquitto_pub; `extra` adds TLS and a login.
    static void publish(quint16 port, const QString &topic, const QString &text,
                        const QStringList &extra = {})
    {
        ToolProcess publisher;
        publisher.start(DOODLE_MOSQUITTO_PUB,
                        QStringList{"-h", "127.0.0.1", "-p", QString::number(port), "-q", "1", "-t",
                                    topic, "-m", text} +
                            extra);
        QVERIFY2(publisher.endsWell(), qPrintable(publisher.err()));
    }

    // Every member ends well with one fingerprint, not that of an empty board,
    // and every user's picture is the same (`agreed`), with every one of
    // `colors`. The members in `reconnected` said they reconnected.
    void expectAgreement(const QList<ToolProcess *> &members, const QStringList &users,
                         const QList<QColor> &colors = {},
                         const QList<ToolProcess *> &reconnected = {}, QImage *agreed = nullptr)
    {
        for (ToolProcess *member : members) {
            QVERIFY2(member->endsWell(45000), qPrintable(member->err()));
            QCOMPARE(member->lastLine(), members.first()->lastLine());
        }
        QVERIFY(members.first()->lastLine().startsWith("fingerprint "));
        QVERIFY(members.first()->lastLine() != "fingerprint 0000000000000000");
        const QImage first = picture(m_dir.filePath(users.first() + ".png"));
        QCOMPARE(first.size(), QSize(390, 560));
        for (const QString &user : users)
            QVERIFY2(picture(m_dir.filePath(user + ".png")) == first,
                     qPrintable(user + " differs from " + users.first()));
        for (const QColor &color : colors)
            QVERIFY2(containsColor(first, color), qPrintable(color.name()));
        for (ToolProcess *member : reconnected)
            QVERIFY2(member->out().contains("\nreconnected\n"), qPrintable(member->out()));
        if (agreed)
            *agreed = first;
    }

private slots:
    void initTestCase()
    {
        if (!Broker::isInstalled(DOODLE_MOSQUITTO))
            QSKIP("the mosquitto broker is not installed (scripts/deps.sh installs it)");
        QVERIFY(m_dir.isValid());
        if (!startSecureBroker())
            m_secure.reset();
    }

    // Three players draw at once, a fourth joins a quarter of the way in and
    // the broker restarts half way: every drawing, the clear included, survives.
    void concurrentDrawingALateJoinerAndABrokerRestartEndIdentical()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        const QStringList users{"ann", "ben", "cat"};
        ToolProcess members[4];
        playAll(members, users, QStringList(3, broker.address()), 1, 60,
                {"--interval", "50", "--quit-after-idle", "1"});
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 10/60"), 20000);
        join(members[3], broker.address(), "dan", {"--quit-after-idle", "1"});
        QTRY_VERIFY_WITH_TIMEOUT(members[3].out().contains("connected"), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 20/60"), 20000);
        QVERIFY2(members[0].isRunning(), qPrintable(members[0].err()));
        broker.stop();
        QVERIFY(broker.start());
        const QList<ToolProcess *> all{&members[0], &members[1], &members[2], &members[3]};
        expectAgreement(all, users + QStringList{"dan"}, kColors, all);
    }

    // A broker that drops a client sending more than 16 KiB at once: long
    // strokes, their undos and the late joiner's state go in parts within
    // the participants' budget.
    void aCallCappedAt16KiBEndsIdentical()
    {
        Broker broker(DOODLE_MOSQUITTO, "max_packet_size 16384");
        QVERIFY(broker.start());
        const QStringList lines = makeSession(3, 24, kColors[0], false, 700);
        QVERIFY(lines.first().size() > 30000);
        const QString session = m_dir.filePath("capped.jsonl");
        QVERIFY(writeLines(session, lines));
        const QStringList budget{"--message-budget", "16000", "--quit-after-idle", "1"};
        ToolProcess ann, ben;
        join(ann, broker.address(), "ann",
             QStringList{"--play", session, "--interval", "50"} + budget);
        QTRY_VERIFY_WITH_TIMEOUT(ann.out().contains("played 12/24"), 20000);
        join(ben, broker.address(), "ben", budget);
        expectAgreement({&ann, &ben}, {"ann", "ben"}, {kColors[0]});
    }

    // Ann and Ben may use either broker and start on the first; Cat knows only
    // the second. The first stops for good a quarter of the way in: Ann and Ben
    // move to the second.
    void aCallOutlivesItsFirstBroker()
    {
        Broker first(DOODLE_MOSQUITTO), second(DOODLE_MOSQUITTO);
        QVERIFY(first.start());
        QVERIFY(second.start());
        const QString both = first.address() + ',' + second.address();
        ToolProcess members[3];
        playAll(members, {"ann", "ben", "cat"}, {both, both, second.address()}, 4, 40,
                {"--interval", "50", "--quit-after-idle", "1"});
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 10/40"), 20000);
        QVERIFY2(members[0].out().contains("connected to " + first.address()),
                 qPrintable(members[0].out()));
        first.stop();
        expectAgreement({&members[0], &members[1], &members[2]}, {"ann", "ben", "cat"}, kColors,
                        {&members[0], &members[1]});
    }

    // Two participants and a plain MQTT client without stamps draw at once, and
    // a third participant joins a quarter of the way in: the plain client's
    // drawings end in place on every board.
    void aCallWithAPeerWithoutStampsEndsIdentical()
    {
        if (!Broker::isInstalled(DOODLE_MOSQUITTO_PUB))
            QSKIP("mosquitto_pub is not installed (scripts/deps.sh installs it)");
        Broker broker(DOODLE_MOSQUITTO, "set_tcp_nodelay true"); // each message sent at once
        QVERIFY(broker.start());
        ToolProcess members[3], plain;
        playAll(members, {"ann", "ben"}, QStringList(2, broker.address()), 21, 40,
                {"--interval", "40", "--quit-after-idle", "1.5"}, -1);
        for (int i = 0; i < 2; ++i)
            QTRY_VERIFY_WITH_TIMEOUT(members[i].out().contains("connected"), 10000);
        // The plain client: one line at a time, on its own topic, in between.
        const QString lines = m_dir.filePath("plain.jsonl");
        QVERIFY(writeLines(lines, makeSession(23, 30, kColors[2], false)));
        plain.start("bash", {"-c", QStringLiteral("while read -r line; do %1 -h 127.0.0.1 -p %2 "
                                                  "-q 1 -t doodle/board/pat -m \"$line\"; "
                                                  "sleep 0.03; done < %3")
                                       .arg(DOODLE_MOSQUITTO_PUB)
                                       .arg(broker.port())
                                       .arg(lines)});
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 10/40"), 20000);
        join(members[2], broker.address(), "dan", {"--quit-after-idle", "1.5"});
        QVERIFY2(plain.endsWell(30000), qPrintable(plain.err()));
        expectAgreement({&members[0], &members[1], &members[2]}, {"ann", "ben", "dan"}, kColors);
    }

    // A call on a three-node RabbitMQ cluster: each player starts on a node of
    // its own and knows the others; a fourth joins late. The first node is killed a
    // third of the way in and its player moves to the next.
    void aCallOnAClusterOutlivesANode()
    {
        if (!RabbitCluster::isInstalled())
            QSKIP("rabbitmq-server is not installed (scripts/test.sh installs it)");
        RabbitCluster cluster(DOODLE_CLUSTER_SCRIPT);
        const QStringList nodes = cluster.start();
        QVERIFY2(nodes.size() == 3, qPrintable(cluster.log()));
        QStringList orders;
        for (int i = 0; i < 3; ++i)
            orders << (nodes.mid(i) + nodes.mid(0, i)).join(',');
        const QStringList users{"ann", "ben", "cat"};
        ToolProcess members[4];
        // Slow enough that the first player still draws when its node fails,
        // also on a busy machine; nobody clears, so every player's drawings
        // stay whatever order they end in.
        playAll(members, users, orders, 31, 40, {"--interval", "150", "--quit-after-idle", "2"},
                -1);
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 10/40"), 30000);
        join(members[3], orders[0], "dan", {"--quit-after-idle", "2"});
        QTRY_VERIFY_WITH_TIMEOUT(members[0].out().contains("played 15/40"), 30000);
        // The first player's node fails at once, as a crashed one does.
        QVERIFY(cluster.processId(1) > 0);
        QVERIFY(::kill(pid_t(cluster.processId(1)), SIGKILL) == 0);
        expectAgreement({&members[0], &members[1], &members[2], &members[3]},
                        users + QStringList{"dan"}, kColors, {&members[0]});
    }

    // Alice (with a client certificate) and Bob (his password from the
    // environment) draw over TLS. Mallory, in the call too, forges a drawing on
    // Alice's topic, then draws one on her own: the broker drops the first.
    void aSecureCallConvergesAndNobodyDrawsAsAnother()
    {
        if (!m_secure)
            QSKIP("openssl or mosquitto_passwd is missing: no secure broker to test against");
        const QColor red = kColors[0], blue = kColors[2], forged(250, 150, 0), own(0, 160, 160);
        ToolProcess alice, bob;
        play(alice, m_secure->address(), "alice", red, 11, 20,
             QStringList{"--cafile", secret("ca.crt"), "--password-file", secret("alice.password"),
                         "--cert", secret("alice.crt"), "--key", secret("alice.key"),
                         "--quit-after-idle", "2"});
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DOODLE_PASSWORD", readSecret("bob.password"));
        const QString bobSession = m_dir.filePath("bob.jsonl");
        QVERIFY(writeLines(bobSession, makeSession(12, 20, blue, false)));
        join(bob, m_secure->address(), "bob",
             {"--cafile", secret("ca.crt"), "--play", bobSession, "--quit-after-idle", "2"},
             environment);
        for (ToolProcess *member : {&alice, &bob})
            QTRY_VERIFY2_WITH_TIMEOUT(member->out().contains("connected"),
                                      qPrintable(member->err()), 10000);
        const QStringList mallory{
            "--cafile", secret("ca.crt"), "-u", "mallory", "-P", readSecret("mallory.password")};
        publish(m_secure->port(), "doodle/board/alice", makeSession(13, 1, forged, false).first(),
                mallory);
        publish(m_secure->port(), "doodle/board/mallory", makeSession(14, 1, own, false).first(),
                mallory);
        QImage agreed;
        expectAgreement({&alice, &bob}, {"alice", "bob"}, {red, blue, own}, {}, &agreed);
        QVERIFY2(!containsColor(agreed, forged), "mallory drew as alice");
    }

    // Actions a plain MQTT client sends reach every board as `doodle render`
    // draws them.
    void actionsFromAPlainClientReachEveryBoardAsRendered()
    {
        if (!Broker::isInstalled(DOODLE_MOSQUITTO_PUB))
            QSKIP("mosquitto_pub is not installed (scripts/deps.sh installs it)");
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        ToolProcess members[2];
        for (int i = 0; i < 2; ++i) {
            join(members[i], broker.address(), QStringLiteral("viewer%1").arg(i),
                 {"--quit-after-idle", "3"});
            QTRY_VERIFY_WITH_TIMEOUT(members[i].out().contains("connected"), 10000);
        }
        // Each line as its author would send it: on the author's own topic, in order.
        QFile session(DOODLE_SAMPLE_SESSION);
        QVERIFY(session.open(QIODevice::ReadOnly));
        while (!session.atEnd()) {
            const QString text = QString::fromUtf8(session.readLine()).trimmed();
            const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
            QVERIFY(action);
            publish(broker.port(), "doodle/board/" + action->userId(), text);
        }
        ToolProcess render;
        const QString rendered = m_dir.filePath("rendered.png");
        render.start(DOODLE_TOOL, {"render", DOODLE_SAMPLE_SESSION, "-o", rendered, "--size", kSize,
                                   "--scale", kScale, "--background", "#00000000"});
        QVERIFY2(render.endsWell(20000), qPrintable(render.err()));
        QImage agreed;
        expectAgreement({&members[0], &members[1]}, {"viewer0", "viewer1"}, {}, {}, &agreed);
        QVERIFY(agreed == picture(rendered));
        QVERIFY(containsColor(agreed, QColor::fromRgba(4280191205u))); // the blue spiral
    }

    // A participant that leaves and comes back under the same id draws at once:
    // its new drawing must not pass for a copy of the one it drew before.
    void aRejoinersDrawingReachesTheOthers()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        ToolProcess watcher, visits[2];
        join(watcher, broker.address(), "ben", {"--quit-after-idle", "2"});
        QTRY_VERIFY_WITH_TIMEOUT(watcher.out().contains("connected"), 10000);
        const QList<QColor> colors{kColors[0], kColors[2]};
        for (int i = 0; i < 2; ++i) {
            play(visits[i], broker.address(), "ann", colors[i], quint32(i + 7), 1,
                 {"--interval", "0", "--quit-after-idle", "0.3"});
            QVERIFY2(visits[i].endsWell(), qPrintable(visits[i].err()));
        }
        expectAgreement({&watcher, &visits[1]}, {"ben", "ann"}, colors);
    }

    // The call settles on the first participant's board shape; a participant
    // that asked for its own keeps it.
    void theCallAgreesOnTheFirstBoardShape()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        const QStringList users{"ann", "ben", "cat"};
        const QList<QSize> sizes{{390, 560}, {800, 600}, {400, 400}};
        std::vector<std::unique_ptr<DoodleLayout>> boards;
        std::vector<std::unique_ptr<DoodleCall>> calls;
        for (int i = 0; i < 3; ++i) {
            boards.push_back(std::make_unique<DoodleLayout>(users[i]));
            boards.back()->resetDoodleViewFrame(QRect(QPoint(), sizes[i]));
            calls.push_back(std::make_unique<DoodleCall>(boards.back().get(), "shape"));
            calls.back()->proposeBoardAspect(i == 2 ? QSizeF(16, 9) : QSizeF(sizes[i]), i == 2);
            QVERIFY(calls.back()->join(QStringLiteral("127.0.0.1"), broker.port()));
            QTRY_VERIFY_WITH_TIMEOUT(calls.back()->isConnected(), 10000);
            QTest::qWait(20); // later proposals
        }
        QTRY_COMPARE_WITH_TIMEOUT(boards[1]->boardAspect(), QSizeF(390, 560), 10000);
        QCOMPARE(boards[1]->getScaleSize(), QSizeF(418, 600)); // letterboxed in 800 x 600
        QCOMPARE(boards[0]->boardAspect(), QSizeF(390, 560));
        QCOMPARE(boards[2]->boardAspect(), QSizeF(16, 9));
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
            if (clicked || !watcher.participants().contains(QStringLiteral("ann")))
                return;
            for (QWidget *window : QApplication::topLevelWidgets()) {
                for (ZQDoodleButton *button : window->findChildren<ZQDoodleButton *>()) {
                    if (button->type() == 11 && button->isVisible() &&
                        !std::exchange(clicked, true))
                        QTest::mouseClick(button, Qt::LeftButton);
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

#ifdef DOODLE_HAVE_QUICK
    // `doodle join --quick` (here, in this process) and a headless Widgets
    // participant that plays a session: a stroke dragged on the Quick window
    // and the session reach both boards, which end with one fingerprint.
    void aQuickBoardAndAWidgetsBoardConverge()
    {
        Broker broker(DOODLE_MOSQUITTO);
        QVERIFY(broker.start());
        ToolProcess ann;
        play(ann, broker.address(), "ann", kColors[0], 41, 20,
             {"--interval", "20", "--quit-after-idle", "2"});
        QString quickFingerprint;
        bool drew = false;
        int sent = 0; // actions the Quick board generated
        QTimer driver;
        QElapsedTimer clock;
        clock.start();
        connect(&driver, &QTimer::timeout, this, [&] {
            QQuickWindow *window = quickJoinWindow();
            DoodleBoard *board = window ? findQuickBoard(window->contentItem()) : nullptr;
            if (board && board->isEditable() && !drew) {
                drew = true;
                connect(board, &DoodleBoard::actionGenerated, this, [&] { ++sent; });
                dragAcross(window, board);
            } else if (window && ((drew && !ann.isRunning()) || clock.elapsed() > 45000)) {
                quickFingerprint = board->fingerprint();
                window->close(); // the last window: the command ends
            }
        });
        driver.start(50);
        const int code = doodleJoin(
            {"--quick", "--broker", broker.address(), "--call", "board", "--user", "ben"});
        QCOMPARE(code, 0);
        QCOMPARE(sent, 1);
        QVERIFY2(ann.finishedWith(0), qPrintable(ann.err()));
        // Ann's board holds the stroke, Ben's her session: one fingerprint.
        QCOMPARE(ann.lastLine(),
                 QStringLiteral("fingerprint %1")
                     .arg(quickFingerprint.toULongLong(nullptr, 16), 16, 16, QLatin1Char('0')));
        QVERIFY(containsColor(picture(m_dir.filePath("ann.png")), kColors[0]));
    }
#endif

    // A line-based observer sees one catch-up message a line, a state included;
    // the joiner, which reads a state that large in the background, sends none
    // back once it holds the same board.
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
        play(ann, broker.address(), "ann", kColors[0], 7, 300,
             {"--interval", "0", "--quit-after-idle", "2"});
        QTRY_VERIFY_WITH_TIMEOUT(ann.out().contains("played 300/300"), 10000);
        join(ben, broker.address(), "ben", {"--quit-after-idle", "1"});
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
        QVERIFY2(kinds.count("state") == 1 && kinds.contains("join"), qPrintable(kinds.join(',')));
    }

    // Whatever `doodle join` cannot use ends it within seconds, saying why.
    void refusesWhatItCannotJoin_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        const QString nobody = QStringLiteral("127.0.0.1:%1").arg(freeLoopbackPort());
        const auto row = [](const char *name, const QString &broker, const QStringList &arguments,
                            int code, const QString &message) {
            QTest::newRow(name) << QStringList{"--broker", broker} + arguments << code << message;
        };
        const QStringList names{"--call", "c", "--user", "u"}, snapshot{"--snapshot", "x.png"},
            quick{"--quick"};
        const QString refused = "cannot reach the broker at " + nobody + " (Connection refused)";
        row("no broker listening", nobody, names + snapshot, 1, refused);
        row("no broker listening, with a window", nobody, names, 1, refused);
        row("no broker listening, with a Quick window", nobody, names + quick, 1, refused);
        row("a Quick window headless", nobody, names + snapshot + quick, 2,
            "--quick opens a window");
        row("no call", nobody, {"--user", "u"}, 2,
            "doodle join: missing --call NAME (the call's name)");
        row("a topic wildcard in the user", nobody, {"--call", "c", "--user", "u/+"}, 2, "--user");
        row("bad broker address", "127.0.0.1:http", names, 2, "--broker");
        row("idle without a picture", nobody, names + QStringList{"--quit-after-idle", "1"}, 2,
            "--snapshot");
        row("unreadable session", nobody, names + snapshot + QStringList{"--play", "/nonexistent"},
            2, "cannot read");
        if (!m_secure)
            return;
        const QString secure = m_secure->address(), ca = secret("ca.crt");
        const QStringList alice = QStringList{"--call", "board", "--user", "alice"} + snapshot;
        row("wrong password", secure,
            alice + QStringList{"--cafile", ca, "--password-file", secret("bob.password")}, 1,
            "the broker at " + secure + " refused the login as alice");
        row("unknown CA", secure, alice + QStringList{"--cafile", secret("stranger/ca.crt")}, 1,
            "does not verify against " + secret("stranger/ca.crt"));
        row("no TLS against a TLS listener", secure, alice, 1,
            "closed the connection before accepting it");
        row("a certificate without TLS", secure,
            alice + QStringList{"--cert", secret("alice.crt"), "--key", secret("alice.key")}, 2,
            "--cert and --key go with --cafile");
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
