#include "app/settings/FaxResolution.h"

namespace {

// ITU-T T.4: a scan line of 215 mm has 1728 picture elements, and twice as many
// at the doubled horizontal resolution.
constexpr int normalLineWidth = 1728;
constexpr int doubledLineWidth = 3456;

} // namespace

LogicalDpi logicalDpiFor(FaxResolution resolution)
{
    switch (resolution) {
    case FaxResolution::Standard:
        return {204, 98};
    case FaxResolution::Fine:
        return {204, 196};
    case FaxResolution::Superfine:
        return {204, 391};
    case FaxResolution::Ultrafine:
        return {408, 391};
    }
    return {0, 0};
}

int pageWidthPixels(FaxResolution resolution)
{
    switch (resolution) {
    case FaxResolution::Standard:
    case FaxResolution::Fine:
    case FaxResolution::Superfine:
        return normalLineWidth;
    case FaxResolution::Ultrafine:
        return doubledLineWidth;
    }
    return -1;
}
