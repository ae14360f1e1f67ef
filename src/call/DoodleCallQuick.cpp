// The call's adapter over the Qt Quick board, built with Doodle::quick: its
// public API, its fingerprint read back from hex.
#include "DoodleCall_p.h"

#include <DoodleBoard.h>
#include <doodle/model/DoodleTranslate.h>

namespace {

class DoodleCallQuickBoard : public DoodleCallBoard
{
public:
    explicit DoodleCallQuickBoard(DoodleBoard *board) : m_board(board) {}

    bool isAlive() const override { return !m_board.isNull(); }
    QString userId() const override { return m_board ? m_board->userId() : QString(); }
    quint64 fingerprint() const override
    {
        return m_board ? m_board->fingerprint().toULongLong(nullptr, 16) : 0;
    }
    QString exportState() const override { return m_board ? m_board->exportState() : QString(); }
    QStringList exportStateParts() const override
    {
        return m_board ? m_board->exportStateParts() : QStringList();
    }
    bool mergeState(const QString &state) override { return m_board && m_board->mergeState(state); }
    bool isPictureSettled() const override { return !m_board || m_board->isPictureSettled(); }
    void advanceClock(quint64 atLeast) override
    {
        if (m_board)
            m_board->advanceClock(atLeast);
    }
    void setSharedOrder(bool shared) override
    {
        if (m_board)
            m_board->setSharedOrder(shared);
    }
    void setBoardAspect(const QSizeF &aspect) override
    {
        if (m_board)
            m_board->setBoardAspect(aspect);
    }
    void receiveText(const QString &sender, const QString &text) override
    {
        if (m_board)
            m_board->receiveText(sender, text);
    }
    void echoText(const QString &text) override
    {
        if (m_board)
            m_board->onDoodleTextEchoed(text);
    }
    QString textOf(const DoodleActionPtr &action) const override
    {
        return DoodleTranslate::stringFromDoodleAction(action);
    }

private:
    QPointer<DoodleBoard> m_board;
};

} // namespace

DoodleCall::DoodleCall(DoodleBoard *board, const QString &callName, QObject *parent)
    : DoodleCall(std::make_unique<DoodleCallQuickBoard>(board), callName, parent)
{
    if (board)
        connect(board, &DoodleBoard::actionGenerated, this,
                [this](const QString &text) { d->publishAction(text); });
}
