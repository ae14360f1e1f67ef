#include "RoShow.h"

#include <QDialog>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
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

// An alert on the window that holds `view`: the message, room for a text
// field, and a row for the buttons. It deletes itself once closed. None when
// no window holds the view.
QDialog *makeAlert(QWidget *view, const QString &message, QHBoxLayout **buttonRow)
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
    *buttonRow = new QHBoxLayout;
    column->addLayout(*buttonRow);
    QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->installEventFilter(new CentreOverView(dialog, view));
    return dialog;
}

// Cancel rejects the alert (as Escape does), confirm accepts it.
void addButtons(QDialog *dialog, QHBoxLayout *row, bool withCancel)
{
    if (withCancel) {
        auto *cancel = new QPushButton(QStringLiteral("取消"), dialog);
        cancel->setAutoDefault(false);
        QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
        row->addWidget(cancel);
    }
    auto *confirm = new QPushButton(QStringLiteral("确定"), dialog);
    confirm->setDefault(true);
    QObject::connect(confirm, &QPushButton::clicked, dialog, &QDialog::accept);
    row->addWidget(confirm);
}

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
    QHBoxLayout *row = nullptr;
    QDialog *dialog = makeAlert(view, title, &row);
    if (!dialog)
        return;
    addButtons(dialog, row, true);
    onClose(dialog, ensure, cancel);
    dialog->open();
}

void RoShow::showAlertWith(QWidget *view, const QString &placeHolder, const TextCallback &ensure,
                           const Callback &cancel)
{
    QHBoxLayout *row = nullptr;
    QDialog *dialog = makeAlert(view, placeHolder, &row);
    if (!dialog)
        return;
    auto *field = new QLineEdit(dialog);
    field->setPlaceholderText(placeHolder);
    static_cast<QVBoxLayout *>(dialog->layout())->insertWidget(1, field);
    addButtons(dialog, row, true);
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
    QHBoxLayout *row = nullptr;
    QDialog *dialog = makeAlert(view, title, &row);
    if (!dialog)
        return;
    addButtons(dialog, row, false);
    onClose(dialog, ensure, Callback());
    dialog->open();
}

void RoShow::showAlertWith(QWidget *view, const QString &title, double timeInterval,
                           const Callback &completion)
{
    QHBoxLayout *row = nullptr;
    QDialog *dialog = makeAlert(view, title, &row);
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
