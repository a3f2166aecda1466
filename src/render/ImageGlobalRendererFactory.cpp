#include "render/ImageGlobalRendererFactory.h"

#include "formats/FileFormatInfo.h"
#include "render/html/ImageHtmlRenderer.h"
#include "render/pdf/ImagePdfRenderer.h"
#include "render/picture/ImageDefaultRenderer.h"

#include <memory>

namespace {

std::unique_ptr<ImageRenderer> makeRenderer(FileFormat format)
{
    switch (format) {
    case FileFormat::Pdf:
        return std::make_unique<ImagePdfRenderer>();
    case FileFormat::Tiff:
    case FileFormat::Jpeg:
    case FileFormat::Png:
        return std::make_unique<ImageDefaultRenderer>(FileFormatInfo(format).formatName());
    case FileFormat::Html:
        return std::make_unique<ImageHtmlRenderer>();
    case FileFormat::Unknown:
        break;
    }
    return nullptr;
}

} // namespace

const ImageGlobalRendererFactory& ImageGlobalRendererFactory::instance()
{
    static const ImageGlobalRendererFactory factory;
    return factory;
}

ImageRenderer* ImageGlobalRendererFactory::createRenderer(FileFormat format) const
{
    return makeRenderer(format).release();
}
