#include "DoodleBundle_p.h"

#include "DoodleLog_p.h"
#include "DoodleScreen.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <QtMath>

namespace {

// The text of every <string>, <real> and <integer> element of the top-level
// <array> of a property list; `ok` is false when there is no such array.
QStringList readArrayValues(const QString &path, bool *ok)
{
    *ok = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QXmlStreamReader xml(&file);
    QStringList values;
    int depth = 0;
    bool sawArray = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            ++depth;
            const auto name = xml.name();
            if (depth == 2 && name == QLatin1String("array")) {
                sawArray = true;
            } else if (depth == 3 && sawArray) {
                values.append(xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed());
                --depth; // readElementText() consumed the end tag
            }
        } else if (xml.isEndElement()) {
            --depth;
        }
    }
    *ok = sawArray && !xml.hasError();
    return *ok ? values : QStringList();
}

// Renders SVG artwork at a logical size and scale; a null image when the
// file is not valid SVG or the size is empty.
QImage renderSvg(const QString &path, QSizeF size, double scale)
{
    QSvgRenderer renderer(path);
    if (!renderer.isValid())
        return {};
    if (size.isEmpty())
        size = renderer.defaultSize();
    const QSize pixels(qCeil(size.width() * scale), qCeil(size.height() * scale));
    if (pixels.isEmpty())
        return {};
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(QPointF(), size));
    return image;
}

} // namespace

QString DoodleBundle::identifier()
{
    return QStringLiteral("io.doodle.board");
}

QString DoodleBundle::pathForResource(const QString &name, const QString &type)
{
    const QString path = QStringLiteral(":/%1/%2.%3").arg(identifier(), name, type);
    return QFile::exists(path) ? path : QString();
}

QStringList DoodleBundle::stringTable(const QString &name)
{
    const QString path = pathForResource(name, QStringLiteral("plist"));
    bool ok = false;
    const QStringList values = path.isNull() ? QStringList() : readArrayValues(path, &ok);
    if (!ok)
        DOODLE_LOG(QStringLiteral("resource table %1 is missing or malformed").arg(name));
    return values;
}

QList<double> DoodleBundle::numberTable(const QString &name)
{
    QList<double> numbers;
    for (const QString &value : stringTable(name)) {
        bool ok = false;
        const float number = value.toFloat(&ok);
        numbers.append(ok ? double(number) : 0.0);
    }
    return numbers;
}

QString DoodleBundle::scaledTableName(const QString &baseName)
{
    const bool twoX = DoodleScreen::scale() == 2.0;
    return baseName + (twoX ? QStringLiteral("_2x") : QStringLiteral("_3x"));
}

QImage DoodleBundle::image(const QString &name, const QString &type, const QSizeF &logicalSize)
{
    // Tool bars rebuild their buttons on every layout; the artwork is drawn once
    // per name, size and scale. The set of names is the bundle's, so it stays small.
    static QHash<QString, QImage> cache;
    const double scale = DoodleScreen::scale();
    const QString key = QStringLiteral("%1.%2 %3x%4@%5")
                            .arg(name, type)
                            .arg(logicalSize.width())
                            .arg(logicalSize.height())
                            .arg(scale);
    const auto cached = cache.constFind(key);
    if (cached != cache.constEnd())
        return *cached;
    const QString path = pathForResource(name, QStringLiteral("svg"));
    const QImage image = path.isNull() ? QImage() : renderSvg(path, logicalSize, scale);
    if (image.isNull())
        DOODLE_LOG(QStringLiteral("resource image %1 is missing or malformed").arg(name));
    else
        cache.insert(key, image);
    return image;
}
