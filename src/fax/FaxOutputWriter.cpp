#include "fax/FaxOutputWriter.h"

#include "app/settings/RenderSize.h"
#include "fax/output/FaxFormatWriter.h"
#include "fax/page/FaxImageBuilder.h"
#include "files/FileName.h"
#include "formats/FileFormatDatabase.h"
#include "formats/FileFormatInfo.h"
#include "render/ImageComplexRenderer.h"

#include <QFile>
#include <QImage>

#include <fmt/format.h>

/// How every page of one input file is set on its fax page.
struct FaxOutputWriter::PageLayout
{
    PageLayout(const FaxSizeDetails& faxDetails, unsigned short angle, bool fit)
        : details(faxDetails),
          rotation(angle),
          fitToPaper(fit),
          workingSize(contentSize()),
          workingDpi(faxDetails.dpi)
    {
        // Pages are rendered as they lie and turned afterwards, so a quarter
        // turn exchanges the sides of the target, and its resolutions too.
        if (angle % 180 == 90) {
            workingSize.transpose();
            workingDpi = {faxDetails.dpi.vertical, faxDetails.dpi.horizontal};
        }
    }

    QSize contentSize() const { return details.contentRect.size(); }

    // The size to render a page of the natural size `natural` at, in pixels.
    QSize renderSize(const QSize& natural) const
    {
        if (natural.isEmpty()) {
            return workingSize;
        }
        const bool isLarger =
            natural.width() > workingSize.width() || natural.height() > workingSize.height();
        if (!isLarger && !fitToPaper) {
            return natural;
        }
        // Fitted in inches, because the pixels of a fax are not square.
        const QSizeF boxInches(static_cast<double>(workingSize.width()) / workingDpi.horizontal,
                               static_cast<double>(workingSize.height()) / workingDpi.vertical);
        const QSizeF fitted = QSizeF(natural).scaled(boxInches, Qt::KeepAspectRatio);
        return {qRound(fitted.width() * workingDpi.horizontal),
                qRound(fitted.height() * workingDpi.vertical)};
    }

    const FaxSizeDetails& details;
    unsigned short rotation;
    bool fitToPaper;
    QSize workingSize;     // the printable area as it is before the rotation
    LogicalDpi workingDpi; // and its dots per inch
};

namespace {

bool isValid(const FaxSizeDetails& details)
{
    return details.dpi.horizontal != 0 && details.dpi.vertical != 0 &&
           !details.pageSize.isEmpty() && details.contentRect.isValid();
}

std::string unsupportedFormat(FileFormat format)
{
    return fmt::format("unsupported {} format", FileFormatInfo(format).formatName().constData());
}

std::string invalidFormat(FileFormat format)
{
    return fmt::format("invalid {} format", FileFormatInfo(format).formatName().constData());
}

} // namespace

FaxOutputWriter::FaxOutputWriter(FaxFormatWriter* formatWriter,
                                 const FaxConfiguration& configuration)
    : m_formatWriter(formatWriter),
      m_configuration(configuration),
      m_sizeDetails(faxSizeDetailsFor(configuration))
{
}

bool FaxOutputWriter::writePage(const std::string& fileName)
{
    QFile file(FileName::fromUtf8(fileName));
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(FaxPageErrorCode::FileNotFound, "file not found");
    }
    const FileFormat format =
        FileFormatDatabase::formatFromFileNameAndContent(file.fileName(), &file);
    bool fitToPaper = false;
    switch (format) {
    case FileFormat::Pdf:
        fitToPaper = true;
        break;
    case FileFormat::Tiff:
    case FileFormat::Jpeg:
    case FileFormat::Png:
        fitToPaper =
            m_configuration.transformationFlags.testFlag(FaxTransformationFlag::FitToPaper);
        break;
    case FileFormat::Html:
    case FileFormat::Unknown:
        return fail(FaxPageErrorCode::UnsupportedFormat, unsupportedFormat(format));
    }
    return writePage(format, &file, fitToPaper,
                     static_cast<unsigned short>(m_configuration.rotation), m_sizeDetails);
}

bool FaxOutputWriter::writeCoverPage(const std::string& fileName)
{
    QFile file(FileName::fromUtf8(fileName));
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(FaxPageErrorCode::FileNotFound, "file not found");
    }
    const FileFormat format =
        FileFormatDatabase::formatFromFileNameAndContent(file.fileName(), &file);
    if (format != FileFormat::Html) {
        return fail(FaxPageErrorCode::UnsupportedFormat, unsupportedFormat(format));
    }
    return writePage(format, &file, true, 0, wholePageDetails(m_sizeDetails));
}

bool FaxOutputWriter::writePage(FileFormat format, QIODevice* device, bool fitToPaper,
                                unsigned short rotation, const FaxSizeDetails& details)
{
    if (!isValid(details)) {
        return fail(FaxPageErrorCode::InvalidRenderSize, "invalid render size");
    }
    ImageComplexRenderer renderer;
    renderer.setFormat(format);
    renderer.setDevice(device);
    const unsigned long count = renderer.count();
    if (count == 0) {
        return fail(FaxPageErrorCode::InvalidFormat, invalidFormat(format));
    }
    const PageLayout layout(details, rotation, fitToPaper);
    for (unsigned long index = 0; index < count; ++index) {
        if (!writeRenderedPage(renderer, index, layout)) {
            return false;
        }
    }
    return true;
}

bool FaxOutputWriter::writeRenderedPage(const ImageRenderer& renderer, unsigned long index,
                                        const PageLayout& layout)
{
    QImage image;
    const QSize renderSize = layout.renderSize(renderer.size(index));
    if (!renderer.render(index, {renderSize, layout.workingDpi}, image) || image.isNull()) {
        return fail(FaxPageErrorCode::InvalidData, "invalid data");
    }
    const FaxSizeDetails& details = layout.details;
    FaxImageBuilder page(std::move(image));
    page.rotate(layout.rotation)
        .scale(layout.contentSize(), layout.fitToPaper)
        .fill(details.pageSize, details.contentRect, Qt::AlignCenter)
        .monochromize();
    if (!m_formatWriter->write(page.image(), details.dpi, m_configuration.compression)) {
        return fail(FaxPageErrorCode::WriteFailed, "failed to write");
    }
    return true;
}

bool FaxOutputWriter::fail(FaxPageErrorCode code, const std::string& message)
{
    m_lastError = {code, message};
    return false;
}
