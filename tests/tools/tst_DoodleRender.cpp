// `doodle render` writes the picture of the board that received the same session.
#include <doodle/Doodle.h>

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class TestDoodleRender : public QObject
{
    Q_OBJECT
private slots:
    // Qt warns on stderr without a runtime folder; the checks read stderr.
    void initTestCase() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime.path())); }

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
        QCOMPARE(run({"render", DOODLE_SAMPLE_SESSION, "-o", png, "--size", size_, "--scale",
                      QString::number(scale), "--background", background}),
                 0);
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
        // The board's own pixels at that scale over its colour, never resampled.
        QImage expected(rendered.size(), QImage::Format_ARGB32_Premultiplied);
        expected.setDevicePixelRatio(scale);
        expected.fill(board.backgroundColor());
        QPainter(&expected).drawImage(0, 0, board.doodleView()->cacheCanvas()->cacheImage());
        QCOMPARE(rendered, expected.convertToFormat(rendered.format()));
    }

    void badArgumentsAreNamed_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const QString session = DOODLE_SAMPLE_SESSION;
        QTest::newRow("no output") << QStringList{session} << "missing -o OUT";
        QTest::newRow("no session") << QStringList{"-o", "x.png"} << "missing the session";
        QTest::newRow("bad colour") << QStringList{session, "-o", "x.png", "--background", "#12345"}
                                    << "--background takes #RRGGBB, #AARRGGBB or a colour name";
        QTest::newRow("unknown format")
            << QStringList{session, "-o", "x.gif"} << "-o x.gif: the name must end in .png";
        QTest::newRow("a side over the limit")
            << QStringList{session, "-o", "x.png", "--size", "20000x20000"}
            << "--size 20000x20000 at --scale 2 makes a picture of 40000x40000 pixels, over the "
               "limit of 16384 pixels a side and 67108864 pixels in all";
        QTest::newRow("an area over the limit")
            << QStringList{session, "-o", "x.png", "--size", "2000x2000", "--scale", "8"}
            << "makes a picture of 16000x16000 pixels, over the limit";
        QTest::newRow("missing file") << QStringList{"/nonexistent", "-o", "x.png"}
                                      << "cannot read /nonexistent (No such file or directory)";
    }
    // Refused before anything is drawn or allocated: no picture is written.
    void badArgumentsAreNamed()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        QTemporaryDir dir;
        QString err;
        QCOMPARE(run(QStringList{"render"} + arguments, &err, dir.path()), 2);
        QVERIFY2(err.startsWith("doodle render: ") && err.contains(message), qPrintable(err));
        QCOMPARE(err.count('\n'), 1);
        QVERIFY(QDir(dir.path()).isEmpty());
    }

    // Every colour form of --background, in the format the name asks for, at
    // the default size and scale; a JPEG is opaque, white where the board is not.
    void theBackgroundTakesEveryColourForm_data()
    {
        QTest::addColumn<QString>("background");
        QTest::addColumn<QColor>("pixel");
        QTest::addColumn<QString>("format");
        QTest::newRow("#RRGGBB") << "#ff8000" << QColor(255, 128, 0) << "png";
        QTest::newRow("#AARRGGBB") << "#80FF0000" << QColor(255, 0, 0, 128) << "png";
        QTest::newRow("name") << "teal" << QColor(0, 128, 128) << "png";
        QTest::newRow("transparent JPEG") << "transparent" << QColor(Qt::white) << "jpeg";
    }
    void theBackgroundTakesEveryColourForm()
    {
        QFETCH(QString, background);
        QFETCH(QColor, pixel);
        QFETCH(QString, format);
        QTemporaryDir dir;
        const QString out = dir.filePath("out." + format);
        QCOMPARE(run({"render", "/dev/null", "-o", out, "--background", background}), 0);
        QImageReader reader(out);
        QCOMPARE(reader.format(), format.toLatin1());
        const QImage picture = reader.read();
        QCOMPARE(picture.size(), QSize(780, 1688)); // 390 x 844 at a scale of 2
        QCOMPARE(picture.pixelColor(5, 5), pixel);
    }

    // Every bad line named with its reason; the good ones drawn as if alone.
    void aBadLineIsReportedAndTheRestDrawn()
    {
        QTemporaryDir dir;
        QFile bad(DOODLE_BAD_SESSION), good(dir.filePath("good.jsonl"));
        QVERIFY(bad.open(QIODevice::ReadOnly) && good.open(QIODevice::WriteOnly));
        const QList<QByteArray> lines = bad.readAll().split('\n');
        for (const int number : {1, 4, 5, 13})
            good.write(lines.at(number - 1) + '\n');
        good.close();
        QString err;
        QCOMPARE(run({"render", bad.fileName(), "-o", dir.filePath("bad.png")}, &err), 1);
        const QString at = QStringLiteral("doodle render: %1:").arg(bad.fileName());
        const QStringList expected{
            at + "3: not JSON (unterminated string at byte 46)",
            at + "6: not a JSON object",
            at + "7: no PelDoodleActionTypeKey",
            at + "8: PelDoodleUserUriKey is a number, not a string",
            at + "9: PelDoodleBrushKey.PelDoodleWidthKey is a string, not a number",
            at + "10: over a limit: 10001 characters of text, at most 10000",
            at + "11: not UTF-8 text",
            at + "12: point 2 of PelDoodlePositionKey is not a list of numbers",
        };
        QCOMPARE(err.split('\n', Qt::SkipEmptyParts), expected);
        QCOMPARE(run({"render", good.fileName(), "-o", dir.filePath("good.png")}), 0);
        QCOMPARE(QImage(dir.filePath("bad.png")), QImage(dir.filePath("good.png")));
    }

    // Drawn by a renderer outside Qt, an SVG or a PDF looks like the PNG but for
    // antialiasing; erasers left out would change many times the pixels allowed.
    void vectorsLookLikeThePicture_data()
    {
        QTest::addColumn<QString>("session");
        QTest::addColumn<QString>("format");
        for (const QString format : {"svg", "pdf"}) {
            QTest::addRow("sample, %s", qPrintable(format)) << DOODLE_SAMPLE_SESSION << format;
            QTest::addRow("shapes, erasers, text, %s", qPrintable(format))
                << DOODLE_SHAPES_SESSION << format;
        }
    }
    void vectorsLookLikeThePicture()
    {
        QFETCH(QString, session);
        QFETCH(QString, format);
        const QString renderer = QStandardPaths::findExecutable(
            format == QLatin1String("svg") ? "rsvg-convert" : "pdftoppm");
        if (renderer.isEmpty())
            QSKIP("rsvg-convert or pdftoppm is missing (scripts/test.sh installs them)");
        QTemporaryDir dir;
        const QStringList look{"--watermark", "doodle · ✓", "--background", "#fff8e0"};
        const QString vector = dir.filePath("out." + format), png = dir.filePath("out.png");
        QCOMPARE(run(QStringList{"render", session, "-o", png} + look), 0);
        QCOMPARE(run(QStringList{"render", session, "-o", vector} + look), 0);
        const QString drawn = dir.filePath("drawn.png");
        // Both at 2 pixels a point, the scale of the PNG.
        const QStringList arguments =
            format == QLatin1String("svg")
                ? QStringList{"-z", "2", vector, "-o", drawn}
                : QStringList{"-r", "144", "-png", "-singlefile", vector, dir.filePath("drawn")};
        QCOMPARE(QProcess::execute(renderer, arguments), 0);
        const QImage expected = QImage(png).convertToFormat(QImage::Format_RGB32);
        const QImage actual = QImage(drawn).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(actual.size(), expected.size());
        qsizetype differing = 0;
        for (int y = 0; y < expected.height(); ++y) {
            for (int x = 0; x < expected.width(); ++x) {
                const QRgb a = expected.pixel(x, y), b = actual.pixel(x, y);
                const int most =
                    std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                              std::abs(qBlue(a) - qBlue(b))});
                differing += most > 90 ? 1 : 0;
            }
        }
        QVERIFY2(differing * 1000 < expected.width() * qsizetype(expected.height()),
                 qPrintable(QStringLiteral("%1 pixels differ").arg(differing)));
    }

private:
    QTemporaryDir m_runtime;

    // The tool's exit code (-1 if it hangs or crashes), run in `dir`; its stderr in `err`.
    static int run(const QStringList &arguments, QString *err = nullptr, const QString &dir = {})
    {
        QProcess tool;
        tool.setWorkingDirectory(dir);
        tool.start(DOODLE_TOOL, arguments);
        const bool ended = tool.waitForFinished(60000);
        if (err)
            *err = QString::fromUtf8(tool.readAllStandardError());
        return ended && tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1;
    }
};

QTEST_MAIN(TestDoodleRender)
#include "tst_DoodleRender.moc"
