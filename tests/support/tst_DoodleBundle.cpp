// The resource bundle's tables: found by name, read leniently, never fatal.
#include "LogCapture.h"

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QtTest>

class TestDoodleBundle : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { DoodleScreen::setScaleOverride(0); }

    void unreadableTablesAreEmptyWithALogLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "noSuchTable";
        QTest::newRow("cut short") << "broken";
        QTest::newRow("not an array") << "dictionary";
    }
    void unreadableTablesAreEmptyWithALogLine()
    {
        QFETCH(QString, name);
        LogCapture log;
        QVERIFY(DoodleBundle::numberTable(name).isEmpty());
        QCOMPARE(
            log.lines(),
            QStringList(QStringLiteral("resource table %1 is missing or malformed").arg(name)));
    }

    void entriesReadAsFloatsWhateverTheirElement()
    {
        // Numbers and numeric strings count; other entries read as 0, as nested ones do.
        QCOMPARE(DoodleBundle::numberTable("mixed"), QList<double>({2.5, 7, 12, 0, 0}));
    }

    void onlyAScaleOfExactlyTwoSelectsTheTwoXTables_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QString>("name");
        QTest::newRow("1.999") << 1.999 << "textSizes_3x";
        QTest::newRow("2") << 2.0 << "textSizes_2x";
        QTest::newRow("3") << 3.0 << "textSizes_3x";
    }
    void onlyAScaleOfExactlyTwoSelectsTheTwoXTables()
    {
        QFETCH(double, scale);
        QFETCH(QString, name);
        DoodleScreen::setScaleOverride(scale);
        QCOMPARE(DoodleBundle::scaledTableName("textSizes"), name);
        QVERIFY(!DoodleBundle::pathForResource(name, "plist").isNull());
    }
};

QTEST_GUILESS_MAIN(TestDoodleBundle)
#include "tst_DoodleBundle.moc"
