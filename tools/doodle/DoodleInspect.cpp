// doodle inspect: decodes one action text per line and prints it readably.
#include "DoodleCommands.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QFile>
#include <QLocale>
#include <QLoggingCategory>
#include <QTextStream>

#include <cstdio>

namespace {

QString number(float value)
{
    return QString::number(DoodleNumber::shortestFloat(value), 'g', QLocale::FloatingPointShortest);
}

QString point(float x, float y)
{
    return QLatin1Char('(') + number(x) + QLatin1Char(',') + number(y) + QLatin1Char(')');
}

QString quoted(const QString &text)
{
    QString result = QStringLiteral("\"");
    for (const QChar c : text) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
            result += QLatin1Char('\\') + c;
        else if (c == QLatin1Char('\n'))
            result += QStringLiteral("\\n");
        else if (c.unicode() < 0x20)
            result += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            result += c;
    }
    return result + QLatin1Char('"');
}

// A string property: quoted, or - when it is none.
QString optional(const QString &text)
{
    return text.isNull() ? QStringLiteral("-") : quoted(text);
}

QString typeName(qint64 type)
{
    switch (type) {
    case DoodleActionTypeNone:
        return QStringLiteral("none");
    case DoodleActionTypeUndo:
        return QStringLiteral("undo");
    case DoodleActionTypeClean:
        return QStringLiteral("clean");
    case DoodleActionTypeStroke:
        return QStringLiteral("stroke");
    case DoodleActionTypeEraser:
        return QStringLiteral("eraser");
    case DoodleActionTypeSticker:
        return QStringLiteral("sticker");
    case DoodleActionTypeText:
        return QStringLiteral("text");
    case DoodleActionTypeEllipse:
        return QStringLiteral("ellipse");
    case DoodleActionTypeRectangle:
        return QStringLiteral("rectangle");
    case DoodleActionTypeArrow:
        return QStringLiteral("arrow");
    }
    return QStringLiteral("unknown");
}

QString describe(const DoodleAction &action)
{
    const qint64 type = action.actionType();
    QString line = typeName(type) + QStringLiteral(" (") + QString::number(type) +
                   QStringLiteral(") user=") + optional(action.userId()) +
                   QStringLiteral(" page=") + QString::number(action.pageNumber()) +
                   QStringLiteral(" brush=") + number(action.brushWidth()) +
                   QStringLiteral(" color=");
    if (action.brushColor().isValid()) {
        line += QStringLiteral("#%1")
                    .arg(HexadecimalColorFromUIColor(action.brushColor()), 8, 16, QLatin1Char('0'))
                    .toUpper();
    } else {
        line += QStringLiteral("none");
    }

    switch (type) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser:
        line += QStringLiteral(" points=") + QString::number(action.pathPoints().size());
        break;
    case DoodleActionTypeArrow:
        line += QStringLiteral(" from=") + point(action.x(), action.y()) + QStringLiteral(" to=") +
                point(action.endX(), action.endY());
        break;
    case DoodleActionTypeText:
        line += QStringLiteral(" at=") + point(action.x(), action.y()) + QStringLiteral(" size=") +
                number(action.textSize()) + QStringLiteral(" rotate=") +
                QString::number(action.rotate()) + QStringLiteral(" text=") +
                optional(action.text());
        break;
    case DoodleActionTypeSticker:
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle:
        line += QStringLiteral(" at=") + point(action.x(), action.y()) + QStringLiteral(" size=") +
                number(action.width()) + QLatin1Char('x') + number(action.height()) +
                QStringLiteral(" rotate=") + QString::number(action.rotate());
        if (type == DoodleActionTypeSticker) {
            line += QStringLiteral(" emoji=") + optional(action.stickerUnicode()) +
                    QStringLiteral(" name=") + optional(action.stickerName());
        }
        break;
    default:
        break;
    }
    if (!action.userDefined().isEmpty())
        line += QStringLiteral(" userDefined=") + quoted(action.userDefined());
    return line;
}

} // namespace

int doodleInspect(const QStringList &arguments)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList files;
    bool verbose = false;
    for (const QString &argument : arguments) {
        if (argument == QLatin1String("-v") || argument == QLatin1String("--verbose"))
            verbose = true;
        else
            files.append(argument);
    }
    if (files.size() != 1) {
        err << "Usage: doodle inspect [-v] FILE|-\n"
               "  Prints one line per action text (one JSON text per line) of FILE.\n"
               "  -v  also show the library's own log lines\n";
        return 2;
    }
    // -v shows the library's own lines (one per decoded point) beside the report.
    if (verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("doodle.info=true"));

    QFile file;
    const bool opened = files.first() == QLatin1String("-")
                            ? file.open(stdin, QIODevice::ReadOnly)
                            : (file.setFileName(files.first()), file.open(QIODevice::ReadOnly));
    if (!opened) {
        err << "doodle inspect: cannot open " << files.first() << ": " << file.errorString()
            << '\n';
        return 2;
    }

    int failures = 0;
    qint64 lineNumber = 0;
    while (!file.atEnd()) {
        ++lineNumber;
        const QString text = QString::fromUtf8(file.readLine()).trimmed();
        if (text.isEmpty())
            continue;
        const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
        if (!action) {
            ++failures;
            out.flush();
            err << lineNumber << ": cannot decode: " << text.left(80)
                << (text.size() > 80 ? "..." : "") << '\n';
            err.flush();
            continue;
        }
        out << lineNumber << ": " << describe(*action) << '\n';
    }
    out.flush();
    if (failures > 0)
        err << "doodle inspect: " << failures << " line(s) could not be decoded\n";
    return failures > 0 ? 1 : 0;
}
