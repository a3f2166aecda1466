#pragma once

#include <QRgb>

/// The two entries of a bilevel picture's colour table.
inline constexpr QRgb opaqueWhite = 0xFFFFFFFF;
inline constexpr QRgb opaqueBlack = 0xFF000000;
