#pragma once

#include "render/ImageRenderer.h"

#include <memory>

class QByteArray;
class QImageReader;

/// TIFF, JPEG and PNG pages through Qt's image plug-ins, decoded at the
/// requested pixel size.
///
/// Orientation metadata is applied after that scaling: size() speaks of the
/// page as it will appear, render() takes the size of the page as it is stored.
/// The dots per inch of a request are not looked at.
class ImageDefaultRenderer final : public ImageRenderer
{
public:
    /// Decodes data of this format only, for example "png". An empty format
    /// lets the data decide.
    explicit ImageDefaultRenderer(const QByteArray& format);
    ~ImageDefaultRenderer() override;

    QIODevice* device() const override;
    void setDevice(QIODevice* device) override;
    unsigned long count() const override;
    QSize size(unsigned long index) const override;
    bool render(unsigned long index, const RenderSize& renderSize, QImage& image) const override;

private:
    std::unique_ptr<QImageReader> m_reader;
};
