// The bundle's artwork: every image the bars ask for is there, drawn at the
// asked size times the screen scale; a missing one is a null image and a log line.
#include "LogCapture.h"
#include "ToolbarTesting.h"

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QtTest>

class TestToolbarArtwork : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { DoodleScreen::setScaleOverride(0); }

    void everyNamedImageIsDrawnAtEveryScale_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("side");
        // The tools' own icons are checked on the tool bar.
        QTest::newRow("close") << "close" << 30.0;
        QTest::newRow("color") << "color" << 44.0;
        QTest::newRow("color_select") << "color_select" << 44.0;
        QTest::newRow("doodle") << "doodle" << 44.0;
        QTest::newRow("colour@2x") << "colour@2x" << 30.0;
        QTest::newRow("white@2x") << "white@2x" << 28.0;
        QTest::newRow("white_selected@2x") << "white_selected@2x" << 28.0;
    }
    void everyNamedImageIsDrawnAtEveryScale()
    {
        QFETCH(QString, name);
        QFETCH(double, side);
        for (const double scale : {1.0, 2.0, 3.0}) {
            DoodleScreen::setScaleOverride(scale);
            const QImage image = DoodleBundle::image(name, "png");
            QCOMPARE(image.deviceIndependentSize(), QSizeF(side, side));
            QCOMPARE(image.devicePixelRatio(), scale);
            QVERIFY(coverage(image) > 1 / 30.0);
            // Asked for another size, it is drawn at that size.
            const QImage asked = DoodleBundle::image(name, "png", QSizeF(20, 10));
            QCOMPARE(asked.size(), (QSizeF(20, 10) * scale).toSize());
            QCOMPARE(asked.devicePixelRatio(), scale);
        }
    }

    void missingArtworkIsANullImageAndALogLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "noSuchIcon";
        QTest::newRow("not SVG") << "broken";
    }
    void missingArtworkIsANullImageAndALogLine()
    {
        QFETCH(QString, name);
        LogCapture log;
        QVERIFY(DoodleBundle::image(name, "png").isNull());
        QCOMPARE(
            log.lines(),
            QStringList(QStringLiteral("resource image %1 is missing or malformed").arg(name)));
    }
};

QTEST_MAIN(TestToolbarArtwork)
#include "tst_ToolbarArtwork.moc"
