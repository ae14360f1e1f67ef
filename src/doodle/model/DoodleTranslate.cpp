#include "DoodleTranslate.h"

#include "DoodleJsonText_p.h"

#include <doodle/support/DoodleLog_p.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr quint64 kLargestStamp = (quint64(1) << 53) - 1;

QLatin1String key(const char *name)
{
    return QLatin1String(name);
}

// The encoder's "" (empty, not none).
QString emptyText()
{
    return QStringLiteral("");
}

// A 32-bit float as the double whose shortest text reads back to that float.
QJsonValue floatValue(float value)
{
    return QJsonValue(DoodleNumber::shortestFloat(value));
}

bool allFinite(const QJsonValue &value);

bool allFinite(const QJsonArray &array)
{
    for (const QJsonValue &element : array) {
        if (!allFinite(element))
            return false;
    }
    return true;
}

bool allFinite(const QJsonObject &object)
{
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (!allFinite(it.value()))
            return false;
    }
    return true;
}

bool allFinite(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Double:
        return std::isfinite(value.toDouble());
    case QJsonValue::Array:
        return allFinite(value.toArray());
    case QJsonValue::Object:
        return allFinite(value.toObject());
    case QJsonValue::Undefined:
        return false;
    default:
        return true;
    }
}

QJsonValue parseJson(const QByteArray &utf8)
{
    // QJsonDocument refuses documents nested deeper than 1024 levels on its own,
    // so hostile nesting cannot exhaust the stack here.
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(utf8, &error);
    if (error.error != QJsonParseError::NoError)
        return QJsonValue(QJsonValue::Undefined);
    if (document.isObject())
        return document.object();
    if (document.isArray())
        return document.array();
    return QJsonValue(QJsonValue::Undefined);
}

// Converts a double to an integer type by truncation toward zero, saturating at
// the type's bounds; NaN gives 0. Never undefined behaviour.
template <typename Int> Int saturate(double value)
{
    if (std::isnan(value))
        return 0;
    // min() is 0 or -2^digits and max() + 1 is 2^digits: all exact as doubles.
    const double lowest = double(std::numeric_limits<Int>::min());
    const double upperExclusive = std::ldexp(1.0, std::numeric_limits<Int>::digits);
    if (value <= lowest)
        return std::numeric_limits<Int>::min();
    if (value >= upperExclusive)
        return std::numeric_limits<Int>::max();
    return Int(value);
}

// Integer members: an exact integer is taken as it is; any other number is
// truncated and saturated; every other JSON type reads as 0.
qint64 int64Value(const QJsonValue &value)
{
    if (!value.isDouble())
        return 0;
    constexpr qint64 notExact = std::numeric_limits<qint64>::min();
    const qint64 exact = value.toInteger(notExact);
    return exact != notExact ? exact : saturate<qint64>(value.toDouble());
}

template <typename UInt> UInt unsignedValue(const QJsonValue &value)
{
    if (!value.isDouble())
        return 0;
    constexpr qint64 notExact = std::numeric_limits<qint64>::min();
    const qint64 exact = value.toInteger(notExact);
    if (exact == notExact)
        return saturate<UInt>(value.toDouble());
    if (exact < 0)
        return 0;
    return quint64(exact) > std::numeric_limits<UInt>::max() ? std::numeric_limits<UInt>::max()
                                                             : UInt(exact);
}

// Narrows to the nearest float. Magnitudes above the largest float but below
// the rounding boundary halfway to 2^128 give the largest float, so that its
// shortest text (3.4028235e+38, a double just above it) reads back to it;
// beyond the boundary they are infinite. (A plain conversion of a double
// outside the float range is undefined in C++.)
float floatValue(const QJsonValue &value)
{
    const double number = value.toDouble();
    constexpr float largest = std::numeric_limits<float>::max();
    constexpr double boundary = 0x1.ffffffp+127; // 2^128 - 2^103
    const double magnitude = std::fabs(number);
    if (magnitude <= double(largest))
        return float(number);
    const float rounded = magnitude < boundary ? largest : std::numeric_limits<float>::infinity();
    return number < 0 ? -rounded : rounded;
}

// The page id: a number of 2^63 or more is read from its digits in the text,
// since the parsed value holds it as a rounded double.
quint64 pageValue(const QJsonValue &value, QStringView text)
{
    if (value.isDouble() && value.toDouble() >= 0x1p63) {
        if (const auto exact = DoodleJsonText::unsignedMember(text, key(PelDoodlePageIdKey)))
            return *exact;
    }
    return unsignedValue<quint64>(value);
}

// The page member is inserted as 0 and its exact digits written into the text.
QString withPage(const QString &text, quint64 page)
{
    return DoodleJsonText::withMemberValue(text, key(PelDoodlePageIdKey), QString::number(page));
}

// "rotate": the float value truncated toward zero.
qint32 angleValue(const QJsonValue &value)
{
    return saturate<qint32>(double(floatValue(value)));
}

// A string member as it is (an empty string stays empty, not none); any other
// JSON type reads as none.
QString stringValue(const QJsonValue &value)
{
    if (!value.isString())
        return QString();
    const QString text = value.toString();
    return text.isNull() ? emptyText() : text;
}

QString typeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("Null");
    case QJsonValue::Bool:
        return QStringLiteral("Bool");
    case QJsonValue::Double:
        return QStringLiteral("Double");
    case QJsonValue::String:
        return QStringLiteral("String");
    case QJsonValue::Array:
        return QStringLiteral("Array");
    case QJsonValue::Object:
        return QStringLiteral("Object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("Undefined");
}

// One point from its parsed list. Strings are kept as they are; numbers (a
// sender that skipped the "%d"/"%f" strings) become their shortest decimal
// text, which the readers parse the same way. A point holding anything else
// (true, null, a list or an object) has no usable coordinate and is skipped.
// The length is not checked: readers must handle points of any length.
bool pointFromArray(const QJsonArray &array, QStringList &strings)
{
    strings.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (element.isString())
            strings.append(element.toString());
        else if (element.isDouble())
            strings.append(
                QString::number(element.toDouble(), 'g', QLocale::FloatingPointShortest));
        else
            return false;
    }
    return true;
}

// Fills the points from "PelDoodlePositionKey" of the parsed object, emptying
// the list first. A list that is not an array leaves the points alone; an
// element that does not give an array is skipped.
void fillPoints(DoodleAction &action, const QJsonObject &object)
{
    const QJsonValue list = DoodleTranslate::jsonToObj(object.value(key(PelDoodlePositionKey)));
    if (!list.isArray())
        return;
    const QJsonArray elements = list.toArray();
    DoodlePointList &points = action.pathPoints();
    points.clear();
    points.reserve(elements.size());
    for (const QJsonValue &element : elements) {
        DOODLE_LOG(QStringLiteral("jsonPath ") + typeName(element));
        const QJsonValue parsed = DoodleTranslate::jsonToObj(element);
        if (!parsed.isArray())
            continue;
        QStringList strings;
        if (pointFromArray(parsed.toArray(), strings))
            points.append(DoodlePoint(strings));
    }
}

enum class Detail
{
    Sticker,
    Text,
    Shape,
    Arrow
};

// Reads a content object (text or already parsed) and its detail object.
void readContent(DoodleAction &action, const QJsonValue &value, Detail detail)
{
    const QJsonValue contentValue = DoodleTranslate::jsonToObj(value);
    if (!contentValue.isObject())
        return;
    const QJsonObject content = contentValue.toObject();
    action.setUserDefined(stringValue(content.value(key(KStickerUserDefineKey))));

    const char *detailKey = detail == Detail::Sticker ? KStickerContentKey
                            : detail == Detail::Text  ? KTextContentKey
                                                      : KShapeContentKey;
    const QJsonValue detailValue = DoodleTranslate::jsonToObj(content.value(key(detailKey)));
    if (!detailValue.isObject())
        return;
    const QJsonObject members = detailValue.toObject();
    auto member = [&members](const char *name) { return members.value(key(name)); };

    if (detail == Detail::Sticker || detail == Detail::Text) {
        action.setStickerUnicode(stringValue(member(KStickerActionEmojiUnicodeKey)));
        action.setStickerName(stringValue(member(KStickerActionNameKey)));
    }
    action.setX(floatValue(member(KActionPositionXKey)));
    action.setY(floatValue(member(KActionPositionYKey)));
    if (detail == Detail::Arrow) {
        action.setEndX(floatValue(member(KActionPositionEndXKey)));
        action.setEndY(floatValue(member(KActionPositionEndYKey)));
    }
    if (detail == Detail::Text) {
        action.setText(stringValue(member(KActionTextKey)));
        action.setTextSize(floatValue(member(KActionTextSizeKey)));
    } else {
        action.setWidth(floatValue(member(KActionWidthKey)));
        action.setHeight(floatValue(member(KActionHeightKey)));
    }
    action.setRotate(angleValue(member(KActionAngleKey)));
}

void readBrush(DoodleAction &action, const QJsonValue &value)
{
    if (!value.isObject())
        return;
    const QJsonObject brush = value.toObject();
    for (auto it = brush.constBegin(); it != brush.constEnd(); ++it) {
        if (it.key() == key(PelDoodleWidthKey))
            action.setBrushWidth(floatValue(it.value()));
        else if (it.key() == key(PelDoodleColorKey))
            action.setBrushColor(UIColorFromHexadecimalColor(unsignedValue<quint32>(it.value())));
    }
}

// The detail object of a sticker, text or shape, members in their wire order.
QJsonObject detailObject(const DoodleAction &action)
{
    QJsonObject detail;
    const qint64 type = action.actionType();
    if (type == DoodleActionTypeSticker) {
        if (!action.stickerUnicode().isNull())
            detail.insert(key(KStickerActionEmojiUnicodeKey), action.stickerUnicode());
        if (!action.stickerName().isNull())
            detail.insert(key(KStickerActionNameKey), action.stickerName());
    }
    detail.insert(key(KActionPositionXKey), floatValue(action.x()));
    detail.insert(key(KActionPositionYKey), floatValue(action.y()));
    if (type == DoodleActionTypeText) {
        if (!action.text().isNull())
            detail.insert(key(KActionTextKey), action.text());
        detail.insert(key(KActionTextSizeKey), floatValue(action.textSize()));
    } else {
        detail.insert(key(KActionWidthKey), floatValue(action.width()));
        detail.insert(key(KActionHeightKey), floatValue(action.height()));
    }
    detail.insert(key(KActionAngleKey), floatValue(float(action.rotate())));
    if (type == DoodleActionTypeArrow) {
        detail.insert(key(KActionPositionEndXKey), floatValue(action.endX()));
        detail.insert(key(KActionPositionEndYKey), floatValue(action.endY()));
    }
    return detail;
}

QString contentText(const DoodleAction &action, const char *contentKey, const QString &header)
{
    QJsonObject content;
    content.insert(key(contentKey), DoodleTranslate::objToJson(detailObject(action)));
    content.insert(key(PelDoodleBrushKey), header);
    if (!action.userDefined().isEmpty())
        content.insert(key(KStickerUserDefineKey), action.userDefined());
    return DoodleTranslate::objToJson(content);
}

QString writtenPointText(const DoodleAction &action)
{
    QJsonArray texts;
    for (const DoodlePoint &point : action.pathPoints())
        texts.append(DoodleTranslate::objToJson(QJsonArray::fromStringList(point.toStringList())));
    return DoodleTranslate::objToJson(texts);
}

// A text the JSON writer copies as it is: a number's characters only.
bool isPlainNumber(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || c == u'.' || c == u'-' || c == u'+' || c == u'e' ||
               c == u'E';
    });
}

// The points as an array of JSON texts, one array of strings per point.
// Points of plain numbers (all that boards write) are written straight, as
// the JSON writer would write them, without a document per point; any other
// point sends the whole list through the writer.
QString pointText(const DoodleAction &action)
{
    QString text(1, u'[');
    text.reserve(action.pathPoints().size() * 48);
    for (const DoodlePoint &point : action.pathPoints()) {
        const QStringList parts = point.toStringList();
        if (!std::all_of(parts.cbegin(), parts.cend(), isPlainNumber))
            return writtenPointText(action);
        text += text.size() > 1 ? QLatin1String(",\"[") : QLatin1String("\"[");
        for (qsizetype i = 0; i < parts.size(); ++i) {
            text += i > 0 ? QLatin1String(",\\\"") : QLatin1String("\\\"");
            text += parts.at(i) + QLatin1String("\\\"");
        }
        text += QLatin1String("]\"");
    }
    return text + u']';
}

} // namespace

QString DoodleTranslate::stringFromDoodleAction(const DoodleActionPtr &action)
{
    if (!action)
        return emptyText();
    const DoodleAction &a = *action;
    const qint64 type = a.actionType();

    QJsonObject object;
    if (type != 0)
        object.insert(key(PelDoodleActionTypeKey), type);
    if (!a.userId().isEmpty())
        object.insert(key(PelDoodleUserUriKey), a.userId());
    QJsonObject brush;
    if (a.brushWidth() > 0)
        brush.insert(key(PelDoodleWidthKey), floatValue(a.brushWidth()));
    if (a.brushColor().isValid())
        brush.insert(key(PelDoodleColorKey), qint64(HexadecimalColorFromUIColor(a.brushColor())));
    if (!brush.isEmpty())
        object.insert(key(PelDoodleBrushKey), brush);
    object.insert(key(PelDoodlePageIdKey), qint64(0));
    const QString header = withPage(objToJson(object), a.pageNumber());
    // Stamps stay below 2^53, where every JSON reader keeps integers exact.
    if (a.seqNo() != 0)
        object.insert(key(PelDoodleSeqNoKey), qint64(std::min<quint64>(a.seqNo(), kLargestStamp)));

    switch (type) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser: {
        const QString points = pointText(a);
        DOODLE_LOG(QStringLiteral("DoodleActionPelDoodlePositionKeyContent ") + points);
        object.insert(key(PelDoodlePositionKey), points);
        break;
    }
    case DoodleActionTypeSticker:
        object.insert(key(PelDoodleContentKey), contentText(a, KStickerContentKey, header));
        break;
    case DoodleActionTypeText: {
        const QString content = contentText(a, KTextContentKey, header);
        DOODLE_LOG(QStringLiteral("DoodleActionTextContent ") + content);
        object.insert(key(PelDoodleContentKey), content);
        break;
    }
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle:
    case DoodleActionTypeArrow: {
        const QString content = contentText(a, KShapeContentKey, header);
        DOODLE_LOG(QStringLiteral("DoodleActionRectContent ") + content);
        object.insert(key(PelDoodleContentKey), content);
        break;
    }
    default:
        if (!a.userDefined().isEmpty())
            object.insert(key(PelDoodleContentKey), a.userDefined());
        break;
    }
    return withPage(objToJson(object), a.pageNumber());
}

DoodleActionPtr DoodleTranslate::doodleActionFromString(const QString &text)
{
    if (text.isEmpty())
        return nullptr;
    const QJsonValue parsed = parseJson(text.toUtf8());
    if (!parsed.isObject())
        return nullptr;
    const QJsonObject object = parsed.toObject();
    // Handlers take the type from the parsed object, never from the action
    // being built, so that the member order does not matter.
    const qint64 type = int64Value(object.value(key(PelDoodleActionTypeKey)));

    auto action = std::make_shared<DoodleAction>();
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString name = it.key();
        const QJsonValue value = it.value();
        if (name == key(PelDoodleActionTypeKey)) {
            action->setActionType(type);
        } else if (name == key(PelDoodleUserUriKey)) {
            action->setUserId(stringValue(value));
        } else if (name == key(PelDoodlePageIdKey)) {
            action->setPageNumber(pageValue(value, text));
        } else if (name == key(PelDoodleSeqNoKey)) {
            action->setSeqNo(std::min(unsignedValue<quint64>(value), kLargestStamp));
        } else if (name == key(PelDoodleBrushKey)) {
            readBrush(*action, value);
        } else if (name == key(PelDoodlePositionKey)) {
            if (type == DoodleActionTypeStroke || type == DoodleActionTypeEraser)
                fillPoints(*action, object);
        } else if (name == key(PelDoodleContentKey)) {
            switch (type) {
            case DoodleActionTypeStroke:
            case DoodleActionTypeEraser:
                fillPoints(*action, object);
                break;
            case DoodleActionTypeSticker:
                readContent(*action, value, Detail::Sticker);
                break;
            case DoodleActionTypeText:
                readContent(*action, value, Detail::Text);
                break;
            case DoodleActionTypeEllipse:
            case DoodleActionTypeRectangle:
                readContent(*action, value, Detail::Shape);
                break;
            case DoodleActionTypeArrow:
                readContent(*action, value, Detail::Arrow);
                break;
            default:
                action->setUserDefined(stringValue(value));
                break;
            }
        }
    }
    return action;
}

QString DoodleTranslate::objToJson(const QJsonValue &value)
{
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        if (allFinite(object))
            return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    } else if (value.isArray()) {
        const QJsonArray array = value.toArray();
        if (allFinite(array))
            return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
    }
    return emptyText();
}

QJsonValue DoodleTranslate::jsonToObj(const QJsonValue &value)
{
    if (!value.isString())
        return value;
    return parseJson(value.toString().toUtf8());
}

DoodleColor UIColorFromHexadecimalColor(quint32 value)
{
    auto component = [](quint32 byte) { return float(double(byte) / 255.0); };
    return DoodleColor::fromRgbF(component((value >> 16) & 0xFF), component((value >> 8) & 0xFF),
                                 component(value & 0xFF), component(value >> 24));
}

quint32 HexadecimalColorFromUIColor(const DoodleColor &color)
{
    if (!color.isValid())
        return 0;
    // Truncation toward zero is the wire rule (0.5 gives 127). Extended-range
    // colours and NaN are clamped to 0..255 before the conversion.
    auto byte = [](float component) -> quint32 {
        const double product = double(component) * 255.0;
        if (!(product > 0.0))
            return 0;
        if (product >= 255.0)
            return 255;
        return quint32(product);
    };
    return (((byte(color.alphaF()) << 8 | byte(color.redF())) << 8) | byte(color.greenF())) << 8 |
           byte(color.blueF());
}
