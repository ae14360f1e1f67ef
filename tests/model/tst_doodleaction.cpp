// DoodleAction's points, their strings and log texts, and the drawn-action cache.
#include "LogCapture.h"

#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodlePathCache.h>

#include <QTest>

#include <cmath>
#include <limits>
#include <random>

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
        QTest::newRow("y out, nan x") << std::numeric_limits<float>::quiet_NaN() << -1.25f << 7
                                      << QStringList{"7", "nan", "-1.250000"}
                                      << QStringList{xOut.arg("nan"), yOut.arg("-1.250000")};
        QTest::newRow("negative interval")
            << 0.25f << -0.5f << -5 << QStringList{"-5", "0.250000", "-0.500000"}
            << QStringList{"DoodleAction addPoint, timeInterval:-5 cannot be less than 0"};
        QTest::newRow("tiny negative, far out")
            << -1e-7f << 3000.25f << 2 << QStringList{"2", "-0.000000", "3000.250000"}
            << QStringList{yOut.arg("3000.250000")};
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
        QCOMPARE(action.points().size(), 1);
        QCOMPARE(action.points().at(0).toStringList(), point);
        QCOMPARE(capture.lines(), log);
    }

    // A point keeps the strings it was given, whatever their form, and
    // readers get the numbers that Qt parses from them.
    void pointStrings_data()
    {
        QTest::addColumn<QStringList>("strings");
        const auto row = [](const char *name, const QStringList &strings) {
            QTest::newRow(name) << strings;
        };
        row("32-bit limits", {"-2147483648", "2147.483647", "-2147.483647"});
        row("smallest steps", {"2147483647", "0.000001", "-0.000001"});
        row("negative zero", {"2", "-0.000000", "0.000000"});
        row("beyond 32-bit millionths", {"2", "2147.483648", "-2147.483648"});
        row("shortest decimals", {"2", "0.5", "1e-3"});
        row("signs and zeros", {"+2", "+0.500000", "00.500000"});
        row("seven decimals", {"2", "0.5000000", "0.500000"});
        row("odd intervals", {"-0", "1.000000", "1.000000"});
        row("leading zero interval", {"02", "1.000000", "1.000000"});
        row("space, comma, dot", {" 2", "0,500000", ".500000"});
        row("wide digits", {"2", QString::fromUtf8("\u0660.500000"), "1.000000"});
        row("extra member", {"2", "0.100000", "0.200000", "x"});
        row("none", {});
    }
    void pointStrings()
    {
        QFETCH(QStringList, strings);
        const DoodlePoint point(strings);
        QCOMPARE(point.toStringList(), strings);
        QCOMPARE(point.size(), strings.size());
        for (qsizetype i = 0; i < strings.size(); ++i)
            QCOMPARE(point.at(i), strings.at(i));
        // Exact comparisons: QCOMPARE on floats allows a relative difference.
        const float x = strings.value(1).toFloat();
        const float y = strings.value(2).toFloat();
        QVERIFY((point.x() == x || (std::isnan(x) && std::isnan(point.x()))) && point.y() == y);
    }

    // Across the range the touch input produces, a point's numbers are those
    // Qt parses from its strings, bit for bit.
    void pointNumbersAsParsed()
    {
        std::mt19937 random(12);
        std::uniform_real_distribution<float> within(-1.5f, 1.5f);
        QList<float> values{0.0f, -0.0f, 1.0f, -1.0f, 5e-7f, -5e-7f, 4.9999997e-7f, 2147.4836f};
        for (int i = 0; i < 100000; ++i)
            values.append(within(random));
        for (const float value : values) {
            const DoodlePoint point(2, value, -value);
            if (point.x() != point.at(1).toFloat() || point.y() != point.at(2).toFloat())
                QFAIL(qPrintable(point.toStringList().join(' ')));
        }
    }

    // A removal takes the user's newest drawing; an entry without a user is
    // never taken nor found; a drawing is found on its own page only.
    void cache()
    {
        DoodlePathCache cache;
        cache.addAction(nullptr);
        for (const QString &user : QStringList{QString(), "A", "B", "A", "A"}) {
            auto action = std::make_shared<DoodleAction>();
            action->setUserId(user);
            cache.addAction(action);
        }
        QCOMPARE(cache.size(), 5);
        const auto remove = [&cache](const QString &u) {
            return cache.removeLastPathWithUserId(u);
        };
        QCOMPARE(QList<bool>({remove("A"), remove("A"), remove(QString()), remove("")}),
                 QList<bool>({true, true, false, false}));
        QStringList kept;
        for (const DoodleActionPtr &action : cache.getAllPath())
            kept.append(action->userId());
        QCOMPARE(kept, QStringList({QString(), "A", "B"}));
        const auto has = [&cache](const QString &u, int page) {
            return cache.containsPathWithUserId(u, quint64(page));
        };
        QCOMPARE(QList<bool>({has("A", 0), has("B", 0), has("A", 1), has({}, 0), has("", 0)}),
                 QList<bool>({true, true, false, false, false}));
        cache.cleanAllPath();
        QVERIFY(cache.getAllPath().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDoodleAction)
#include "tst_doodleaction.moc"
