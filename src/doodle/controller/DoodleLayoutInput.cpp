// Board controller: the view's gestures and text field reach the board's core.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayout_p.h"

#include <QLineEdit>

void DoodleLayout::touchesBegan(const DoodleTouch &touch)
{
    if (d->m_isMinToolBar)
        return;
    d->closePickers();
    d->gestureBegan(touch);
}

void DoodleLayout::touchesMoved(const DoodleTouch &touch)
{
    if (!d->m_isMinToolBar)
        d->gestureMoved(touch);
}

void DoodleLayout::touchesEnded(const DoodleTouch &touch)
{
    if (!d->m_isMinToolBar)
        d->gestureEnded(touch);
}

void DoodleLayout::touchesCancelled(const DoodleTouch &touch)
{
    d->gestureCancelled(touch);
}

void DoodleLayoutPrivate::actionGenerated(const DoodleActionPtr &action)
{
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onDoodleActionGenerated(action);
}

void DoodleLayout::textEditDone(QLineEdit *textField)
{
    if (textField && d->m_doodleView && textField == d->m_doodleView->tempTextField())
        d->commitOpenText();
}

void DoodleLayout::textEditCancelled(QLineEdit *textField)
{
    if (textField && d->m_doodleView && textField == d->m_doodleView->tempTextField())
        d->closeTextField();
}
