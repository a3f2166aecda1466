#include "bilevel/BilevelImage.h"

#include "bilevel/BilevelColors.h"
#include "bilevel/BitBlock.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

constexpr int byteBits = bitBlockSize;

// The largest side whose lines Qt counts without an overflow, in 1/4096 of a line.
constexpr int largestSqueezedSide = (1 << 19) - 1;

int bytesFor(int pixels)
{
    return (pixels + byteBits - 1) / byteBits;
}

// QImage::fill() would leave out the bytes beyond the width.
void clear(QImage& image)
{
    std::memset(image.bits(), 0, static_cast<std::size_t>(image.sizeInBytes()));
}

QImage emptyImage(const QImage& like, const QSize& size)
{
    QImage image(size, QImage::Format_Mono);
    if (!image.isNull()) {
        clear(image);
        image.setColorTable(like.colorTable());
        image.setDevicePixelRatio(like.devicePixelRatio());
        image.setDotsPerMeterX(like.dotsPerMeterX());
        image.setDotsPerMeterY(like.dotsPerMeterY());
    }
    return image;
}

void clearBeyondWidth(uchar* row, int width)
{
    if (width % byteBits != 0) {
        row[width / byteBits] &= static_cast<uchar>(0xFF << (byteBits - width % byteBits));
    }
}

// For each row (or column) of the target the one of the source that it shows:
// the fixed-point arithmetic of Qt's nearest-neighbour scaling.
std::vector<int> sourceLines(int sourceCount, int targetCount)
{
    const double scale = static_cast<double>(targetCount) / sourceCount;
    const double inverse = 1.0 / scale;
    const auto step = static_cast<std::int64_t>(inverse * 4096.0);
    std::vector<int> lines(static_cast<std::size_t>(targetCount));
    for (int target = 0; target < targetCount; ++target) {
        lines[static_cast<std::size_t>(target)] =
            static_cast<int>((target * step + step / 2) >> 12);
    }
    return lines;
}

// Qt may set bits beyond the width.
QImage squeezedByQt(const QImage& image, const QSize& size)
{
    QImage result = image.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    const int bytes = bytesFor(result.width());
    for (int y = 0; y < result.height(); ++y) {
        uchar* row = result.scanLine(y);
        clearBeyondWidth(row, result.width());
        std::memset(row + bytes, 0, static_cast<std::size_t>(result.bytesPerLine() - bytes));
    }
    return result;
}

// Eight rows at a time turned into one byte a column, so that columns can be
// picked as bytes; `rows` are row pointers, null for a row that is not there.
using EightRows = std::array<const uchar*, byteBits>;

BitBlock blockAt(const EightRows& rows, int byteColumn)
{
    BitBlock block = 0;
    for (const uchar* row : rows) {
        block = (block << byteBits) | (row == nullptr ? 0U : row[byteColumn]);
    }
    return block;
}

// Column x of eight rows as the byte x, row 0 in the most significant bit.
void splitColumns(const EightRows& rows, std::vector<uchar>& columnBytes)
{
    for (std::size_t first = 0; first < columnBytes.size(); first += byteBits) {
        const BitBlock block = transposed(blockAt(rows, static_cast<int>(first / byteBits)));
        for (std::size_t i = 0; i < byteBits; ++i) {
            columnBytes[first + i] = rowOf(block, static_cast<int>(i));
        }
    }
}

// The way back, for the columns that `columns` names.
void joinColumns(const std::vector<uchar>& columnBytes, const std::vector<int>& columns,
                 const std::array<uchar*, byteBits>& rows)
{
    for (std::size_t first = 0; first < columns.size(); first += byteBits) {
        BitBlock block = 0;
        for (std::size_t i = first; i < first + byteBits; ++i) {
            const bool isInside = i < columns.size();
            block = (block << byteBits) |
                    (isInside ? columnBytes[static_cast<std::size_t>(columns[i])] : 0U);
        }
        block = transposed(block);
        for (std::size_t row = 0; row < byteBits; ++row) {
            if (rows[row] != nullptr) {
                rows[row][first / byteBits] = rowOf(block, static_cast<int>(row));
            }
        }
    }
}

// Up to eight rows from `row` on, `bytesPerRow` apart (which may be negative).
EightRows eightRows(const uchar* row, std::ptrdiff_t bytesPerRow, int count)
{
    EightRows rows = {};
    for (std::size_t i = 0; i < rows.size() && static_cast<int>(i) < count; ++i) {
        rows[i] = row + bytesPerRow * static_cast<std::ptrdiff_t>(i);
    }
    return rows;
}

// Writes column x of the source as row x of the target. Both are given by
// their first row and the distance of rows, so that either can run backwards.
void transposeRows(const uchar* source, std::ptrdiff_t sourceBytesPerRow, const QSize& sourceSize,
                   uchar* target, std::ptrdiff_t targetBytesPerRow)
{
    for (int y = 0; y < sourceSize.height(); y += byteBits) {
        const EightRows rows =
            eightRows(source + sourceBytesPerRow * y, sourceBytesPerRow, sourceSize.height() - y);
        for (int x = 0; x < sourceSize.width(); x += byteBits) {
            const BitBlock block = transposed(blockAt(rows, x / byteBits));
            const int columns = std::min(byteBits, sourceSize.width() - x);
            uchar* byte = target + targetBytesPerRow * x + y / byteBits;
            for (int column = 0; column < columns; ++column, byte += targetBytesPerRow) {
                *byte = rowOf(block, column);
            }
        }
    }
}

// The eight bits that start at bit `bit` of the byte at `bytes`. The byte after
// it is read only if the first `count` of them reach into it.
unsigned bitsAt(const uchar* bytes, int bit, int count)
{
    unsigned bits = static_cast<unsigned>(bytes[0]) << bit;
    if (bit + count > byteBits) {
        bits |= static_cast<unsigned>(bytes[1]) >> (byteBits - bit);
    }
    return bits & 0xFFU;
}

// Copies the bits in front of or behind whole bytes: `count` of them, which lie
// within the byte `target` from its bit `to` on. Its other bits stay.
void copyPartOfByte(const uchar* source, int from, uchar& target, int to, int count, uchar invert)
{
    const unsigned mask = ((0xFFU << (byteBits - count)) & 0xFFU) >> to;
    const unsigned bits = (bitsAt(source + from / byteBits, from % byteBits, count) ^ invert) >> to;
    target = static_cast<uchar>((target & ~mask) | (bits & mask));
}

void copyWholeBytes(const uchar* source, int bit, uchar* target, int count, uchar invert)
{
    if (bit == 0) {
        for (int i = 0; i < count; ++i) {
            target[i] = source[i] ^ invert;
        }
        return;
    }
    for (int i = 0; i < count; ++i) {
        const unsigned bits = (static_cast<unsigned>(source[i]) << bit) |
                              (static_cast<unsigned>(source[i + 1]) >> (byteBits - bit));
        target[i] = static_cast<uchar>(bits) ^ invert;
    }
}

// Copies `count` bits from bit `from` of `source` to bit `to` of `target`, each
// exclusive-ored with `invert` (0x00 or 0xFF).
void copyBits(const uchar* source, int from, uchar* target, int to, int count, uchar invert)
{
    const int head = std::min(count, (byteBits - to % byteBits) % byteBits);
    if (head > 0) {
        copyPartOfByte(source, from, target[to / byteBits], to % byteBits, head, invert);
    }
    from += head;
    to += head;
    const int wholeBytes = (count - head) / byteBits;
    copyWholeBytes(source + from / byteBits, from % byteBits, target + to / byteBits, wholeBytes,
                   invert);
    const int copied = wholeBytes * byteBits;
    const int tail = count - head - copied;
    if (tail > 0) {
        copyPartOfByte(source, from + copied, target[(to + copied) / byteBits], 0, tail, invert);
    }
}

} // namespace

bool BilevelImage::isBlackAndWhite(const QImage& image)
{
    if (image.format() != QImage::Format_Mono || image.colorCount() != 2 ||
        image.devicePixelRatio() != 1.0) {
        return false;
    }
    const QRgb first = image.color(0);
    const QRgb second = image.color(1);
    return (first == opaqueWhite && second == opaqueBlack) ||
           (first == opaqueBlack && second == opaqueWhite);
}

bool BilevelImage::isTooLargeToPaint(const QSize& size)
{
    constexpr int largestPaintedSide = 32767;
    return std::max(size.width(), size.height()) > largestPaintedSide;
}

QImage BilevelImage::whitePage(const QSize& size)
{
    QImage page(size, QImage::Format_Mono);
    if (!page.isNull()) {
        clear(page);
        page.setColorTable({opaqueWhite, opaqueBlack});
    }
    return page;
}

QImage BilevelImage::squeezed(const QImage& image, const QSize& size)
{
    if (std::max(image.width(), image.height()) > largestSqueezedSide) {
        return squeezedByQt(image, size);
    }
    QImage result = emptyImage(image, size);
    if (result.isNull()) {
        return result;
    }
    const std::vector<int> rows = sourceLines(image.height(), size.height());
    if (size.width() == image.width()) {
        for (std::size_t y = 0; y < rows.size(); ++y) {
            uchar* row = result.scanLine(static_cast<int>(y));
            std::memcpy(row, image.constScanLine(rows[y]),
                        static_cast<std::size_t>(bytesFor(size.width())));
            clearBeyondWidth(row, size.width());
        }
        return result;
    }
    const std::vector<int> columns = sourceLines(image.width(), size.width());
    std::vector<uchar> columnBytes(static_cast<std::size_t>(bytesFor(image.width())) *
                                   std::size_t{byteBits});
    for (std::size_t y = 0; y < rows.size(); y += byteBits) {
        EightRows source = {};
        std::array<uchar*, byteBits> target = {};
        for (std::size_t i = 0; i < byteBits && y + i < rows.size(); ++i) {
            source[i] = image.constScanLine(rows[y + i]);
            target[i] = result.scanLine(static_cast<int>(y + i));
        }
        splitColumns(source, columnBytes);
        joinColumns(columnBytes, columns, target);
    }
    return result;
}

QImage BilevelImage::turnedClockwise(const QImage& image)
{
    QImage result = emptyImage(image, image.size().transposed());
    if (!result.isNull()) {
        transposeRows(image.constScanLine(image.height() - 1), -image.bytesPerLine(), image.size(),
                      result.bits(), result.bytesPerLine());
    }
    return result;
}

QImage BilevelImage::turnedCounterclockwise(const QImage& image)
{
    QImage result = emptyImage(image, image.size().transposed());
    if (!result.isNull()) {
        transposeRows(image.constBits(), image.bytesPerLine(), image.size(),
                      result.scanLine(result.height() - 1), -result.bytesPerLine());
    }
    return result;
}

QImage BilevelImage::placed(const QImage& image, const QRect& source, const QSize& size,
                            const QPoint& position)
{
    if (isTooLargeToPaint(size)) {
        return QImage();
    }
    QImage page = whitePage(size);
    if (page.isNull()) {
        return page;
    }
    const uchar invert = image.color(0) == opaqueWhite ? 0x00 : 0xFF;
    for (int y = 0; y < source.height(); ++y) {
        copyBits(image.constScanLine(source.y() + y), source.x(), page.scanLine(position.y() + y),
                 position.x(), source.width(), invert);
    }
    return page;
}
