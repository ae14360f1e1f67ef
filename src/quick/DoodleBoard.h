#pragma once

#include <doodle/model/DoodleAction.h>

#include <QColor>
#include <QQuickItem>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <memory>

class DoodleBoardPrivate;

// The board as a Qt Quick item: the same core as the Widgets board, its
// pictures shown as one texture at the window's scale, its gestures from the item's pointer events
// and its text typed into a Quick text input. Actions leave and arrive as
// their wire text.
class DoodleBoard : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString userId READ userId WRITE setUserId NOTIFY userIdChanged)
    Q_PROPERTY(int actionMode READ actionMode WRITE setActionMode NOTIFY actionModeChanged)
    Q_PROPERTY(QColor brushColor READ brushColor WRITE setBrushColor NOTIFY brushColorChanged)
    Q_PROPERTY(double brushWidth READ brushWidth WRITE setBrushWidth NOTIFY brushWidthChanged)
    Q_PROPERTY(double eraserWidth READ eraserWidth WRITE setEraserWidth NOTIFY eraserWidthChanged)
    Q_PROPERTY(double textSize READ textSize WRITE setTextSize NOTIFY textSizeChanged)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor NOTIFY
                   backgroundColorChanged)
    Q_PROPERTY(QString waterString READ waterString WRITE setWaterString NOTIFY waterStringChanged)
    Q_PROPERTY(QSizeF boardAspect READ boardAspect WRITE setBoardAspect NOTIFY boardAspectChanged)
    Q_PROPERTY(bool editable READ isEditable WRITE setEditable NOTIFY editableChanged)
    Q_PROPERTY(
        bool confirmsClear READ confirmsClear WRITE setConfirmsClear NOTIFY confirmsClearChanged)
    Q_PROPERTY(bool pictureSettled READ isPictureSettled NOTIFY pictureSettled)
    // Strokes and shapes travel while they are drawn; both on by default.
    Q_PROPERTY(bool sendsLiveStrokes READ sendsLiveStrokes WRITE setSendsLiveStrokes NOTIFY
                   liveStrokesChanged)
    // The largest action text in bytes the board sends; 0, the default: no limit.
    Q_PROPERTY(
        qint64 messageBudget READ messageBudget WRITE setMessageBudget NOTIFY messageBudgetChanged)
    Q_PROPERTY(bool showsLiveStrokes READ showsLiveStrokes WRITE setShowsLiveStrokes NOTIFY
                   liveStrokesChanged)
public:
    explicit DoodleBoard(QQuickItem *parent = nullptr);
    ~DoodleBoard() override;

    QString userId() const;
    void setUserId(const QString &userId);
    int actionMode() const;
    void setActionMode(int mode);
    QColor brushColor() const;
    void setBrushColor(const QColor &color);
    double brushWidth() const;
    void setBrushWidth(double width);
    double eraserWidth() const;
    void setEraserWidth(double width);
    double textSize() const;
    void setTextSize(double size);
    QColor backgroundColor() const;
    void setBackgroundColor(const QColor &color);
    QString waterString() const;
    void setWaterString(const QString &text);
    QSizeF boardAspect() const;
    void setBoardAspect(const QSizeF &aspect);
    bool isEditable() const;
    void setEditable(bool editable);
    // Whether the bar's clear button asks before it clears (the default).
    bool confirmsClear() const;
    void setConfirmsClear(bool confirms);
    bool sendsLiveStrokes() const;
    void setSendsLiveStrokes(bool sends);
    bool showsLiveStrokes() const;
    void setShowsLiveStrokes(bool shows);
    qint64 messageBudget() const;
    void setMessageBudget(qint64 bytes);

    // An action's wire text from another participant.
    Q_INVOKABLE void receiveText(const QString &sender, const QString &text);
    // This user's undo and clear; each sends an action when it did something.
    Q_INVOKABLE void undo();
    Q_INVOKABLE void clear();
    // The board's picture, watermarked, as a PNG in the user's pictures
    // folder; the file's path, or an empty string when it could not be written.
    Q_INVOKABLE QString saveImage();
    Q_INVOKABLE QString exportState() const;
    // The state as texts within the message budget, each for mergeState().
    Q_INVOKABLE QStringList exportStateParts() const;
    Q_INVOKABLE bool mergeState(const QString &state);
    // The fingerprint of what the board holds, in hex.
    Q_INVOKABLE QString fingerprint() const;
    // A change of size, or a merge that redraws a board of more than a few
    // dozen drawings, is drawn on a worker thread, and a large state is read
    // there: meanwhile the previous picture shows, stretched to the new size.
    // False while such work is pending; pictureSettled() is emitted when the
    // exact picture is showing. mergeState() is then true for a state on its way.
    bool isPictureSettled() const;

    // For a C++ host that carries the texts itself, as the Widgets board's
    // methods of the same names (DoodleLayout).
    quint64 clock() const;
    void advanceClock(quint64 atLeast);
    void setSharedOrder(bool shared);
    bool hasSharedOrder() const;
    void onDoodleTextEchoed(const QString &text);
    bool commitLocalAction(const DoodleActionPtr &action);

signals:
    void userIdChanged();
    void actionModeChanged();
    void brushColorChanged();
    void brushWidthChanged();
    void eraserWidthChanged();
    void textSizeChanged();
    void backgroundColorChanged();
    void waterStringChanged();
    void boardAspectChanged();
    void editableChanged();
    void confirmsClearChanged();
    void pictureSettled();
    void liveStrokesChanged();
    void messageBudgetChanged();
    // Each local action, as its wire text.
    void actionGenerated(const QString &text);
    void cleared(const QString &userId);
    // The bar's close button was tapped; the bar has folded.
    void closeRequested();
    // The floating button folded or unfolded the tool bar.
    void folded();
    void unfolded();

protected:
    void componentComplete() override;
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;
    void touchEvent(QTouchEvent *event) override;

private slots:
    // The open text entry was finished with Return or by moving on, or abandoned.
    void finishText(bool cancelled);

private:
    friend class DoodleBoardPrivate;
    friend class DoodleQuickCanvas;
    friend class DoodleQuickChrome;
    std::unique_ptr<DoodleBoardPrivate> d;
};
