#pragma once

#include <doodle/DoodleExport.h>

#include <QString>

#include <functional>

class QWidget;

// Alerts shown on behalf of a host over the window that holds a given view,
// centred over that view:
// a message with a confirmation, a one-line text prompt, a message with one
// button and a message that closes itself. The buttons are the platform's
// standard Cancel and OK, in the platform's order and titled in the
// application's language (see DoodleTranslations); a button closes the alert
// and then runs its callback, if one was given. An alert does not block: each
// call returns at once and the callbacks run later. A view that no window
// holds shows nothing and no callback ever runs.
class DOODLE_EXPORT RoShow
{
public:
    using Callback = std::function<void()>;
    using TextCallback = std::function<void(const QString &text)>;

    // `title` is the message; cancel and confirm buttons.
    static void showAlertWith(QWidget *view, const QString &title, const Callback &ensure,
                              const Callback &cancel);
    // A text field, then cancel and confirm; confirm hands over the field's
    // text. `placeHolder` is both the message and the field's placeholder.
    static void showAlertWith(QWidget *view, const QString &placeHolder, const TextCallback &ensure,
                              const Callback &cancel);
    // A confirm button only.
    static void showAlertWith(QWidget *view, const QString &title, const Callback &ensure);
    // No buttons. With `timeInterval` seconds above 0 the alert closes itself
    // after that time and then runs `completion`; otherwise it stays until the
    // host closes it, and `completion` never runs.
    static void showAlertWith(QWidget *view, const QString &title, double timeInterval,
                              const Callback &completion);
    // The window to show an alert on: the nearest window among the view's
    // ancestors, starting at its parent; nullptr when there is none.
    static QWidget *viewControllerWithView(QWidget *view);
};
