#pragma once

#include <doodle/DoodleExport.h>

#include <QImage>
#include <QList>
#include <QSizeF>
#include <QString>
#include <QStringList>

// The library's resource bundle: Qt resources under the prefix that is the
// bundle identifier, holding the size and colour tables as XML property lists
// and the tool-bar images.
class DOODLE_EXPORT DoodleBundle
{
public:
    static QString identifier();
    // ":/<identifier>/<name>.<type>", or a null string when there is no such resource.
    static QString pathForResource(const QString &name, const QString &type);
    // A table of numbers; empty (with a log line) when missing or malformed.
    // Entries that are numeric strings count as numbers.
    static QList<double> numberTable(const QString &name);
    // A table of strings; empty (with a log line) when missing or malformed.
    static QStringList stringTable(const QString &name);
    // The name of a size table for the current screen: "_2x" at a scale of
    // exactly 2, "_3x" at every other scale.
    static QString scaledTableName(const QString &baseName);
    // The image `name` as the screen shows it: the bundle's artwork for that name
    // (an SVG file, whatever raster `type` the caller names) rendered at
    // `logicalSize`, or at the artwork's own size when that is empty, times the
    // screen scale. A null image, with a log line, when there is no such artwork.
    static QImage image(const QString &name, const QString &type,
                        const QSizeF &logicalSize = QSizeF());
};
