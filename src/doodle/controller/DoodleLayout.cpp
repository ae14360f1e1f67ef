// Board controller: construction, reset, the view's lifecycle, host settings
// and host operations.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleBundle_p.h>

#include <QGuiApplication>
#include <QScreen>

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

DoodleLayout::DoodleLayout(const QString &userId, QObject *parent) : QObject(parent)
{
    // reset() selects the brush tool; the tool bar lives on the view, so the
    // view is loaded (and viewDidLoad runs) in the middle of it, before any
    // delegate can be set.
    reset();
    m_userId = userId;
}

DoodleLayout::~DoodleLayout()
{
    delete m_view.data();
}

QWidget *DoodleLayout::view()
{
    if (!m_view) {
        m_view = new DoodleLayoutView(this);
        m_view->resize(initialViewSize());
        viewDidLoad();
    }
    return m_view;
}

void DoodleLayout::reset()
{
    loadSizeTables();
    setActionMode(DoodleActionModeBrush);
    m_path = QPainterPath();
    m_hasPath = false;
    m_pageCount = 1;
    m_brushWidth = firstEntry(m_brushWidthArray);
    m_widthSelectIndex = 0;
    m_eraserWidth = firstEntry(m_eraserWidthArray);
    m_eraserSelectIndex = 0;
    m_textSize = firstEntry(m_textSizeArray);
    m_textSizeSelectIndex = 0;
    setBackgroundColor(QColor(Qt::transparent));
    setBackgroundImage(QImage());
    m_doodlePathCache = std::make_unique<DoodlePathCache>();
    m_brushColor = QColor(Qt::black);
    m_colorSelectIndex = 0;
}

void DoodleLayout::loadSizeTables()
{
    m_eraserWidthArray = DoodleBundle::numberTable(DoodleBundle::scaledTableName("eraserWidths"));
    m_brushWidthArray = DoodleBundle::numberTable(DoodleBundle::scaledTableName("brushWidths"));
    m_textSizeArray = DoodleBundle::numberTable(DoodleBundle::scaledTableName("textSizes"));
}

ZQDoodleView *DoodleLayout::doodleView()
{
    QWidget *parent = view();
    if (!m_doodleView) {
        m_doodleView = new ZQDoodleView(parent->rect(), QImage(), parent);
        m_doodleView->setTempCanvasCount(2);
        m_doodleView->setDelegate(this);
    }
    return m_doodleView;
}

void DoodleLayout::viewDidLoad()
{
    m_brushColor = QColor(Qt::black);
    doodleView()->show();
    addToolBarToView();
    // The board opens with the tool bar folded away; nobody hears of it yet.
    showToolBar();
    observeNotifications();
    loadDoodleView();
}

void DoodleLayout::observeNotifications()
{
    if (QScreen *screen = QGuiApplication::primaryScreen())
        connect(screen, &QScreen::orientationChanged, this, &DoodleLayout::orientChange,
                Qt::UniqueConnection);
    if (auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        connect(app, &QGuiApplication::applicationStateChanged, this,
                &DoodleLayout::applicationStateChanged, Qt::UniqueConnection);
}

void DoodleLayout::applicationStateChanged(Qt::ApplicationState state)
{
    if (state == Qt::ApplicationActive)
        didBecomeActive();
}

void DoodleLayout::loadDoodleView()
{
    if (!isViewLoaded())
        return;
    doodleView()->setBackgroundColor(m_backgroundColor);
    doodleView()->setBackgroundImage(m_backgroundImage);
    drawCachePath();
}

void DoodleLayout::viewDidLayout()
{
    if (!m_doodleView || !m_view)
        return;
    m_doodleView->setGeometry(m_view->rect());
    m_doodleView->layoutSubviews();
    // The board is pixels: after a change of size it is drawn again from the
    // cache (a frame reset redraws once by itself).
    if (!m_inFrameReset) {
        m_doodleView->clearAll();
        loadDoodleView();
    }
}

void DoodleLayout::orientChange()
{
    reloadToolBar();
    doodleView()->clearAll();
    loadDoodleView();
}

void DoodleLayout::resetDoodleViewFrame(const QRect &frame)
{
    m_inFrameReset = true;
    view()->setGeometry(frame);
    // A hidden widget gets its resize event only when shown; lay out now.
    viewDidLayout();
    m_inFrameReset = false;
    orientChange();
}

void DoodleLayout::didBecomeActive()
{
    // A gesture under way when the application left the foreground is abandoned.
    m_doodleDraw.reset();
    m_path = QPainterPath();
    m_hasPath = false;
}

void DoodleLayout::setPageCount(quint64 count)
{
    m_pageCount = count == 0 ? 1 : count;
}

void DoodleLayout::setBackgroundColor(const QColor &color)
{
    if (color == m_backgroundColor && color.isValid() == m_backgroundColor.isValid())
        return;
    m_backgroundColor = color;
    if (m_doodleView)
        m_doodleView->setBackgroundColor(color);
}

void DoodleLayout::setBackgroundImage(const QImage &image)
{
    if (image.cacheKey() == m_backgroundImage.cacheKey())
        return;
    m_backgroundImage = image;
    if (m_doodleView)
        m_doodleView->setBackgroundImage(image);
}

void DoodleLayout::setBackgroundColors(const QList<QColor> &colors)
{
    if (colors.isSharedWith(m_backgroundColors))
        return;
    m_backgroundColors = colors;
    loadDoodleView();
}

void DoodleLayout::setBackgroundImages(const QList<QImage> &images)
{
    if (images.isSharedWith(m_backgroundImages))
        return;
    m_backgroundImages = images;
    loadDoodleView();
}

void DoodleLayout::canEdit(bool editable)
{
    if (!m_isMinToolBar)
        showToolBar();
    setToolButtonVisible(editable);
}

void DoodleLayout::onDoodleActionReceived(const QString &userId, const DoodleActionPtr &action)
{
    doodleAction(action, userId);
}

QList<DoodleActionPtr> DoodleLayout::getAllPath() const
{
    return m_doodlePathCache ? m_doodlePathCache->getAllPath() : QList<DoodleActionPtr>();
}

DoodleActionPtr DoodleLayout::stringToDoodleAction(const QString &text) const
{
    return DoodleTranslate::doodleActionFromString(text);
}

QString DoodleLayout::doodleActionToString(const DoodleActionPtr &action) const
{
    return DoodleTranslate::stringFromDoodleAction(action);
}

void DoodleLayout::dismissDoodle()
{
    cleanDoodleCaches();
    if (!m_isMinToolBar)
        showToolBar();
    reset();
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onCloseDoodle();
    setActionMode(DoodleActionModeBrush);
    if (m_view) {
        m_view->hide();
        m_view->setParent(nullptr);
    }
}
