#include "render/decode/PictureDecoder.h"

#include <QImage>
#include <QImageReader>

namespace {

constexpr int bitsOf16BitSamples = 64;

// True if the plug-in decodes the picture as it is stored. One that scales by
// itself makes an image of another size for that, and writes all of it; it has
// to decode samples of 16 bits first.
bool isDecodedAsStored(const QImageReader& reader)
{
    return !reader.supportsOption(QImageIOHandler::ScaledSize) ||
           QImage::toPixelFormat(reader.imageFormat()).bitsPerPixel() == bitsOf16BitSamples;
}

} // namespace

bool PictureDecoder::read(QImageReader& reader, QImage& image)
{
    if (isDecodedAsStored(reader)) {
        // A plug-in takes an image that fits instead of making one.
        image = QImage(reader.size(), reader.imageFormat());
        image.fill(Qt::white);
    }
    return reader.read(&image);
}
