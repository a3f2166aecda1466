#include "render/ImageRendererFactory.h"

ImageRendererFactory::~ImageRendererFactory() = default;
