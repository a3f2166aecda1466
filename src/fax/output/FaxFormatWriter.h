#pragma once

#include "app/settings/FaxCompression.h"

#include <string>

class QImage;
struct LogicalDpi;

/// Writes finished fax pages to a file.
class FaxFormatWriter
{
public:
    FaxFormatWriter() = default;
    FaxFormatWriter(const FaxFormatWriter&) = delete;
    FaxFormatWriter& operator=(const FaxFormatWriter&) = delete;
    virtual ~FaxFormatWriter() = default;

    virtual bool isOpen() const = 0;

    /// Creates the file, or empties it; a file already open is closed first.
    virtual bool open(const std::string& fileName) = 0;

    /// Completes the file.
    virtual void close() = 0;

    /// Appends a page; `dpi` is in dots per inch.
    virtual bool write(const QImage& image, const LogicalDpi& dpi, FaxCompression compression) = 0;
};
