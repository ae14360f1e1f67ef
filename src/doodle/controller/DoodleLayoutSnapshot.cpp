// Board controller: pictures of the board (the snapshot without the tool
// bars, the watermark, where saved pictures go) and the small image
// operations that show colours on the tool bars.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayout_p.h"

#include <doodle/board/DoodleBitmap_p.h>
#include <doodle/support/DoodleLog_p.h>
#include <doodle/support/DoodleScreen.h>
#include <doodle/support/DoodleWatermark_p.h>
#include <doodle/toolbar/ZQDoodleButtonView.h>
#include <doodle/toolbar/ZQDoodleToolbar.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QStandardPaths>

namespace {

constexpr int kNameAttempts = 1000;

// Opens a new file in `folder` that no earlier picture uses; empty `error` on success.
bool openNewPicture(const QString &folder, QFile &file, QString &error)
{
    const QString stem =
        QStringLiteral("doodle-%1").arg(QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss"));
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        const QString name = attempt == 0 ? stem : QStringLiteral("%1-%2").arg(stem).arg(attempt);
        file.setFileName(QDir(folder).filePath(name + QStringLiteral(".png")));
        // NewOnly: an earlier picture of the same name is never overwritten.
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return true;
        if (!file.exists()) {
            error = file.errorString();
            return false;
        }
    }
    error = QStringLiteral("no free name");
    return false;
}

// A saved file is opaque: the board (its own colour, if any, included) over
// white, so that a viewer with a dark background shows black ink too.
QImage onWhite(const QImage &picture)
{
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.setDevicePixelRatio(picture.devicePixelRatio());
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

} // namespace

void DoodleLayout::saveImage()
{
    d->writePicture(imageScreenShot());
}

void DoodleLayout::setPictureSink(const DoodlePictureSink &sink)
{
    d->m_pictureSink = sink;
}

void DoodleLayoutPrivate::writePicture(const QImage &picture) const
{
    if (m_pictureSink) {
        m_pictureSink(picture);
        return;
    }
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    QString error;
    QFile file;
    if (folder.isEmpty())
        error = QStringLiteral("there is no pictures folder");
    else if (!QDir().mkpath(folder))
        error = QStringLiteral("the folder cannot be made");
    else if (openNewPicture(folder, file, error) && !onWhite(picture).save(&file, "PNG")) {
        error = QStringLiteral("the picture cannot be written");
        file.remove();
    }
    if (!error.isEmpty())
        qCWarning(lcDoodle, "could not save the picture in %s: %s", qUtf8Printable(folder),
                  qUtf8Printable(error));
}

QImage DoodleLayout::imageScreenShot()
{
    hideToolBar(true);
    QWidget *board = view();
    // An open option picker belongs to the bar: it stays out of the picture too.
    QList<ZQDoodleButtonView *> pickers;
    for (ZQDoodleButtonView *picker :
         board->findChildren<ZQDoodleButtonView *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (picker->isVisibleTo(board))
            pickers << picker;
        picker->hide();
    }
    // Composed at the scale of the picture it becomes (the screen's), from the
    // layers' own pixels: no lower-resolution copy on the way. The board
    // alone: letterbox margins are no part of the picture.
    // The others' gestures under way and laser tracks are no part of the board.
    QList<QWidget *> live;
    for (quint64 layer : {kDoodleRemoteLayer, kDoodleLaserLayer}) {
        QWidget *canvas = doodleView()->getTempCanvas(layer);
        if (canvas && canvas->isVisibleTo(board)) {
            live << canvas;
            canvas->hide();
        }
    }
    const QRect frame = d->boardFrame();
    QImage picture = DoodleBitmap::create(QSizeF(frame.size()), DoodleScreen::scale());
    if (!picture.isNull())
        board->render(&picture, QPoint(), QRegion(frame), QWidget::DrawChildren);
    for (QWidget *canvas : std::as_const(live))
        canvas->show();
    for (ZQDoodleButtonView *picker : pickers)
        picker->show();
    // Shown again whether or not they were showing before.
    hideToolBar(false);
    return addWatermarketWithOriginImage(picture, d->m_waterString);
}

QImage DoodleLayout::addWatermarketWithOriginImage(const QImage &image, const QString &text)
{
    return DoodleWatermark::applied(image, text);
}

QImage DoodleLayout::imageWithColor(const QColor &color, const QImage &image)
{
    return DoodleBitmap::tinted(image, color);
}

QImage DoodleLayout::coloredImage(const QColor &color, const QSizeF &size)
{
    return ZQDoodleToolbar::coloredImage(color, size);
}

QImage DoodleLayout::imageWithBackgroundColor(const QColor &color, const QImage &image)
{
    return ZQDoodleToolbar::imageWithBackgroundColor(color, image);
}
