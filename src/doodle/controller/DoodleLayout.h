#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/canvas/ZQDoodleView.h>
#include <doodle/controller/DoodleLayoutDelegate.h>
#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodlePathCache.h>
#include <doodle/support/DoodleWeak.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPainterPath>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QWidget>

#include <memory>

class DoodleLayoutView;

// The tools a gesture can draw with.
enum DoodleActionMode : qint64
{
    DoodleActionModeNone = 0,
    DoodleActionModeBrush = 1,
    DoodleActionModeEraser = 2,
    DoodleActionModeRectangle = 3,
    DoodleActionModeEllipse = 4,
    DoodleActionModeArrow = 5,
    DoodleActionModeText = 6,
};

// One touch of a gesture: where it is now and where it was at the previous
// event, both in the board's coordinates.
struct DoodleTouch
{
    QPointF location;
    QPointF previousLocation;
};

// The controller of one doodle board and the host's only point of contact.
// It owns the board's view (created on first use), the drawn-action cache and
// the tool settings, turns local gestures into actions for the host and
// replays the actions the host receives from the other participants.
class DOODLE_EXPORT DoodleLayout : public QObject, public ZQDoodleViewDelegate
{
    Q_OBJECT
public:
    explicit DoodleLayout(const QString &userId, QObject *parent = nullptr);
    ~DoodleLayout() override;

    // The board's view; created, and viewDidLoad() run, on first use.
    QWidget *view();
    bool isViewLoaded() const { return !m_view.isNull(); }
    QString userId() const { return m_userId; }

    DoodleLayoutDelegate *delegate() const { return m_delegate.get(); }
    void setDelegate(DoodleLayoutDelegate *delegate) { m_delegate = delegate; }

    // Host settings.
    bool drawReceiveTrackAnimated() const { return m_drawReceiveTrackAnimated; }
    void setDrawReceiveTrackAnimated(bool animated) { m_drawReceiveTrackAnimated = animated; }
    QString waterString() const { return m_waterString; }
    void setWaterString(const QString &text) { m_waterString = text; }
    quint64 pageCount() const { return m_pageCount; }
    void setPageCount(quint64 count);
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color);
    QImage backgroundImage() const { return m_backgroundImage; }
    void setBackgroundImage(const QImage &image);
    QList<QColor> backgroundColors() const { return m_backgroundColors; }
    void setBackgroundColors(const QList<QColor> &colors);
    QList<QImage> backgroundImages() const { return m_backgroundImages; }
    void setBackgroundImages(const QList<QImage> &images);

    // Tool settings, in view points. The plain setters only store.
    double brushWidth() const { return m_brushWidth; }
    void setBrushWidth(double width) { m_brushWidth = width; }
    double eraserWidth() const { return m_eraserWidth; }
    void setEraserWidth(double width) { m_eraserWidth = width; }
    double textSize() const { return m_textSize; }
    void setTextSize(double size) { m_textSize = size; }
    QColor brushColor() const { return m_brushColor; }
    void setBrushColor(const QColor &color) { m_brushColor = color; }
    qint64 actionMode() const { return m_actionMode; }
    void setActionMode(qint64 mode);

    // The size tables loaded from the resource bundle.
    QList<double> brushWidthArray() const { return m_brushWidthArray; }
    QList<double> eraserWidthArray() const { return m_eraserWidthArray; }
    QList<double> textSizeArray() const { return m_textSizeArray; }
    qint64 colorSelectIndex() const { return m_colorSelectIndex; }
    qint64 widthSelectIndex() const { return m_widthSelectIndex; }
    qint64 eraserSelectIndex() const { return m_eraserSelectIndex; }
    qint64 textSizeSelectIndex() const { return m_textSizeSelectIndex; }
    bool isMinToolBar() const { return m_isMinToolBar; }

    // Host operations.
    void canEdit(bool editable);
    void onDoodleActionReceived(const QString &userId, const DoodleActionPtr &action);
    void undo();
    void cleanDoodle();
    QList<DoodleActionPtr> getAllPath() const;
    void resetDoodleViewFrame(const QRect &frame);
    DoodleActionPtr stringToDoodleAction(const QString &text) const;
    QString doodleActionToString(const DoodleActionPtr &action) const;
    void dismissDoodle();

    // The board's own parts.
    void reset();
    void loadDoodleView();
    ZQDoodleView *doodleView();
    DoodlePathCache *doodlePathCache() const { return m_doodlePathCache.get(); }

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

    // Tool bar.
    void showToolBar();
    void hideToolBar(bool hidden);
    void reloadToolBar();

protected:
    virtual void viewDidLoad();

private:
    friend class DoodleLayoutView;

    void loadSizeTables();
    void observeNotifications();
    void orientChange();
    void didBecomeActive();
    void viewDidLayout();
    void applicationStateChanged(Qt::ApplicationState state);
    void addToolBarToView();
    void setToolButtonVisible(bool visible);
    void drawStroke(const DoodleAction &action);
    QPainterPath smoothedPath(const DoodlePointList &points) const;
    void commitAction();
    void reportPause();
    void reportRestart();
    void closePickers();
    bool isOnBoard(const QPointF &point) const;
    void beginStroke(const QPointF &point);
    void beginBox(const QPointF &point);
    void beginArrow(const QPointF &point);
    void stampAction(qint64 type);
    void finishStrokeOffBoard(const QPointF &previous);
    void drawStrokePermanently();
    void moveStroke(const QPointF &control, const QPointF &mid, const QPointF &point);
    void moveBox(const QPointF &mid);
    void moveArrow(const QPointF &mid);
    void finishGesture(const QPointF &end, bool cancelled);
    void endStroke(const QPointF &end);
    void endBox(const QPointF &end, bool normalise);
    void endArrow(const QPointF &end);
    void openTextEntry(const QPointF &end);
    QPointF gestureEndPoint(const DoodleTouch &touch) const;

    QString m_userId;
    QList<QColor> m_backgroundColors;
    QList<QImage> m_backgroundImages;
    QPainterPath m_path;
    bool m_hasPath = false;
    QPointF m_strokeEnd; // where the last previewed segment of the stroke ended
    QRectF m_rect;
    bool m_rectIsNull = true;
    QPointF m_startPoint;
    QPointF m_endPoint;
    std::unique_ptr<DoodlePathCache> m_doodlePathCache;
    DoodleActionPtr m_doodleDraw;
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
    double m_brushWidth = 0;
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
    // The tool bar and its floating button, once the tool bar exists.
    QPointer<QWidget> m_doodletoolbar;
    QPointer<QWidget> m_doodletoolButton;
};
