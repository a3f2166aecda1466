#include "render/decode/PluginScaling.h"

#include "render/decode/PngScaling.h"

#include <QImageIOHandler>
#include <QImageReader>

bool PluginScaling::isExact(const QImageReader& reader)
{
    const QSize size = reader.scaledSize();
    if (!size.isValid() || size == reader.size()) {
        return true;
    }
    // Of an empty size Qt 6 works out the missing side.
    if (size.isEmpty() || !reader.supportsOption(QImageIOHandler::ScaledSize)) {
        return false;
    }
    // Each plug-in goes as far as it can by itself, and leaves the rest to
    // QImage::scaled(), which is alike for colours of 32 bits only.
    if (reader.format() == "jpeg") {
        return reader.imageFormat() == QImage::Format_RGB32;
    }
    return reader.format() == "png" && PngScaling::isAveraged(reader);
}
