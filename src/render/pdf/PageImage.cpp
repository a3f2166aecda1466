#include "render/pdf/PageImage.h"

#include "bilevel/BilevelColors.h"

#include <cstdlib>

namespace {

int packedBytesPerRow(int width)
{
    return (width + 7) / 8;
}

// An image whose rows are packed tighter than QImage would lay them out.
QImage createPacked(const QSize& size)
{
    void* buffer = std::calloc(PageImage::bytes(size), 1);
    if (buffer == nullptr) {
        return QImage();
    }
    QImage image(static_cast<uchar*>(buffer), size.width(), size.height(),
                 packedBytesPerRow(size.width()), QImage::Format_Mono, std::free, buffer);
    if (image.isNull()) {
        std::free(buffer);
    }
    return image;
}

} // namespace

// White from the start because a run of Ghostscript can end early.
QImage PageImage::create(const QSize& size)
{
    QImage image;
    if (packedBytesPerRow(size.width()) % 4 == 0) {
        image = QImage(size, QImage::Format_Mono);
        image.fill(0);
    } else {
        image = createPacked(size);
    }
    if (!image.isNull()) {
        image.setColorTable({opaqueWhite, opaqueBlack});
    }
    return image;
}

std::size_t PageImage::bytes(const QSize& size)
{
    return static_cast<std::size_t>(packedBytesPerRow(size.width())) *
           static_cast<std::size_t>(size.height());
}
