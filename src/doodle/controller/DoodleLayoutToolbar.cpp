// Board controller: the tool state and the main tool bar with its floating button.
// The bar itself is added by the tool-bar subsystem; until then these
// operations keep the tool state and the fold state, and act on no widget.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

void DoodleLayout::setActionMode(qint64 mode)
{
    d->m_actionMode = mode;
    if (mode < DoodleActionModeBrush || mode > DoodleActionModeText)
        return;
    // The tool bar is laid out against the controller's view, so marking the
    // selected tool loads the view first.
    view();
}

void DoodleLayoutPrivate::addToolBarToView()
{
    if (m_doodletoolbar && !m_doodletoolbar->parentWidget())
        m_doodletoolbar->setParent(m_view);
    if (m_doodletoolButton && !m_doodletoolButton->parentWidget())
        m_doodletoolButton->setParent(m_view);
}

void DoodleLayout::showToolBar()
{
    if (d->m_isMinToolBar) {
        if (d->m_doodletoolbar)
            d->m_doodletoolbar->show();
        d->m_isMinToolBar = false;
        if (DoodleLayoutDelegate *host = d->m_delegate.get())
            host->onRestartDoodle();
        return;
    }
    d->closePickers();
    if (d->m_doodletoolbar)
        d->m_doodletoolbar->hide();
    d->m_isMinToolBar = true;
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onPauseDoodle();
}

void DoodleLayout::hideToolBar(bool hidden)
{
    if (d->m_doodletoolbar)
        d->m_doodletoolbar->setHidden(hidden);
    if (d->m_doodletoolButton)
        d->m_doodletoolButton->setHidden(hidden);
}

void DoodleLayout::reloadToolBar()
{
    if (!d->m_view)
        return;
    const QSize size = d->m_view->size();
    if (d->m_doodletoolbar)
        d->m_doodletoolbar->setGeometry(16, size.height() - 30 - 16, size.width() - 32, 30);
    if (d->m_doodletoolButton)
        d->m_doodletoolButton->setGeometry(size.width() - 50, size.height() - 100, 44, 44);
}

void DoodleLayoutPrivate::setToolButtonVisible(bool visible)
{
    if (m_doodletoolButton)
        m_doodletoolButton->setVisible(visible);
}

void DoodleLayoutPrivate::closePickers()
{
    // The option pickers open above the tool bar; none exists yet.
}
