// doodle render: replays a recorded session on a board and writes the picture.
#include "DoodleCommands.h"
#include "DoodleLines.h"

#include <doodle/Doodle.h>

#include <QCommandLineParser>
#include <QFileInfo>
#include <QPainter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextStream>

#include <cmath>
#include <optional>

namespace {

// What `-o` writes, told by the name's extension.
enum class PictureFormat
{
    Png,
    Jpeg,
    Svg,
    Pdf,
};

struct RenderOptions
{
    QString input;
    QString output;
    PictureFormat format = PictureFormat::Png;
    DoodleBoardOptions board{QSize(390, 844)};
    QColor background{Qt::white};
    QString watermark;
};

std::optional<PictureFormat> formatOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("png"))
        return PictureFormat::Png;
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg"))
        return PictureFormat::Jpeg;
    if (suffix == QLatin1String("svg"))
        return PictureFormat::Svg;
    if (suffix == QLatin1String("pdf"))
        return PictureFormat::Pdf;
    return std::nullopt;
}

bool parseSize(const QString &text, QSize *size)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    *size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    return size->width() > 0 && size->height() > 0;
}

// The picture of `board` would pass the tool's limits: why, or a null string.
QString pictureTooLarge(const DoodleBoardOptions &board)
{
    const double width = std::ceil(board.size.width() * board.scale);
    const double height = std::ceil(board.size.height() * board.scale);
    if (width <= kMaxPictureSide && height <= kMaxPictureSide &&
        width * height <= double(kMaxPicturePixels))
        return QString();
    return DoodleTool::tr("--size %1x%2 at --scale %3 makes a picture of %4x%5 pixels, over the "
                          "limit of %6 pixels a side and %7 pixels in all")
        .arg(board.size.width())
        .arg(board.size.height())
        .arg(board.scale)
        .arg(width)
        .arg(height)
        .arg(kMaxPictureSide)
        .arg(kMaxPicturePixels);
}

} // namespace

void addBoardOptions(QCommandLineParser &parser)
{
    parser.addOption({"size", DoodleTool::tr("board size in points"), "WxH"});
    parser.addOption({"scale", DoodleTool::tr("pixels per point (0.25 to 8)"), "S"});
}

QString readBoardOptions(const QCommandLineParser &parser, DoodleBoardOptions *board)
{
    if (parser.isSet("size") && !parseSize(parser.value("size"), &board->size))
        return DoodleTool::tr("--size takes WxH in points, such as 390x844, not '%1'")
            .arg(parser.value("size"));
    bool ok = true;
    if (parser.isSet("scale"))
        board->scale = parser.value("scale").toDouble(&ok);
    if (!ok || !(board->scale >= 0.25 && board->scale <= 8))
        return DoodleTool::tr("--scale takes a number from 0.25 to 8, not '%1'")
            .arg(parser.value("scale"));
    return pictureTooLarge(*board);
}

namespace {

QString helpText(const QCommandLineParser &parser)
{
    return DoodleTool::tr(
               "Usage: doodle render FILE -o OUT [--size WxH] [--scale S] [--background COLOUR]\n"
               "       [--watermark TEXT]\n"
               "Replays the session in FILE (one action text a line, - for standard input) on "
               "a board and writes its picture.\n"
               "OUT ends in .png, .jpg (or .jpeg), .svg or .pdf, which chooses the format; a "
               "JPEG has no transparency and shows white where the board is transparent; an "
               "SVG or a PDF holds the drawing as vectors (erasers as masks or clips).\n"
               "The picture is at most %1 pixels a side and %2 pixels in all.\n"
               "COLOUR is #RRGGBB, #AARRGGBB or a colour name such as white or transparent "
               "(default white).\n"
               "Exit status: 0 written; 1 written from the good lines, some lines reported as "
               "FILE:LINE: reason; 2 nothing written (bad arguments, unreadable session, picture "
               "not written).\n\n")
               .arg(kMaxPictureSide)
               .arg(kMaxPicturePixels) +
           parser.helpText().section(QLatin1Char('\n'), 2);
}

QString readOutput(const QCommandLineParser &parser, RenderOptions *options)
{
    if (parser.positionalArguments().isEmpty())
        return DoodleTool::tr("missing the session to replay (FILE, or - for standard input)");
    if (parser.positionalArguments().size() > 1)
        return DoodleTool::tr("one session at a time, not %1")
            .arg(parser.positionalArguments().join(QLatin1Char(' ')));
    if (!parser.isSet("o"))
        return DoodleTool::tr("missing -o OUT, the picture to write (.png, .jpg, .svg or .pdf)");
    options->input = parser.positionalArguments().first();
    options->output = parser.value("o");
    const auto format = formatOf(options->output);
    if (!format)
        return DoodleTool::tr("-o %1: the name must end in .png, .jpg, .jpeg, .svg or .pdf")
            .arg(options->output);
    options->format = *format;
    return QString();
}

// Fills `options` from the arguments; an error message when they do not fit.
// `help` is set when the arguments ask for the help text.
QString parseOptions(const QStringList &arguments, RenderOptions *options, QString *help)
{
    QCommandLineParser parser;
    parser.addPositionalArgument("file", DoodleTool::tr("session, - for standard input"));
    const QCommandLineOption helpOption({"h", "help"}, DoodleTool::tr("show this help"));
    parser.addOptions({helpOption,
                       {{"o", "output"}, DoodleTool::tr("picture to write"), "OUT"},
                       {"background", DoodleTool::tr("board colour"), "COLOUR"},
                       {"watermark", DoodleTool::tr("text tiled over the picture"), "TEXT"}});
    addBoardOptions(parser);
    if (!parser.parse(QStringList(QStringLiteral("doodle render")) + arguments))
        return parser.errorText();
    if (parser.isSet(helpOption)) {
        *help = helpText(parser);
        return QString();
    }
    QString problem = readOutput(parser, options);
    if (problem.isNull())
        problem = readBoardOptions(parser, &options->board);
    if (!problem.isNull())
        return problem;
    const QString colour = parser.value("background");
    if (parser.isSet("background") && !QColor::isValidColorName(colour))
        return DoodleTool::tr("--background takes #RRGGBB, #AARRGGBB or a colour name such as "
                              "white or transparent, not '%1'")
            .arg(colour);
    if (parser.isSet("background"))
        options->background = QColor::fromString(colour);
    options->watermark = parser.value("watermark");
    return QString();
}

// Replays every good line as received from its own author and reports the
// others; returns the number of lines reported.
int replay(DoodleSessionReader &session, DoodleLayout &board)
{
    QTextStream err(stderr);
    int failures = 0;
    DoodleSessionReader::Line line;
    while (session.next(line)) {
        if (line.problem.isNull()) {
            board.addAction(line.action);
        } else {
            err << "doodle render: " << session.report(line) << Qt::endl;
            ++failures;
        }
    }
    return failures;
}

// A JPEG holds no transparency: the picture over white.
QImage opaque(const QImage &picture)
{
    QImage result(picture.size(), QImage::Format_RGB32);
    result.setDevicePixelRatio(picture.devicePixelRatio());
    result.fill(Qt::white);
    QPainter(&result).drawImage(0, 0, picture);
    return result;
}

// The board with its watermark, at the scale it is drawn at.
QImage picture(DoodleLayout &board)
{
    const QImage image = board.doodleView()->convertViewToImage();
    return board.waterString().isEmpty()
               ? image
               : DoodleLayout::addWatermarketWithOriginImage(image, board.waterString());
}

bool writePicture(DoodleLayout &board, const RenderOptions &options)
{
    QSaveFile file(options.output);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    bool written = false;
    switch (options.format) {
    case PictureFormat::Png:
        written = picture(board).save(&file, "PNG");
        break;
    case PictureFormat::Jpeg:
        written = opaque(picture(board)).save(&file, "JPEG", 92);
        break;
    case PictureFormat::Svg:
        written = file.write(board.exportSvg()) > 0;
        break;
    case PictureFormat::Pdf:
        written = file.write(board.exportPdf()) > 0;
        break;
    }
    return written && file.commit();
}

} // namespace

int doodleRender(const QStringList &arguments)
{
    QTextStream err(stderr);
    RenderOptions options;
    QString help;
    const QString problem = parseOptions(arguments, &options, &help);
    if (!help.isNull()) {
        QTextStream(stdout) << help;
        return 0;
    }
    if (!problem.isNull()) {
        err << "doodle render: " << problem << '\n';
        return 2;
    }
    DoodleSessionReader session(options.input);
    if (!session.open()) {
        err << "doodle render: "
            << DoodleTool::tr("cannot read %1 (%2)").arg(options.input, session.errorString())
            << '\n';
        return 2;
    }
    DoodleScreen::setScaleOverride(options.board.scale);
    DoodleLayout board(QStringLiteral("doodle-render"));
    board.resetDoodleViewFrame(QRect(QPoint(0, 0), options.board.size));
    board.setBackgroundColor(options.background);
    board.setWaterString(options.watermark);
    const int failures = replay(session, board);
    if (!writePicture(board, options)) {
        err << "doodle render: " << DoodleTool::tr("cannot write %1").arg(options.output) << '\n';
        return 2;
    }
    return failures == 0 ? 0 : 1;
}
