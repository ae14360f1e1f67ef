#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringView>

#include <optional>

// Unsigned 64-bit members in compact JSON text. QJsonDocument keeps numbers
// as qint64 or double, so a member beyond 2^63 - 1 would be rounded: its
// digits are written into the text, and read back from it, here.
class DoodleJsonText
{
public:
    // `text` with the value of its member `key`, written there as 0, replaced
    // by `value`. Only a member of an object in the text matches, never text
    // inside a string. The text is returned unchanged when there is none.
    static QString withMemberValue(const QString &text, QLatin1String key, const QString &value);
    // The last top-level member `key` of a JSON object text (QJsonDocument
    // keeps the last of repeated members too), when its value is a plain
    // unsigned integer that fits 64 bits.
    static std::optional<quint64> unsignedMember(QStringView text, QLatin1String key);
};
