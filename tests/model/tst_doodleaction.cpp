// DoodleAction's points and log texts, and the drawn-action cache.
#include "LogCapture.h"

#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodlePathCache.h>

#include <QTest>

#include <limits>

class TestDoodleAction : public QObject
{
    Q_OBJECT

private slots:
    void freshRecord()
    {
        DoodleAction action;
        QCOMPARE(action.actionType(), 0);
        QCOMPARE(action.pageNumber(), 0u);
        QCOMPARE(action.brushWidth(), 0.0f);
        QVERIFY(!action.brushColor().isValid());
        QVERIFY(action.userId().isNull());
        QVERIFY(action.pathPoints().isEmpty());
        // pathPoints is the record's own list.
        action.pathPoints().append({"2", "0.000000", "0.000000"});
        QCOMPARE(action.points().size(), 1);
    }

    void addPoint_data()
    {
        QTest::addColumn<float>("x");
        QTest::addColumn<float>("y");
        QTest::addColumn<int>("interval");
        QTest::addColumn<QStringList>("point");
        QTest::addColumn<QStringList>("log");
        const QString xOut = "DoodleAction addPoint, x:%1 value is not in (-1, 1)";
        const QString yOut = "DoodleAction addPoint, y:%1 value is not in (-1, 1)";
        const float nan = std::numeric_limits<float>::quiet_NaN();
        QTest::newRow("float digits")
            << 0.1f << 0.2f << 2 << QStringList{"2", "0.100000", "0.200000"} << QStringList{};
        QTest::newRow("bounds are inclusive")
            << 1.0f << -1.0f << 0 << QStringList{"0", "1.000000", "-1.000000"} << QStringList{};
        QTest::newRow("x out") << 1.5f << 0.0f << 2 << QStringList{"2", "1.500000", "0.000000"}
                               << QStringList{xOut.arg("1.500000")};
        QTest::newRow("y out, nan x") << nan << -1.25f << 7 << QStringList{"7", "nan", "-1.250000"}
                                      << QStringList{xOut.arg("nan"), yOut.arg("-1.250000")};
        QTest::newRow("negative interval")
            << 0.25f << -0.5f << -5 << QStringList{"-5", "0.250000", "-0.500000"}
            << QStringList{"DoodleAction addPoint, timeInterval:-5 cannot be less than 0"};
        QTest::newRow("widened float digits")
            << 0.3333333f << 1e-7f << 2 << QStringList{"2", "0.333333", "0.000000"}
            << QStringList{};
    }
    void addPoint()
    {
        QFETCH(float, x);
        QFETCH(float, y);
        QFETCH(int, interval);
        QFETCH(QStringList, point);
        QFETCH(QStringList, log);
        LogCapture capture;
        DoodleAction action;
        action.addPointWithPositionX(0.5f, 0.5f, 2);
        action.addPointWithPositionX(x, y, interval);
        QCOMPARE(action.pathPoints().size(), 2);
        QCOMPARE(action.pathPoints().last(), point);
        QCOMPARE(capture.lines(), log);
    }

    // One row per scenario: the users of the actions added in order, then the
    // removals made, then what is left.
    void cache_data()
    {
        QTest::addColumn<QStringList>("users");
        QTest::addColumn<QStringList>("removals");
        QTest::addColumn<QList<bool>>("removed");
        QTest::addColumn<QList<int>>("left"); // indexes into users
        QTest::newRow("newest of the user first")
            << QStringList{"A", "B", "A"} << QStringList{"A", "A", "A"}
            << QList<bool>{true, true, false} << QList<int>{1};
        QTest::newRow("unknown user")
            << QStringList{"A", "B"} << QStringList{"C"} << QList<bool>{false} << QList<int>{0, 1};
        QTest::newRow("case sensitive")
            << QStringList{"a"} << QStringList{"A"} << QList<bool>{false} << QList<int>{0};
        QTest::newRow("entry without user never matches")
            << QStringList{QString(), "B"} << QStringList{QString(), ""}
            << QList<bool>{false, false} << QList<int>{0, 1};
        QTest::newRow("empty cache")
            << QStringList{} << QStringList{"A"} << QList<bool>{false} << QList<int>{};
    }
    void cache()
    {
        QFETCH(QStringList, users);
        QFETCH(QStringList, removals);
        QFETCH(QList<bool>, removed);
        QFETCH(QList<int>, left);
        DoodlePathCache cache;
        QList<DoodleActionPtr> made;
        for (const QString &user : users) {
            made.append(std::make_shared<DoodleAction>());
            made.last()->setUserId(user);
            cache.addAction(made.last());
        }
        cache.addAction(nullptr);
        QCOMPARE(cache.getAllPath().size(), users.size());
        for (qsizetype i = 0; i < removals.size(); ++i)
            QCOMPARE(cache.removeLastPathWithUserId(removals.at(i)), removed.at(i));
        QList<DoodleActionPtr> expected;
        for (int index : left)
            expected.append(made.at(index));
        QCOMPARE(cache.getAllPath(), expected);
    }

    void cacheContainsAndClean()
    {
        DoodlePathCache cache;
        auto action = std::make_shared<DoodleAction>();
        action->setUserId("A");
        action->setPageNumber(2);
        cache.addAction(action);
        cache.addAction(std::make_shared<DoodleAction>());
        QVERIFY(cache.containsPathWithUserId("A", 2));
        QVERIFY(!cache.containsPathWithUserId("A", 0));
        QVERIFY(!cache.containsPathWithUserId(QString(), 0));
        // The list is the cache's own: the redraw walks it in place.
        QCOMPARE(&cache.getAllPath(), &std::as_const(cache).getAllPath());
        cache.cleanAllPath();
        QVERIFY(cache.getAllPath().isEmpty());
        QVERIFY(!cache.removeLastPathWithUserId("A"));
    }
};

QTEST_GUILESS_MAIN(TestDoodleAction)
#include "tst_doodleaction.moc"
