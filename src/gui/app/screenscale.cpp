#include "screenscale.h"

#include <QGuiApplication>
#include <QScreen>

namespace {
int forcedDpi = 0;
}

int screenDpi()
{
    if (forcedDpi > 0)
        return forcedDpi;
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? qRound(screen->logicalDotsPerInchX()) : 96;
}

void setScreenDpi(int dpi)
{
    forcedDpi = dpi;
}

int scaledPixels(int value)
{
    return value * screenDpi() / 96;
}
