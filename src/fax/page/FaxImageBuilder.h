#pragma once

#include <QImage>
#include <QRect>
#include <QSize>
#include <Qt>

#include <optional>

/// Turns a picture into a fax page, step by step. Sizes are in pixels.
///
/// A step with an empty size changes nothing. Where Qt runs out of memory the
/// image becomes null.
class FaxImageBuilder
{
public:
    explicit FaxImageBuilder(const QImage& image);
    explicit FaxImageBuilder(QImage&& image);

    /// Rotates clockwise by `angle` degrees, without smoothing.
    FaxImageBuilder& rotate(unsigned short angle);

    /// Fits the image into `size` with its proportions kept, smoothly. An image
    /// that is smaller in both directions grows only with `enlarge`.
    FaxImageBuilder& scale(const QSize& size, bool enlarge);

    /// Places the image on a white page of `size`, aligned in the area `rect`
    /// of the page and clipped to it. An image of just this size stays as it is.
    FaxImageBuilder& fill(const QSize& size, const QRect& rect, Qt::Alignment alignment);

    /// Reduces the image to one bit per pixel, QImage::Format_Mono, with white
    /// at index 0 of the colour table.
    FaxImageBuilder& monochromize();

    const QImage& image() const;

private:
    struct Page
    {
        QSize size;
        QRect rect;
        Qt::LayoutDirection direction;
        Qt::Alignment alignment;
    };

    void paintPage() const;
    void convertToMono();

    template <typename Place>
    bool placeWith(Place place);

    // The page of fill() is painted only when it is looked at: monochromize()
    // mostly gets by without, at a fraction of the time and memory.
    mutable QImage m_image;
    mutable std::optional<Page> m_unpaintedPage;
};
