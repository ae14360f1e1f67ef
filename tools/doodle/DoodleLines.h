#pragma once

#include <doodle/model/DoodleAction.h>

#include <QFile>
#include <QString>

// Reads a recorded session, one action text per line, and says of every line
// that a board would not take as written what is wrong with it. Shared by the
// sub-commands so that they report a bad line alike: `FILE:LINE: reason`.
class DoodleSessionReader
{
public:
    // One non-empty line of the session.
    struct Line
    {
        qint64 number = 0;
        QByteArray bytes;       // as read, without the line break
        QString text;           // the line as text; empty when it is not UTF-8
        DoodleActionPtr action; // nullptr when `problem` is set
        QString problem;        // why the line is not taken; null when it is fine
    };

    // `path` "-" reads standard input.
    explicit DoodleSessionReader(const QString &path);
    bool open();
    QString errorString() const { return m_file.errorString(); }
    // The next non-empty line; false at the end.
    bool next(Line &line);
    // "FILE:LINE: problem", the form every sub-command reports a bad line in.
    QString report(const Line &line) const;

    // Why a board would not take `bytes` as written (not UTF-8, not JSON, no
    // type, a member of the wrong type, over a receive limit), or a null
    // string and the decoded action in `action`.
    static QString check(const QByteArray &bytes, QString *text, DoodleActionPtr *action);

private:
    QString m_path;
    QFile m_file;
    qint64 m_number = 0;
};
