// Reading a recorded session line by line, and what is wrong with a bad line.
#include "DoodleLines.h"

#include "DoodleCommands.h"

#include <doodle/controller/DoodleLayout.h>
#include <doodle/model/DoodleTranslate.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

#include <algorithm>
#include <optional>

namespace {

// What a member holds. A list or an object may also travel as a JSON text of one.
enum class Kind
{
    Number,
    String,
    Object,
    List,
};

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::Number:
        return DoodleTool::tr("a number");
    case Kind::String:
        return DoodleTool::tr("a string");
    case Kind::Object:
        return DoodleTool::tr("an object");
    case Kind::List:
        return DoodleTool::tr("a list");
    }
    return QString();
}

QString kindName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Double:
        return kindName(Kind::Number);
    case QJsonValue::String:
        return kindName(Kind::String);
    case QJsonValue::Object:
        return kindName(Kind::Object);
    case QJsonValue::Array:
        return kindName(Kind::List);
    case QJsonValue::Bool:
        return DoodleTool::tr("true or false");
    default:
        return DoodleTool::tr("null");
    }
}

// The value as `kind`, a JSON text of a list or an object parsed; none when it is not one.
std::optional<QJsonValue> asKind(const QJsonValue &value, Kind kind)
{
    const bool nested = kind == Kind::List || kind == Kind::Object;
    const QJsonValue parsed = nested ? DoodleTranslate::jsonToObj(value) : value;
    const bool fits = (kind == Kind::Number && parsed.isDouble()) ||
                      (kind == Kind::String && parsed.isString()) ||
                      (kind == Kind::Object && parsed.isObject()) ||
                      (kind == Kind::List && parsed.isArray());
    return fits ? std::optional<QJsonValue>(parsed) : std::nullopt;
}

QString wrongKind(const QString &name, const QJsonValue &value, Kind kind)
{
    const bool nested = kind == Kind::List || kind == Kind::Object;
    const QString held = value.isString() && nested
                             ? DoodleTool::tr("a string that is not JSON of %1").arg(kindName(kind))
                             : kindName(value);
    return DoodleTool::tr("%1 is %2, not %3").arg(name, held, kindName(kind));
}

struct Member
{
    const char *key;
    Kind kind;
};

// Checks the members of `object` that `members` names; absent ones are fine.
QString checkMembers(const QJsonObject &object, const QString &prefix,
                     std::initializer_list<Member> members)
{
    for (const Member &member : members) {
        const QJsonValue value = object.value(QLatin1String(member.key));
        if (!value.isUndefined() && !asKind(value, member.kind))
            return wrongKind(prefix + QLatin1String(member.key), value, member.kind);
    }
    return QString();
}

QString checkPoints(const QJsonValue &list)
{
    const QJsonArray points = asKind(list, Kind::List)->toArray();
    for (qsizetype i = 0; i < points.size(); ++i) {
        const auto point = asKind(points.at(i), Kind::List);
        const QJsonArray parts = point ? point->toArray() : QJsonArray();
        const bool numbers = std::all_of(parts.begin(), parts.end(), [](const QJsonValue &part) {
            return part.isString() || part.isDouble();
        });
        if (!point || !numbers)
            return DoodleTool::tr("point %1 of %2 is not a list of numbers")
                .arg(i + 1)
                .arg(QLatin1String(PelDoodlePositionKey));
    }
    return QString();
}

// The geometry of a shape or a text: a content object whose detail object holds numbers.
QString checkContent(const QJsonValue &value, qint64 type)
{
    const QJsonObject content = asKind(value, Kind::Object)->toObject();
    const char *detailKey = type == DoodleActionTypeText ? KTextContentKey : KShapeContentKey;
    const QString name = QLatin1String(PelDoodleContentKey) + QLatin1Char('.');
    const QJsonValue detail = content.value(QLatin1String(detailKey));
    if (!asKind(detail, Kind::Object))
        return wrongKind(name + QLatin1String(detailKey), detail, Kind::Object);
    return checkMembers(asKind(detail, Kind::Object)->toObject(),
                        name + QLatin1String(detailKey) + QLatin1Char('.'),
                        {{KActionPositionXKey, Kind::Number},
                         {KActionPositionYKey, Kind::Number},
                         {KActionPositionEndXKey, Kind::Number},
                         {KActionPositionEndYKey, Kind::Number},
                         {KActionWidthKey, Kind::Number},
                         {KActionHeightKey, Kind::Number},
                         {KActionTextSizeKey, Kind::Number},
                         {KActionTextKey, Kind::String}});
}

// What a drawn action's type needs: its points, or its content.
QString checkGeometry(const QJsonObject &object, qint64 type)
{
    const bool stroke = type == DoodleActionTypeStroke || type == DoodleActionTypeEraser;
    const char *key = stroke ? PelDoodlePositionKey : PelDoodleContentKey;
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined())
        return DoodleTool::tr("no %1").arg(QLatin1String(key));
    const Kind kind = stroke ? Kind::List : Kind::Object;
    if (!asKind(value, kind))
        return wrongKind(QLatin1String(key), value, kind);
    return stroke ? checkPoints(value) : checkContent(value, type);
}

QString checkObject(const QJsonObject &object)
{
    const QJsonValue type = object.value(QLatin1String(PelDoodleActionTypeKey));
    if (type.isUndefined())
        return DoodleTool::tr("no %1").arg(QLatin1String(PelDoodleActionTypeKey));
    QString problem = checkMembers(object, QString(),
                                   {{PelDoodleActionTypeKey, Kind::Number},
                                    {PelDoodleUserUriKey, Kind::String},
                                    {PelDoodlePageIdKey, Kind::Number},
                                    {PelDoodleSeqNoKey, Kind::Number},
                                    {PelDoodleBrushKey, Kind::Object}});
    if (problem.isNull())
        problem =
            checkMembers(object.value(QLatin1String(PelDoodleBrushKey)).toObject(),
                         QLatin1String(PelDoodleBrushKey) + QLatin1Char('.'),
                         {{PelDoodleWidthKey, Kind::Number}, {PelDoodleColorKey, Kind::Number}});
    const qint64 code = type.toInteger();
    const bool drawn = doodleIsDrawnActionType(code) && code != DoodleActionTypeSticker;
    if (problem.isNull() && drawn)
        problem = checkGeometry(object, code);
    return problem;
}

QString overLimit(const char *what, qsizetype value, qsizetype maximum)
{
    if (value <= maximum)
        return QString();
    return DoodleTool::tr("over a limit: %1 %2, at most %3")
        .arg(value)
        .arg(DoodleTool::tr(what))
        .arg(maximum);
}

} // namespace

DoodleSessionReader::DoodleSessionReader(const QString &path) : m_path(path) {}

bool DoodleSessionReader::open()
{
    if (m_path == QLatin1String("-"))
        return m_file.open(stdin, QIODevice::ReadOnly);
    m_file.setFileName(m_path);
    return m_file.open(QIODevice::ReadOnly);
}

bool DoodleSessionReader::next(Line &line)
{
    while (!m_file.atEnd()) {
        ++m_number;
        QByteArray bytes = m_file.readLine().trimmed();
        if (bytes.isEmpty())
            continue;
        line = Line();
        line.number = m_number;
        line.bytes = std::move(bytes);
        line.problem = check(line.bytes, &line.text, &line.action);
        return true;
    }
    return false;
}

QString DoodleSessionReader::report(const Line &line) const
{
    const QString file = m_path == QLatin1String("-") ? DoodleTool::tr("<stdin>") : m_path;
    return QStringLiteral("%1:%2: %3").arg(file).arg(line.number).arg(line.problem);
}

QString DoodleSessionReader::check(const QByteArray &bytes, QString *text, DoodleActionPtr *action)
{
    const DoodleReceiveLimits limits;
    // Bounded before anything reads it.
    QString problem =
        overLimit(QT_TRANSLATE_NOOP("doodle", "bytes"), bytes.size(), limits.textBytes);
    if (!problem.isNull())
        return problem;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    *text = decoder(bytes);
    // Control characters never stand raw in a JSON text: such a line is binary data.
    const bool binary = std::any_of(text->cbegin(), text->cend(), [](QChar c) {
        return c.category() == QChar::Other_Control && c != QLatin1Char('\t');
    });
    if (decoder.hasError() || binary) {
        text->clear();
        return DoodleTool::tr("not UTF-8 text");
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return DoodleTool::tr("not JSON (%1 at byte %2)")
            .arg(error.errorString())
            .arg(error.offset + 1);
    if (!document.isObject())
        return DoodleTool::tr("not a JSON object");
    problem = checkObject(document.object());
    if (!problem.isNull())
        return problem;
    *action = DoodleTranslate::doodleActionFromString(*text);
    if (!*action)
        return DoodleTool::tr("cannot decode");
    problem = overLimit(QT_TRANSLATE_NOOP("doodle", "stroke points"),
                        (*action)->pathPoints().size(), limits.strokePoints);
    if (problem.isNull())
        problem = overLimit(QT_TRANSLATE_NOOP("doodle", "characters of text"),
                            (*action)->text().size(), limits.textLength);
    if (!problem.isNull())
        action->reset();
    return problem;
}
