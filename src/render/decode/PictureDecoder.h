#pragma once

class QImage;
class QImageReader;

/// Decodes pictures so that none shows what stood in the memory before.
///
/// The plug-ins of Qt decode into an image whose memory nobody has cleared, and
/// some leave parts of it unwritten: that of TIFF in files with planar samples
/// of 16 bits, that of PNG in files with 16 bits and a transparent colour. Such
/// parts are white here.
class PictureDecoder
{
public:
    /// As QImageReader::read(), with the same result.
    static bool read(QImageReader& reader, QImage& image);
};
