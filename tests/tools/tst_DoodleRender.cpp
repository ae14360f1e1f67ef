// `doodle render` writes the picture of the board that received the same session.
#include <doodle/Doodle.h>

#include <QFile>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class TestDoodleRender : public QObject
{
    Q_OBJECT
private slots:
    void rendersWhatABoardShows_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("scale");
        QTest::addColumn<QString>("background");
        QTest::newRow("phone at 2x on white") << QSize(390, 844) << 2.0 << "#FFFFFFFF";
        QTest::newRow("phone at 3x, transparent") << QSize(390, 844) << 3.0 << "#00000000";
        QTest::newRow("landscape at 1x, transparent") << QSize(640, 360) << 1.0 << "#00000000";
    }
    void rendersWhatABoardShows()
    {
        QFETCH(QSize, size);
        QFETCH(double, scale);
        QFETCH(QString, background);
        QTemporaryDir dir;
        const QString png = dir.filePath("out.png");
        const QString size_ = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
        QProcess tool;
        tool.start(DOODLE_TOOL, {"render", DOODLE_SAMPLE_SESSION, "-o", png, "--size", size_,
                                 "--scale", QString::number(scale), "--background", background});
        QVERIFY(tool.waitForFinished(60000));
        QCOMPARE(tool.exitCode(), 0);
        QImage rendered(png);
        QCOMPARE(rendered.size(), size * scale);
        rendered.setDevicePixelRatio(scale); // a PNG does not keep the ratio

        DoodleScreen::setScaleOverride(scale);
        DoodleLayout board(QStringLiteral("viewer"));
        board.resetDoodleViewFrame(QRect(QPoint(0, 0), size));
        board.setBackgroundColor(
            UIColorFromHexadecimalColor(background.mid(1).toUInt(nullptr, 16)));
        QFile session(DOODLE_SAMPLE_SESSION);
        QVERIFY(session.open(QIODevice::ReadOnly));
        while (!session.atEnd()) {
            const DoodleActionPtr action =
                board.stringToDoodleAction(QString::fromUtf8(session.readLine()).trimmed());
            QVERIFY(action);
            board.onDoodleActionReceived(action->userId(), action);
        }
        // The board's own pixels at that scale over its colour: never a picture
        // made at another scale and resampled.
        QImage expected(rendered.size(), QImage::Format_ARGB32_Premultiplied);
        expected.setDevicePixelRatio(scale);
        expected.fill(board.backgroundColor());
        QPainter(&expected).drawImage(0, 0, board.doodleView()->cacheCanvas()->cacheImage());
        QCOMPARE(rendered, expected.convertToFormat(rendered.format()));
    }

    void badArgumentsAndLinesAreReported_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("no output") << QStringList{"render", DOODLE_SAMPLE_SESSION} << 2;
        QTest::newRow("bad colour")
            << QStringList{"render", DOODLE_SAMPLE_SESSION, "-o", "x.png", "--background", "red"}
            << 2;
        QTest::newRow("missing file") << QStringList{"render", "/nonexistent", "-o", "x.png"} << 2;
        QTest::newRow("a bad line")
            << QStringList{"render", DOODLE_BAD_SESSION, "-o", "x.png"} << 1;
    }
    void badArgumentsAndLinesAreReported()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QTemporaryDir dir;
        QProcess tool;
        tool.setWorkingDirectory(dir.path());
        tool.start(DOODLE_TOOL, arguments);
        QVERIFY(tool.waitForFinished(60000));
        QCOMPARE(tool.exitCode(), exitCode);
        QVERIFY(!tool.readAllStandardError().isEmpty());
    }
};

QTEST_MAIN(TestDoodleRender)
#include "tst_DoodleRender.moc"
