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
    // Gestures.
    DoodleGestureTool toolForMode(qint64 mode) const;
    bool isOnBoard(const QPointF &point) const;
    DoodleActionPtr newAction(qint64 type) const;
    void resetGesture();
    void abandonGesture();
    void cleanPreview();
    // The preview surface, emptied for a shape drawn right after.
    DoodleSurface *freshPreview();
    void drawTail(const QPointF &from, const QPointF &to);
    bool commitAction(const DoodleActionPtr &built);
    void commitGesture();
    void beginStroke(const QPointF &point);
    void beginBox(const QPointF &point);
    void beginArrow(const QPointF &point);
    void finishStrokeOffBoard();
    void moveStroke(const QPointF &control, const QPointF &mid, const QPointF &point);
    void moveBox(const QPointF &mid);
    void moveArrow(const QPointF &mid);
    void finishGesture(const QPointF &end, bool cancelled);
    void endBox(const QPointF &end, bool normalise);
    void endArrow(const QPointF &end);
    void openTextEntry(const QPointF &end);
    void closeTextField();
    // Commits the open text field's text as Return does; a blank one is dropped.
    void commitOpenText();
    QPointF gestureEndPoint(const DoodleTouch &touch) const;
    // The core's hook: the undo and clear buttons follow the cache, once
    // per turn of the event loop.
    void scheduleCommandUpdate() override;
    void updateCommandButtons();
    // The host hears who cleared the board, here or elsewhere.
    void notifyCleared(const QString &userId);
    // The clear button's question; the board clears once it is answered yes.
    void confirmClear();

    DoodleLayout *q;
    QString m_userId;
    QList<QColor> m_backgroundColors;
    QList<QImage> m_backgroundImages;
    QPointF m_strokeEnd; // where the last previewed segment of the stroke ended
    QPainterPath m_tail; // from there to the pointer
    QRectF m_rect;
    bool m_rectIsNull = true;
    QPointF m_startPoint;
    QPointF m_endPoint;
    DoodleActionPtr m_doodleDraw; // the stroke or shape under way
    DoodleActionPtr m_textDraw;   // the text whose field is open
    bool m_drawPathDidMoved = false;
    QList<double> m_brushWidthArray;
    QList<double> m_eraserWidthArray;
    QList<double> m_textSizeArray;
    qint64 m_colorSelectIndex = 0;
    qint64 m_widthSelectIndex = 0;
    qint64 m_eraserSelectIndex = 0;
    qint64 m_textSizeSelectIndex = 0;
    bool m_isMinToolBar = false;
    bool m_drawReceiveTrackAnimated = false;
    double m_eraserWidth = 0;
    double m_textSize = 0;
    QColor m_brushColor;
    qint64 m_actionMode = 0;
    DoodleWeak<DoodleLayoutDelegate> m_delegate;
    QPointer<ZQDoodleView> m_doodleView;
    quint64 m_pageCount = 1;
    QColor m_backgroundColor;
    QImage m_backgroundImage;
    QString m_waterString;
    QPointer<QWidget> m_view; // a DoodleLayoutView
    bool m_inFrameReset = false;
    QSizeF m_boardAspect; // empty: the board fills its view
    // Order, state and moderation.
    bool m_observing = false;
    bool m_commandUpdatePending = false;
    bool m_confirmsClear = true;
    bool m_askingToClear = false;
    bool m_leftForeground = false; // since the gesture under way began
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
