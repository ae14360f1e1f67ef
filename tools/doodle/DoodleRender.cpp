// doodle render: replays a recorded session on a board and writes the picture.
#include "DoodleCommands.h"

#include <doodle/Doodle.h>

#include <QCommandLineParser>
#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

namespace {

struct RenderOptions
{
    QString input;
    QString output;
    DoodleBoardOptions board{QSize(390, 844)};
    QColor background{Qt::white};
};

bool parseSize(const QString &text, QSize *size)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    *size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    return size->width() > 0 && size->height() > 0;
}

bool parseColor(const QString &text, QColor *color)
{
    static const QRegularExpression pattern(QStringLiteral("^#([0-9A-Fa-f]{8})$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    *color = UIColorFromHexadecimalColor(match.captured(1).toUInt(nullptr, 16));
    return true;
}

} // namespace

void addBoardOptions(QCommandLineParser &parser)
{
    parser.addOption({"size", "board size in points", "WxH"});
    parser.addOption({"scale", "pixels per point", "S"});
}

QString readBoardOptions(const QCommandLineParser &parser, DoodleBoardOptions *board)
{
    if (parser.isSet("size") && !parseSize(parser.value("size"), &board->size))
        return QStringLiteral("--size takes WxH, such as 390x844");
    bool ok = true;
    if (parser.isSet("scale"))
        board->scale = parser.value("scale").toDouble(&ok);
    if (!ok || !(board->scale >= 0.25 && board->scale <= 8))
        return QStringLiteral("--scale takes a number from 0.25 to 8");
    return QString();
}

namespace {

// Fills `options` from the arguments; an error message when they do not fit.
QString parseOptions(const QStringList &arguments, RenderOptions *options)
{
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("session, - for stdin"));
    const QCommandLineOption out({"o", "output"}, "picture to write", "OUT.png");
    const QCommandLineOption background("background", "board colour", "#AARRGGBB");
    parser.addOptions({out, background});
    addBoardOptions(parser);
    if (!parser.parse(QStringList(QStringLiteral("doodle render")) + arguments))
        return parser.errorText();
    if (parser.positionalArguments().size() != 1 || !parser.isSet(out))
        return QStringLiteral("usage: doodle render FILE -o OUT.png [--size WxH] [--scale S] "
                              "[--background #AARRGGBB]");
    options->input = parser.positionalArguments().first();
    options->output = parser.value(out);
    const QString problem = readBoardOptions(parser, &options->board);
    if (!problem.isNull())
        return problem;
    if (parser.isSet(background) && !parseColor(parser.value(background), &options->background))
        return QStringLiteral("--background takes #AARRGGBB");
    return QString();
}

// Replays every line as received from its own author; returns the number of
// lines that did not decode.
int replay(QFile &input, DoodleLayout &board)
{
    QTextStream err(stderr);
    int failures = 0;
    for (int line = 1; !input.atEnd(); ++line) {
        const QString text = QString::fromUtf8(input.readLine()).trimmed();
        if (text.isEmpty())
            continue;
        if (const DoodleActionPtr action = board.stringToDoodleAction(text)) {
            board.addAction(action);
        } else {
            err << line << ": cannot decode\n";
            ++failures;
        }
    }
    return failures;
}

} // namespace

int doodleRender(const QStringList &arguments)
{
    QTextStream err(stderr);
    RenderOptions options;
    const QString problem = parseOptions(arguments, &options);
    if (!problem.isNull()) {
        err << "doodle render: " << problem << '\n';
        return 2;
    }
    QFile input(options.input);
    const bool opened = options.input == QLatin1String("-") ? input.open(stdin, QIODevice::ReadOnly)
                                                            : input.open(QIODevice::ReadOnly);
    if (!opened) {
        err << "doodle render: cannot read " << options.input << '\n';
        return 2;
    }
    DoodleScreen::setScaleOverride(options.board.scale);
    DoodleLayout board(QStringLiteral("doodle-render"));
    board.resetDoodleViewFrame(QRect(QPoint(0, 0), options.board.size));
    board.setBackgroundColor(options.background);
    const int failures = replay(input, board);
    if (!board.doodleView()->convertViewToImage().save(options.output, "PNG")) {
        err << "doodle render: cannot write " << options.output << '\n';
        return 2;
    }
    return failures == 0 ? 0 : 1;
}
