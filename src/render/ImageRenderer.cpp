#include "render/ImageRenderer.h"

ImageRenderer::~ImageRenderer() = default;
