#include "DoodleScreen.h"

#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace {
double g_scaleOverride = 0.0;
}

double DoodleScreen::scale()
{
    if (g_scaleOverride > 0.0)
        return g_scaleOverride;
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double ratio = screen ? screen->devicePixelRatio() : 1.0;
    return std::isfinite(ratio) && ratio > 0.0 ? ratio : 1.0;
}

void DoodleScreen::setScaleOverride(double scale)
{
    g_scaleOverride = std::isfinite(scale) && scale > 0.0 ? scale : 0.0;
}
