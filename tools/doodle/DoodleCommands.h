#pragma once

#include <QCoreApplication>
#include <QSize>
#include <QStringList>

class QCommandLineParser;

// One function per sub-command of the `doodle` tool. Each receives the
// arguments after its own name and returns the process exit code.
// To add a sub-command: declare it here, implement it in its own file and add
// one row to the table in main.cpp.

// doodle inspect FILE|-: one readable line per action text.
int doodleInspect(const QStringList &arguments);
// doodle render FILE -o OUT.png|.jpg|.svg|.pdf [--size WxH] [--scale S] [--background COLOUR]:
// replays a session on a board of that size and writes its picture. Needs a
// QApplication (any platform, offscreen included).
int doodleRender(const QStringList &arguments);
// doodle join --broker HOST:PORT[,HOST:PORT...] --call NAME --user ID [--size WxH] [--scale S]
// [--username NAME] [--password-file FILE] [--cafile FILE [--cert FILE --key FILE]]
// [--play FILE [--interval MS]] [--snapshot OUT.png --quit-after-idle SECONDS] [--quick]:
// takes part in a call through an MQTT broker (or the next of several), in a
// window (a Qt Quick one with --quick) or headless.
int doodleJoin(const QStringList &arguments);

// Set on the application when a command that opens a window runs without a display.
constexpr const char *kNoDisplayProperty = "doodleNoDisplay";

// The texts the tool shows people, in one translation context.
struct DoodleTool
{
    Q_DECLARE_TR_FUNCTIONS(doodle)
};

// The board a command draws on, as `--size WxH` (points) and `--scale S`
// (pixels per point) give it; every command reads them alike.
struct DoodleBoardOptions
{
    QSize size;
    double scale = 2;
};
// The largest picture a command makes: a side of at most this many pixels
// and at most kMaxPicturePixels in all (256 MiB of 32-bit pixels), so that a
// mistyped size is refused at once instead of exhausting memory.
constexpr int kMaxPictureSide = 16384;
constexpr qint64 kMaxPicturePixels = qint64(1) << 26;
void addBoardOptions(QCommandLineParser &parser);
// Reads the two options over the defaults in `board`; an error text when they
// do not fit or the picture they make would pass the limits above.
QString readBoardOptions(const QCommandLineParser &parser, DoodleBoardOptions *board);
