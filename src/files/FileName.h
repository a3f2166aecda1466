#pragma once

#include <QString>

#include <string>

/// The one place where the bytes of a file name become a QString.
class FileName
{
public:
    /// Decodes UTF-8. A byte order mark in front is part of the name like any
    /// other character; each byte that is not UTF-8 becomes a replacement character.
    static QString fromUtf8(const std::string& bytes);
};
