#include "render/decode/PluginScaling.h"

bool PluginScaling::isExact(const QImageReader& /*reader*/)
{
    return true;
}
