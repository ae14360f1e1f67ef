// The board's core: gestures under way travel as progress reports. This
// board reports its own stroke, shape or laser at most every 33 ms while it
// changes; the others' reports become previews, replaced by the committed
// drawing, and laser tracks that fade. None of it is kept.
#include "DoodleBoardCore_p.h"

#include <doodle/model/DoodleProgress_p.h>
#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QDateTime>

namespace {

constexpr qint64 kReportInterval = 33;   // ms between two reports of one gesture
constexpr qint64 kPreviewTimeout = 3000; // ms a preview stays without news
constexpr qint64 kLaserFade = 1000;      // ms a laser track takes to fade
constexpr int kLaserFrame = 33;          // ms between two frames of a fade
constexpr int kSilenceCheck = 500;       // ms between checks for silent previews
constexpr qsizetype kReportPoints = 256; // points in one report, at most
constexpr qsizetype kLiveSenders = 32;   // senders with a preview or track, at most
constexpr qsizetype kTrackSamples = 512; // samples one laser track keeps
constexpr qsizetype kFinishedKept = 1024;
constexpr double kLaserWidth = 5;
constexpr int kTrackRun = 6; // samples of a track drawn as one path

bool reportsGesture(qint64 mode)
{
    return mode == DoodleActionModeBrush || mode == DoodleActionModeRectangle ||
           mode == DoodleActionModeEllipse || mode == DoodleActionModeArrow;
}

} // namespace

DoodleBoardCore::DoodleBoardCore()
{
    m_live.clock.start();
    m_live.flush.setSingleShot(true);
    QObject::connect(&m_live.flush, &QTimer::timeout, [this] { sendProgress(); });
    QObject::connect(&m_live.tick, &QTimer::timeout, [this] { liveTick(); });
}

QColor DoodleBoardCore::laserColor(const QString &userId)
{
    // The same on every board: a hue from the participant's name.
    const QByteArray name = userId.toUtf8();
    return QColor::fromHsv(qChecksum(name) % 360, 220, 255);
}

void DoodleBoardCore::liveBegan()
{
    const bool laser = m_gesture.mode == DoodleActionModeLaser;
    if (!laser && (!m_live.sends || !reportsGesture(m_gesture.mode)))
        return;
    // Gesture numbers grow across restarts, so that others never take a new
    // gesture for one that already ended.
    const auto now = quint64(QDateTime::currentMSecsSinceEpoch());
    m_live.gesture = std::max(m_live.gesture + 1, now);
    m_live.kind = laser ? DoodleProgress::kLaser : m_doodleDraw->actionType();
    m_live.sentPoints = 0;
    m_live.announced = false;
    m_live.changed = false;
    m_live.lastSent = m_live.clock.elapsed();
}

void DoodleBoardCore::liveChanged()
{
    if (m_live.kind == 0)
        return;
    m_live.changed = true;
    const qint64 wait = m_live.lastSent + kReportInterval - m_live.clock.elapsed();
    if (wait <= 0)
        sendProgress();
    else if (!m_live.flush.isActive())
        m_live.flush.start(int(wait));
}

void DoodleBoardCore::liveEnded(bool abandoned)
{
    if (m_live.kind == DoodleProgress::kLaser) {
        sendProgress(); // the track's last points; it fades by itself
    } else if (abandoned && m_live.announced) {
        DoodleProgress progress;
        progress.kind = m_live.kind;
        progress.gesture = m_live.gesture;
        progress.ended = true;
        reportProgress(progress);
    }
    m_live.flush.stop();
    m_live.kind = 0;
    m_live.announced = false;
    m_live.changed = false;
    m_live.laserPending.clear();
}

void DoodleBoardCore::sendProgress()
{
    m_live.flush.stop();
    if (m_live.kind == 0 || !m_live.changed)
        return;
    m_live.changed = false;
    m_live.lastSent = m_live.clock.elapsed();
    DoodleProgress progress;
    progress.kind = m_live.kind;
    progress.gesture = m_live.gesture;
    if (m_live.kind == DoodleProgress::kLaser) {
        const QList<QPointF> points = std::exchange(m_live.laserPending, {});
        reportPoints(progress, points);
    } else if (m_live.kind == DoodleActionTypeStroke) {
        QList<QPointF> points;
        const DoodlePointList &all = m_doodleDraw->pathPoints();
        for (qsizetype i = m_live.sentPoints; i < all.size(); ++i)
            points << QPointF(double(all.at(i).x()), double(all.at(i).y()));
        reportPoints(progress, points);
    } else {
        const DoodleAction &shape = *m_doodleDraw;
        progress.box = QRectF(double(shape.x()), double(shape.y()), double(shape.width()),
                              double(shape.height()));
        progress.end = QPointF(double(shape.endX()), double(shape.endY()));
        reportProgress(progress);
    }
}

void DoodleBoardCore::reportPoints(DoodleProgress progress, const QList<QPointF> &points)
{
    const qsizetype limit = reportPointLimit();
    if (limit < 1)
        return; // a budget too small for reports: the committed drawing comes alone
    for (qsizetype at = 0; at < points.size(); at += limit) {
        progress.from = m_live.sentPoints;
        progress.points = points.mid(at, limit);
        m_live.sentPoints += progress.points.size();
        reportProgress(progress);
    }
}

void DoodleBoardCore::reportProgress(const DoodleProgress &progress)
{
    DoodleAction brush;
    if (m_doodleDraw)
        brush = *m_doodleDraw;
    brush.setUserId(m_userId);
    const DoodleActionPtr report = DoodleProgressText::toAction(progress, brush);
    if (m_messageBudget > 0 &&
        DoodleTranslate::stringFromDoodleAction(report).toUtf8().size() > m_messageBudget)
        return; // over the budget: the committed drawing comes alone
    m_live.announced = true;
    actionGenerated(report);
}

void DoodleBoardCore::laserBegan(const QPointF &point)
{
    liveBegan();
    laserMoved(point);
}

void DoodleBoardCore::laserMoved(const QPointF &point)
{
    if (!isOnBoard(point))
        return;
    const QPointF logic = logicFromNormal(point);
    DoodleProgress own;
    own.gesture = m_live.gesture;
    own.from = m_live.sentPoints + m_live.laserPending.size();
    own.points = {logic};
    addTrackSamples(m_userId, own);
    m_live.laserPending << logic;
    liveChanged();
}

void DoodleBoardCore::receiveProgress(const DoodleAction &action, const QString &sender)
{
    const std::optional<DoodleProgress> progress =
        DoodleProgressText::fromAction(action, kReportPoints);
    if (!progress || sender == m_userId)
        return;
    if (progress->kind == DoodleProgress::kLaser)
        addTrackSamples(sender, *progress);
    else if (m_live.shows)
        updatePreview(sender, action, *progress);
}

bool DoodleBoardCore::roomForSender(const QString &sender) const
{
    const qsizetype senders = m_live.previews.size() + m_live.tracks.size();
    if (m_live.previews.contains(sender) || m_live.tracks.contains(sender) ||
        senders < kLiveSenders)
        return true;
    qCWarning(lcDoodle).noquote()
        << QStringLiteral("dropped a progress message from %1: %2 senders are live already")
               .arg(sender)
               .arg(kLiveSenders);
    return false;
}

void DoodleBoardCore::updatePreview(const QString &sender, const DoodleAction &brush,
                                    const DoodleProgress &progress)
{
    const auto finished = m_live.finished.constFind(sender);
    if (finished != m_live.finished.cend() && progress.gesture <= *finished)
        return; // a late report of a gesture already committed or abandoned
    if (progress.ended) {
        endPreview(sender);
        return;
    }
    if (!roomForSender(sender))
        return;
    DoodleRemotePreview &preview = m_live.previews[sender];
    if (preview.gesture != progress.gesture || preview.action.actionType() != progress.kind) {
        preview = DoodleRemotePreview{progress.gesture, DoodleAction(), 0};
        preview.action.setActionType(progress.kind);
        preview.action.setBrushWidth(brush.brushWidth());
        preview.action.setBrushColor(brush.brushColor());
    }
    preview.heard = m_live.clock.elapsed();
    if (!applyProgress(preview.action, progress)) {
        qCWarning(lcDoodle).noquote() << QStringLiteral("dropped the preview of %1: over %2 points")
                                             .arg(sender)
                                             .arg(m_limits.strokePoints);
        endPreview(sender);
        return;
    }
    redrawPreviews();
    startLiveTick();
}

bool DoodleBoardCore::applyProgress(DoodleAction &action, const DoodleProgress &progress) const
{
    if (progress.kind != DoodleActionTypeStroke) {
        action.setX(float(progress.box.x()));
        action.setY(float(progress.box.y()));
        action.setWidth(float(progress.box.width()));
        action.setHeight(float(progress.box.height()));
        action.setEndX(float(progress.end.x()));
        action.setEndY(float(progress.end.y()));
        return true;
    }
    // Points already shown are skipped; after a lost report the stroke jumps
    // the gap until the committed one replaces it.
    const qsizetype have = action.pathPoints().size();
    const qsizetype skip = std::clamp<qint64>(have - progress.from, 0, progress.points.size());
    if (have + progress.points.size() - skip > m_limits.strokePoints)
        return false;
    for (qsizetype i = skip; i < progress.points.size(); ++i) {
        const QPointF &p = progress.points.at(i);
        action.addPointWithPositionX(float(p.x()), float(p.y()), 2);
    }
    return true;
}

void DoodleBoardCore::endPreview(const QString &sender)
{
    const auto preview = m_live.previews.constFind(sender);
    if (preview == m_live.previews.cend())
        return;
    if (m_live.finished.size() >= kFinishedKept)
        m_live.finished.clear();
    m_live.finished.insert(sender, preview->gesture);
    m_live.previews.erase(preview);
    redrawPreviews();
}

void DoodleBoardCore::paintPreview(DoodleSurface &surface, const DoodleAction &a) const
{
    // As the committed drawing is painted, so that it replaces its preview exactly.
    const double width = normalFromLogicWidth(double(a.brushWidth()));
    if (a.actionType() == DoodleActionTypeStroke) {
        bool dot = false;
        const QPainterPath path = smoothedPath(a.pathPoints(), &dot);
        if (dot)
            surface.drawDot(path.currentPosition(), width, a.brushColor(), false);
        else
            surface.drawPath(path, width, a.brushColor());
        return;
    }
    if (a.actionType() == DoodleActionTypeArrow) {
        surface.drawArrow(normalFromLogicPosition(a.x(), a.y()),
                          normalFromLogicPosition(a.endX(), a.endY()), width, a.brushColor());
        return;
    }
    const QRectF rect = normalFromLogicRect(
        QRectF(double(a.x()), double(a.y()), double(a.width()), double(a.height())));
    if (a.actionType() == DoodleActionTypeRectangle)
        surface.drawRectangle(rect, width, a.brushColor());
    else
        surface.drawEllipse(rect, width, a.brushColor());
}

DoodleSurface *DoodleBoardCore::emptiedLayer(quint64 layer, bool release)
{
    if (!m_canvas->isShown())
        return nullptr;
    m_canvas->cleanPreview(layer, release);
    return m_canvas->previewSurface(layer);
}

void DoodleBoardCore::redrawPreviews()
{
    DoodleSurface *surface = emptiedLayer(kDoodleRemoteLayer, m_live.previews.isEmpty());
    if (!surface)
        return;
    for (const DoodleRemotePreview &preview : std::as_const(m_live.previews))
        paintPreview(*surface, preview.action);
}

void DoodleBoardCore::previewCommitted(const QString &sender)
{
    if (m_live.previews.contains(sender))
        endPreview(sender);
}

void DoodleBoardCore::addTrackSamples(const QString &sender, const DoodleProgress &progress)
{
    if (!roomForSender(sender))
        return;
    DoodleLaserTrack &track = m_live.tracks[sender];
    bool joined = track.gesture == progress.gesture && !track.samples.isEmpty();
    if (track.gesture != progress.gesture) {
        track.gesture = progress.gesture;
        track.next = 0;
    }
    const qint64 now = m_live.clock.elapsed();
    for (qsizetype i = 0; i < progress.points.size(); ++i) {
        if (progress.from + i < track.next)
            continue;
        track.samples.append({progress.points.at(i), now, joined});
        joined = true;
    }
    track.next = std::max(track.next, progress.from + progress.points.size());
    if (track.samples.size() > kTrackSamples)
        track.samples.remove(0, track.samples.size() - kTrackSamples);
    redrawLaser();
    startLiveTick();
}

void DoodleBoardCore::redrawLaser()
{
    DoodleSurface *surface = emptiedLayer(kDoodleLaserLayer, m_live.tracks.isEmpty());
    if (!surface)
        return;
    for (auto it = m_live.tracks.cbegin(); it != m_live.tracks.cend(); ++it)
        drawTrack(*surface, it->samples, laserColor(it.key()));
}

void DoodleBoardCore::drawTrack(DoodleSurface &surface,
                                const QList<DoodleLaserTrack::Sample> &samples, QColor color) const
{
    // Runs of a few samples are drawn as one path in the age of their newest,
    // so that the track fades in steps without a dot at every joint.
    const qint64 now = m_live.clock.elapsed();
    QPainterPath run;
    for (qsizetype i = 0; i < samples.size(); ++i) {
        const DoodleLaserTrack::Sample &sample = samples.at(i);
        const QPointF at = normalFromLogicPosition(sample.point.x(), sample.point.y());
        if (!sample.joined || run.elementCount() == 0)
            run = QPainterPath(at);
        else
            run.lineTo(at);
        const bool last = i + 1 == samples.size() || !samples.at(i + 1).joined;
        if (!last && run.elementCount() < kTrackRun)
            continue;
        const double left = 1.0 - double(now - sample.heard) / kLaserFade;
        color.setAlphaF(float(std::clamp(left, 0.0, 1.0)));
        if (run.elementCount() == 1)
            surface.drawDot(at, kLaserWidth, color, false);
        else
            surface.drawPath(run, kLaserWidth, color);
        run = QPainterPath(at);
    }
}

void DoodleBoardCore::startLiveTick()
{
    const int interval = m_live.tracks.isEmpty() ? kSilenceCheck : kLaserFrame;
    if (!m_live.tick.isActive() || m_live.tick.interval() != interval)
        m_live.tick.start(interval);
}

void DoodleBoardCore::liveTick()
{
    const qint64 now = m_live.clock.elapsed();
    for (auto it = m_live.tracks.begin(); it != m_live.tracks.end();) {
        auto &samples = it->samples;
        while (!samples.isEmpty() && now - samples.first().heard >= kLaserFade)
            samples.removeFirst();
        if (!samples.isEmpty())
            samples.first().joined = false;
        it = samples.isEmpty() ? m_live.tracks.erase(it) : std::next(it);
    }
    redrawLaser();
    QStringList silent;
    for (auto it = m_live.previews.cbegin(); it != m_live.previews.cend(); ++it) {
        if (now - it->heard >= kPreviewTimeout)
            silent << it.key();
    }
    for (const QString &sender : std::as_const(silent)) {
        qCInfo(lcDoodle).noquote() << "the preview of" << sender << "went silent; dropped";
        endPreview(sender);
    }
    if (m_live.tracks.isEmpty() && m_live.previews.isEmpty())
        m_live.tick.stop();
    else
        startLiveTick();
}

void DoodleBoardCore::setShowsLiveStrokes(bool shows)
{
    m_live.shows = shows;
    if (!shows) {
        m_live.previews.clear();
        redrawPreviews();
    }
}
