// Pictures of strangers; the first byte of the input tells the format, the rest is
// the file. Qt and its plug-ins decode them, as they do in the program.

#include "Require.h"

#include "app/settings/RenderSize.h"
#include "render/picture/ImageDefaultRenderer.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QtEndian>

#include <boost/crc.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Of the sanitizers' own header <sanitizer/allocator_interface.h>, which the
// compilers do not find in all their versions.
extern "C" int __sanitizer_install_malloc_and_free_hooks( // NOLINT(bugprone-reserved-identifier)
    void (*afterAllocation)(const volatile void*, std::size_t),
    void (*beforeFree)(const volatile void*));

namespace {

constexpr int maximumPixels = 96 * 96;
constexpr unsigned long maximumPages = 5;

// What memory holds that nobody has written yet.
int leftover = 0;

// Larger blocks come from the system, which has cleared them, and whoever asked for
// that counts on it.
constexpr std::size_t largestFilled = 100 * 1024;

void fillAllocated(const volatile void* block, std::size_t size)
{
    if (size <= largestFilled) {
        std::memset(const_cast<void*>(block), leftover, size);
    }
}

void ignoreFreed(const volatile void* /*block*/) {}

// A mutation leaves the checksums of a PNG file behind, and the decoder would look
// no further. For a chunk that is longer than the file it would clear so much
// memory, up to 2 GiB, before it notices: such a chunk ends with the file.
void correctChunks(QByteArray& content)
{
    constexpr int signatureBytes = 8;
    constexpr int wordBytes = 4;
    int chunk = signatureBytes;
    while (chunk + 3 * wordBytes <= content.size()) {
        const auto longest = static_cast<quint32>(content.size() - chunk - 3 * wordBytes);
        const quint32 length =
            std::min(qFromBigEndian<quint32>(content.constData() + chunk), longest);
        qToBigEndian<quint32>(length, content.data() + chunk);
        const int end = chunk + 2 * wordBytes + static_cast<int>(length);
        boost::crc_32_type checksum;
        checksum.process_block(content.constData() + chunk + wordBytes, content.constData() + end);
        qToBigEndian<quint32>(checksum.checksum(), content.data() + end);
        chunk = end + wordBytes;
    }
    content.truncate(chunk);
}

QImage page(const QByteArray& format, QByteArray content, unsigned long index, int memory)
{
    leftover = memory;
    QBuffer device(&content);
    require(device.open(QIODevice::ReadOnly), "a buffer opens");
    ImageDefaultRenderer renderer(format);
    renderer.setDevice(&device);
    const QSize size = renderer.size(index);
    QImage image;
    if (size.isEmpty() || size.width() > maximumPixels / size.height()) {
        return image;
    }
    if (!renderer.render(index, {QSize(), {}}, image)) {
        return QImage();
    }
    require(!image.isNull(), "a picture that was read is there");
    return image;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int hooks = __sanitizer_install_malloc_and_free_hooks(fillAllocated, ignoreFreed);
    require(hooks != 0, "memory can be filled");
    if (size == 0) {
        return 0;
    }
    const QByteArray formats[] = {"tiff", "jpeg", "png", ""};
    const QByteArray& format = formats[data[0] % std::size(formats)];
    QByteArray content(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    if (content.startsWith("\x89PNG")) {
        correctChunks(content);
    }

    QBuffer device(&content);
    require(device.open(QIODevice::ReadOnly), "a buffer opens");
    ImageDefaultRenderer renderer(format);
    renderer.setDevice(&device);
    const unsigned long count = std::min(renderer.count(), maximumPages);
    for (unsigned long index = 0; index < count; ++index) {
        require(page(format, content, index, 0x55) == page(format, content, index, 0xAA),
                "no leftover memory shows in a picture");
    }
    return 0;
}
