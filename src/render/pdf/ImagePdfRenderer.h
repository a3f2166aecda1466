#pragma once

#include "render/ImageRenderer.h"

#include <memory>

class PdfDocument;

/// PDF pages through Ghostscript.
///
/// Ghostscript reads the file by its name, so the device must be a file; any
/// other has no pages. The content of the device is not read here.
class ImagePdfRenderer final : public ImageRenderer
{
public:
    ImagePdfRenderer();
    ~ImagePdfRenderer() override;

    QIODevice* device() const override;
    void setDevice(QIODevice* device) override;
    unsigned long count() const override;

    /// Always invalid: a PDF page has no natural size in pixels.
    QSize size(unsigned long index) const override;

    /// The image is QImage::Format_Mono, white at index 0.
    bool render(unsigned long index, const RenderSize& renderSize, QImage& image) const override;

private:
    QIODevice* m_inputDevice = nullptr; // not owned
    std::unique_ptr<PdfDocument> m_document;
};
