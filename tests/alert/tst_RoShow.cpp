// The host's alerts: found on the window, clicked, and heard through their callbacks.
#include <doodle/alert/RoShow.h>
#include <doodle/support/DoodleTranslations.h>

#include <QDialog>
#include <QDialogButtonBox>
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
        view->setGeometry(400, 100, 200, 100);
        window.resize(600, 300);
        window.show();
    }
    QDialog *alert() const { return window.findChild<QDialog *>(); }
    QDialogButtonBox *box() const { return alert()->findChild<QDialogButtonBox *>(); }
    // The standard buttons' titles, Cancel first; none without buttons.
    QStringList titles() const
    {
        QStringList titles;
        for (auto which : {QDialogButtonBox::Cancel, QDialogButtonBox::Ok})
            if (QPushButton *button = box() ? box()->button(which) : nullptr)
                titles << button->text();
        return titles;
    }
    // A callback that notes who ran it and whether the alert was still open then.
    RoShow::Callback note(const QString &who)
    {
        return [this, who] { heard << who + (alert()->isVisible() ? " open" : " closed"); };
    }

    QWidget window;
    QWidget *view = new QWidget(&window);
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
        QTest::addColumn<bool>("ok"); // else Cancel
        QTest::addColumn<QStringList>("heard");
        QTest::newRow("confirm") << "two" << true << QStringList{"ensure closed"};
        QTest::newRow("cancel") << "two" << false << QStringList{"cancel closed"};
        QTest::newRow("text, confirm") << "text" << true << QStringList{"ensure hello"};
        QTest::newRow("text, cancel") << "text" << false << QStringList{"cancel closed"};
        QTest::newRow("confirm only") << "one" << true << QStringList{"ensure closed"};
        QTest::newRow("no callbacks") << "none" << true << QStringList{};
    }
    void buttonsCloseTheAlertThenRunTheirCallback()
    {
        QFETCH(QString, kind);
        QFETCH(bool, ok);
        QFETCH(QStringList, heard);
        Screen s;
        const QString message = QStringLiteral("Leave the board?");
        const auto typed = [&s](const QString &text) { s.heard << "ensure " + text; };
        if (kind == "two")
            RoShow::showAlertWith(s.view, message, s.note("ensure"), s.note("cancel"));
        else if (kind == "one")
            RoShow::showAlertWith(s.view, message, s.note("ensure"));
        else if (kind == "none")
            RoShow::showAlertWith(s.view, message, RoShow::Callback(), RoShow::Callback());
        else
            RoShow::showAlertWith(s.view, message, typed, s.note("cancel"));
        QPointer<QDialog> shown = s.alert();
        QVERIFY(shown && shown->isVisible());
        // The platform's standard buttons, titled by Qt.
        QCOMPARE(s.titles(), (kind == "one" ? QStringList{"OK"} : QStringList{"Cancel", "OK"}));
        QCOMPARE(shown->findChild<QLabel *>()->text(), message);
        if (QLineEdit *field = shown->findChild<QLineEdit *>()) {
            QCOMPARE(field->placeholderText(), message);
            QTest::keyClicks(field, "hello");
        }
        QTest::mouseClick(s.box()->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel),
                          Qt::LeftButton);
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
        RoShow::showAlertWith(s.view, "Saved", time, s.note("done"));
        QPointer<QDialog> shown = s.alert();
        QVERIFY(shown && shown->isVisible());
        QCOMPARE(s.titles(), QStringList());
        // Over the view that asked (a board on the right), not the whole window.
        const QPoint off =
            shown->geometry().center() - s.view->mapToGlobal(s.view->rect().center());
        QVERIFY2(off.manhattanLength() <= 2, qPrintable(QDebug::toString(off)));
        if (time <= 0)
            shown->close(); // it stays until the host closes it, and never completes
        QTRY_VERIFY(!shown);
        QCOMPARE(s.heard, time > 0 ? QStringList{"done closed"} : QStringList());
        QVERIFY(time <= 0 || clock.elapsed() >= 200);
    }

    // The library's own translation titles the buttons in Chinese, as the
    // board always did, and translates its tool names; only on request.
    void theShippedTranslationTitlesTheButtons()
    {
        QVERIFY(!DoodleTranslations::install(QLocale(QLocale::French)));
        QVERIFY(DoodleTranslations::install(QLocale(QLocale::Chinese, QLocale::China)));
        Screen s;
        RoShow::showAlertWith(s.view, "?", RoShow::Callback(), RoShow::Callback());
        QCOMPARE(s.titles(), QStringList({"取消", "确定"}));
        QCOMPARE(QCoreApplication::translate("ZQDoodleToolbar", "Undo"), QString("撤销"));
        DoodleTranslations::remove();
        QCOMPARE(QCoreApplication::translate("ZQDoodleToolbar", "Undo"), QString("Undo"));
    }

    void theAlertGoesOnTheNearestWindowAboveTheView()
    {
        Screen s;
        QCOMPARE(RoShow::viewControllerWithView(new QWidget(s.view)), &s.window);
        QDialog panel(&s.window); // a window inside the window
        QCOMPARE(RoShow::viewControllerWithView(new QWidget(&panel)), &panel);
        // The view itself does not count: a window on its own has none, and shows nothing.
        QCOMPARE(RoShow::viewControllerWithView(&s.window), nullptr);
        RoShow::showAlertWith(&s.window, "Nowhere", s.note("ensure"));
        QCOMPARE(s.window.findChildren<QDialog *>(), QList<QDialog *>{&panel});
        QCOMPARE(s.heard, QStringList());
    }
};

QTEST_MAIN(TestRoShow)
#include "tst_RoShow.moc"
