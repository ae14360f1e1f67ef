// The Quick board driven from QML: the host picks the pen, a drag sends a
// stroke, a received text draws one, undo and clear act as on the widget;
// the board's own bar picks the pen, folds, unfolds and closes.
#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleTranslations.h>

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QSGRendererInterface>
#include <QtTest>

namespace {

QVariant call(QQuickItem *root, const char *function, const QVariantList &arguments = {})
{
    QVariant result;
    if (arguments.isEmpty())
        QMetaObject::invokeMethod(root, function, Q_RETURN_ARG(QVariant, result));
    else
        QMetaObject::invokeMethod(root, function, Q_RETURN_ARG(QVariant, result),
                                  Q_ARG(QVariant, arguments.value(0)),
                                  Q_ARG(QVariant, arguments.value(1)));
    return result;
}

QStringList sent(QQuickItem *root)
{
    return root->property("sent").toStringList();
}

// Pixels of the picture that are not the white background.
int inkedPixels(const QImage &picture)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) != qRgb(255, 255, 255);
    return count;
}

// A host's board in a shown window.
struct Hosted
{
    Hosted()
    {
        view.engine()->addImportPath(QStringLiteral(DOODLE_QML_DIR));
        view.setSource(QUrl::fromLocalFile(QStringLiteral(DOODLE_TEST_QML)));
        if (view.status() != QQuickView::Ready)
            qWarning() << view.errors();
        view.show();
        if (!QTest::qWaitForWindowActive(&view))
            qWarning("the host's window did not become active");
    }
    QQuickItem *root() const { return view.rootObject(); }
    // A part of the board's chrome by name, and a tap on its centre.
    QQuickItem *part(const char *name) const { return root()->findChild<QQuickItem *>(name); }
    void tap(const char *name)
    {
        const QQuickItem *item = part(name);
        QVERIFY2(item && item->isVisible(), name);
        const QPointF centre = item->mapToScene(QPointF(item->width(), item->height()) / 2);
        QTest::mouseClick(&view, Qt::LeftButton, {}, centre.toPoint());
    }
    int count(const char *counter) const { return root()->property(counter).toInt(); }

    QQuickView view;
};

} // namespace

class TestQuickQml : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QQuickWindow::setGraphicsApi(QSGRendererInterface::Software); }

    void hostDrivesTheBoard()
    {
        Hosted host;
        QQuickView &view = host.view;
        QQuickItem *root = host.root();
        QVERIFY(root);
        // Only the board's picture counts: its floating button stays out of it.
        root->findChild<QQuickItem *>("doodleToolButton")->setVisible(false);

        call(root, "usePen");
        const QString empty = call(root, "fingerprint").toString();
        QTest::mousePress(&view, Qt::LeftButton, {}, {20, 20});
        QTest::mouseMove(&view, {60, 50});
        QTest::mouseMove(&view, {100, 70});
        QTest::mouseRelease(&view, Qt::LeftButton, {}, {120, 80});
        QCOMPARE(sent(root).size(), 1);
        const DoodleActionPtr stroke = DoodleTranslate::doodleActionFromString(sent(root).at(0));
        QVERIFY(stroke);
        QCOMPARE(stroke->actionType(), qint64(DoodleActionTypeStroke));
        QCOMPARE(stroke->userId(), QStringLiteral("me"));
        const int drawn = inkedPixels(view.grabWindow());
        QVERIFY(drawn > 0);
        QVERIFY(call(root, "fingerprint").toString() != empty);

        // A stroke from another participant, as its text arrives.
        auto other = std::make_shared<DoodleAction>();
        other->setActionType(DoodleActionTypeStroke);
        other->setUserId(QStringLiteral("ann"));
        other->setBrushColor(Qt::blue);
        other->setBrushWidth(0.05f);
        other->addPointWithPositionX(-0.8f, 0.6f, 2);
        other->addPointWithPositionX(0.8f, 0.7f, 2);
        call(root, "receive", {"ann", DoodleTranslate::stringFromDoodleAction(other)});
        const int both = inkedPixels(view.grabWindow());
        QVERIFY(both > drawn);

        // Undo takes back this user's stroke only, and sends an undo naming it.
        call(root, "undo");
        QCOMPARE(sent(root).size(), 2);
        const DoodleActionPtr undo = DoodleTranslate::doodleActionFromString(sent(root).at(1));
        QCOMPARE(undo->actionType(), qint64(DoodleActionTypeUndo));
        QCOMPARE(undo->seqNo(), stroke->seqNo());
        const int after = inkedPixels(view.grabWindow());
        QVERIFY(after > 0 && after < both);

        // Clear empties the board, sends a clear and tells who cleared.
        call(root, "clear");
        QCOMPARE(sent(root).size(), 3);
        QCOMPARE(DoodleTranslate::doodleActionFromString(sent(root).at(2))->actionType(),
                 qint64(DoodleActionTypeClean));
        QCOMPARE(root->property("clearedBy").toString(), QStringLiteral("me"));
        QCOMPARE(inkedPixels(view.grabWindow()), 0);
    }

    // A host with the Quick board alone has the board's translations.
    void theBarSpeaksTheInstalledLanguage()
    {
        QVERIFY(DoodleTranslations::install(QLocale(QLocale::Chinese, QLocale::China)));
        Hosted host;
        host.tap("doodleToolButton");
        QAccessibleInterface *pen = QAccessible::queryAccessibleInterface(host.part("width"));
        const QString name = pen ? pen->text(QAccessible::Name) : QString();
        DoodleTranslations::remove();
        QCOMPARE(name, QStringLiteral("画笔"));
    }

    void barDrivesTheBoard()
    {
        Hosted host;
        call(host.root(), "useRectangle");
        host.tap("doodleToolButton");
        QCOMPARE(host.count("unfoldings"), 1);
        // The bar's buttons carry the widget bar's names and announce their tool.
        QAccessibleInterface *pen = QAccessible::queryAccessibleInterface(host.part("width"));
        QVERIFY(pen);
        QCOMPARE(pen->text(QAccessible::Name), QStringLiteral("Pen"));
        QCOMPARE(pen->role(), QAccessible::Button);
        QVERIFY(!pen->state().checked);
        // The pen on the bar takes the pen up, and a drag draws a stroke.
        host.tap("width");
        QVERIFY(pen->state().checked);
        QCOMPARE(host.root()->property("board").value<QObject *>()->property("actionMode"), 1);
        QTest::mousePress(&host.view, Qt::LeftButton, {}, {20, 20});
        QTest::mouseMove(&host.view, {60, 40});
        QTest::mouseRelease(&host.view, Qt::LeftButton, {}, {120, 60});
        QCOMPARE(sent(host.root()).size(), 1);
        QCOMPARE(DoodleTranslate::doodleActionFromString(sent(host.root()).at(0))->actionType(),
                 qint64(DoodleActionTypeStroke));
        // Clear asks first; Escape answers no and nothing is sent.
        host.tap("clear");
        QVERIFY(host.part("doodleAlert"));
        QTest::keyClick(&host.view, Qt::Key_Escape);
        QVERIFY(!host.part("doodleAlert"));
        QCOMPARE(sent(host.root()).size(), 1);
        // Space on the focused pen opens its picker with the keyboard on the
        // chosen width, the arrows move along it, Escape gives the focus back.
        host.part("width")->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(&host.view, Qt::Key_Space);
        QCOMPARE(host.view.activeFocusItem()->objectName(), QStringLiteral("choice0"));
        QTest::keyClick(&host.view, Qt::Key_Right);
        QCOMPARE(host.view.activeFocusItem()->objectName(), QStringLiteral("choice1"));
        QTest::keyClick(&host.view, Qt::Key_Escape);
        QVERIFY(!host.part("doodlePicker"));
        QCOMPARE(host.view.activeFocusItem(), host.part("width"));
        host.tap("doodleToolButton");
        QCOMPARE(host.count("foldings"), 1);
        QVERIFY(!host.part("doodleToolBar")->isVisible());
        // Close folds the bar and asks the host to close the board.
        host.tap("doodleToolButton");
        host.tap("close");
        QCOMPARE(host.count("closings"), 1);
        QCOMPARE(host.count("foldings"), 2);
        QCOMPARE(host.count("unfoldings"), 2);
    }

    // Keys typed after a tap with the text tool make one text action.
    void textIsTypedIntoAQuickInput()
    {
        Hosted host;
        QVERIFY(host.root());
        call(host.root(), "useText");
        QTest::mouseClick(&host.view, Qt::LeftButton, {}, {30, 40});
        QTest::keyClick(&host.view, Qt::Key_H);
        QTest::keyClick(&host.view, Qt::Key_I);
        QTest::keyClick(&host.view, Qt::Key_Return);
        QCOMPARE(sent(host.root()).size(), 1);
        const DoodleActionPtr text =
            DoodleTranslate::doodleActionFromString(sent(host.root()).at(0));
        QCOMPARE(text->actionType(), qint64(DoodleActionTypeText));
        QCOMPARE(text->text(), QStringLiteral("hi"));
    }
};

QTEST_MAIN(TestQuickQml)
#include "tst_QuickQml.moc"
