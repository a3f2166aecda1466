#pragma once

#include "app/settings/FaxConfiguration.h"
#include "app/settings/FaxSizeDetails.h"
#include "fax/FaxPageError.h"
#include "formats/FileFormat.h"

#include <string>

class FaxFormatWriter;
class ImageRenderer;
class QIODevice;

/// Turns input files into fax pages: renders every page at a size that fits the
/// printable area, rotates it, places it and reduces it to black and white.
///
/// On failure the result is false and lastError() tells why; pages already
/// written stay written. File names are UTF-8.
class FaxOutputWriter
{
public:
    /// `formatWriter` is not owned, must be open and must outlive this writer.
    FaxOutputWriter(FaxFormatWriter* formatWriter, const FaxConfiguration& configuration);

    /// Appends all pages of a PDF, TIFF, JPEG or PNG file.
    bool writePage(const std::string& fileName);

    /// Appends an HTML file on the whole page: margins and rotation do not
    /// apply to it.
    bool writeCoverPage(const std::string& fileName);

    /// Appends all pages of an open device of a known format. With
    /// `fitToPaper`, pages smaller than the printable area grow to fill it;
    /// `rotation` is the clockwise angle in degrees.
    bool writePage(FileFormat format, QIODevice* device, bool fitToPaper, unsigned short rotation,
                   const FaxSizeDetails& details);

    /// The last failure; a success leaves it as it was.
    const FaxPageError& lastError() const { return m_lastError; }

private:
    struct PageLayout;

    bool writeRenderedPage(const ImageRenderer& renderer, unsigned long index,
                           const PageLayout& layout);
    bool fail(FaxPageErrorCode code, const std::string& message);

    FaxFormatWriter* m_formatWriter;
    FaxConfiguration m_configuration;
    FaxSizeDetails m_sizeDetails;
    FaxPageError m_lastError;
};
