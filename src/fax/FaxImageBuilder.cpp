#include "fax/FaxImageBuilder.h"

#include "fax/PainterWrapper.h"

#include <QPainter>
#include <QTransform>

#include <utility>

namespace {

constexpr QRgb opaqueWhite = 0xFFFFFFFF;

} // namespace

FaxImageBuilder::FaxImageBuilder(const QImage& image) : m_image(image) {}

FaxImageBuilder::FaxImageBuilder(QImage&& image) : m_image(std::move(image)) {}

FaxImageBuilder& FaxImageBuilder::rotate(unsigned short angle)
{
    if (angle != 0) {
        m_image =
            m_image.transformed(QTransform().rotate(angle, Qt::ZAxis), Qt::FastTransformation);
    }
    return *this;
}

FaxImageBuilder& FaxImageBuilder::scale(const QSize& size, bool enlarge)
{
    if (size.isEmpty()) {
        return *this;
    }
    const bool isFitting = m_image.width() <= size.width() && m_image.height() <= size.height();
    const bool isSmaller = m_image.width() < size.width() && m_image.height() < size.height();
    if (!isFitting || (enlarge && isSmaller)) {
        m_image = m_image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    return *this;
}

FaxImageBuilder& FaxImageBuilder::fill(const QSize& size, const QRect& rect,
                                       Qt::Alignment alignment)
{
    if (size.isEmpty() || m_image.size() == size) {
        return *this;
    }
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    page.setDevicePixelRatio(m_image.devicePixelRatio());
    page.fill(Qt::white);
    QPainter painter(&page);
    PainterWrapper(&painter).drawImage(rect, alignment, m_image);
    painter.end();
    m_image = std::move(page);
    return *this;
}

FaxImageBuilder& FaxImageBuilder::monochromize()
{
    if (m_image.format() != QImage::Format_Mono) {
        m_image = m_image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
    } else if (m_image.colorCount() > 1 && m_image.color(1) == opaqueWhite) {
        m_image.setColor(1, m_image.color(0));
        m_image.setColor(0, opaqueWhite);
        m_image.invertPixels(QImage::InvertRgb);
    }
    return *this;
}
