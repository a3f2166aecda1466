#include "render/decode/PictureDecoder.h"

#include "qt/SmoothScaling.h"
#include "render/decode/CmykPicture.h"
#include "render/decode/JpegScaling.h"
#include "render/decode/PluginScaling.h"
#include "render/decode/PngScaling.h"

#include <QImage>
#include <QImageReader>
#include <QTransform>

#include <utility>

namespace {

// What the plug-ins decode samples of 16 bits to: always four for a pixel, even
// where fewer arrive.
bool isOf16BitSamples(QImage::Format format)
{
    return format == QImage::Format_RGBX64 || format == QImage::Format_RGBA64 ||
           format == QImage::Format_RGBA64_Premultiplied || format == QImage::Format_Grayscale16;
}

// QImageReader::read(), with an image to read into where it may leave out parts.
bool readByPlugin(QImageReader& reader, QImage& image)
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

// What QImageReader makes of the orientation that metadata ask for.
void turn(QImage& image, QImageIOHandler::Transformations transformation)
{
    if (transformation == QImageIOHandler::TransformationRotate270) {
        image = image.transformed(QTransform().rotate(270));
        return;
    }
    image =
        std::move(image).mirrored(transformation.testFlag(QImageIOHandler::TransformationMirror),
                                  transformation.testFlag(QImageIOHandler::TransformationFlip));
    if (transformation.testFlag(QImageIOHandler::TransformationRotate90)) {
        image = image.transformed(QTransform().rotate(90));
    }
}

} // namespace

bool PictureDecoder::read(QImageReader& reader, QImage& image)
{
    if (!PluginScaling::isExact(reader)) {
        return readInSteps(reader, image);
    }
    const bool isRead = readByPlugin(reader, image);
    CmykPicture::convertToRgb(image);
    return isRead;
}

bool PictureDecoder::readInSteps(QImageReader& reader, QImage& image)
{
    const QSize size = reader.scaledSize();
    const bool isTurned = reader.autoTransform();
    const bool isAveraged = PngScaling::isAveraged(reader);
    reader.setScaledSize(QSize());
    reader.setAutoTransform(false);
    const bool isRead = reader.format() == "jpeg" ? JpegScaling::read(reader, size, image)
                                                  : readByPlugin(reader, image);
    reader.setScaledSize(size);
    reader.setAutoTransform(isTurned);
    if (!isRead) {
        return false;
    }
    CmykPicture::convertToRgb(image);
    if (size.isValid()) {
        image = isAveraged ? PngScaling::averaged(image, size) : SmoothScaling::scaled(image, size);
    }
    if (isTurned) {
        turn(image, reader.transformation());
    }
    return true;
}
