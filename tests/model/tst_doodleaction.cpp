// DoodleAction's points and their log texts, and the drawn-action cache.
#include "LogCapture.h"

#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodlePathCache.h>

#include <QTest>

#include <limits>

class TestDoodleAction : public QObject
{
    Q_OBJECT

private slots:
    void addPoint_data()
    {
        QTest::addColumn<float>("x");
        QTest::addColumn<float>("y");
        QTest::addColumn<int>("interval");
        QTest::addColumn<QStringList>("point");
        QTest::addColumn<QStringList>("log");
        const QString xOut = "DoodleAction addPoint, x:%1 value is not in (-1, 1)";
        const QString yOut = "DoodleAction addPoint, y:%1 value is not in (-1, 1)";
        QTest::newRow("bounds are inclusive")
            << 1.0f << -1.0f << 0 << QStringList{"0", "1.000000", "-1.000000"} << QStringList{};
        QTest::newRow("six digits, never exponents")
            << 0.3333333f << 1e-7f << 2 << QStringList{"2", "0.333333", "0.000000"}
            << QStringList{};
        QTest::newRow("x out") << 1.5f << 0.0f << 2 << QStringList{"2", "1.500000", "0.000000"}
                               << QStringList{xOut.arg("1.500000")};
        QTest::newRow("y out, nan x") << std::numeric_limits<float>::quiet_NaN() << -1.25f << 7
                                      << QStringList{"7", "nan", "-1.250000"}
                                      << QStringList{xOut.arg("nan"), yOut.arg("-1.250000")};
        QTest::newRow("negative interval")
            << 0.25f << -0.5f << -5 << QStringList{"-5", "0.250000", "-0.500000"}
            << QStringList{"DoodleAction addPoint, timeInterval:-5 cannot be less than 0"};
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
        action.addPointWithPositionX(x, y, interval);
        QCOMPARE(action.points(), DoodlePointList{point});
        QCOMPARE(capture.lines(), log);
    }

    // The users of the actions added in order, the removals made one by one
    // and what each returned, then the users left, oldest first.
    void cache_data()
    {
        QTest::addColumn<QStringList>("users");
        QTest::addColumn<QStringList>("removals");
        QTest::addColumn<QList<bool>>("removed");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("newest of the user first")
            << QStringList{"A", "B", "A", "A"} << QStringList{"A", "A"} << QList<bool>{true, true}
            << QStringList{"A", "B"};
        QTest::newRow("unknown user, case sensitive")
            << QStringList{"a"} << QStringList{"A", "b"} << QList<bool>{false, false}
            << QStringList{"a"};
        QTest::newRow("entry without user never matches")
            << QStringList{QString(), "B"} << QStringList{QString(), ""}
            << QList<bool>{false, false} << QStringList{QString(), "B"};
        QTest::newRow("empty cache")
            << QStringList{} << QStringList{"A"} << QList<bool>{false} << QStringList{};
    }
    void cache()
    {
        QFETCH(QStringList, users);
        QFETCH(QStringList, removals);
        QFETCH(QList<bool>, removed);
        QFETCH(QStringList, left);
        DoodlePathCache cache;
        cache.addAction(nullptr);
        for (const QString &user : users) {
            auto action = std::make_shared<DoodleAction>();
            action->setUserId(user);
            cache.addAction(action);
        }
        QCOMPARE(cache.getAllPath().size(), users.size());
        for (qsizetype i = 0; i < removals.size(); ++i)
            QCOMPARE(cache.removeLastPathWithUserId(removals.at(i)), removed.at(i));
        QStringList kept;
        for (const DoodleActionPtr &action : cache.getAllPath())
            kept.append(action->userId());
        QCOMPARE(kept, left);
    }

    void containsAndClean()
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
        cache.cleanAllPath();
        QVERIFY(cache.getAllPath().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDoodleAction)
#include "tst_doodleaction.moc"
