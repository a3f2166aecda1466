#include "render/picture/ImageDefaultRenderer.h"

#include "app/settings/RenderSize.h"
#include "render/decode/PictureDecoder.h"

#include <QImageReader>

#include <algorithm>

ImageDefaultRenderer::ImageDefaultRenderer(const QByteArray& format)
    : m_reader(std::make_unique<QImageReader>())
{
    if (format.isEmpty()) {
        m_reader->setDecideFormatFromContent(true);
    } else {
        m_reader->setAutoDetectImageFormat(false);
        m_reader->setFormat(format);
    }
    m_reader->setAutoTransform(true);
}

ImageDefaultRenderer::~ImageDefaultRenderer() = default;

QIODevice* ImageDefaultRenderer::device() const
{
    return m_reader->device();
}

void ImageDefaultRenderer::setDevice(QIODevice* device)
{
    m_reader->setDevice(device);
}

unsigned long ImageDefaultRenderer::count() const
{
    return static_cast<unsigned long>(std::max(m_reader->imageCount(), 0));
}

QSize ImageDefaultRenderer::size(unsigned long index) const
{
    m_reader->jumpToImage(static_cast<int>(index));
    const QSize stored = m_reader->size();
    return m_reader->transformation().testFlag(QImageIOHandler::TransformationRotate90)
               ? stored.transposed()
               : stored;
}

bool ImageDefaultRenderer::render(unsigned long index, const RenderSize& renderSize,
                                  QImage& image) const
{
    m_reader->jumpToImage(static_cast<int>(index));
    m_reader->setScaledSize(renderSize.size);
    return PictureDecoder::read(*m_reader, image);
}
