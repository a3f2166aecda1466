#include "render/decode/PngScaling.h"

#include <QIODevice>
#include <QImageReader>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr int channels = 4;

// ISO/IEC 15948, 11.2.2: the last field of the header, which is the first chunk.
constexpr int interlaceMethodAt = 28;

bool isInterlaced(QIODevice& device)
{
    // What can be read only once has been read already.
    if (device.isSequential()) {
        return false;
    }
    const qint64 position = device.pos();
    device.seek(0);
    const QByteArray header = device.peek(interlaceMethodAt + 1);
    device.seek(position);
    return header.size() > interlaceMethodAt && header.at(interlaceMethodAt) != 0;
}

// Hands out `sourceCount` lines to `targetCount` lines: each source line counts
// targetCount times, and each target line takes sourceCount of what they count.
// Calls add(source, weight) as often as it takes, then finish(target).
template <typename Add, typename Finish>
void distribute(int sourceCount, int targetCount, Add add, Finish finish)
{
    int source = 0;
    int left = targetCount;
    for (int target = 0; target < targetCount; ++target) {
        for (int wanted = sourceCount; wanted > 0;) {
            const int weight = std::min(wanted, left);
            add(source, static_cast<std::uint32_t>(weight));
            wanted -= weight;
            left -= weight;
            if (left == 0) {
                ++source;
                left = targetCount;
            }
        }
        finish(target);
    }
}

void averageRow(const std::vector<uchar>& row, int width, uchar* result, int resultWidth)
{
    std::uint32_t sums[channels] = {};
    const auto divisor = static_cast<std::uint32_t>(width);
    distribute(
        width, resultWidth,
        [&](int x, std::uint32_t weight) {
            const uchar* pixel = &row[static_cast<std::size_t>(x) * channels];
            for (int i = 0; i < channels; ++i) {
                sums[i] += weight * pixel[i];
            }
        },
        [&](int x) {
            for (int i = 0; i < channels; ++i) {
                result[x * channels + i] = static_cast<uchar>(sums[i] / divisor);
                sums[i] = 0;
            }
        });
}

} // namespace

bool PngScaling::isAveraged(const QImageReader& reader)
{
    if (reader.format() != "png") {
        return false;
    }
    const QImage::Format format = reader.imageFormat();
    const QSize stored = reader.size();
    const QSize size = reader.scaledSize();
    return (format == QImage::Format_RGB32 || format == QImage::Format_ARGB32) && !size.isEmpty() &&
           size != stored && size.boundedTo(stored) == size && !isInterlaced(*reader.device());
}

QImage PngScaling::averaged(const QImage& image, const QSize& size)
{
    QImage result(size, image.format());
    if (result.isNull()) {
        return result;
    }
    result.setDevicePixelRatio(image.devicePixelRatio());
    const auto rowBytes = static_cast<std::size_t>(image.width()) * channels;
    std::vector<std::uint32_t> sums(rowBytes);
    std::vector<uchar> row(rowBytes);
    const auto divisor = static_cast<std::uint32_t>(image.height());
    distribute(
        image.height(), size.height(),
        [&](int y, std::uint32_t weight) {
            const uchar* pixels = image.constScanLine(y);
            for (std::size_t i = 0; i < rowBytes; ++i) {
                sums[i] += weight * pixels[i];
            }
        },
        [&](int y) {
            for (std::size_t i = 0; i < rowBytes; ++i) {
                row[i] = static_cast<uchar>(sums[i] / divisor);
                sums[i] = 0;
            }
            averageRow(row, image.width(), result.scanLine(y), size.width());
        });
    return result;
}
