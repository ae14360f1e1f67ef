// Board controller: construction, reset, the view's lifecycle, host settings
// and host operations.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

#include <doodle/canvas/DoodleWidgetCanvas_p.h>

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleBundle_p.h>

#include <doodle/support/DoodleLog_p.h>

#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace {

// The first entry of a size table, read as a 32-bit float; 0 for an empty table.
double firstEntry(const QList<double> &table)
{
    return table.isEmpty() ? 0.0 : double(float(table.first()));
}

// A new controller's view starts at the screen's available size, as a full-screen view does.
QSize initialViewSize()
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry().size() : QSize(390, 844);
}

} // namespace

DoodleLayout::DoodleLayout(const QString &userId, QObject *parent)
    : QObject(parent), d(std::make_unique<DoodleLayoutPrivate>(this))
{
    d->m_canvas =
        std::make_unique<DoodleWidgetCanvas>(d->m_doodleView, [this] { return doodleView(); });
    // reset() selects the brush tool; the tool bar lives on the view, so the
    // view is loaded (and viewDidLoad runs) in the middle of it, before any
    // delegate can be set.
    reset();
    d->m_userId = userId;
}

DoodleLayout::~DoodleLayout()
{
    delete d->m_view.data();
}

QWidget *DoodleLayout::view()
{
    if (!d->m_view) {
        d->m_view = new DoodleLayoutView(this);
        d->m_view->resize(initialViewSize());
        d->viewDidLoad();
    }
    return d->m_view;
}

bool DoodleLayout::isViewLoaded() const
{
    return !d->m_view.isNull();
}
QString DoodleLayout::userId() const
{
    return d->m_userId;
}
DoodleLayoutDelegate *DoodleLayout::delegate() const
{
    return d->m_delegate.get();
}
void DoodleLayout::setDelegate(DoodleLayoutDelegate *delegate)
{
    d->m_delegate = delegate;
}
bool DoodleLayout::drawReceiveTrackAnimated() const
{
    return d->m_drawReceiveTrackAnimated;
}
void DoodleLayout::setDrawReceiveTrackAnimated(bool animated)
{
    d->m_drawReceiveTrackAnimated = animated;
}
QString DoodleLayout::waterString() const
{
    return d->m_waterString;
}
void DoodleLayout::setWaterString(const QString &text)
{
    d->m_waterString = text;
}
quint64 DoodleLayout::pageCount() const
{
    return d->m_pageCount;
}
QColor DoodleLayout::backgroundColor() const
{
    return d->m_backgroundColor;
}
QImage DoodleLayout::backgroundImage() const
{
    return d->m_backgroundImage;
}
QList<QColor> DoodleLayout::backgroundColors() const
{
    return d->m_backgroundColors;
}
QList<QImage> DoodleLayout::backgroundImages() const
{
    return d->m_backgroundImages;
}
double DoodleLayout::brushWidth() const
{
    return d->m_brushWidth;
}
void DoodleLayout::setBrushWidth(double width)
{
    d->m_brushWidth = width;
}
double DoodleLayout::eraserWidth() const
{
    return d->m_eraserWidth;
}
void DoodleLayout::setEraserWidth(double width)
{
    d->m_eraserWidth = width;
}
double DoodleLayout::textSize() const
{
    return d->m_textSize;
}
void DoodleLayout::setTextSize(double size)
{
    d->m_textSize = size;
}
QColor DoodleLayout::brushColor() const
{
    return d->m_brushColor;
}
void DoodleLayout::setBrushColor(const QColor &color)
{
    d->m_brushColor = color;
}
qint64 DoodleLayout::actionMode() const
{
    return d->m_actionMode;
}
QList<double> DoodleLayout::brushWidthArray() const
{
    return d->m_brushWidthArray;
}
QList<double> DoodleLayout::eraserWidthArray() const
{
    return d->m_eraserWidthArray;
}
QList<double> DoodleLayout::textSizeArray() const
{
    return d->m_textSizeArray;
}
qint64 DoodleLayout::colorSelectIndex() const
{
    return d->m_colorSelectIndex;
}
qint64 DoodleLayout::widthSelectIndex() const
{
    return d->m_widthSelectIndex;
}
qint64 DoodleLayout::eraserSelectIndex() const
{
    return d->m_eraserSelectIndex;
}
qint64 DoodleLayout::textSizeSelectIndex() const
{
    return d->m_textSizeSelectIndex;
}
bool DoodleLayout::isMinToolBar() const
{
    return d->m_isMinToolBar;
}
DoodlePathCache *DoodleLayout::doodlePathCache() const
{
    return &d->m_doodlePathCache;
}

void DoodleLayout::reset()
{
    d->loadSizeTables();
    setActionMode(DoodleActionModeBrush);
    d->m_path = QPainterPath();
    d->m_hasPath = false;
    d->m_pageCount = 1;
    d->m_brushWidth = firstEntry(d->m_brushWidthArray);
    d->m_widthSelectIndex = 0;
    d->m_eraserWidth = firstEntry(d->m_eraserWidthArray);
    d->m_eraserSelectIndex = 0;
    d->m_textSize = firstEntry(d->m_textSizeArray);
    d->m_textSizeSelectIndex = 0;
    setBackgroundColor(QColor(Qt::transparent));
    setBackgroundImage(QImage());
    d->m_doodlePathCache.cleanAllPath();
    // What follows the cache: its fingerprint, and savepoints of its drawings.
    d->recomputeFingerprint();
    d->dropSavepoints(-1);
    d->m_brushColor = QColor(Qt::black);
    d->m_colorSelectIndex = 0;
}

void DoodleLayoutPrivate::loadSizeTables()
{
    m_eraserWidthArray = DoodleBundle::numberTable(DoodleBundle::scaledTableName("eraserWidths"));
    m_brushWidthArray = DoodleBundle::numberTable(DoodleBundle::scaledTableName("brushWidths"));
    m_textSizeArray = DoodleBundle::numberTable(DoodleBundle::scaledTableName("textSizes"));
}

ZQDoodleView *DoodleLayout::doodleView()
{
    QWidget *parent = view();
    if (!d->m_doodleView) {
        d->m_doodleView = new ZQDoodleView(parent->rect(), QImage(), parent);
        // Previews, the text field, a stroke's tail, the others' previews, laser tracks.
        d->m_doodleView->setTempCanvasCount(kDoodleLayerCount);
        d->m_doodleView->setDelegate(this);
    }
    return d->m_doodleView;
}

void DoodleLayoutPrivate::viewDidLoad()
{
    m_brushColor = QColor(Qt::black);
    q->doodleView()->show();
    addToolBarToView();
    // The board opens with the tool bar folded away; nobody hears of it yet.
    q->showToolBar();
    q->doodletoolbar()->setDelegate(q);
    observeNotifications();
    q->loadDoodleView();
}

void DoodleLayoutPrivate::observeNotifications()
{
    if (m_observing)
        return;
    m_observing = true;
    if (QScreen *screen = QGuiApplication::primaryScreen())
        QObject::connect(screen, &QScreen::orientationChanged, q, [this] { orientChange(); });
    if (auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        QObject::connect(app, &QGuiApplication::applicationStateChanged, q,
                         [this](Qt::ApplicationState state) {
                             if (state == Qt::ApplicationActive)
                                 didBecomeActive();
                             else
                                 m_leftForeground = true;
                         });
    }
}

void DoodleLayout::loadDoodleView()
{
    if (!isViewLoaded())
        return;
    doodleView()->setBackgroundColor(d->m_backgroundColor);
    doodleView()->setBackgroundImage(d->m_backgroundImage);
    drawCachePath();
}

void DoodleLayoutPrivate::viewDidLayout()
{
    if (!m_doodleView || !m_view)
        return;
    m_doodleView->setGeometry(boardFrame());
    m_doodleView->layoutSubviews();
    // A host's own layout counts as a frame reset: the board is pixels, so it
    // is drawn again from the cache, and the tool bar follows the new size (a
    // frame reset does both once by itself).
    if (!m_inFrameReset) {
        q->reloadToolBar();
        q->loadDoodleView();
    }
}

QRect DoodleLayoutPrivate::boardFrame() const
{
    return letterboxed(m_boardAspect, m_view ? m_view->rect() : QRect());
}

QSizeF DoodleLayout::boardAspect() const
{
    return d->m_boardAspect;
}

void DoodleLayout::setBoardAspect(const QSizeF &aspect)
{
    const QSizeF kept = d->usableAspect(aspect);
    if (kept == d->m_boardAspect)
        return;
    d->m_boardAspect = kept;
    // The board takes its new shape and is drawn again from the cache.
    if (d->m_view) {
        d->m_view->update();
        d->viewDidLayout();
    }
}

void DoodleLayoutPrivate::orientChange()
{
    q->reloadToolBar();
    q->loadDoodleView();
}

void DoodleLayout::resetDoodleViewFrame(const QRect &frame)
{
    d->m_inFrameReset = true;
    view()->setGeometry(frame);
    // A hidden widget gets its resize event only when shown; lay out now.
    d->viewDidLayout();
    d->m_inFrameReset = false;
    d->orientChange();
}

void DoodleLayoutPrivate::didBecomeActive()
{
    // A gesture under way when the application left the foreground is abandoned.
    // A press that itself activates the window (a click into an inactive one)
    // began after the application left, so its gesture is kept.
    if (m_leftForeground)
        abandonGesture();
    m_leftForeground = false;
}

void DoodleLayout::setPageCount(quint64 count)
{
    d->m_pageCount = count == 0 ? 1 : count;
}

void DoodleLayout::setBackgroundColor(const QColor &color)
{
    if (color == d->m_backgroundColor && color.isValid() == d->m_backgroundColor.isValid())
        return;
    d->m_backgroundColor = color;
    if (d->m_doodleView)
        d->m_doodleView->setBackgroundColor(color);
}

void DoodleLayout::setBackgroundImage(const QImage &image)
{
    if (image.cacheKey() == d->m_backgroundImage.cacheKey())
        return;
    d->m_backgroundImage = image;
    if (d->m_doodleView)
        d->m_doodleView->setBackgroundImage(image);
}

void DoodleLayout::setBackgroundColors(const QList<QColor> &colors)
{
    if (colors.isSharedWith(d->m_backgroundColors))
        return;
    d->m_backgroundColors = colors;
    loadDoodleView();
}

void DoodleLayout::setBackgroundImages(const QList<QImage> &images)
{
    if (images.isSharedWith(d->m_backgroundImages))
        return;
    d->m_backgroundImages = images;
    loadDoodleView();
}

void DoodleLayout::canEdit(bool editable)
{
    if (!d->m_isMinToolBar)
        showToolBar();
    d->setToolButtonVisible(editable);
}

void DoodleLayout::onDoodleActionReceived(const QString &userId, const DoodleActionPtr &action)
{
    d->receiveFrom(userId, action);
}

void DoodleLayout::onDoodleTextReceived(const QString &userId, const QString &text)
{
    d->receiveText(userId, text);
}

DoodleReceiveLimits DoodleLayout::receiveLimits() const
{
    return d->m_limits;
}

void DoodleLayout::setReceiveLimits(const DoodleReceiveLimits &limits)
{
    d->m_limits = limits;
}

QList<DoodleActionPtr> DoodleLayout::getAllPath() const
{
    return d->m_doodlePathCache.getAllPath();
}

DoodleActionPtr DoodleLayout::stringToDoodleAction(const QString &text) const
{
    if (!d->textWithinLimit(QString(), text))
        return nullptr;
    return DoodleTranslate::doodleActionFromString(text);
}

QString DoodleLayout::doodleActionToString(const DoodleActionPtr &action) const
{
    return DoodleTranslate::stringFromDoodleAction(action);
}

void DoodleLayout::dismissDoodle()
{
    // Everything goes: the drawing, a gesture under way and an open text field.
    d->resetGesture();
    d->closeTextField();
    d->forgetOrder();
    if (d->m_doodleView)
        d->m_doodleView->clearAll();
    cleanDoodleCaches();
    if (!d->m_isMinToolBar)
        showToolBar();
    reset();
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onCloseDoodle();
    setActionMode(DoodleActionModeBrush);
    if (d->m_view) {
        d->m_view->hide();
        d->m_view->setParent(nullptr);
    }
}
