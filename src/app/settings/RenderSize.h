#pragma once

#include "app/settings/LogicalDpi.h"

#include <QSize>

/// What a renderer is asked to produce for one page.
struct RenderSize
{
    QSize size;     ///< Width and height in pixels.
    LogicalDpi dpi; ///< The resolution that the pixels stand for.
};
