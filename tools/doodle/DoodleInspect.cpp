// doodle inspect: decodes one action text per line and prints it readably.
#include "DoodleCommands.h"
#include "DoodleLines.h"

#include <doodle/model/DoodleProgress_p.h>
#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QRectF>
#include <QTextStream>

#include <algorithm>
#include <limits>

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
        else if (c.category() == QChar::Other_Control)
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
    case DoodleActionTypeProgress:
        return QStringLiteral("progress");
    }
    return QStringLiteral("unknown");
}

// A gesture under way: what it makes and what this report adds.
QString progressText(const DoodleAction &action)
{
    const std::optional<DoodleProgress> progress =
        DoodleProgressText::fromAction(action, std::numeric_limits<qsizetype>::max() / 2);
    if (!progress)
        return QStringLiteral(" malformed content=") + quoted(action.userDefined());
    QString line = QStringLiteral(" of=") + (progress->kind == DoodleProgress::kLaser
                                                 ? QStringLiteral("laser")
                                                 : typeName(progress->kind));
    line += QStringLiteral(" gesture=") + QString::number(progress->gesture);
    if (progress->ended)
        return line + QStringLiteral(" abandoned");
    if (progress->kind == DoodleActionTypeStroke || progress->kind == DoodleProgress::kLaser)
        return line + QStringLiteral(" from=%1 points=%2")
                          .arg(progress->from)
                          .arg(progress->points.size());
    const QRectF &box = progress->box;
    return line + QStringLiteral(" at=") + point(float(box.x()), float(box.y())) +
           QStringLiteral(" size=") + number(float(box.width())) + QLatin1Char('x') +
           number(float(box.height())) + QStringLiteral(" end=") +
           point(float(progress->end.x()), float(progress->end.y()));
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
    case DoodleActionTypeProgress:
        return line + progressText(action); // its content is the library's own
    default:
        break;
    }
    if (!action.userDefined().isEmpty())
        line += QStringLiteral(" userDefined=") + quoted(action.userDefined());
    return line;
}

// The area an action covers, in normalised coordinates; empty when it has none.
QRectF bounds(const DoodleAction &action)
{
    switch (action.actionType()) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser: {
        if (action.pathPoints().isEmpty())
            return QRectF();
        const DoodlePoint first = action.pathPoints().at(0);
        float left = first.x(), right = first.x(), top = first.y(), bottom = first.y();
        for (const DoodlePoint &p : action.pathPoints()) {
            left = std::min(left, p.x());
            right = std::max(right, p.x());
            top = std::min(top, p.y());
            bottom = std::max(bottom, p.y());
        }
        return QRectF(QPointF(double(left), double(top)), QPointF(double(right), double(bottom)));
    }
    case DoodleActionTypeArrow:
        return QRectF(QPointF(double(action.x()), double(action.y())),
                      QPointF(double(action.endX()), double(action.endY())))
            .normalized();
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle:
    case DoodleActionTypeSticker:
        return QRectF(double(action.x()), double(action.y()), double(action.width()),
                      double(action.height()))
            .normalized();
    default:
        return QRectF();
    }
}

// -v: the members the text holds, its stamp, point count and bounds.
QString detail(const DoodleSessionReader::Line &line)
{
    const DoodleAction &action = *line.action;
    const QJsonObject object = QJsonDocument::fromJson(line.bytes).object();
    QString text = QStringLiteral("    members=") + object.keys().join(QLatin1Char(','));
    text += QStringLiteral("\n    bytes=%1 stamp=%2 points=%3")
                .arg(line.bytes.size())
                .arg(action.seqNo())
                .arg(action.pathPoints().size());
    const QRectF area = bounds(action);
    if (!area.isNull() || doodleIsDrawnActionType(action.actionType()))
        text += QStringLiteral(" bounds=") + point(float(area.left()), float(area.top())) +
                QLatin1Char('-') + point(float(area.right()), float(area.bottom()));
    return text;
}

QString usage()
{
    return DoodleTool::tr("Usage: doodle inspect [-v] FILE|-\n"
                          "  Prints one line per action text (one JSON text per line) of FILE;\n"
                          "  reports a line that does not decode as FILE:LINE: reason on stderr\n"
                          "  and then exits with status 1 (2 when FILE cannot be read).\n"
                          "  -v  also show each action's members, stamp, point count and bounds\n");
}

} // namespace

int doodleInspect(const QStringList &arguments)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList files;
    bool verbose = false;
    for (const QString &argument : arguments) {
        if (argument == QLatin1String("-h") || argument == QLatin1String("--help")) {
            out << usage();
            return 0;
        }
        if (argument == QLatin1String("-v") || argument == QLatin1String("--verbose"))
            verbose = true;
        else
            files.append(argument);
    }
    if (files.size() != 1) {
        err << (files.isEmpty() ? DoodleTool::tr("doodle inspect: missing FILE (- for stdin)\n")
                                : DoodleTool::tr("doodle inspect: one FILE at a time\n"))
            << usage();
        return 2;
    }
    DoodleSessionReader session(files.first());
    if (!session.open()) {
        err << "doodle inspect: "
            << DoodleTool::tr("cannot open %1: %2").arg(files.first(), session.errorString())
            << '\n';
        return 2;
    }

    int failures = 0;
    DoodleSessionReader::Line line;
    while (session.next(line)) {
        if (!line.problem.isNull()) {
            ++failures;
            out.flush();
            err << "doodle inspect: " << session.report(line) << Qt::endl;
            continue;
        }
        out << line.number << ": " << describe(*line.action) << '\n';
        if (verbose)
            out << detail(line) << '\n';
    }
    out.flush();
    if (failures > 0)
        err << "doodle inspect: " << DoodleTool::tr("%n line(s) could not be decoded", "", failures)
            << '\n';
    return failures > 0 ? 1 : 0;
}
