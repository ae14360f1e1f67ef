#pragma once

// The board a call drives, whichever front-end shows it: the call hands it
// what arrives, reads its state and fingerprint, and shares its order and
// shape. Each front-end has an adapter over its public API. Not installed.
#include <doodle/model/DoodleAction.h>

#include <QPointer>
#include <QSizeF>
#include <QString>
#include <QStringList>

class DoodleLayout;

class DoodleCallBoard
{
public:
    virtual ~DoodleCallBoard() = default;

    // False when there is no board, or once it is destroyed: then the call
    // leaves it alone.
    virtual bool isAlive() const = 0;
    virtual QString userId() const = 0;
    virtual quint64 fingerprint() const = 0;
    virtual QString exportState() const = 0;
    // The state as texts within the board's message budget.
    virtual QStringList exportStateParts() const = 0;
    virtual bool mergeState(const QString &state) = 0;
    // False while a large state is still being merged in the background.
    virtual bool isPictureSettled() const = 0;
    virtual void advanceClock(quint64 atLeast) = 0;
    virtual void setSharedOrder(bool shared) = 0;
    virtual void setBoardAspect(const QSizeF &aspect) = 0;
    // An action's text from another participant, and one of this board's own
    // as the broker echoed it back.
    virtual void receiveText(const QString &sender, const QString &text) = 0;
    virtual void echoText(const QString &text) = 0;
    // The wire text of a local action.
    virtual QString textOf(const DoodleActionPtr &action) const = 0;
};

// The Widgets board.
class DoodleCallLayoutBoard : public DoodleCallBoard
{
public:
    explicit DoodleCallLayoutBoard(DoodleLayout *board);

    bool isAlive() const override { return !m_board.isNull(); }
    QString userId() const override;
    quint64 fingerprint() const override;
    QString exportState() const override;
    QStringList exportStateParts() const override;
    bool mergeState(const QString &state) override;
    bool isPictureSettled() const override;
    void advanceClock(quint64 atLeast) override;
    void setSharedOrder(bool shared) override;
    void setBoardAspect(const QSizeF &aspect) override;
    void receiveText(const QString &sender, const QString &text) override;
    void echoText(const QString &text) override;
    QString textOf(const DoodleActionPtr &action) const override;

private:
    QPointer<DoodleLayout> m_board;
};
