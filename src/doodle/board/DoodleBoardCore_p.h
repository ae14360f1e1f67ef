#pragma once

// The board's core: what the board is, whatever shows it. The drawn-action
// cache, the board's pictures with their savepoints and region redraw, the
// conversions between the wire's normalised coordinates and the board's, the
// gesture under way and the limits on what others send. A front-end derives
// from it and gives it a canvas. Not installed.
#include <doodle/board/DoodleBoardCanvas_p.h>
#include <doodle/board/DoodleBoardLive_p.h>
#include <doodle/board/DoodleBoardRedraw_p.h>
#include <doodle/board/DoodleBoardTypes.h>
#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodlePathCache.h>

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <memory>
#include <optional>

class QDeadlineTimer;
class QJsonArray;
struct DoodleProgress;

// The tool, width and colour a gesture was started with: everything it draws
// and the action it commits use these, whatever the tool state becomes meanwhile.
struct DoodleGestureTool
{
    qint64 mode = DoodleActionModeNone;
    double width = 0; // view points: the brush, eraser or text size
    QColor color;
};

// An order stamp: a Lamport clock, ties broken by the sender the channel named.
struct DoodleStamp
{
    quint64 clock = 0;
    QString sender;
    friend bool operator<(const DoodleStamp &a, const DoodleStamp &b)
    {
        return a.clock != b.clock ? a.clock < b.clock : a.sender < b.sender;
    }
    friend bool operator==(const DoodleStamp &a, const DoodleStamp &b)
    {
        return a.clock == b.clock && a.sender == b.sender;
    }
};
size_t qHash(const DoodleStamp &stamp, size_t seed = 0);

// Where a drawing without a stamp came in a channel's shared order: the
// `rank`-th such drawing after the stamped drawing or clear `after` (clock 0:
// none). It names the drawing, and orders it, alike on every board.
struct DoodleAnchor
{
    DoodleStamp after;
    quint64 rank = 0;
    friend bool operator<(const DoodleAnchor &a, const DoodleAnchor &b)
    {
        return a.after == b.after ? a.rank < b.rank : a.after < b.after;
    }
    friend bool operator==(const DoodleAnchor &a, const DoodleAnchor &b)
    {
        return a.after == b.after && a.rank == b.rank;
    }
};

// Changes to the cache made together (a merged state, a participant's drawings
// taken away) are drawn once at the end: the region they cover, or the whole
// board past a number of changes.
struct DoodleBatch
{
    QRectF region;
    qsizetype changes = 0;
    bool whole = false;
    int depth = 0; // batches begun inside this one and not ended yet
};

// A drawing as a state brings it.
struct DoodleStateEntry
{
    QString owner;
    DoodleActionPtr action;
    std::optional<DoodleAnchor> anchor;
};

// A state being merged: read (on the worker, for a large one), then taken into
// the cache, a slice of the GUI thread at a time.
struct DoodleStateMerge
{
    bool decoded = false;
    bool valid = false;
    QString problem;
    quint64 clock = 0;
    std::optional<DoodleStamp> clear;
    QList<DoodleStamp> undone;
    QList<DoodleStateEntry> actions;
    // Taking it in.
    bool begun = false;
    qsizetype next = 0;
    bool takeUnstamped = false;
    std::optional<DoodleStamp> previous; // the last stamped drawing met in the state
    QHash<quint64, qsizetype> held;      // copies without a stamp the board holds, by hash
};

// A state arriving in parts: the slices of its text so far.
struct DoodleHandOff
{
    QString id;
    QList<QString> parts; // null: not yet here
    qsizetype have = 0;
    qsizetype bytes = 0;
    QElapsedTimer since;
};

class DOODLE_EXPORT DoodleBoardCore
{
public:
    DoodleBoardCore();
    virtual ~DoodleBoardCore();

    // Coordinates: normalised ("logic", -1 to 1 on each axis, sizes against
    // the width) and the board's own ("normal", view points).
    QSizeF boardSize() const { return m_canvas->boardSize(); }
    QPointF logicFromNormal(const QPointF &point) const;
    double logicFromNormalWidth(double width) const;
    double logicFromNormalHeight(double height) const;
    double normalFromLogicWidth(double width) const;
    QPointF normalFromLogicPosition(double x, double y) const;
    QRectF normalFromLogicRect(const QRectF &rect) const;
    // The point kept one brush width inside a board of that size.
    QPointF limitTouchPoint(const QPointF &point, const QSizeF &bounds) const;
    // The aspect a board may keep, or an empty size (with a warning when one
    // was asked for) for a shape that is not usable.
    static QSizeF usableAspect(const QSizeF &aspect);
    // Where a board of that aspect sits in `all`: the largest such rectangle
    // that fits, centred (letterboxed); all of it for an empty aspect.
    static QRect letterboxed(const QSizeF &aspect, const QRect &all);

    // Replay.
    DoodleSurface *cacheSurface() { return &m_canvas->cacheSurface(); }
    QRect paint(const DoodleAction &action);
    void drawEntry(qsizetype index);
    // The stroke through the points; `isDot` tells when several points share one place.
    QPainterPath smoothedPath(const DoodlePointList &points, bool *isDot = nullptr) const;
    // Draws the whole cache afresh and takes new savepoints; nothing while
    // the board is not shown. A cache past a few dozen drawings is drawn on
    // the worker while the previous picture stays, stretched to the bounds.
    void redrawAll();
    void redrawAllNow();
    // The background redraw: started, and its picture swapped in.
    void startBackgroundRedraw();
    void finishBackgroundRedraw(const std::shared_ptr<DoodleRedrawJob> &job);
    bool jobStillFits(const DoodleRedrawJob &job);
    void installRedraw(DoodleRedrawJob &job);
    bool isPictureSettled() const { return !m_background.job && m_merges.isEmpty(); }
    // The front-end's hook: a background redraw's picture was swapped in, or
    // the picture became exact otherwise while one was pending.
    virtual void notifyPictureSettled() {}
    // Caches of more drawings than this are redrawn in the background
    // (negative: never); tests and benchmarks choose either path with it.
    static void setBackgroundRedrawFrom(qsizetype count);
    static qsizetype backgroundRedrawFrom();
    // Redraws the region from the cache, from the newest savepoint that is not
    // stale, and mends the stale ones it passes.
    void redrawRegion(const QRectF &area);
    // A drawing was put at `index` (`shift` 1) or taken from it (-1).
    void shiftSavepoints(qsizetype index, int shift);
    void noteAppended();
    void dropSavepoints(qsizetype keepUpTo);
    void takeSavepoint(qsizetype count, bool coarse);
    void reapplyLiveErasure();

    // Order, state and moderation.
    static DoodleStamp stampOf(const DoodleCacheEntry &entry);
    void observeClock(quint64 clock);
    quint64 nextStamp();
    static quint64 entryHash(const QString &owner, const DoodleAction &action);
    static quint64 anchoredHash(quint64 content, const DoodleAnchor &anchor);
    static std::optional<DoodleAnchor> anchorOf(const DoodleCacheEntry &entry);
    void recomputeFingerprint();
    void insertEntry(qsizetype index, const DoodleActionPtr &action, const QString &owner,
                     const std::optional<DoodleAnchor> &anchor = std::nullopt);
    qsizetype insertionIndex(const DoodleStamp &stamp, bool *duplicate) const;
    bool receiveDrawing(const DoodleActionPtr &action, const QString &owner);
    void placeEntry(qsizetype index);
    bool overlapsLaterEntries(qsizetype index, const QRect &rect) const;
    void removeEntry(qsizetype index);
    QRect measureEntry(qsizetype index);
    void beginBatch();
    void batchChange(qsizetype inserted, const QRectF &removed);
    void endBatch();
    void rememberUndone(const DoodleStamp &stamp);
    qsizetype lastIndexOwnedBy(const QString &owner) const;
    void undoStamped(const QString &owner, quint64 clock);
    // Takes a clear newer than the last one; true if it removed drawings.
    bool applyClear(const DoodleStamp &stamp);
    void redrawAfterClear();
    void mergeUndone(const QList<DoodleStamp> &undone);
    static void decodeState(const QString &text, DoodleStateMerge &merge);
    void beginMerge(DoodleStateMerge &merge);
    // Takes the state's drawings until the deadline; true when all are in.
    bool mergeSlice(DoodleStateMerge &merge, const QDeadlineTimer &deadline);
    void mergeEntry(DoodleStateMerge &merge, const DoodleStateEntry &entry);
    void mergeOnWorker(const std::shared_ptr<DoodleStateMerge> &merge, const QString &text);
    void continueMerges();
    qsizetype unstampedIndex(const std::optional<DoodleStamp> &after) const;
    // The shared order of a channel: where a drawing anchored there goes, the
    // anchor a received action sets, and a better anchor a state brings.
    qsizetype anchoredIndex(const DoodleAnchor &anchor, bool *present) const;
    void noteChannelOrder(const DoodleAction &action, const QString &sender);
    // This user's own action as the channel echoed it back, in its shared order.
    void noteEcho(const QString &text);
    void mergeAnchored(const QString &owner, const DoodleActionPtr &action,
                       const DoodleAnchor &anchor);
    qsizetype earlierCopy(const QString &owner, const DoodleAction &action,
                          const DoodleAnchor &anchor) const;
    void forgetOrder();
    // The state a board hands to another, and what it takes from one.
    QString exportState() const;
    bool mergeState(const QString &text);
    // The state in texts within the message budget (one when it fits), and a
    // state or one of its parts: merged when it is whole.
    QStringList exportStateParts() const;
    bool mergeStateText(const QString &text);
    std::optional<QString> takeStatePart(const QString &text);
    qsizetype heldBytes() const;
    void dropStaleHandOffs();
    // Takes away every drawing of the participant, with one redraw.
    void removeDrawingsOf(const QString &userId);
    // Empties the cache and the cache picture.
    void clearCache();
    // The front-end's hook: the cache changed, so undo and clear may have.
    virtual void scheduleCommandUpdate() = 0;

    // Gestures, in the board's coordinates: a touch begins, moves, ends or
    // is cancelled.
    void gestureBegan(const DoodleTouch &touch);
    void gestureMoved(const DoodleTouch &touch);
    void gestureEnded(const DoodleTouch &touch);
    void gestureCancelled(const DoodleTouch &touch);
    // The front-end's hook: the host hears of each local action before the
    // cache records it.
    virtual void actionGenerated(const DoodleActionPtr &action) = 0;
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
    // Actions from the host and the other participants, and this user's own.
    void receiveAction(const DoodleActionPtr &action, const QString &fromUserId);
    // As receiveAction, unless the sender is muted or the action over a limit.
    void receiveFrom(const QString &userId, const DoodleActionPtr &action);
    void receiveText(const QString &userId, const QString &text);
    // Takes back the participant's last drawing, here only.
    void undoLastOf(const QString &userId);
    // This user's undo and clear, handed to the host as actions.
    void undoOwn();
    void clearOwn();
    // An action the host made as this user's: drawn, or an undo or clear.
    bool commitLocal(const DoodleActionPtr &action);
    // The front-end's hooks: a clear of this user's is about to be made, and
    // the board was cleared, here or elsewhere.
    virtual void willClear() {}
    virtual void notifyCleared(const QString &userId) = 0;

    // Gestures under way: this board's reports of its own, the others'
    // previews and laser tracks.
    static QColor laserColor(const QString &userId);
    void liveBegan();
    void liveChanged();
    void liveEnded(bool abandoned);
    void sendProgress();
    void reportPoints(DoodleProgress progress, const QList<QPointF> &points);
    void reportProgress(const DoodleProgress &progress);
    void laserBegan(const QPointF &point);
    void laserMoved(const QPointF &point);
    void receiveProgress(const DoodleAction &action, const QString &sender);
    bool roomForSender(const QString &sender) const;
    void updatePreview(const QString &sender, const DoodleAction &brush,
                       const DoodleProgress &progress);
    bool applyProgress(DoodleAction &action, const DoodleProgress &progress) const;
    void endPreview(const QString &sender);
    void paintPreview(DoodleSurface &surface, const DoodleAction &action) const;
    // Layer `layer` emptied (its memory given back when `release`), or
    // nullptr while the board is not shown.
    DoodleSurface *emptiedLayer(quint64 layer, bool release);
    void redrawPreviews();
    // A drawing of the sender's came: it replaces the sender's preview.
    void previewCommitted(const QString &sender);
    void addTrackSamples(const QString &sender, const DoodleProgress &progress);
    void redrawLaser();
    void drawTrack(DoodleSurface &surface, const QList<DoodleLaserTrack::Sample> &samples,
                   QColor color) const;
    void startLiveTick();
    void liveTick();
    void setShowsLiveStrokes(bool shows);

    // The largest text this board sends: strokes over it go in parts, and
    // one undo takes back all of them; other actions over it are refused.
    QList<DoodleActionPtr> strokeParts(const DoodleAction &whole) const;
    bool commitWithinBudget(const DoodleActionPtr &action);
    void undoEarlierParts(quint64 lastPart);
    // Points one progress report may carry within the budget.
    qsizetype reportPointLimit() const;

    // Limits on what others send.
    bool withinLimits(const QString &sender, const DoodleAction &action) const;
    bool textWithinLimit(const QString &sender, const QString &text) const;

    // The board's pictures and text entry, as the front-end shows them.
    std::unique_ptr<DoodleBoardCanvas> m_canvas;
    DoodlePathCache m_doodlePathCache; // lives as long as the board
    DoodleReceiveLimits m_limits;
    DoodleSavepoint m_saves[3]; // two fine ones, then the coarse one
    QString m_userId;
    QSizeF m_boardAspect; // empty: the board fills its view
    // Tool settings, in view points.
    qint64 m_actionMode = 0;
    double m_brushWidth = 0;
    double m_eraserWidth = 0;
    double m_textSize = 0;
    QColor m_brushColor;
    // Order, state and moderation.
    quint64 m_clock = 0;
    std::optional<DoodleStamp> m_lastClear;
    QSet<DoodleStamp> m_undone; // drawings taken back, so that no copy brings them back
    QSet<QString> m_muted;
    quint64 m_fingerprint = 0;
    qsizetype m_unstampedCount = 0; // cached drawings without a stamp
    bool m_sharedOrder = false;
    DoodleStamp m_channelAnchor; // the last stamped drawing or clear the channel brought
    quint64 m_channelRank = 0;   // drawings without a stamp it brought since
    DoodleAnchor m_received;     // the place of the one being received
    std::optional<DoodleBatch> m_batch;
    QList<std::shared_ptr<DoodleStateMerge>> m_merges; // large states on their way in
    // The gesture under way, in the board's coordinates.
    QPointF m_strokeEnd; // where the last previewed segment of the stroke ended
    QPainterPath m_tail; // from there to the pointer
    QRectF m_rect;
    bool m_rectIsNull = true;
    QPointF m_startPoint;
    QPointF m_endPoint;
    DoodleActionPtr m_doodleDraw; // the stroke or shape under way
    DoodleActionPtr m_textDraw;   // the text whose field is open
    bool m_drawPathDidMoved = false;
    bool m_leftForeground = false; // since the gesture under way began
    DoodleGestureTool m_gesture;
    QPainterPath m_path;
    bool m_hasPath = false;
    QRectF m_liveErased; // what a live eraser cleared on the cache canvas
    DoodleBackgroundRedraw m_background;
    qsizetype m_messageBudget = 0; // bytes of one sent text; 0: no limit
    // A stroke sent in parts: its last part's stamp, the earlier parts' stamps.
    QHash<quint64, QList<quint64>> m_partsBefore;
    QList<DoodleHandOff> m_handOffs; // states whose parts are still coming, oldest first
    DoodleLive m_live;               // last: its timers go first
};
