// Pictures of the board: the snapshot without the tool bars, the tiled
// watermark and where saved pictures go.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <doodle/support/DoodleWatermark_p.h>

#include <QDir>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

class TestDoodleLayoutSnapshot : public QObject
{
    Q_OBJECT
private slots:
    void init() { DoodleScreen::setScaleOverride(2); }

    // The picture is the board's own layers at the screen's scale: no bar,
    // button or open picker over it, and not enlarged from 1x (a diagonal
    // hairline's edges differ inside every block of scale x scale pixels).
    void theSnapshotLeavesOutTheBars_data()
    {
        QTest::addColumn<QString>("bars");
        QTest::addColumn<double>("scale");
        QTest::newRow("unfolded, 2x") << "unfolded" << 2.0;
        QTest::newRow("folded, 3x") << "folded" << 3.0;
        QTest::newRow("hidden by the host, 2x") << "hidden" << 2.0;
    }
    void theSnapshotLeavesOutTheBars()
    {
        QFETCH(QString, bars);
        QFETCH(double, scale);
        DoodleScreen::setScaleOverride(scale);
        Participant me(QStringLiteral("me"), QSize(300, 400));
        me.board.view()->show();
        if (bars != QLatin1String("folded"))
            me.board.showToolBar();
        if (bars == QLatin1String("hidden"))
            me.board.hideToolBar(true);
        if (bars == QLatin1String("unfolded"))
            me.board.addTextSizeView(); // an open picker belongs to the bar
        // A red line along the bar, through the floating button.
        me.receive("peer", strokeAction("peer", {{-1, 0.82}, {1, 0.82}}, Qt::red, 0.04f));
        me.receive("peer", strokeAction("peer", {{-0.9, -0.8}, {0.7, 0.9}}, Qt::black, 0.004f));
        me.receive("peer", boxAction(DoodleActionTypeEllipse, "peer", {-0.5, -0.5, 1, 1}));
        const QImage layers = me.cache();
        const QImage shot = me.board.imageScreenShot();
        QCOMPARE(shot.size(), QSize(300, 400) * scale);
        QCOMPARE(shot.devicePixelRatio(), scale);
        QCOMPARE(shot, layers.convertToFormat(shot.format()));
        // The bars are back afterwards.
        QVERIFY(me.board.doodletoolbar()->isVisibleTo(me.board.view()));
        QVERIFY(me.board.doodletoolButton()->isVisibleTo(me.board.view()));
        const auto pickers = me.board.view()->findChildren<ZQDoodleButtonView *>();
        QCOMPARE(pickers.size(), bars == QLatin1String("unfolded") ? 1 : 0);
        for (const ZQDoodleButtonView *picker : pickers)
            QVERIFY(picker->isVisibleTo(me.board.view()));
    }

    void aDeviceOfAnotherScaleAveragesTheBoard()
    {
        Participant me(QStringLiteral("me"), QSize(100, 100));
        me.board.view()->show();
        // Half a point wide along y = 50.25: one device pixel at the screen's
        // scale of 2, half a pixel of a picture at 1x.
        me.receive("peer", strokeAction("peer", {{-0.8, 0.005}, {0.8, 0.005}}, Qt::black, 0.01f));
        QImage shot(100, 100, QImage::Format_ARGB32_Premultiplied);
        shot.fill(Qt::transparent);
        me.board.doodleView()->render(&shot, QPoint(), QRegion(), QWidget::DrawChildren);
        int darkest = 0;
        for (int y = 45; y < 55; ++y)
            darkest = std::max(darkest, shot.pixelColor(50, y).alpha());
        // Averaged it shows half covered; a nearest-pixel pick shows all or nothing.
        QVERIFY2(darkest > 40 && darkest < 150, qPrintable(QString::number(darkest)));
    }

    // Vectors, not pixels: a stroke is a round-capped path, a text is text,
    // an eraser a mask (SVG); the PDF holds a font and no picture.
    void theExportsAreVectors()
    {
        Participant me(QStringLiteral("me"), QSize(200, 100));
        me.receive("peer", strokeAction("peer", {{-0.8, 0}, {0.8, 0.1}}, Qt::red, 0.05f));
        auto text = commandAction(DoodleActionTypeText, "peer");
        text->setText(QStringLiteral("hello <there>"));
        text->setTextSize(0.1f);
        me.receive("peer", text);
        me.receive("peer", strokeAction("peer", {{0, -1}, {0, 1}}, Qt::black, 0.1f,
                                        DoodleActionTypeEraser));
        QXmlStreamReader svg(me.board.exportSvg());
        QStringList seen;
        while (!svg.atEnd()) {
            if (svg.readNext() != QXmlStreamReader::StartElement)
                continue;
            const QXmlStreamAttributes a = svg.attributes();
            if (svg.name() == QLatin1String("path") &&
                a.value("stroke-linecap") == QLatin1String("round"))
                seen << "round stroke " + a.value("stroke").toString();
            else if (svg.name() == QLatin1String("text"))
                seen << "text " + svg.readElementText();
            else if (svg.name() == QLatin1String("mask"))
                seen << "mask";
        }
        QVERIFY2(!svg.hasError(), qPrintable(svg.errorString()));
        QCOMPARE(seen, QStringList({"mask", "round stroke #000000", "round stroke #ff0000",
                                    "text hello <there>"}));
        const QByteArray pdf = me.board.exportPdf();
        QVERIFY(pdf.startsWith("%PDF-") && pdf.contains("/FontFile"));
        QVERIFY(!pdf.contains("/Subtype /Image"));
        QVERIFY(Participant(QStringLiteral("empty"), QSize()).board.exportSvg().isEmpty());
    }

    void theWatermarkGridHasOneCopyMoreInItsFirstRow_data()
    {
        QTest::addColumn<QSizeF>("picture");
        QTest::addColumn<QSizeF>("text");
        QTest::addColumn<QList<int>>("rows");
        QTest::newRow("375 x 667")
            << QSizeF(375, 667) << QSizeF(100, 18) << QList<int>{6, 5, 5, 5, 4};
        QTest::newRow("text wider than the diagonal")
            << QSizeF(100, 400) << QSizeF(500, 18) << QList<int>{2, 1};
    }
    void theWatermarkGridHasOneCopyMoreInItsFirstRow()
    {
        QFETCH(QSizeF, picture);
        QFETCH(QSizeF, text);
        QFETCH(QList<int>, rows);
        const QList<QRectF> places = DoodleWatermark::grid(picture, text);
        QList<int> counts; // copies per row, rows told apart by their y
        for (qsizetype i = 0; i < places.size(); ++i) {
            if (i == 0 || places.at(i).y() != places.at(i - 1).y())
                counts << 0;
            ++counts.last();
        }
        QCOMPARE(counts, rows);
        // It starts outside the picture, by half the diagonal's excess.
        const double diagonal = std::hypot(picture.width(), picture.height());
        QCOMPARE(places.first().topLeft(),
                 QPointF(picture.width() - diagonal, picture.height() - diagonal) * 0.5);
        QCOMPARE(places.last().y() - places.first().y(),
                 (text.height() + 160) * double(rows.size() - 1));
    }

    // Without a watermark text the picture comes back pixel for pixel.
    void onlyAWatermarkTextChangesThePicture()
    {
        DoodleScreen::setScaleOverride(1);
        QImage picture(120, 90, QImage::Format_ARGB32_Premultiplied);
        picture.fill(QColor(20, 90, 200, 128));
        for (const QString &text : {QString(), QStringLiteral(""), QStringLiteral("doodle")})
            QCOMPARE(DoodleLayout::addWatermarketWithOriginImage(picture, text) == picture,
                     text.isEmpty());
    }

    void savedPicturesNeverReplaceEachOther()
    {
        QTemporaryDir home;
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.filePath("config")));
        Participant me(QStringLiteral("me"), QSize(60, 40));
        me.board.saveImage();
        me.board.saveImage();
        const QDir pictures(home.filePath("Pictures"));
        const QStringList written = pictures.entryList({"*.png"}, QDir::Files);
        QCOMPARE(written.size(), 2);
        const QImage saved(pictures.filePath(written.first()));
        QCOMPARE(saved.size(), QSize(120, 80));
        QCOMPARE(saved.pixelColor(5, 5), QColor(Qt::white)); // opaque, though the board is not

        QVERIFY(QDir(home.path()).removeRecursively() && QDir().mkpath(home.path()));
        QFile blocker(home.filePath("Pictures")); // a file where the folder should be
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        LogCapture log;
        me.board.saveImage();
        QCOMPARE(log.lines().size(), 1);
    }
};

QTEST_MAIN(TestDoodleLayoutSnapshot)
#include "tst_DoodleLayoutSnapshot.moc"
