#pragma once

#include <QLoggingCategory>
#include <QStringList>
#include <QtGlobal>

// Collects the lines written through the "doodle" logging category while it
// lives, so that tests can compare the exact texts.
class LogCapture
{
public:
    LogCapture()
    {
        s_lines.clear();
        QLoggingCategory::setFilterRules(QStringLiteral("doodle.info=true"));
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    QStringList lines() const { return s_lines; }
    void clear() { s_lines.clear(); }

private:
    static void handler(QtMsgType, const QMessageLogContext &context, const QString &message)
    {
        if (context.category && qstrcmp(context.category, "doodle") == 0)
            s_lines.append(message);
    }

    static inline QStringList s_lines;
    QtMessageHandler m_previous = nullptr;
};
