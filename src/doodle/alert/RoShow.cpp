#include "RoShow.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>
#include <cmath>
#include <limits>

namespace {

// Centres an alert over the view it was shown for (a board inside a larger
// host window), not over the whole window, each time it is shown.
class CentreOverView : public QObject
{
public:
    CentreOverView(QDialog *dialog, QWidget *view) : QObject(dialog), m_view(view) {}
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *dialog = static_cast<QWidget *>(watched);
        if (event->type() == QEvent::Show && m_view && m_view->isVisible()) {
            dialog->adjustSize();
            const QPoint centre = m_view->mapToGlobal(m_view->rect().center());
            dialog->move(centre - QPoint(dialog->width() / 2, dialog->height() / 2));
        }
        return false;
    }

private:
    QPointer<QWidget> m_view;
};

// The platform's standard buttons are titled by Qt (these contexts). The
// library's own translations carry them too, so that a host that installs only
// the library's translation still gets buttons in the alert's language.
[[maybe_unused]] const char *const kStandardTitles[] = {
    QT_TRANSLATE_NOOP("QPlatformTheme", "OK"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Cancel"),
    QT_TRANSLATE_NOOP("QGnomeTheme", "&OK"),
    QT_TRANSLATE_NOOP("QGnomeTheme", "&Cancel"),
};

// An alert on the window that holds `view`: the message, room for a text
// field, and the platform's standard buttons. It deletes itself once closed.
// None when no window holds the view.
QDialog *makeAlert(QWidget *view, const QString &message, QDialogButtonBox::StandardButtons buttons)
{
    QWidget *window = RoShow::viewControllerWithView(view);
    if (!window)
        return nullptr;
    auto *dialog = new QDialog(window);
    dialog->setWindowTitle(QStringLiteral(""));
    auto *column = new QVBoxLayout(dialog);
    auto *label = new QLabel(message, dialog);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    // Wide enough for a sentence on a line; a wrapped label would shrink to its longest word.
    label->setMinimumWidth(label->fontMetrics().averageCharWidth() * 32);
    column->addWidget(label);
    if (buttons != QDialogButtonBox::NoButton) {
        // Cancel rejects the alert (as Escape does), OK accepts it; the
        // platform decides their order and titles.
        auto *box = new QDialogButtonBox(buttons, dialog);
        QObject::connect(box, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
        QObject::connect(box, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
        column->addWidget(box);
    }
    QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->installEventFilter(new CentreOverView(dialog, view));
    return dialog;
}

constexpr QDialogButtonBox::StandardButtons kOkCancel =
    QDialogButtonBox::Ok | QDialogButtonBox::Cancel;

// Runs `accepted` or `rejected` once the alert has closed, by the result it closed with.
void onClose(QDialog *dialog, const RoShow::Callback &accepted, const RoShow::Callback &rejected)
{
    QObject::connect(dialog, &QDialog::finished, dialog, [accepted, rejected](int result) {
        const RoShow::Callback &callback = result == QDialog::Accepted ? accepted : rejected;
        if (callback)
            callback();
    });
}

// `seconds` as whole nanoseconds (truncated), then as the milliseconds a timer
// waits, rounded up so that the alert never closes early.
std::chrono::milliseconds delayOf(double seconds)
{
    const double nanoseconds = std::trunc(seconds * 1e9);
    const double limit = double(std::numeric_limits<int>::max()) * 1e6;
    const double clamped = nanoseconds < limit ? nanoseconds : limit;
    const std::chrono::nanoseconds delay{qint64(clamped)};
    return std::chrono::ceil<std::chrono::milliseconds>(delay);
}

} // namespace

void RoShow::showAlertWith(QWidget *view, const QString &title, const Callback &ensure,
                           const Callback &cancel)
{
    QDialog *dialog = makeAlert(view, title, kOkCancel);
    if (!dialog)
        return;
    onClose(dialog, ensure, cancel);
    dialog->open();
}

void RoShow::showAlertWith(QWidget *view, const QString &placeHolder, const TextCallback &ensure,
                           const Callback &cancel)
{
    QDialog *dialog = makeAlert(view, placeHolder, kOkCancel);
    if (!dialog)
        return;
    auto *field = new QLineEdit(dialog);
    field->setPlaceholderText(placeHolder);
    static_cast<QVBoxLayout *>(dialog->layout())->insertWidget(1, field);
    const Callback confirmed = [field, ensure] {
        if (ensure)
            ensure(field->text());
    };
    onClose(dialog, confirmed, cancel);
    dialog->open();
    field->setFocus();
}

void RoShow::showAlertWith(QWidget *view, const QString &title, const Callback &ensure)
{
    QDialog *dialog = makeAlert(view, title, QDialogButtonBox::Ok);
    if (!dialog)
        return;
    onClose(dialog, ensure, Callback());
    dialog->open();
}

void RoShow::showAlertWith(QWidget *view, const QString &title, double timeInterval,
                           const Callback &completion)
{
    QDialog *dialog = makeAlert(view, title, QDialogButtonBox::NoButton);
    if (!dialog)
        return;
    dialog->open();
    if (!(timeInterval > 0))
        return; // stays until the host closes it; `completion` never runs
    onClose(dialog, completion, Callback());
    // The timer belongs to the alert: an alert closed earlier takes it along.
    QTimer::singleShot(delayOf(timeInterval), Qt::PreciseTimer, dialog, &QDialog::accept);
}

QWidget *RoShow::viewControllerWithView(QWidget *view)
{
    for (QWidget *ancestor = view ? view->parentWidget() : nullptr; ancestor;
         ancestor = ancestor->parentWidget()) {
        if (ancestor->isWindow())
            return ancestor;
    }
    return nullptr;
}
