#pragma once

// The board controller's private state and its internal steps. Not installed:
// hosts see only DoodleLayout, so the state can change without breaking them.
#include <doodle/board/DoodleBoardCore_p.h>
#include <doodle/controller/DoodleLayout.h>
#include <doodle/model/DoodlePathCache.h>
#include <doodle/support/DoodleWeak.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QPointer>
#include <QRectF>

#include <QSet>

#include <memory>
#include <optional>

class DoodleLayoutView;
class QAbstractButton;
class QJsonArray;
struct DoodlePicker;

// The Widgets front-end of the board: its view, bars, pickers and alerts over
// the board's core.
class DoodleLayoutPrivate : public DoodleBoardCore
{
public:
    explicit DoodleLayoutPrivate(DoodleLayout *owner) : q(owner) {}

    // Lifecycle and notifications.
    void viewDidLoad();
    void loadSizeTables();
    void observeNotifications();
    void orientChange();
    void didBecomeActive();
    void viewDidLayout();
    // Where the board sits in the view: all of it, or letterboxed to the aspect.
    QRect boardFrame() const;
    // Tool bar.
    void addToolBarToView();
    void styleToolBar();
    void placeToolButton();
    void setToolButtonVisible(bool visible);
    void closePickers();
    void openPicker(const DoodlePicker &picker);
    void closePicker(const DoodlePicker &picker);
    void togglePicker(const DoodlePicker &picker);
    void showColour(const QColor &color);
    // Saving.
    void writePicture(const QImage &picture) const;
    // The core's hook: the undo and clear buttons follow the cache, once
    // per turn of the event loop.
    void scheduleCommandUpdate() override;
    void updateCommandButtons();
    // The core's hooks: the host hears of a clear of this user's about to
    // be made, and who cleared the board, here or elsewhere.
    void willClear() override;
    void notifyCleared(const QString &userId) override;
    void notifyPictureSettled() override { emit q->pictureSettled(); }
    // The clear button's question; the board clears once it is answered yes.
    void confirmClear();
    // The core's hook: the host hears of each local action.
    void actionGenerated(const DoodleActionPtr &action) override;

    DoodleLayout *q;
    QList<QColor> m_backgroundColors;
    QList<QImage> m_backgroundImages;
    QList<double> m_brushWidthArray;
    QList<double> m_eraserWidthArray;
    QList<double> m_textSizeArray;
    qint64 m_colorSelectIndex = 0;
    qint64 m_widthSelectIndex = 0;
    qint64 m_eraserSelectIndex = 0;
    qint64 m_textSizeSelectIndex = 0;
    bool m_isMinToolBar = false;
    bool m_drawReceiveTrackAnimated = false;
    DoodleWeak<DoodleLayoutDelegate> m_delegate;
    QPointer<ZQDoodleView> m_doodleView;
    quint64 m_pageCount = 1;
    QColor m_backgroundColor;
    QImage m_backgroundImage;
    QString m_waterString;
    QPointer<QWidget> m_view; // a DoodleLayoutView
    bool m_inFrameReset = false;
    // Order, state and moderation.
    bool m_observing = false;
    bool m_commandUpdatePending = false;
    bool m_confirmsClear = true;
    bool m_askingToClear = false;
    // The tool bar, its floating button and the option pickers; all live on the view.
    QPointer<ZQDoodleToolbar> m_doodletoolbar;
    QPointer<ZQDoodleButton> m_doodletoolButton;
    QPointer<ZQDoodleButtonView> m_lineView;
    QPointer<ZQDoodleButtonView> m_eraserView;
    QPointer<ZQDoodleButtonView> m_textSizeView;
    QPointer<ZQDoodleButtonView> m_colorView;
    QPointer<QAbstractButton> m_brushButton;
    QPointer<QAbstractButton> m_colourButton;
    DoodlePictureSink m_pictureSink; // none: a PNG in the pictures folder
};
