#include "support/TiffFile.h"

#include <QByteArray>
#include <QFile>

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace {

enum Tag : std::uint16_t
{
    BitsPerSample = 258,
    PhotometricInterpretation = 262,
    StripOffsets = 273,
    SamplesPerPixel = 277,
    StripByteCounts = 279,
};

constexpr QRgb whitePixel = 0xFFFFFFFF;
constexpr QRgb blackPixel = 0xFF000000;

// The numbers of a TIFF file by their offset, in the byte order of the file.
class FileBytes
{
public:
    explicit FileBytes(QByteArray bytes) : m_bytes(std::move(bytes))
    {
        constexpr int classicTiff = 42;
        const std::vector<unsigned char> mark = slice(0, 2);
        m_isBigEndian = mark[0] == 'M';
        if ((mark[0] != 'M' && mark[0] != 'I') || mark[1] != mark[0] || at16(2) != classicTiff) {
            throw std::runtime_error("has no header of a classic TIFF file");
        }
    }

    std::uint16_t at16(std::uint64_t offset) const
    {
        return static_cast<std::uint16_t>(unsignedAt(offset, 2));
    }

    std::uint32_t at32(std::uint64_t offset) const
    {
        return static_cast<std::uint32_t>(unsignedAt(offset, 4));
    }

    std::uint64_t unsignedAt(std::uint64_t offset, std::size_t width) const
    {
        std::vector<unsigned char> bytes = slice(offset, width);
        if (!m_isBigEndian) {
            std::reverse(bytes.begin(), bytes.end());
        }
        std::uint64_t value = 0;
        for (const unsigned char byte : bytes) {
            value = value << 8U | byte;
        }
        return value;
    }

    std::vector<unsigned char> slice(std::uint64_t offset, std::uint64_t length) const
    {
        const auto size = static_cast<std::uint64_t>(m_bytes.size());
        if (length > size || offset > size - length) {
            throw std::runtime_error("ends before byte " + std::to_string(offset + length));
        }
        const auto* start = reinterpret_cast<const unsigned char*>(m_bytes.constData()) + offset;
        return {start, start + length};
    }

private:
    QByteArray m_bytes;
    bool m_isBigEndian = false;
};

// The field types of TIFF 6.0, section 2, that hold whole numbers or rationals.
std::size_t widthOfType(std::uint16_t type)
{
    switch (type) {
    case TIFF_BYTE:
    case TIFF_ASCII:
    case TIFF_UNDEFINED:
        return 1;
    case TIFF_SHORT:
        return 2;
    case TIFF_LONG:
        return 4;
    case TIFF_RATIONAL:
        return 8;
    default:
        throw std::runtime_error("has a field of the unknown type " + std::to_string(type));
    }
}

// The values of the directory entry at `entry`.
std::vector<double> readValues(const FileBytes& file, std::uint64_t entry)
{
    constexpr std::uint64_t valueBytesInEntry = 4;
    const std::uint16_t type = file.at16(entry + 2);
    const std::uint32_t count = file.at32(entry + 4);
    const std::size_t width = widthOfType(type);
    const std::uint64_t valueField = entry + 8;
    std::uint64_t offset = width * count > valueBytesInEntry ? file.at32(valueField) : valueField;

    std::vector<double> values;
    for (std::uint32_t i = 0; i < count; ++i, offset += width) {
        if (type == TIFF_RATIONAL) {
            values.push_back(static_cast<double>(file.at32(offset)) / file.at32(offset + 4));
        } else {
            values.push_back(static_cast<double>(file.unsignedAt(offset, width)));
        }
    }
    return values;
}

std::vector<unsigned char> readCodedData(const FileBytes& file, const TiffPage& page)
{
    const std::vector<double>& offsets = page.tags.at(StripOffsets);
    const std::vector<double>& byteCounts = page.tags.at(StripByteCounts);
    if (offsets.size() != byteCounts.size()) {
        throw std::runtime_error("has strips without an offset or a length");
    }
    std::vector<unsigned char> data;
    for (std::size_t strip = 0; strip < offsets.size(); ++strip) {
        const std::vector<unsigned char> bytes =
            file.slice(static_cast<std::uint64_t>(offsets[strip]),
                       static_cast<std::uint64_t>(byteCounts[strip]));
        data.insert(data.end(), bytes.begin(), bytes.end());
    }
    return data;
}

// Reads the directory at `offset`; the result is the offset of the next one.
std::uint32_t readDirectory(const FileBytes& file, std::uint64_t offset, TiffPage& page)
{
    constexpr std::uint64_t entryBytes = 12;
    const std::uint64_t count = file.at16(offset);
    std::uint64_t entry = offset + 2;
    for (std::uint64_t i = 0; i < count; ++i, entry += entryBytes) {
        const std::uint16_t tag = file.at16(entry);
        if (!page.tags.empty() && tag <= page.tags.rbegin()->first) {
            throw std::runtime_error("has tag " + std::to_string(tag) + " out of order");
        }
        page.tags[tag] = readValues(file, entry);
    }
    page.codedData = readCodedData(file, page);
    return file.at32(entry);
}

std::vector<TiffPage> readDirectories(const FileBytes& file)
{
    constexpr std::size_t directoryLimit = 10000; // A chain of directories must not be a ring.
    std::vector<TiffPage> pages;
    std::uint32_t offset = file.at32(4);
    while (offset != 0) {
        if (pages.size() == directoryLimit) {
            throw std::runtime_error("has too many directories");
        }
        pages.emplace_back();
        offset = readDirectory(file, offset, pages.back());
    }
    if (pages.empty()) {
        throw std::runtime_error("has no directory");
    }
    return pages;
}

struct TiffCloser
{
    void operator()(TIFF* handle) const { TIFFClose(handle); }
};

void clearBeyondWidth(QImage& image)
{
    constexpr int byteBits = 8;
    const int usedBits = image.width() % byteBits;
    for (int y = 0; usedBits != 0 && y < image.height(); ++y) {
        uchar& lastByte = image.scanLine(y)[image.width() / byteBits];
        lastByte = static_cast<uchar>(lastByte & (0xFFU << static_cast<unsigned>(8 - usedBits)));
    }
}

// The picture of the directory that libtiff has read last.
QImage decodePixels(TIFF* tiff, const TiffPage& page)
{
    if (page.tags.at(BitsPerSample) != std::vector<double>{1} ||
        page.tags.at(SamplesPerPixel) != std::vector<double>{1}) {
        throw std::runtime_error("has a page that is not bilevel");
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_Mono);
    if (image.isNull() || image.bytesPerLine() < TIFFScanlineSize(tiff)) {
        throw std::runtime_error("has a page without a size");
    }
    image.fill(0);
    for (std::uint32_t row = 0; row < height; ++row) {
        if (TIFFReadScanline(tiff, image.scanLine(static_cast<int>(row)), row, 0) != 1) {
            throw std::runtime_error("cannot be decoded from row " + std::to_string(row));
        }
    }
    if (page.tags.at(PhotometricInterpretation) == std::vector<double>{PHOTOMETRIC_MINISBLACK}) {
        image.invertPixels();
    }
    clearBeyondWidth(image);
    image.setColorTable({whitePixel, blackPixel});
    return image;
}

void decodePages(const std::string& fileName, std::vector<TiffPage>& pages)
{
    const std::unique_ptr<TIFF, TiffCloser> tiff(TIFFOpen(fileName.c_str(), "r"));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (!tiff || (i != 0 && TIFFReadDirectory(tiff.get()) != 1)) {
            throw std::runtime_error("has a directory that libtiff cannot read");
        }
        pages[i].pixels = decodePixels(tiff.get(), pages[i]);
    }
    if (TIFFLastDirectory(tiff.get()) == 0) {
        throw std::runtime_error("has more directories for libtiff");
    }
}

QImage withWhiteAtZero(const QImage& image)
{
    QImage result = image.convertToFormat(QImage::Format_Mono);
    if (qGray(result.color(0)) < qGray(result.color(1))) {
        result.invertPixels();
    }
    clearBeyondWidth(result);
    return result;
}

bool isBilevel(const QImage& image)
{
    return image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB;
}

} // namespace

std::vector<TiffPage> readTiff(const std::string& fileName)
{
    try {
        QFile file(QString::fromStdString(fileName));
        if (!file.open(QIODevice::ReadOnly)) {
            throw std::runtime_error("cannot be opened");
        }
        std::vector<TiffPage> pages = readDirectories(FileBytes(file.readAll()));
        decodePages(fileName, pages);
        return pages;
    } catch (const std::exception& error) {
        ADD_FAILURE() << fileName << ' ' << error.what();
        return {};
    }
}

testing::AssertionResult isSamePicture(const QImage& actual, const QImage& expected)
{
    if (!isBilevel(actual) || !isBilevel(expected)) {
        return testing::AssertionFailure() << "has the format " << actual.format() << ", expected "
                                           << expected.format() << "; both must be bilevel";
    }
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure()
               << "is " << actual.width() << " x " << actual.height() << ", expected "
               << expected.width() << " x " << expected.height();
    }
    const QImage left = withWhiteAtZero(actual);
    const QImage right = withWhiteAtZero(expected);
    const auto usedBytes = static_cast<std::size_t>((left.width() + 7) / 8);
    for (int y = 0; y < left.height(); ++y) {
        if (std::memcmp(left.constScanLine(y), right.constScanLine(y), usedBytes) == 0) {
            continue;
        }
        int x = 0;
        while (left.pixelIndex(x, y) == right.pixelIndex(x, y)) {
            ++x;
        }
        return testing::AssertionFailure()
               << "differs first in row " << y << ", column " << x << ": is "
               << (left.pixelIndex(x, y) == 0 ? "white" : "black");
    }
    return testing::AssertionSuccess();
}
