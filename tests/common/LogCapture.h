#pragma once

#include <QLoggingCategory>
#include <QStringList>
#include <QtGlobal>

// Collects the lines written through the "doodle" logging category while it
// lives, so that tests can compare the exact texts. It enables the category
// itself, whatever QT_LOGGING_RULES or an earlier filter say.
class LogCapture
{
public:
    LogCapture()
    {
        s_lines.clear();
        s_previousFilter = QLoggingCategory::installFilter(&LogCapture::filter);
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        QLoggingCategory::installFilter(s_previousFilter);
    }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    QStringList lines() const { return s_lines; }
    void clear() { s_lines.clear(); }

private:
    static bool isDoodle(const char *category)
    {
        return category && qstrcmp(category, "doodle") == 0;
    }
    static void filter(QLoggingCategory *category)
    {
        if (s_previousFilter)
            s_previousFilter(category);
        if (isDoodle(category->categoryName())) {
            for (QtMsgType type : {QtInfoMsg, QtWarningMsg, QtCriticalMsg})
                category->setEnabled(type, true);
        }
    }
    static void handler(QtMsgType, const QMessageLogContext &context, const QString &message)
    {
        if (isDoodle(context.category))
            s_lines.append(message);
    }

    static inline QStringList s_lines;
    static inline QLoggingCategory::CategoryFilter s_previousFilter = nullptr;
    QtMessageHandler m_previous = nullptr;
};
