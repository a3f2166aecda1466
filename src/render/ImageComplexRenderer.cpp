#include "render/ImageComplexRenderer.h"

#include "formats/FileFormatDatabase.h"
#include "render/ImageGlobalRendererFactory.h"

#include <utility>

ImageComplexRenderer::ImageComplexRenderer() = default;

ImageComplexRenderer::~ImageComplexRenderer() = default;

void ImageComplexRenderer::setFormat(FileFormat format)
{
    if (format == m_format) {
        return;
    }
    m_format = format;
    m_renderer.reset();
}

QIODevice* ImageComplexRenderer::device() const
{
    return m_device;
}

void ImageComplexRenderer::setDevice(QIODevice* device)
{
    if (device == m_device) {
        return;
    }
    m_device = device;
    if (m_format == FileFormat::Unknown) {
        // The renderer was made for the content of the other device.
        m_renderer.reset();
    } else if (m_renderer) {
        m_renderer->setDevice(device);
    }
}

unsigned long ImageComplexRenderer::count() const
{
    return initializeRenderer() ? m_renderer->count() : 0;
}

QSize ImageComplexRenderer::size(unsigned long index) const
{
    return initializeRenderer() ? m_renderer->size(index) : QSize();
}

bool ImageComplexRenderer::render(unsigned long index, const RenderSize& renderSize,
                                  QImage& image) const
{
    return initializeRenderer() && m_renderer->render(index, renderSize, image);
}

bool ImageComplexRenderer::initializeRenderer() const
{
    if (m_renderer) {
        return true;
    }
    if (m_device == nullptr) {
        return false;
    }
    const FileFormat format = m_format == FileFormat::Unknown
                                  ? FileFormatDatabase::formatFromContent(m_device)
                                  : m_format;
    std::unique_ptr<ImageRenderer> renderer(
        ImageGlobalRendererFactory::instance().createRenderer(format));
    if (!renderer) {
        return false;
    }
    renderer->setDevice(m_device);
    m_renderer = std::move(renderer);
    return true;
}
