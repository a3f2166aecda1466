#pragma once

#include <QImage>

#include <cstddef>

/// The images into which Ghostscript draws: QImage::Format_Mono with the colour
/// table {opaque white, opaque black}, the rows packed to whole bytes, which is the
/// layout of Ghostscript's "bit" device.
class PageImage
{
public:
    /// A white page; null if it cannot be made.
    static QImage create(const QSize& size);

    /// What such a page takes.
    static std::size_t bytes(const QSize& size);
};
