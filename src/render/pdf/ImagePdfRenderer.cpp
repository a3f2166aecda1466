#include "render/pdf/ImagePdfRenderer.h"

#include "render/pdf/PdfDocument.h"
#include "render/pdf/PdfPageRenderer.h"

#include <QFileDevice>

namespace {

constexpr std::size_t forwardCacheLimitBytes = 8388608;

} // namespace

ImagePdfRenderer::ImagePdfRenderer() : m_document(std::make_unique<PdfDocument>())
{
    m_document->pageRenderer().setForwardCacheLimit(forwardCacheLimitBytes);
}

ImagePdfRenderer::~ImagePdfRenderer() = default;

QIODevice* ImagePdfRenderer::device() const
{
    return m_inputDevice;
}

void ImagePdfRenderer::setDevice(QIODevice* device)
{
    if (device == m_inputDevice) {
        return;
    }
    m_inputDevice = device;
    const auto* file = qobject_cast<QFileDevice*>(device);
    m_document->setFileName(file == nullptr ? QString() : file->fileName());
}

unsigned long ImagePdfRenderer::count() const
{
    return m_document->pageSizes().size();
}

QSize ImagePdfRenderer::size(unsigned long /*index*/) const
{
    return QSize();
}

bool ImagePdfRenderer::render(unsigned long index, const RenderSize& renderSize,
                              QImage& image) const
{
    return m_document->renderPage(index, renderSize, image);
}
