#pragma once

#include "formats/FileFormat.h"

class ImageRenderer;

/// Makes renderers by format.
class ImageRendererFactory
{
public:
    ImageRendererFactory() = default;
    ImageRendererFactory(const ImageRendererFactory&) = delete;
    ImageRendererFactory& operator=(const ImageRendererFactory&) = delete;
    virtual ~ImageRendererFactory() = default;

    /// A new renderer without a device, owned by the caller; null if there is
    /// none for the format.
    virtual ImageRenderer* createRenderer(FileFormat format) const = 0;
};
