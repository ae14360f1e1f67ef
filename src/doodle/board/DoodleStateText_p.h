#pragma once

// The text a board's state travels as: its JSON deflated with zlib and
// written in base64, a fifth or less of the plain JSON; inflating it is
// bounded, so a small text that would inflate without end is refused before
// it takes the memory.
#include <QByteArray>
#include <QString>

#include <optional>

namespace DoodleStateText {

// {"doodle_state":2,"deflated":BASE64} around the deflated JSON.
QString pack(const QByteArray &json);
// The JSON inside a packed state; a plain one (version 1) as it is. None,
// with `problem` set, for a packed state that does not inflate or would pass
// `limit` bytes.
std::optional<QByteArray> unpack(const QString &text, qsizetype limit, QString *problem);

} // namespace DoodleStateText
