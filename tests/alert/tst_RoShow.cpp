// The host's alerts: found on the window, clicked, and heard through their callbacks.
#include <doodle/alert/RoShow.h>

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {

// A window with a view inside, as a host's call screen holds the board.
struct Screen
{
    Screen()
    {
        view = new QWidget(&window);
        window.resize(300, 200);
        window.show();
    }
    QDialog *alert() const { return window.findChild<QDialog *>(); }
    // The buttons in the order they show.
    QList<QPushButton *> buttons() const { return alert()->findChildren<QPushButton *>(); }
    QStringList titles() const
    {
        QStringList titles;
        for (QPushButton *button : buttons())
            titles << button->text();
        return titles;
    }

    QWidget window;
    QWidget *view = nullptr;
    QStringList heard;
};

} // namespace

class TestRoShow : public QObject
{
    Q_OBJECT
private slots:
    void buttonsCloseTheAlertThenRunTheirCallback_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("click"); // the button's place: cancel first
        QTest::addColumn<QStringList>("heard");
        QTest::newRow("confirm") << "two" << 1 << QStringList{"ensure closed"};
        QTest::newRow("cancel") << "two" << 0 << QStringList{"cancel closed"};
        QTest::newRow("text, confirm") << "text" << 1 << QStringList{"ensure hello"};
        QTest::newRow("text, cancel") << "text" << 0 << QStringList{"cancel closed"};
        QTest::newRow("confirm only") << "one" << 0 << QStringList{"ensure closed"};
        QTest::newRow("no callbacks") << "none" << 1 << QStringList{};
    }
    void buttonsCloseTheAlertThenRunTheirCallback()
    {
        QFETCH(QString, kind);
        QFETCH(int, click);
        QFETCH(QStringList, heard);
        Screen s;
        QPointer<QDialog> shown;
        const auto closed = [&s, &shown](const QString &who) {
            return
                [&s, &shown, who] { s.heard << who + (shown->isVisible() ? " open" : " closed"); };
        };
        const QString message = QStringLiteral("Leave the board?");
        if (kind == QLatin1String("two"))
            RoShow::showAlertWith(s.view, message, closed("ensure"), closed("cancel"));
        else if (kind == QLatin1String("one"))
            RoShow::showAlertWith(s.view, message, closed("ensure"));
        else if (kind == QLatin1String("none"))
            RoShow::showAlertWith(s.view, message, RoShow::Callback(), RoShow::Callback());
        else
            RoShow::showAlertWith(
                s.view, message, [&s](const QString &text) { s.heard << "ensure " + text; },
                closed("cancel"));
        shown = s.alert();
        QVERIFY(shown && shown->isVisible());
        const QStringList titles =
            kind == QLatin1String("one") ? QStringList{"确定"} : QStringList{"取消", "确定"};
        QCOMPARE(s.titles(), titles);
        QCOMPARE(shown->findChild<QLabel *>()->text(), message);
        if (QLineEdit *field = shown->findChild<QLineEdit *>()) {
            QCOMPARE(field->placeholderText(), message);
            QTest::keyClicks(field, "hello");
        }
        QTest::mouseClick(s.buttons().at(click), Qt::LeftButton);
        QCOMPARE(s.heard, heard);
        QTRY_VERIFY(!shown); // and it is gone
    }

    void aTimedMessageClosesItselfOnlyWithATime_data()
    {
        QTest::addColumn<double>("time");
        QTest::newRow("0.2 s") << 0.2;
        QTest::newRow("zero") << 0.0;
        QTest::newRow("negative") << -1.0;
    }
    void aTimedMessageClosesItselfOnlyWithATime()
    {
        QFETCH(double, time);
        Screen s;
        QElapsedTimer clock;
        clock.start();
        RoShow::showAlertWith(s.view, "Saved", time, [&s] { s.heard << "done"; });
        QPointer<QDialog> shown = s.alert();
        QVERIFY(shown && shown->isVisible());
        QCOMPARE(s.titles(), QStringList());
        if (time > 0) {
            QTRY_COMPARE(s.heard, QStringList{"done"});
            QVERIFY(clock.elapsed() >= 200);
        } else {
            shown->close(); // it stays until the host closes it, and never completes
        }
        QTRY_VERIFY(!shown);
        QCOMPARE(s.heard, time > 0 ? QStringList{"done"} : QStringList());
    }

    void theAlertGoesOnTheNearestWindowAboveTheView()
    {
        Screen s;
        QCOMPARE(RoShow::viewControllerWithView(new QWidget(s.view)), &s.window);
        QDialog panel(&s.window); // a window inside the window
        QCOMPARE(RoShow::viewControllerWithView(new QWidget(&panel)), &panel);
        // The view itself does not count: a window on its own has none, and shows nothing.
        QCOMPARE(RoShow::viewControllerWithView(&s.window), nullptr);
        bool called = false;
        RoShow::showAlertWith(&s.window, "Nowhere", [&called] { called = true; });
        QCOMPARE(s.window.findChildren<QDialog *>(), QList<QDialog *>{&panel});
        QVERIFY(!called);
    }
};

QTEST_MAIN(TestRoShow)
#include "tst_RoShow.moc"
