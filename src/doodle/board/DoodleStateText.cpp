#include "DoodleStateText_p.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <zlib.h>

#include <algorithm>

namespace {

const QString kVersionKey = QStringLiteral("doodle_state");
const QString kDeflatedKey = QStringLiteral("deflated");

// At most `limit` bytes of the zlib stream's output; none past that or for
// data that is not one whole zlib stream.
std::optional<QByteArray> inflateBounded(const QByteArray &data, qsizetype limit)
{
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return std::nullopt;
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(data.constData()));
    stream.avail_in = uInt(data.size());
    QByteArray out(std::min<qsizetype>(limit + 1, std::max<qsizetype>(4 * data.size(), 4096)),
                   Qt::Uninitialized);
    int result = Z_OK;
    while (result == Z_OK) {
        const qsizetype written = qsizetype(stream.total_out);
        if (written == out.size()) {
            if (out.size() > limit)
                break; // one byte past the bound: refused
            out.resize(std::min<qsizetype>(2 * out.size(), limit + 1));
        }
        stream.next_out = reinterpret_cast<Bytef *>(out.data()) + written;
        stream.avail_out = uInt(out.size() - written);
        result = inflate(&stream, Z_NO_FLUSH);
    }
    const qsizetype total = qsizetype(stream.total_out);
    inflateEnd(&stream);
    if (result != Z_STREAM_END || total > limit)
        return std::nullopt;
    out.truncate(total);
    return out;
}

} // namespace

QString DoodleStateText::pack(const QByteArray &json)
{
    uLongf size = compressBound(uLong(json.size()));
    QByteArray deflated(qsizetype(size), Qt::Uninitialized);
    if (compress2(reinterpret_cast<Bytef *>(deflated.data()), &size,
                  reinterpret_cast<const Bytef *>(json.constData()), uLong(json.size()),
                  Z_DEFAULT_COMPRESSION) != Z_OK)
        return QString::fromUtf8(json); // the plain form reads everywhere
    deflated.truncate(qsizetype(size));
    const QJsonObject packed{{kVersionKey, 2},
                             {kDeflatedKey, QString::fromLatin1(deflated.toBase64())}};
    return QString::fromUtf8(QJsonDocument(packed).toJson(QJsonDocument::Compact));
}

std::optional<QByteArray> DoodleStateText::unpack(const QString &text, qsizetype limit,
                                                  QString *problem)
{
    const QByteArray bytes = text.toUtf8();
    const QJsonObject outer = QJsonDocument::fromJson(bytes).object();
    if (outer.value(kVersionKey).toInt() != 2 || !outer.value(kDeflatedKey).isString())
        return bytes; // a plain state, or none: the caller tells
    const QByteArray deflated =
        QByteArray::fromBase64(outer.value(kDeflatedKey).toString().toLatin1());
    std::optional<QByteArray> json = inflateBounded(deflated, limit);
    if (!json)
        *problem =
            QStringLiteral("a packed board state does not inflate within %1 bytes").arg(limit);
    return json;
}
