#pragma once

#include <cstdint>
#include <string>

/// What can go wrong with a page; the message of each is beside it.
enum class FaxPageErrorCode : std::int32_t
{
    None = 0,              ///< empty
    FileNotFound = 1,      ///< "file not found"
    UnsupportedFormat = 2, ///< "unsupported {} format"
    InvalidFormat = 3,     ///< "invalid {} format"
    InvalidRenderSize = 4, ///< "invalid render size"
    InvalidData = 5,       ///< "invalid data"
    WriteFailed = 6,       ///< "failed to write"
};

/// A failure to write a page.
struct FaxPageError
{
    FaxPageErrorCode code = FaxPageErrorCode::None;
    std::string message; ///< For the user; UTF-8.
};
