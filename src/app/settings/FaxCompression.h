#pragma once

#include <cstdint>

/// The coding of the fax pages: ITU-T T.4 (group 3) or T.6 (group 4).
enum class FaxCompression : std::int32_t
{
    G3 = 0,
    G4 = 1,
};
