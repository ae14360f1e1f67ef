#include "DoodleBoard.h"
#include "DoodleBoard_p.h"
#include "DoodleQuickChrome_p.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleLog_p.h>
#include <doodle/support/DoodleScreen.h>
#include <doodle/support/DoodleWatermark_p.h>

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <QPainter>
#include <QQuickWindow>
#include <QSGSimpleTextureNode>
#include <QStandardPaths>

namespace {

double firstEntry(const char *table)
{
    const QList<double> widths = DoodleBundle::numberTable(DoodleBundle::scaledTableName(table));
    return widths.isEmpty() ? 0.0 : double(float(widths.first()));
}

} // namespace

DoodleBoardPrivate::DoodleBoardPrivate(DoodleBoard *item) : q(item)
{
    m_canvas = std::make_unique<DoodleQuickCanvas>(item);
    m_actionMode = DoodleActionModeBrush;
    m_brushColor = Qt::black;
    m_brushWidth = firstEntry("brushWidths");
    m_eraserWidth = firstEntry("eraserWidths");
    m_textSize = firstEntry("textSizes");
    recomputeFingerprint();
}

void DoodleBoardPrivate::actionGenerated(const DoodleActionPtr &action)
{
    emit q->actionGenerated(DoodleTranslate::stringFromDoodleAction(action));
}

void DoodleBoardPrivate::notifyCleared(const QString &userId)
{
    emit q->cleared(userId);
}

void DoodleBoardPrivate::scheduleCommandUpdate()
{
    if (m_commandUpdatePending)
        return;
    m_commandUpdatePending = true;
    QMetaObject::invokeMethod(
        q, [this] { updateCommandButtons(); }, Qt::QueuedConnection);
}

void DoodleBoardPrivate::updateCommandButtons()
{
    m_commandUpdatePending = false;
    if (m_chrome)
        m_chrome->updateCommandButtons(lastIndexOwnedBy(m_userId) >= 0,
                                       m_doodlePathCache.size() > 0);
}

void DoodleBoardPrivate::ensureChrome()
{
    if (m_chrome || !q->isComponentComplete())
        return;
    m_chrome = new DoodleQuickChrome(q);
    m_chrome->setEditable(m_editable);
    updateCommandButtons();
}

void DoodleBoard::componentComplete()
{
    QQuickItem::componentComplete();
    d->ensureChrome();
}

void DoodleBoard::finishText(bool cancelled)
{
    if (cancelled)
        d->closeTextField();
    else
        d->commitOpenText();
}

DoodleBoard::DoodleBoard(QQuickItem *parent)
    : QQuickItem(parent), d(std::make_unique<DoodleBoardPrivate>(this))
{
    setFlag(ItemHasContents);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
}

DoodleBoard::~DoodleBoard() = default;

QString DoodleBoard::userId() const
{
    return d->m_userId;
}

void DoodleBoard::setUserId(const QString &userId)
{
    if (d->m_userId == userId)
        return;
    d->m_userId = userId;
    emit userIdChanged();
}

int DoodleBoard::actionMode() const
{
    return int(d->m_actionMode);
}

void DoodleBoard::setActionMode(int mode)
{
    // The tools are those of the tool bar's table, so a new tool is taken at once.
    if (mode != DoodleActionModeNone && DoodleBarLayout::markedButtonType(mode) == 0) {
        qCWarning(lcDoodle, "action mode %d is not a tool; kept %lld", mode,
                  static_cast<long long>(d->m_actionMode));
        return;
    }
    // Moving on to another tool finishes the text being typed.
    if (mode != DoodleActionModeText)
        d->commitOpenText();
    if (d->m_actionMode == mode)
        return;
    d->m_actionMode = mode;
    if (d->m_chrome)
        d->m_chrome->markTool(mode);
    emit actionModeChanged();
}

QColor DoodleBoard::brushColor() const
{
    return d->m_brushColor;
}

void DoodleBoard::setBrushColor(const QColor &color)
{
    if (d->m_brushColor == color)
        return;
    d->m_brushColor = color;
    if (d->m_chrome)
        d->m_chrome->showColour(color);
    emit brushColorChanged();
}

double DoodleBoard::brushWidth() const
{
    return d->m_brushWidth;
}

void DoodleBoard::setBrushWidth(double width)
{
    if (d->m_brushWidth == width)
        return;
    d->m_brushWidth = width;
    emit brushWidthChanged();
}

double DoodleBoard::eraserWidth() const
{
    return d->m_eraserWidth;
}

void DoodleBoard::setEraserWidth(double width)
{
    if (d->m_eraserWidth == width)
        return;
    d->m_eraserWidth = width;
    emit eraserWidthChanged();
}

double DoodleBoard::textSize() const
{
    return d->m_textSize;
}

void DoodleBoard::setTextSize(double size)
{
    if (d->m_textSize == size)
        return;
    d->m_textSize = size;
    emit textSizeChanged();
}

QColor DoodleBoard::backgroundColor() const
{
    return d->m_backgroundColor;
}

void DoodleBoard::setBackgroundColor(const QColor &color)
{
    if (d->m_backgroundColor == color)
        return;
    d->m_backgroundColor = color;
    d->changed(QRect(QPoint(), size().toSize()));
    emit backgroundColorChanged();
}

QString DoodleBoard::waterString() const
{
    return d->m_waterString;
}

void DoodleBoard::setWaterString(const QString &text)
{
    if (d->m_waterString == text)
        return;
    d->m_waterString = text;
    emit waterStringChanged();
}

QSizeF DoodleBoard::boardAspect() const
{
    return d->m_boardAspect;
}

void DoodleBoard::setBoardAspect(const QSizeF &aspect)
{
    const QSizeF kept = d->usableAspect(aspect);
    if (d->m_boardAspect == kept)
        return;
    d->m_boardAspect = kept;
    // The board takes its new shape and is drawn again from the cache.
    d->redrawAll();
    d->changed(QRect(QPoint(), size().toSize()));
    emit boardAspectChanged();
}

bool DoodleBoard::isEditable() const
{
    return d->m_editable;
}

void DoodleBoard::setEditable(bool editable)
{
    if (d->m_editable == editable)
        return;
    d->m_editable = editable;
    if (d->m_chrome)
        d->m_chrome->setEditable(editable);
    emit editableChanged();
}

bool DoodleBoard::confirmsClear() const
{
    return d->m_confirmsClear;
}

void DoodleBoard::setConfirmsClear(bool confirms)
{
    if (d->m_confirmsClear == confirms)
        return;
    d->m_confirmsClear = confirms;
    emit confirmsClearChanged();
}

void DoodleBoard::receiveText(const QString &sender, const QString &text)
{
    d->receiveText(sender, text);
}

void DoodleBoard::undo()
{
    d->undoOwn();
}

void DoodleBoard::clear()
{
    d->clearOwn();
}

QString DoodleBoard::exportState() const
{
    return d->exportState();
}

QStringList DoodleBoard::exportStateParts() const
{
    return d->exportStateParts();
}

bool DoodleBoard::mergeState(const QString &state)
{
    return d->mergeStateText(state);
}

bool DoodleBoard::isPictureSettled() const
{
    return d->isPictureSettled();
}

QString DoodleBoard::fingerprint() const
{
    return QString::number(d->m_fingerprint, 16);
}

QSGNode *DoodleBoard::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    // The GUI thread waits while this runs: the surfaces can be read.
    auto *node = static_cast<QSGSimpleTextureNode *>(old);
    const QImage &image = d->frameImage(window()->effectiveDevicePixelRatio());
    if (image.isNull()) {
        delete node;
        return nullptr;
    }
    if (!node) {
        node = new QSGSimpleTextureNode;
        node->setOwnsTexture(true);
        // One texture pixel to one device pixel: no filtering changes them.
        node->setFiltering(QSGTexture::Nearest);
    }
    node->setTexture(window()->createTextureFromImage(image));
    node->setRect(QRectF(QPointF(), image.deviceIndependentSize()));
    return node;
}

void DoodleBoard::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    // The pictures follow the board's size: drawn again from the cache.
    if (newGeometry.size() != oldGeometry.size())
        d->redrawAll();
    // A board made from C++ is complete at once: its bars come with its first size.
    d->ensureChrome();
    if (d->m_chrome)
        d->m_chrome->layout();
    d->changed(QRect(QPoint(), newGeometry.size().toSize()));
}

void DoodleBoardPrivate::changed(const QRect &area)
{
    m_dirty |= area;
    q->update();
}

QImage DoodleBoardPrivate::composed(double scale) const
{
    const QSize points = q->size().toSize();
    if (points.isEmpty() || !(scale > 0))
        return QImage();
    QImage image((QSizeF(points) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    image.setDevicePixelRatio(scale);
    compose(image, QRect(QPoint(), points), false);
    return image;
}

const QImage &DoodleBoardPrivate::frameImage(double scale)
{
    const QSize points = q->size().toSize();
    const QSize pixels = (QSizeF(points) * scale).toSize();
    if (points.isEmpty() || !(scale > 0)) {
        m_frame = QImage();
        return m_frame;
    }
    if (m_frame.size() != pixels || m_frame.devicePixelRatio() != scale) {
        m_frame = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        if (m_frame.isNull())
            return m_frame;
        m_frame.setDevicePixelRatio(scale);
        m_dirty = QRect(QPoint(), points);
    }
    // Only what changed since the last frame is composed again.
    if (!m_dirty.isEmpty())
        compose(m_frame, m_dirty & QRect(QPoint(), points));
    m_dirty = QRect();
    return m_frame;
}

void DoodleBoardPrivate::compose(QImage &image, const QRect &area, bool live) const
{
    QPainter painter(&image);
    painter.setClipRect(area);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(area, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    // Letterbox margins, tinted so that the board's own shape shows.
    const QRect board = frame();
    for (const QRect &margin : QRegion(area).subtracted(board))
        painter.fillRect(margin, QColor(0, 0, 0, 64));
    const QRect inBoard = area.translated(-board.topLeft()) & QRect(QPoint(), board.size());
    if (inBoard.isEmpty())
        return;
    painter.translate(board.topLeft());
    if (m_backgroundColor.isValid())
        painter.fillRect(inBoard, m_backgroundColor);
    static_cast<const DoodleQuickCanvas *>(m_canvas.get())->paint(painter, inBoard, live);
}

QString DoodleBoard::saveImage()
{
    const QImage image =
        DoodleWatermark::applied(d->composed(DoodleScreen::scale()), d->m_waterString);
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (image.isNull() || folder.isEmpty() || !QDir().mkpath(folder)) {
        qCWarning(lcDoodle, "the board's picture could not be saved: no picture or no folder");
        return QString();
    }
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString path = QDir(folder).filePath(QStringLiteral("doodle-%1.png").arg(stamp));
    for (int n = 2; QFile::exists(path); ++n)
        path = QDir(folder).filePath(QStringLiteral("doodle-%1-%2.png").arg(stamp).arg(n));
    if (!image.save(path, "PNG")) {
        qCWarning(lcDoodle).noquote() << "the board's picture could not be written to" << path;
        return QString();
    }
    return path;
}
