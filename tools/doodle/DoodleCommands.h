#pragma once

#include <QStringList>

// One function per sub-command of the `doodle` tool. Each receives the
// arguments after its own name and returns the process exit code.
// To add a sub-command: declare it here, implement it in its own file and add
// one row to the table in main.cpp.

// doodle inspect FILE|-: one readable line per action text.
int doodleInspect(const QStringList &arguments);
// doodle render FILE -o OUT.png [--size WxH] [--scale S] [--background #AARRGGBB]:
// replays a session on a board of that size and writes its picture. Needs a
// QApplication (any platform, offscreen included).
int doodleRender(const QStringList &arguments);
