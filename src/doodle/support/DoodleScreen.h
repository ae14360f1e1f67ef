#pragma once

#include <doodle/DoodleExport.h>

// The scale of the main screen, as the surfaces and the size tables use it.
// A host that renders without a screen (an archiving server, a test) sets the
// scale it wants; 0 returns to the primary screen's own ratio.
class DOODLE_EXPORT DoodleScreen
{
public:
    static double scale();
    static void setScaleOverride(double scale);
};
