#include "render/html/ImageHtmlRenderer.h"

#include "render/html/HtmlRenderer.h"
#include "render/html/IODeviceWrapper.h"
#include "render/html/TextUtils.h"

QIODevice* ImageHtmlRenderer::device() const
{
    return m_device;
}

void ImageHtmlRenderer::setDevice(QIODevice* device)
{
    m_device = device;
}

unsigned long ImageHtmlRenderer::count() const
{
    return isDeviceOpen() ? 1 : 0;
}

QSize ImageHtmlRenderer::size(unsigned long /*index*/) const
{
    return QSize();
}

bool ImageHtmlRenderer::render(unsigned long index, const RenderSize& renderSize,
                               QImage& image) const
{
    if (index != 0 || !isDeviceOpen()) {
        return false;
    }
    const QString html = TextUtils::loadUtf8String(m_device);
    image = HtmlRenderer(html).render(renderSize, QImage::Format_RGB32);
    return !image.isNull();
}

bool ImageHtmlRenderer::isDeviceOpen() const
{
    return IODeviceWrapper(m_device).open(QIODevice::ReadOnly);
}
