#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodleColor.h>
#include <doodle/model/DoodleKeys.h>

#include <QJsonValue>
#include <QString>

// The text form of an action: one line of compact JSON whose point list and
// content object travel as nested, string-escaped JSON texts.
class DOODLE_EXPORT DoodleTranslate
{
public:
    // Never fails; returns "" when the action cannot be written as JSON.
    static QString stringFromDoodleAction(const DoodleActionPtr &action);
    // nullptr for a missing or empty string and for text that is not a JSON object.
    static DoodleActionPtr doodleActionFromString(const QString &text);

    // Compact UTF-8 JSON text of an object or array; "" for anything else or
    // for a value holding a non-finite number.
    static QString objToJson(const QJsonValue &value);
    // A string is parsed as JSON (Undefined when it does not parse); any other
    // value is returned unchanged.
    static QJsonValue jsonToObj(const QJsonValue &value);
};

// 0xAARRGGBB to a colour; each component is narrowed to a 32-bit float.
DOODLE_EXPORT DoodleColor UIColorFromHexadecimalColor(quint32 value);
// A colour to 0xAARRGGBB; each float component times 255 is truncated, so 0.5
// gives 127. An invalid colour gives 0.
DOODLE_EXPORT quint32 HexadecimalColorFromUIColor(const DoodleColor &color);
