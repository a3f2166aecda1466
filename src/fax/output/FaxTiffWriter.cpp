#include "fax/output/FaxTiffWriter.h"

#include "app/settings/LogicalDpi.h"
#include "bilevel/BilevelColors.h"

#include <QImage>

#include <tiffio.h>

#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <unistd.h>

namespace {

bool setTags(TIFF* tiff, const QImage& image, const LogicalDpi& dpi, FaxCompression compression)
{
    std::uint16_t fillOrder = 0;
    if (TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &fillOrder) != 1) {
        return false;
    }
    const int scheme =
        compression == FaxCompression::G4 ? COMPRESSION_CCITTFAX4 : COMPRESSION_CCITTFAX3;
    const bool isWhiteZero = image.colorCount() > 0 && image.color(0) == opaqueWhite;
    const int photometric = isWhiteZero ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
    return TIFFSetField(tiff, TIFFTAG_COMPRESSION, scheme) == 1 &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1) == 1 &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == 1 &&
           // Written back so that every page carries the tag explicitly.
           TIFFSetField(tiff, TIFFTAG_FILLORDER, fillOrder) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric) == 1 &&
           TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) == 1 &&
           TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width()) == 1 &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height()) == 1 &&
           TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) == 1 &&
           TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(dpi.horizontal)) == 1 &&
           TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(dpi.vertical)) == 1;
}

bool writeRows(TIFF* tiff, const QImage& image)
{
    for (int row = 0; row < image.height(); ++row) {
        // libtiff only reads the row, although its interface does not say so.
        auto* bytes = const_cast<uchar*>(image.constScanLine(row));
        if (TIFFWriteScanline(tiff, bytes, static_cast<std::uint32_t>(row), 0) != 1) {
            return false;
        }
    }
    return true;
}

} // namespace

void FaxTiffWriter::Cleanup::operator()(tiff* handle) const
{
    TIFFCleanup(handle);
}

FaxTiffWriter::FaxTiffWriter() = default;

FaxTiffWriter::FaxTiffWriter(const std::string& fileName)
{
    FaxTiffWriter::open(fileName);
}

FaxTiffWriter::~FaxTiffWriter()
{
    FaxTiffWriter::close();
}

bool FaxTiffWriter::isOpen() const
{
    return m_tiff != nullptr;
}

bool FaxTiffWriter::open(const std::string& fileName)
{
    close();
    m_isComplete = false;
    if (fileName.empty()) {
        return false;
    }
    m_tiff.reset(TIFFOpen(fileName.c_str(), "w"));
    if (!m_tiff) {
        return false;
    }
    // The file is none of the business of the programs that are run meanwhile.
    fcntl(fileDescriptor(), F_SETFD, FD_CLOEXEC);
    return true;
}

void FaxTiffWriter::close()
{
    if (!m_tiff) {
        return;
    }
    // TIFFClose() would do both steps, but drop the result of the second, which
    // is where some file systems report that data did not reach the disk.
    const int descriptor = fileDescriptor();
    m_tiff.reset();
    m_isComplete = ::close(descriptor) == 0 || errno == EINTR;
}

bool FaxTiffWriter::write(const QImage& image, const LogicalDpi& dpi, FaxCompression compression)
{
    if (image.isNull() || image.format() != QImage::Format_Mono || !m_tiff) {
        return false;
    }
    return setTags(m_tiff.get(), image, dpi, compression) && writeRows(m_tiff.get(), image) &&
           TIFFWriteDirectory(m_tiff.get()) == 1;
}

int FaxTiffWriter::fileDescriptor() const
{
    return m_tiff ? TIFFFileno(m_tiff.get()) : -1;
}
