#include "DoodleJsonText_p.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtNumeric>

namespace {

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

// Walks JSON text that is known to parse; every step stops at the end of the text.
class Scanner
{
public:
    explicit Scanner(QStringView text) : m_text(text) {}

    bool take(char16_t c)
    {
        skipSpace();
        if (m_pos >= m_text.size() || m_text.at(m_pos) != c)
            return false;
        ++m_pos;
        return true;
    }

    // A string with its quotes, as written; empty when there is none here.
    QStringView string()
    {
        skipSpace();
        const qsizetype start = m_pos;
        if (m_pos >= m_text.size() || m_text.at(m_pos) != u'"')
            return {};
        for (++m_pos; m_pos < m_text.size(); ++m_pos) {
            if (m_text.at(m_pos) == u'\\')
                ++m_pos;
            else if (m_text.at(m_pos) == u'"')
                return m_text.mid(start, ++m_pos - start);
        }
        return {};
    }

    // One value of any kind, as written.
    QStringView value()
    {
        skipSpace();
        const qsizetype start = m_pos;
        if (m_pos >= m_text.size())
            return {};
        const QChar c = m_text.at(m_pos);
        if (c == u'"')
            string();
        else if (c == u'{' || c == u'[')
            skipNested();
        else
            skipScalar();
        return m_text.mid(start, m_pos - start);
    }

private:
    void skipSpace()
    {
        while (m_pos < m_text.size() && isSpace(m_text.at(m_pos)))
            ++m_pos;
    }

    // Nesting is counted, not recursed into, so deep text cannot exhaust the stack.
    void skipNested()
    {
        int depth = 0;
        while (m_pos < m_text.size()) {
            const QChar c = m_text.at(m_pos);
            if (c == u'"') {
                string();
                continue;
            }
            ++m_pos;
            if (c == u'{' || c == u'[')
                ++depth;
            else if ((c == u'}' || c == u']') && --depth == 0)
                return;
        }
    }

    void skipScalar()
    {
        while (m_pos < m_text.size()) {
            const QChar c = m_text.at(m_pos);
            if (c == u',' || c == u'}' || c == u']' || isSpace(c))
                return;
            ++m_pos;
        }
    }

    QStringView m_text;
    qsizetype m_pos = 0;
};

// Compares a member name as written (quotes and escapes included) with `key`.
bool sameName(QStringView written, QLatin1String key)
{
    const QStringView inner = written.mid(1, written.size() - 2);
    if (!inner.contains(u'\\'))
        return inner == key;
    const QByteArray array = '[' + written.toUtf8() + ']';
    return QJsonDocument::fromJson(array).array().at(0).toString() == key;
}

std::optional<quint64> unsignedDigits(QStringView digits)
{
    if (digits.isEmpty())
        return std::nullopt;
    quint64 result = 0;
    for (const QChar c : digits) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
        if (qMulOverflow(result, quint64(10), &result) ||
            qAddOverflow(result, quint64(c.unicode() - u'0'), &result))
            return std::nullopt;
    }
    return result;
}

} // namespace

QString DoodleJsonText::withMemberValue(const QString &text, QLatin1String key,
                                        const QString &value)
{
    const QString written = QStringLiteral("\"%1\":0").arg(key);
    for (qsizetype at = text.indexOf(written); at >= 0; at = text.indexOf(written, at + 1)) {
        // A member name follows "{" or ","; inside a string a quote follows "\".
        const qsizetype end = at + written.size();
        const bool member = at > 0 && (text.at(at - 1) == u'{' || text.at(at - 1) == u',');
        if (member && end < text.size() && (text.at(end) == u',' || text.at(end) == u'}'))
            return QString(text).replace(end - 1, 1, value);
    }
    return text;
}

std::optional<quint64> DoodleJsonText::unsignedMember(QStringView text, QLatin1String key)
{
    // QJsonDocument skips a leading byte order mark as well.
    if (text.startsWith(QChar(0xFEFF)))
        text = text.mid(1);
    Scanner scanner(text);
    if (!scanner.take(u'{') || scanner.take(u'}'))
        return std::nullopt;
    QStringView found;
    do {
        const QStringView name = scanner.string();
        if (name.isEmpty() || !scanner.take(u':'))
            return std::nullopt;
        const QStringView value = scanner.value();
        if (sameName(name, key))
            found = value;
    } while (scanner.take(u','));
    return unsignedDigits(found);
}
