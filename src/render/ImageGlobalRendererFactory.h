#pragma once

#include "render/ImageRendererFactory.h"

/// The renderers of every input format; one factory for the whole process.
class ImageGlobalRendererFactory final : public ImageRendererFactory
{
public:
    static const ImageGlobalRendererFactory& instance();

    ImageRenderer* createRenderer(FileFormat format) const override;

private:
    ImageGlobalRendererFactory() = default;
};
