#include "fax/page/FaxImageBuilder.h"

#include "support/ReferencePage.h"

#include <QVector>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <vector>

// Every step and chain of steps over every image format has to give exactly
// what Qt's plain operations give.
namespace {

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

struct FormatRow
{
    const char* name;
    QVector<QRgb> colours; // instead of those that the conversion gives
    QImage::Format format;
    bool keepsAlpha = false; // in the byte that the format does not use
};

// What Qt's decoders and painters give, and one format that they do not.
const FormatRow formatRows[] = {
    {"MonoBlackWhite", {black, white}, QImage::Format_Mono},
    {"MonoWhiteBlack", {white, black}, QImage::Format_Mono},
    {"MonoWhiteWhite", {white, white}, QImage::Format_Mono},
    {"MonoBlueWhite", {0xFF2040A0, white}, QImage::Format_Mono},
    {"MonoWhiteRed", {white, 0xFF802010}, QImage::Format_Mono},
    {"MonoBlackAlmostWhite", {black, 0xFFFFFFFE}, QImage::Format_Mono},
    {"MonoTransparentBlack", {0x00FFFFFF, black}, QImage::Format_Mono},
    {"MonoBlackHalfTransparentWhite", {black, 0x80FFFFFF}, QImage::Format_Mono},
    {"MonoLsbBlackWhite", {black, white}, QImage::Format_MonoLSB},
    {"MonoLsbRedYellow", {0xFF802010, 0xFFFFF0A0}, QImage::Format_MonoLSB},
    {"Indexed8", {}, QImage::Format_Indexed8},
    {"Indexed8OfBlackAndWhite", {white, black}, QImage::Format_Indexed8},
    {"Indexed8WithTransparentColours",
     {0x00000000, 0x40FF0000, white, 0xFF808080, black},
     QImage::Format_Indexed8},
    {"Grayscale8", {}, QImage::Format_Grayscale8},
    {"Rgb32", {}, QImage::Format_RGB32},
    {"Rgb32WithAlphaInItsUnusedByte", {}, QImage::Format_RGB32, true},
    {"Argb32", {}, QImage::Format_ARGB32},
    {"Argb32Premultiplied", {}, QImage::Format_ARGB32_Premultiplied},
    {"Rgba8888", {}, QImage::Format_RGBA8888},
    {"Rgba8888Premultiplied", {}, QImage::Format_RGBA8888_Premultiplied},
    {"Rgb16", {}, QImage::Format_RGB16},
    {"Grayscale16", {}, QImage::Format_Grayscale16},
    {"Rgbx64", {}, QImage::Format_RGBX64},
    {"Rgba64", {}, QImage::Format_RGBA64},
    {"Rgba64Premultiplied", {}, QImage::Format_RGBA64_Premultiplied},
};

void PrintTo(const FormatRow& row, std::ostream* stream)
{
    *stream << row.name;
}

// Noise over a gradient, with corners of pure black, white and transparency.
QImage colourful(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32);
    std::uint32_t noise = 12345;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            noise = noise * 1664525U + 1013904223U;
            const int grey = 255 * (x + y) / (size.width() + size.height());
            const auto random = [noise](unsigned shift) {
                return static_cast<int>(noise >> shift) & 63;
            };
            QRgb pixel = qRgba(std::min(grey + random(24), 255), std::max(grey - random(18), 0),
                               random(12) * 4, y % 3 == 0 ? random(20) * 4 : 255);
            if (x < size.width() / 5 && y < size.height() / 2) {
                pixel = x % 7 == y % 5 ? black : white;
            } else if (x > size.width() * 4 / 5 && y > size.height() / 2) {
                pixel = 0x00000000;
            }
            image.setPixel(x, y, pixel);
        }
    }
    return image;
}

QImage inFormat(const QImage& picture, const FormatRow& row)
{
    if (row.keepsAlpha) {
        // Premultiplied, as a painted page takes it to be.
        QImage image = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        image.reinterpretAsFormat(row.format);
        return image;
    }
    QImage image = picture.convertToFormat(row.format);
    if (row.colours.isEmpty()) {
        return image;
    }
    if (row.format == QImage::Format_Indexed8) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                image.setPixel(x, y,
                               static_cast<uint>(image.pixelIndex(x, y) % row.colours.size()));
            }
        }
    }
    image.setColorTable(row.colours);
    return image;
}

// The same image over a buffer of our own whose rows follow one another with
// `gap` pixels (bytes for 1-bit images) between them; all bits that belong to
// no pixel are set.
QImage overOwnBuffer(const QImage& image, int gap)
{
    const int usedBytes = (image.width() * image.depth() + 7) / 8;
    const int bytesPerLine = usedBytes + gap * std::max(image.depth() / 8, 1);
    const auto size =
        static_cast<std::size_t>(bytesPerLine) * static_cast<std::size_t>(image.height());
    auto* buffer = new uchar[size];
    std::memset(buffer, 0xFF, size);
    for (int y = 0; y < image.height(); ++y) {
        std::memcpy(buffer + static_cast<std::ptrdiff_t>(y) * bytesPerLine, image.constScanLine(y),
                    static_cast<std::size_t>(usedBytes));
    }
    QImage result(
        buffer, image.width(), image.height(), bytesPerLine, image.format(),
        [](void* memory) { delete[] static_cast<uchar*>(memory); }, buffer);
    result.setColorTable(image.colorTable());
    for (int y = 0; image.format() == QImage::Format_Mono && y < image.height(); ++y) {
        uchar& last = result.bits()[y * bytesPerLine + usedBytes - 1];
        last = static_cast<uchar>(last | ((1U << (usedBytes * 8 - image.width())) - 1U));
    }
    return result;
}

struct Picture
{
    std::string name;
    QImage image;
};

// Rows of every kind, except that Qt cannot turn the bits of packed rows round.
std::vector<Picture> picturesIn(const FormatRow& format)
{
    std::vector<Picture> pictures;
    const QSize sizes[] = {{37, 23}, {64, 32}, {61, 47},  {80, 90}, {1, 1},
                           {8, 8},   {16, 47}, {100, 20}, {3, 90}};
    for (const QSize& size : sizes) {
        const std::string name =
            std::to_string(size.width()) + " x " + std::to_string(size.height());
        const QImage image = inFormat(colourful(size), format);
        pictures.push_back({name, image});
        if (size.width() % 2 == 1 && format.format != QImage::Format_MonoLSB) {
            pictures.push_back({name + ", packed rows", overOwnBuffer(image, 0)});
            pictures.push_back({name + ", rows with gaps", overOwnBuffer(image, 1)});
        }
        for (const double ratio : {1.5, 2.0}) {
            QImage withRatio = image.copy();
            withRatio.setDevicePixelRatio(ratio);
            pictures.push_back({name + ", pixel ratio " + std::to_string(ratio), withRatio});
        }
    }
    return pictures;
}

constexpr QSize pageSize(61, 47);
constexpr QSize box(50, 40);

const std::map<char, QRect> areas = {
    {'f', QRect(0, 0, 61, 47)},   // the full page
    {'i', QRect(7, 5, 50, 40)},   // inside the page
    {'o', QRect(-6, -9, 80, 70)}, // overhanging on all sides
    {'n', QRect(20, 20, 5, 3)},   // narrower than most pictures
    {'b', QRect(70, 10, 30, 30)}, // beside the page
    {'z', QRect(20, 20, 0, 0)},   // nothing
};

const std::map<char, unsigned short> angles = {{'0', 0}, {'r', 90}, {'u', 180}, {'l', 270}};

void build(FaxImageBuilder& builder, char step)
{
    if (areas.count(step) != 0) {
        builder.fill(pageSize, areas.at(step), Qt::AlignCenter);
    } else if (angles.count(step) != 0) {
        builder.rotate(angles.at(step));
    } else if (step == 'm') {
        builder.monochromize();
    } else if (step == '?') {
        EXPECT_FALSE(builder.image().isNull());
    } else {
        builder.scale(box, step == 'e');
    }
}

QImage expected(const QImage& image, char step)
{
    if (areas.count(step) != 0) {
        return ReferencePage::filled(image, pageSize, areas.at(step));
    }
    if (angles.count(step) != 0) {
        return ReferencePage::rotated(image, angles.at(step));
    }
    if (step == 'm') {
        return ReferencePage::monochromized(image);
    }
    return step == '?' ? image : ReferencePage::scaled(image, box, step == 'e');
}

struct ChainRow
{
    const char* name;
    std::vector<const char*> chains; // a letter for each step, see build()
};

const ChainRow chainRows[] = {
    {"Rotating", {"0", "r", "u", "l", "rl", "rr"}},
    {"Scaling", {"s", "e", "rs", "le", "ue"}},
    {"Filling", {"f", "i", "o", "n", "b", "ri", "si", "ei", "ff", "fi", "i?"}},
    {"Monochromizing", {"m", "mm", "rm", "um", "lm", "sm", "em"}},
    {"FillingAndMonochromizing",
     {"fm", "im", "om", "nm", "bm", "i?m", "imm", "mf", "mi", "mim", "fim"}},
    {"FillingAnEmptyArea", {"z", "zm", "z?m"}},
    {"AllSteps", {"0sfm", "rsfm", "usim", "lsom", "reim", "ueim", "lenm", "reem", "0efm"}},
    {"StepsInAnotherOrder", {"ir", "is", "ie", "irfm", "imr", "ims", "fur", "iml", "nsi"}},
};

void PrintTo(const ChainRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxImageBuilderFormats : public testing::TestWithParam<std::tuple<ChainRow, FormatRow>>
{
};

TEST_P(FaxImageBuilderFormats, GiveWhatThePlainOperationsGive)
{
    const auto& [steps, format] = GetParam();
    for (const Picture& picture : picturesIn(format)) {
        const QImage original = picture.image.copy();
        for (const char* chain : steps.chains) {
            FaxImageBuilder builder(picture.image);
            QImage reference = original;
            for (const char* step = chain; *step != '\0'; ++step) {
                build(builder, *step);
                reference = expected(reference, *step);
            }
            ASSERT_TRUE(ReferencePage::isIdenticalImage(builder.image(), reference))
                << picture.name << ", steps " << chain;
        }
        ASSERT_TRUE(ReferencePage::isIdenticalImage(picture.image, original))
            << "the original of " << picture.name << " was changed";
    }
}

INSTANTIATE_TEST_SUITE_P(All, FaxImageBuilderFormats,
                         testing::Combine(testing::ValuesIn(chainRows),
                                          testing::ValuesIn(formatRows)),
                         [](const auto& test) {
                             return std::string{std::get<0>(test.param).name} + "Of" +
                                    std::get<1>(test.param).name;
                         });

} // namespace
