#pragma once

#include <QSize>

class QIODevice;
class QImage;
struct RenderSize;

/// A source of page images. Pages are counted from 0.
///
/// The device is never owned and must outlive its use here. Nothing is printed
/// and bad input throws nothing: every failure is a result.
class ImageRenderer
{
public:
    ImageRenderer() = default;
    ImageRenderer(const ImageRenderer&) = delete;
    ImageRenderer& operator=(const ImageRenderer&) = delete;
    virtual ~ImageRenderer() = default;

    virtual QIODevice* device() const = 0;
    virtual void setDevice(QIODevice* device) = 0;

    /// The number of pages; 0 if the device cannot be read.
    virtual unsigned long count() const = 0;

    /// The natural size of a page in pixels; invalid if it has none or if it is
    /// not known.
    virtual QSize size(unsigned long index) const = 0;

    /// Renders a page into `image`; false if that failed.
    virtual bool render(unsigned long index, const RenderSize& renderSize, QImage& image) const = 0;
};
