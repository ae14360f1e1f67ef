// Board controller: the tool state and the main tool bar with its floating button.
// The bar itself is added by the tool-bar subsystem; until then these
// operations keep the tool state and the fold state, and act on no widget.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"

void DoodleLayout::setActionMode(qint64 mode)
{
    m_actionMode = mode;
    if (mode < DoodleActionModeBrush || mode > DoodleActionModeText)
        return;
    // The tool bar is laid out against the controller's view, so marking the
    // selected tool loads the view first.
    view();
}

void DoodleLayout::addToolBarToView()
{
    if (m_doodletoolbar && !m_doodletoolbar->parentWidget())
        m_doodletoolbar->setParent(m_view);
    if (m_doodletoolButton && !m_doodletoolButton->parentWidget())
        m_doodletoolButton->setParent(m_view);
}

void DoodleLayout::showToolBar()
{
    if (m_isMinToolBar) {
        if (m_doodletoolbar)
            m_doodletoolbar->show();
        m_isMinToolBar = false;
        if (DoodleLayoutDelegate *host = m_delegate.get())
            host->onRestartDoodle();
        return;
    }
    closePickers();
    if (m_doodletoolbar)
        m_doodletoolbar->hide();
    m_isMinToolBar = true;
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onPauseDoodle();
}

void DoodleLayout::hideToolBar(bool hidden)
{
    if (m_doodletoolbar)
        m_doodletoolbar->setHidden(hidden);
    if (m_doodletoolButton)
        m_doodletoolButton->setHidden(hidden);
}

void DoodleLayout::reloadToolBar()
{
    if (!m_view)
        return;
    const QSize size = m_view->size();
    if (m_doodletoolbar)
        m_doodletoolbar->setGeometry(16, size.height() - 30 - 16, size.width() - 32, 30);
    if (m_doodletoolButton)
        m_doodletoolButton->setGeometry(size.width() - 50, size.height() - 100, 44, 44);
}

void DoodleLayout::setToolButtonVisible(bool visible)
{
    if (m_doodletoolButton)
        m_doodletoolButton->setVisible(visible);
}

void DoodleLayout::closePickers()
{
    // The option pickers open above the tool bar; none exists yet.
}
