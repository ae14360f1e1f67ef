#pragma once

#include <QStringList>

// One function per sub-command of the `doodle` tool. Each receives the
// arguments after its own name and returns the process exit code.
// To add a sub-command: declare it here, implement it in its own file and add
// one row to the table in main.cpp.

// doodle inspect FILE|-: one readable line per action text.
int doodleInspect(const QStringList &arguments);
