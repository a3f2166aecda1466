#pragma once

#include <cstdint>

/// The format of an input file.
enum class FileFormat : std::int32_t
{
    Unknown = 0,
    Pdf = 1,
    Tiff = 2,
    Jpeg = 3,
    Png = 4,
    Html = 5,
};
