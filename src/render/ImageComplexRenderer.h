#pragma once

#include "formats/FileFormat.h"
#include "render/ImageRenderer.h"

#include <memory>

/// The front of all renderers: creates the right one on first use, from the
/// format given or, if none was, from the content of the device.
class ImageComplexRenderer final : public ImageRenderer
{
public:
    ImageComplexRenderer();
    ~ImageComplexRenderer() override;

    /// FileFormat::Unknown asks for detection.
    void setFormat(FileFormat format);

    QIODevice* device() const override;
    void setDevice(QIODevice* device) override;
    unsigned long count() const override;
    QSize size(unsigned long index) const override;
    bool render(unsigned long index, const RenderSize& renderSize, QImage& image) const override;

    /// Creates the concrete renderer if need be; true if there is one now.
    bool initializeRenderer() const;

private:
    FileFormat m_format = FileFormat::Unknown;
    QIODevice* m_device = nullptr; // not owned

    // Created on first use, which nobody can see from outside.
    mutable std::unique_ptr<ImageRenderer> m_renderer;
};
