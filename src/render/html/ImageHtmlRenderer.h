#pragma once

#include "render/ImageRenderer.h"

/// An HTML document as a single page, see HtmlRenderer.
///
/// The text is read from the device's present position, so it can be rendered
/// once per device.
class ImageHtmlRenderer final : public ImageRenderer
{
public:
    QIODevice* device() const override;
    void setDevice(QIODevice* device) override;

    /// 1 if the device is readable, else 0; a closed device is opened.
    unsigned long count() const override;

    /// Always invalid: HTML has no natural size.
    QSize size(unsigned long index) const override;

    bool render(unsigned long index, const RenderSize& renderSize, QImage& image) const override;

private:
    bool isDeviceOpen() const;

    QIODevice* m_device = nullptr; // not owned
};
