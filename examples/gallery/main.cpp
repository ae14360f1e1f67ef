// Shows every tool bar and picker. Without a display (QT_QPA_PLATFORM=offscreen)
// it writes a picture of them instead: doodle_gallery [--scale N] [--out FILE].
#include "Gallery.h"

#include <doodle/support/DoodleScreen.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QImage>
#include <QPainter>
#include <QTextStream>

namespace {

int writePicture(Gallery &gallery, double scale, const QString &path)
{
    QImage picture(gallery.size() * scale, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    gallery.render(&picture);
    if (!picture.save(path)) {
        QTextStream(stderr) << "could not write " << path << '\n';
        return 1;
    }
    QTextStream(stdout) << "wrote " << path << '\n';
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption scaleOption(QStringLiteral("scale"),
                                         QStringLiteral("Screen scale of the picture."),
                                         QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption outOption(QStringLiteral("out"), QStringLiteral("Picture to write."),
                                       QStringLiteral("FILE"),
                                       QStringLiteral("doodle-gallery.png"));
    parser.addOptions({scaleOption, outOption});
    parser.process(app);

    const bool offscreen = QGuiApplication::platformName() == QLatin1String("offscreen");
    const double scale = parser.value(scaleOption).toDouble();
    // The widgets draw their images at the screen scale; a picture may ask for another.
    if (offscreen || parser.isSet(scaleOption))
        DoodleScreen::setScaleOverride(scale > 0 ? scale : 1.0);
    Gallery gallery;
    gallery.show();
    if (!offscreen)
        return app.exec();
    // Let the shown window lay itself out before it is drawn.
    QCoreApplication::processEvents();
    return writePicture(gallery, DoodleScreen::scale(), parser.value(outOption));
}
