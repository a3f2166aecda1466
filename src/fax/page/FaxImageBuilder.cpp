#include "fax/page/FaxImageBuilder.h"

#include "bilevel/BilevelColors.h"
#include "bilevel/BilevelImage.h"
#include "bilevel/ErrorDiffusion.h"
#include "fax/page/ImagePlacement.h"
#include "fax/page/PainterWrapper.h"
#include "qt/SmoothScaling.h"

#include <QGuiApplication>
#include <QPainter>
#include <QTransform>

#include <utility>

FaxImageBuilder::FaxImageBuilder(const QImage& image) : m_image(image) {}

FaxImageBuilder::FaxImageBuilder(QImage&& image) : m_image(std::move(image)) {}

FaxImageBuilder& FaxImageBuilder::rotate(unsigned short angle)
{
    paintPage();
    const bool isBilevel = m_image.format() == QImage::Format_Mono;
    if (angle == 90 && isBilevel) {
        m_image = BilevelImage::turnedClockwise(m_image);
    } else if (angle == 270 && isBilevel) {
        m_image = BilevelImage::turnedCounterclockwise(m_image);
    } else if (angle != 0) {
        m_image =
            m_image.transformed(QTransform().rotate(angle, Qt::ZAxis), Qt::FastTransformation);
    }
    return *this;
}

FaxImageBuilder& FaxImageBuilder::scale(const QSize& size, bool enlarge)
{
    paintPage();
    if (size.isEmpty()) {
        return *this;
    }
    const bool isFitting = m_image.width() <= size.width() && m_image.height() <= size.height();
    const bool isSmaller = m_image.width() < size.width() && m_image.height() < size.height();
    if (!isFitting || (enlarge && isSmaller)) {
        m_image = SmoothScaling::scaled(m_image, size, Qt::KeepAspectRatio);
    }
    return *this;
}

FaxImageBuilder& FaxImageBuilder::fill(const QSize& size, const QRect& rect,
                                       Qt::Alignment alignment)
{
    paintPage();
    // A null image is a failure of an earlier step and has to stay one.
    if (!size.isEmpty() && !m_image.isNull() && m_image.size() != size) {
        m_unpaintedPage = Page{size, rect, QGuiApplication::layoutDirection(), alignment};
    }
    return *this;
}

FaxImageBuilder& FaxImageBuilder::monochromize()
{
    // Black and white dither to themselves, so it is enough to place them.
    if ((m_unpaintedPage && BilevelImage::isBlackAndWhite(m_image) &&
         placeWith(BilevelImage::placed)) ||
        (ErrorDiffusion::isSupported(m_image) && placeWith(ErrorDiffusion::dithered))) {
        return *this;
    }
    paintPage();
    convertToMono();
    return *this;
}

const QImage& FaxImageBuilder::image() const
{
    paintPage();
    return m_image;
}

void FaxImageBuilder::paintPage() const
{
    if (!m_unpaintedPage) {
        return;
    }
    QImage page(m_unpaintedPage->size, QImage::Format_ARGB32_Premultiplied);
    page.setDevicePixelRatio(m_image.devicePixelRatio());
    page.fill(Qt::white);
    QPainter painter;
    if (painter.begin(&page)) {
        PainterWrapper(&painter).drawImage(m_unpaintedPage->rect, m_unpaintedPage->direction,
                                           m_unpaintedPage->alignment, m_image);
        painter.end();
        m_image = std::move(page);
    } else {
        // Without memory to paint in, no page is better than a white one.
        m_image = QImage();
    }
    m_unpaintedPage.reset();
}

// Replaces the image by what `place` makes of it: the short way to the page of
// fill() in black and white. False if the image does not lie on the page with
// at least one pixel and wholly, or if `place` makes nothing of it, which is
// left to the painter.
template <typename Place>
bool FaxImageBuilder::placeWith(Place place)
{
    QSize size = m_image.size();
    QRect target = m_image.rect();
    QRect source = target;
    if (m_unpaintedPage) {
        const Page& page = *m_unpaintedPage;
        const ImagePlacement placement(page.rect, page.direction, page.alignment, m_image);
        size = page.size;
        target = placement.target;
        source = placement.source;
        if (target.isEmpty() || !QRect(QPoint(0, 0), size).contains(target)) {
            return false;
        }
    }
    QImage page = place(m_image, source, size, target.topLeft());
    if (page.isNull()) {
        return false;
    }
    m_image = std::move(page);
    m_unpaintedPage.reset();
    return true;
}

void FaxImageBuilder::convertToMono()
{
    if (m_image.format() != QImage::Format_Mono) {
        m_image = m_image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
    } else if (m_image.colorCount() > 1 && m_image.color(1) == opaqueWhite) {
        m_image.setColor(1, m_image.color(0));
        m_image.setColor(0, opaqueWhite);
        m_image.invertPixels(QImage::InvertRgb);
    }
}
