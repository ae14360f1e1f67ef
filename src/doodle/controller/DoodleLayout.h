#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/board/DoodleBoardTypes.h>
#include <doodle/canvas/ZQDoodleView.h>
#include <doodle/controller/DoodleLayoutDelegate.h>
#include <doodle/model/DoodleAction.h>
#include <doodle/toolbar/BrushColorView.h>
#include <doodle/toolbar/ZQColourToolbar.h>
#include <doodle/toolbar/ZQDoodleButtonView.h>
#include <doodle/toolbar/ZQDoodleToolbar.h>

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>

class DoodleLayoutPrivate;
class DoodlePathCache;
class QAbstractButton;
class QRect;

// Where a saved picture of the board goes.
using DoodlePictureSink = std::function<void(const QImage &picture)>;

// The controller of one doodle board and the host's only point of contact.
// It owns the board's view (created on first use), the drawn-action cache,
// the tool settings and the tool bars, turns local gestures into actions for
// the host and replays the actions the host receives from the other
// participants. It answers the tool bars and pickers, so a host may also make
// it the delegate of a colour tool bar or a colour picker it places itself.
class DOODLE_EXPORT DoodleLayout : public QObject,
                                   public ZQDoodleViewDelegate,
                                   public DoodleToolbarDelegate,
                                   public ZQDoodleButtonViewDelegate,
                                   public ColourToolbarDelegate,
                                   public BrushColorViewDelegate
{
    Q_OBJECT
public:
    explicit DoodleLayout(const QString &userId, QObject *parent = nullptr);
    ~DoodleLayout() override;

    // The board's view; created on first use. The constructor already uses it.
    QWidget *view();
    bool isViewLoaded() const;
    QString userId() const;

    DoodleLayoutDelegate *delegate() const;
    // Held weakly: a delegate that is a QObject reads as none once destroyed.
    void setDelegate(DoodleLayoutDelegate *delegate);

    // Host settings.
    bool drawReceiveTrackAnimated() const;
    void setDrawReceiveTrackAnimated(bool animated);
    QString waterString() const;
    void setWaterString(const QString &text);
    quint64 pageCount() const;
    void setPageCount(quint64 count);
    QColor backgroundColor() const;
    void setBackgroundColor(const QColor &color);
    QImage backgroundImage() const;
    void setBackgroundImage(const QImage &image);
    QList<QColor> backgroundColors() const;
    void setBackgroundColors(const QList<QColor> &colors);
    QList<QImage> backgroundImages() const;
    void setBackgroundImages(const QList<QImage> &images);
    // One board shape for a whole call. With an aspect (width:height; an
    // empty size for none, the default) the board keeps that shape,
    // letterboxed and centred in its view, and normalised coordinates map to
    // it, so that a circle is round on every screen. The margins take no
    // input and are left out of saved pictures. Without one the board fills
    // its view and each axis stretches with it, as on boards that know no aspect.
    QSizeF boardAspect() const;
    void setBoardAspect(const QSizeF &aspect);

    // Tool settings, in view points. The plain setters only store; a gesture
    // under way keeps the tool, width and colour it started with.
    double brushWidth() const;
    void setBrushWidth(double width);
    double eraserWidth() const;
    void setEraserWidth(double width);
    double textSize() const;
    void setTextSize(double size);
    QColor brushColor() const;
    void setBrushColor(const QColor &color);
    qint64 actionMode() const;
    void setActionMode(qint64 mode);

    // The size tables loaded from the resource bundle.
    QList<double> brushWidthArray() const;
    QList<double> eraserWidthArray() const;
    QList<double> textSizeArray() const;
    qint64 colorSelectIndex() const;
    qint64 widthSelectIndex() const;
    qint64 eraserSelectIndex() const;
    qint64 textSizeSelectIndex() const;
    bool isMinToolBar() const;

    // Host operations.
    void canEdit(bool editable);
    void onDoodleActionReceived(const QString &userId, const DoodleActionPtr &action);
    // Decodes a text from `userId` and receives it: the one call for a host
    // whose channel carries the text form.
    void onDoodleTextReceived(const QString &userId, const QString &text);
    DoodleReceiveLimits receiveLimits() const;
    void setReceiveLimits(const DoodleReceiveLimits &limits);
    // Strokes and shapes travel while they are drawn: this board reports its
    // own (progress actions, handed over like every other action) and shows
    // the others' growing until their committed drawing replaces them. Both
    // on by default. A laser's track is sent and shown either way.
    bool sendsLiveStrokes() const;
    void setSendsLiveStrokes(bool sends);
    bool showsLiveStrokes() const;
    void setShowsLiveStrokes(bool shows);
    // The largest action text, in UTF-8 bytes, this board hands the host to
    // send (0, the default: no limit). A stroke over it goes as consecutive
    // strokes within it that every board draws as one line, and undo takes
    // them all back; any other action over it is refused with a warning.
    qsizetype messageBudget() const;
    void setMessageBudget(qsizetype bytes);
    // Take back the local user's last drawing, and clear the board for
    // everybody. Either does nothing, and sends nothing, when there is nothing
    // to take back or clear; the tool bar shows its buttons unavailable then.
    void undo();
    void cleanDoodle();
    // The tool bar's clear button asks first (the default); hosts that ask
    // themselves, or want one tap to clear, turn it off. cleanDoodle() never asks.
    bool confirmsClear() const;
    void setConfirmsClear(bool confirms);
    // Applies `action` as the local user's own, exactly as if drawn on this
    // board: a drawing is stamped, drawn and handed to the delegate; an undo or
    // a clear does what undo() or cleanDoodle() does. For scripted input such as
    // a recorded session played into a call. False for any other action.
    bool commitLocalAction(const DoodleActionPtr &action);
    QList<DoodleActionPtr> getAllPath() const;
    void resetDoodleViewFrame(const QRect &frame);
    DoodleActionPtr stringToDoodleAction(const QString &text) const;
    QString doodleActionToString(const DoodleActionPtr &action) const;
    void dismissDoodle();

    // The board's own parts.
    void reset();
    void loadDoodleView();
    ZQDoodleView *doodleView();
    // The drawn-action cache; it lives as long as the board.
    DoodlePathCache *doodlePathCache() const;

    // Replay and undo.
    void doodleAction(const DoodleActionPtr &action, const QString &fromUserId);
    void addAction(const DoodleActionPtr &action);
    void drawDoodle(const DoodleActionPtr &action);
    void drawCachePath();
    void undoDrawPathWithUserId(const QString &userId);
    void cleanDoodleCaches();

    // Normalised ("logic") and view ("normal") coordinates.
    QSizeF getScaleSize() const;
    QPointF logicFromNormal(const QPointF &point) const;
    double logicFromNormalWidth(double width) const;
    double logicFromNormalHeight(double height) const;
    double normalFromLogicWidth(double width) const;
    QPointF normalFromLogicPositionX(double x, double y) const;
    QRectF normalFromLogicRect(const QRectF &rect) const;
    QPointF limitTouchPoint(const QPointF &point, const QWidget *view) const;

    // Gestures on the board, in the board's coordinates.
    void touchesBegan(const DoodleTouch &touch);
    void touchesMoved(const DoodleTouch &touch);
    void touchesEnded(const DoodleTouch &touch);
    void touchesCancelled(const DoodleTouch &touch);
    void textEditDone(QLineEdit *textField) override;
    void textEditCancelled(QLineEdit *textField) override;

    // One order on every board. Every action this board sends carries an
    // order stamp; received ones are kept in stamp order. A board's state (its
    // drawings, what was taken back and the last clear) travels as one
    // text; merging states is their union, so merges never conflict.
    quint64 clock() const;
    // Moves the clock forward to `atLeast` (never back; stamps stay below
    // 2^53). A board that leaves a call and rejoins it under the same id calls
    // this before it sends anything, with a value above every stamp it sent
    // before (the wall clock in milliseconds), so that the others never take
    // its new drawings for copies of old ones.
    void advanceClock(quint64 atLeast);
    QString exportState() const;
    // False, with a warning, for a text that is not a state or is too large.
    // The board is redrawn once, only where the merge brought or took drawings.
    // A large state, on a board that is shown, is read on a worker thread and
    // taken in a slice at a time: true then means it is on its way (a text
    // that turns out not to be a state is dropped with a warning), and
    // isPictureSettled() is false until it is in.
    bool mergeState(const QString &state);
    // The state as texts within the message budget: the state itself when it
    // fits, otherwise its parts, which mergeState takes one by one and merges
    // once the last one came (false until then). A receiver holds the parts
    // of at most four hand-offs, 64 MiB in all, for 30 s.
    QStringList exportStateParts() const;
    // Equal on two boards that hold the same state: the same drawings (stamp,
    // owner and what each shows), undos and last clear. Kept current after
    // every change.
    quint64 fingerprint() const;
    // A change of size, or a merge that redraws a board of more than a few
    // dozen drawings, is drawn on a worker thread, and a large state is read
    // there: meanwhile the previous picture shows, stretched to the new size,
    // and everything keeps working. False while such work is pending;
    // pictureSettled() is emitted when the exact picture is showing.
    bool isPictureSettled() const;

    // For a channel that hands every board every action in one shared order,
    // the board's own among them (one MQTT broker): a drawing without a stamp
    // is then placed right after the stamped drawing or clear that came before
    // it there, the same on every board, late joiners included (states carry
    // that place). The host hands the board its own texts as they come back
    // through the channel to onDoodleTextEchoed().
    void setSharedOrder(bool shared);
    bool hasSharedOrder() const;
    void onDoodleTextEchoed(const QString &text);

    // Moderation, on this board only: a muted sender's actions are dropped;
    // removeDrawingsOf takes back every drawing of one sender in one redraw.
    void setMuted(const QString &userId, bool muted);
    bool isMuted(const QString &userId) const;
    void removeDrawingsOf(const QString &userId);

    // Tool bar. The board opens with the bar folded away and its floating
    // button showing; the button (or showToolBar) unfolds and folds it.
    ZQDoodleToolbar *doodletoolbar();
    ZQDoodleButton *doodletoolButton();
    void showToolBar();
    void hideToolBar(bool hidden);
    void reloadToolBar();
    // Buttons of the host's own; colourToolbar() shows the chosen colour on colourButton.
    QAbstractButton *brushButton() const;
    void setBrushButton(QAbstractButton *button);
    QAbstractButton *colourButton() const;
    void setColourButton(QAbstractButton *button);
    // The option pickers above the tool bar; at most one is open.
    void addLineView();
    void addEraserView();
    void addTextSizeView();
    void addColorView();
    void removeLineView();
    void removeEraserView();
    void removeTextSizeView();
    void removeColorView();
    // The answers to the tool bar's and the pickers' taps.
    void doodleToolbar(ZQDoodleToolbar *toolbar, ZQDoodleButton *button,
                       qint64 buttonType) override;
    void doodleButtonView(ZQDoodleButtonView *view, qint64 selectIndex, qint64 buttonType) override;
    void colourToolbar(ZQColourToolbar *toolbar, const QColor &color) override;
    void brushColorView(BrushColorView *view, const QColor &color) override;

    // Saving. saveImage() hands a snapshot to the picture sink: by default a
    // new PNG file, on white, in the user's pictures folder; a host may set its own.
    void saveImage();
    void setPictureSink(const DoodlePictureSink &sink);
    // The board without its tool bars, at the screen scale, watermarked
    // with waterString(); the bars are shown afterwards.
    QImage imageScreenShot();
    // `image` redrawn at the screen scale with `text` tiled over it in a grid
    // turned by 30 degrees; without a text only redrawn.
    static QImage addWatermarketWithOriginImage(const QImage &image, const QString &text);
    // The board's drawing as a vector document, built from the cache (not
    // from pixels) in its order: strokes as round-capped paths, shapes and
    // arrows as paths, text as text in the board's font, each eraser a mask
    // (SVG) or a clip (PDF) over what was drawn before it, on the background
    // colour and under the watermark. Sized in the board's points; empty when
    // the board has no size.
    QByteArray exportSvg() const;
    QByteArray exportPdf() const;
    // `image` with every pixel it covers in `color`, its alpha kept.
    static QImage imageWithColor(const QColor &color, const QImage &image);
    // A disc of `color` in (8, 8, width - 22, height - 22) at the screen scale.
    static QImage coloredImage(const QColor &color, const QSizeF &size);
    // `image` over the disc of coloredImage() at its size.
    static QImage imageWithBackgroundColor(const QColor &color, const QImage &image);

signals:
    void pictureSettled();

private:
    friend class DoodleLayoutPrivate;
    friend class DoodleLayoutView;
    std::unique_ptr<DoodleLayoutPrivate> d;
};
