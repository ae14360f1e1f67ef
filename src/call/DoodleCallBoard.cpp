// The call's adapter over the Widgets board: its public API, nothing more.
#include "DoodleCallBoard_p.h"

#include <doodle/controller/DoodleLayout.h>

DoodleCallLayoutBoard::DoodleCallLayoutBoard(DoodleLayout *board) : m_board(board) {}

QString DoodleCallLayoutBoard::userId() const
{
    return m_board ? m_board->userId() : QString();
}

quint64 DoodleCallLayoutBoard::fingerprint() const
{
    return m_board ? m_board->fingerprint() : 0;
}

QStringList DoodleCallLayoutBoard::exportStateParts() const
{
    return m_board ? m_board->exportStateParts() : QStringList();
}

QString DoodleCallLayoutBoard::exportState() const
{
    return m_board ? m_board->exportState() : QString();
}

bool DoodleCallLayoutBoard::mergeState(const QString &state)
{
    return m_board && m_board->mergeState(state);
}

bool DoodleCallLayoutBoard::isPictureSettled() const
{
    return !m_board || m_board->isPictureSettled();
}

void DoodleCallLayoutBoard::advanceClock(quint64 atLeast)
{
    if (m_board)
        m_board->advanceClock(atLeast);
}

void DoodleCallLayoutBoard::setSharedOrder(bool shared)
{
    if (m_board)
        m_board->setSharedOrder(shared);
}

void DoodleCallLayoutBoard::setBoardAspect(const QSizeF &aspect)
{
    if (m_board)
        m_board->setBoardAspect(aspect);
}

void DoodleCallLayoutBoard::receiveText(const QString &sender, const QString &text)
{
    if (m_board)
        m_board->onDoodleTextReceived(sender, text);
}

void DoodleCallLayoutBoard::echoText(const QString &text)
{
    if (m_board)
        m_board->onDoodleTextEchoed(text);
}

QString DoodleCallLayoutBoard::textOf(const DoodleActionPtr &action) const
{
    return m_board ? m_board->doodleActionToString(action) : QString();
}
