#include "render/decode/PictureDecoder.h"

#include <QImage>
#include <QImageReader>

namespace {

// What the plug-ins decode samples of 16 bits to: always four for a pixel, even
// where fewer arrive.
bool isOf16BitSamples(QImage::Format format)
{
    return format == QImage::Format_RGBX64 || format == QImage::Format_RGBA64 ||
           format == QImage::Format_RGBA64_Premultiplied || format == QImage::Format_Grayscale16;
}

} // namespace

bool PictureDecoder::read(QImageReader& reader, QImage& image)
{
    // The format of a picture that has no size is not known, and may be any number.
    const QSize size = reader.size();
    if (!size.isEmpty() && isOf16BitSamples(reader.imageFormat())) {
        // A plug-in takes an image that fits instead of making one.
        image = QImage(size, reader.imageFormat());
        image.fill(Qt::white);
    }
    return reader.read(&image);
}
