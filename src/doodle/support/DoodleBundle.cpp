#include "DoodleBundle_p.h"

#include "DoodleLog_p.h"
#include "DoodleScreen.h"

#include <QFile>
#include <QXmlStreamReader>

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
