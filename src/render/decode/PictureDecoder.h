#pragma once

class QImage;
class QImageReader;

/// Decodes pictures to the same pixels whatever the version of Qt, and so that none
/// shows what stood in the memory before.
///
/// The plug-ins of Qt decode into an image whose memory nobody has cleared, and
/// with samples of 16 bits some leave parts of it unwritten: that of TIFF in
/// files with planar samples, that of PNG in files with a transparent colour.
/// Such parts are white here. To clear the memory of all other pictures as well
/// would cost large photographs a good part of their time for nothing.
class PictureDecoder
{
public:
    /// As QImageReader::read() of Qt 5, with the same result.
    static bool read(QImageReader& reader, QImage& image);

    /// The same in steps that no version of Qt does in another way: the picture is
    /// decoded at its full size or, if it is a JPEG, the next larger one that the
    /// decoder can reduce it to. Then it is scaled, then turned.
    static bool readInSteps(QImageReader& reader, QImage& image);
};
