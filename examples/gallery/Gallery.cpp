#include "Gallery.h"

#include <doodle/Doodle.h>

#include <QIcon>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr int kWidth = 760;
constexpr int kHeight = 600;
constexpr int kPageTop = 330; // the light page below the call's picture

// The tool bar as the board shows it: a dark translucent strip with round corners.
ZQDoodleToolbar *boardBar(QWidget *parent, const QRect &frame)
{
    auto *bar = new ZQDoodleToolbar(false, parent);
    bar->setCornerRadius(4.0);
    bar->setBackgroundColor(QColor::fromRgbF(30 / 255.0f, 30 / 255.0f, 30 / 255.0f, 0.4f));
    bar->setActionMode(DoodleActionModeBrush);
    bar->setBrushColor(QColor(0xFF, 0x3B, 0x30));
    bar->setGeometry(frame);
    return bar;
}

ZQDoodleButtonView *picker(QWidget *parent, int x, int y, int width, qint64 type, qint64 index)
{
    auto *view = new ZQDoodleButtonView(QRect(x, y, width, 32), index, type, Qt::white, parent);
    view->setBackgroundColor(QColor::fromRgbF(0, 0, 0, 0.9f));
    return view;
}

} // namespace

Gallery::Gallery(QWidget *parent) : QWidget(parent)
{
    setWindowTitle(QStringLiteral("Doodle tool bars"));
    setFixedSize(kWidth, kHeight);
    addMainBars();
    addPickers();
    addHostControls();
}

void Gallery::addMainBars()
{
    addCaption(QStringLiteral("Main tool bar over a call (pen selected, red brush)"), 16, 12);
    boardBar(this, QRect(16, 34, kWidth - 32, 30));
    auto *colourBar = boardBar(this, QRect(16, 90, 420, 30));
    colourBar->setActionMode(DoodleActionModeEllipse);
    colourBar->setBrushColor(QColor(0x5A, 0xC8, 0xFA));
    addCaption(QStringLiteral("420 wide, ellipse selected, blue brush"), 448, 96);

    addCaption(QStringLiteral("The same bar on a light page (eraser selected)"), 16, kPageTop + 10);
    auto *pageBar = boardBar(this, QRect(16, kPageTop + 32, kWidth - 32, 30));
    pageBar->setActionMode(DoodleActionModeEraser);
    pageBar->setBrushColor(Qt::black);

    // The board's floating button that unfolds the bar uses the bundle's "doodle" artwork.
    auto *floating = new ZQDoodleButton(this);
    const QIcon artwork(QStringLiteral(":/io.doodle.board/doodle.svg"));
    floating->setNormalImage(artwork.pixmap(QSize(44, 44), DoodleScreen::scale()).toImage());
    floating->setFrame(QRectF(kWidth - 120, 262, 44, 44));
    floating->setToolTip(QStringLiteral("Draw"));
}

void Gallery::addPickers()
{
    addCaption(QStringLiteral("Option pickers: colour, brush width, eraser width, text size"), 16,
               140);
    picker(this, 16, 162, 220, ZQDoodleButtonViewTypeColour, 2);
    picker(this, 252, 162, 125, ZQDoodleButtonViewTypeBrushWidth, 1);
    picker(this, 393, 162, 100, ZQDoodleButtonViewTypeEraserWidth, 0);
    picker(this, 509, 162, 125, ZQDoodleButtonViewTypeTextSize, 2);
}

void Gallery::addHostControls()
{
    addCaption(QStringLiteral("Colour tool bar"), 16, 210);
    auto *colours = new ZQColourToolbar(QRect(16, 230, 560, 44), this);
    colours->setBackgroundColor(QColor(0x2A, 0x2D, 0x33));
    colours->setCornerRadius(22);
    colours->setButtonSpacing(24);
    colours->layoutSubviews();

    addCaption(QStringLiteral("Width preview: brush and eraser"), 16, kPageTop + 80);
    new BrushLineView(QRect(16, kPageTop + 102, 260, 44), QColor(0xFF, 0x3B, 0x30), 12, this);
    auto *eraser = new BrushLineView(QRect(16, kPageTop + 156, 260, 44), QColor(), 18, this);
    eraser->setType(1);

    addCaption(QStringLiteral("Colour picker (blue ringed)"), 300, kPageTop + 80);
    new BrushColorView(QRect(300, kPageTop + 102, 220, 80), QColor(1, 130, 255), this);

    addCaption(QStringLiteral("Colour buttons"), 544, kPageTop + 80);
    const QColor tints[] = {QColor(255, 121, 0), QColor(143, 195, 31), QColor(145, 0, 239)};
    for (int i = 0; i < 3; ++i) {
        auto *button = new BrushColorButton(this);
        button->setTintColor(tints[i]);
        button->setSelected(i == 1);
        button->setGeometry(544 + 48 * i, kPageTop + 106, 40, 40);
    }
}

void Gallery::addCaption(const QString &text, int x, int y)
{
    auto *label = new QLabel(text, this);
    const bool onPage = y >= kPageTop;
    label->setStyleSheet(onPage ? QStringLiteral("color: #333;") : QStringLiteral("color: #eee;"));
    label->move(x, y);
    label->adjustSize();
}

void Gallery::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    // A call's picture: a dim room with a window, then a light page.
    QLinearGradient call(0, 0, kWidth, kPageTop);
    call.setColorAt(0, QColor(0x3B, 0x4A, 0x5C));
    call.setColorAt(1, QColor(0x1C, 0x22, 0x2B));
    painter.fillRect(QRect(0, 0, kWidth, kPageTop), call);
    painter.fillRect(QRect(420, 200, 200, 110), QColor(0x8F, 0xA8, 0xB8));
    painter.fillRect(QRect(0, kPageTop, kWidth, kHeight - kPageTop), QColor(0xF7, 0xF5, 0xF0));
}
