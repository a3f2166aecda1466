#pragma once

#include <QByteArray>
#include <QSize>

class QImage;
class QImageReader;

/// Reads a JPEG picture at the size to which the decoder itself can reduce it.
///
/// The decoder makes each side smaller in eighths. The plug-in of Qt has it do so,
/// and then scales the picture to the size that was asked for, which Qt 6 does in
/// its own way for grey and CMYK. So what is asked for here is a size after which
/// nothing is left to scale.
class JpegScaling
{
public:
    /// Decodes what `reader` has, which must be set to neither scale nor turn it,
    /// reduced as far as that is of use for a picture of the `wanted` size. False if
    /// it cannot be decoded.
    static bool read(QImageReader& reader, const QSize& wanted, QImage& image);

    /// To how many eighths the plug-in has a picture reduced, 1 to 8.
    static int eighths(const QSize& stored, const QSize& wanted);

    /// The file with both sides rounded up to a multiple of 8 in its header; empty if
    /// it has no header or the sides become too large. The picture is coded in
    /// blocks of 8 x 8, so all that shows is what fills up the last of them.
    static QByteArray padded(const QByteArray& file);
};
