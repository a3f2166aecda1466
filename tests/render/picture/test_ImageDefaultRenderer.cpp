#include "render/picture/ImageDefaultRenderer.h"

#include "app/settings/RenderSize.h"
#include "support/PrintQt.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QTransform>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include <malloc.h>

namespace {

const auto rowName = [](const auto& test) { return std::string{test.param.name}; };

RenderSize sized(int width, int height)
{
    return {{width, height}, {204, 196}};
}

/// A renderer over data in memory.
class RasterFile
{
public:
    RasterFile(const QByteArray& format, QByteArray data)
        : m_data(std::move(data)),
          m_renderer(format)
    {
        EXPECT_TRUE(m_device.open(QIODevice::ReadOnly));
        m_renderer.setDevice(&m_device);
    }

    const ImageDefaultRenderer& renderer() const { return m_renderer; }

    /// The page at `size`; null, with a test failure, if it cannot be rendered.
    QImage page(unsigned long index, const QSize& size) const
    {
        QImage image;
        EXPECT_TRUE(m_renderer.render(index, {size, {204, 196}}, image));
        return image;
    }

    bool isRendered() const
    {
        QImage image;
        return m_renderer.render(0, sized(16, 16), image);
    }

private:
    QByteArray m_data;
    QBuffer m_device{&m_data};
    ImageDefaultRenderer m_renderer;
};

QByteArray tiffData(const QImage& image)
{
    return SampleImages::tiffFile({{image}});
}

QByteArray jpegData(const QImage& image)
{
    return SampleImages::jpegFile(image);
}

// A JPEG does not keep its colours to the last bit.
bool isNearly(QRgb actual, QRgb expected)
{
    constexpr int tolerance = 4;
    return std::abs(qRed(actual) - qRed(expected)) <= tolerance &&
           std::abs(qGreen(actual) - qGreen(expected)) <= tolerance &&
           std::abs(qBlue(actual) - qBlue(expected)) <= tolerance;
}

// The device.

TEST(ImageDefaultRenderer, HasNoDeviceAtFirst)
{
    EXPECT_EQ(ImageDefaultRenderer("png").device(), nullptr);
}

TEST(ImageDefaultRenderer, GivesTheDeviceThatWasSet)
{
    QBuffer device;
    ImageDefaultRenderer renderer("png");
    renderer.setDevice(&device);
    EXPECT_EQ(renderer.device(), &device);
}

TEST(ImageDefaultRenderer, DoesNotOwnTheDevice)
{
    QBuffer device;
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    auto renderer = std::make_unique<ImageDefaultRenderer>("png");
    renderer->setDevice(&device);
    renderer.reset();
    EXPECT_TRUE(device.isOpen());
}

TEST(ImageDefaultRenderer, ReadsFromTheDeviceThatWasSetLast)
{
    QByteArray firstData = SampleImages::pngFile(SampleImages::quarters({10, 20}));
    QByteArray secondData = SampleImages::pngFile(SampleImages::quarters({30, 40}));
    QBuffer first(&firstData);
    QBuffer second(&secondData);
    ImageDefaultRenderer renderer("png");
    renderer.setDevice(&first);
    ASSERT_EQ(renderer.size(0), QSize(10, 20));
    renderer.setDevice(&second);
    EXPECT_EQ(renderer.size(0), QSize(30, 40));
}

// Without a device.

TEST(ImageDefaultRenderer, WithoutADeviceCountsNoPages)
{
    EXPECT_EQ(ImageDefaultRenderer("png").count(), 0UL);
}

TEST(ImageDefaultRenderer, WithoutADeviceHasAnInvalidSize)
{
    EXPECT_FALSE(ImageDefaultRenderer("png").size(0).isValid());
}

TEST(ImageDefaultRenderer, WithoutADeviceDoesNotRender)
{
    QImage image;
    EXPECT_FALSE(ImageDefaultRenderer("png").render(0, sized(16, 16), image));
}

// Counting.

// No plug-in knows the format, and the data must not be asked for another one.
class UnknownFormatName : public testing::Test
{
protected:
    QByteArray m_data = SampleImages::pngFile(SampleImages::quarters({16, 16}));
    RasterFile m_file{"no-such-format", m_data};
};

TEST_F(UnknownFormatName, GivesANegativeCountThatBecomesNoPages)
{
    QBuffer device(&m_data);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    QImageReader reader(&device, "no-such-format");
    reader.setAutoDetectImageFormat(false);
    ASSERT_LT(reader.imageCount(), 0);
    EXPECT_EQ(m_file.renderer().count(), 0UL);
}

TEST_F(UnknownFormatName, DoesNotRenderDataOfAKnownFormat)
{
    EXPECT_FALSE(m_file.isRendered());
}

TEST(ImageDefaultRenderer, CountsOnePageInAJpeg)
{
    const RasterFile file("jpeg", jpegData(SampleImages::quarters({16, 16})));
    EXPECT_EQ(file.renderer().count(), 1UL);
}

TEST(ImageDefaultRenderer, CountsOnePageInAPng)
{
    const RasterFile file("png", SampleImages::pngFile(SampleImages::quarters({16, 16})));
    EXPECT_EQ(file.renderer().count(), 1UL);
}

TEST(ImageDefaultRenderer, CountsOnePageInATiffOfOnePage)
{
    const RasterFile file("tiff", tiffData(SampleImages::quarters({16, 16})));
    EXPECT_EQ(file.renderer().count(), 1UL);
}

// A TIFF of three pages, each of another size and kind.

class ThreePageTiff : public testing::Test
{
protected:
    QImage m_pages[3] = {SampleImages::bilevel({40, 20}), SampleImages::quarters({24, 30}),
                         SampleImages::bilevel({15, 34})};
    RasterFile m_file{"tiff", SampleImages::tiffFile({{m_pages[0]}, {m_pages[1]}, {m_pages[2]}})};
};

TEST_F(ThreePageTiff, HasThreePages)
{
    EXPECT_EQ(m_file.renderer().count(), 3UL);
}

TEST_F(ThreePageTiff, GivesTheSizeOfTheFirstPage)
{
    EXPECT_EQ(m_file.renderer().size(0), QSize(40, 20));
}

TEST_F(ThreePageTiff, GivesTheSizeOfTheSecondPage)
{
    EXPECT_EQ(m_file.renderer().size(1), QSize(24, 30));
}

TEST_F(ThreePageTiff, GivesTheSizeOfTheThirdPage)
{
    EXPECT_EQ(m_file.renderer().size(2), QSize(15, 34));
}

TEST_F(ThreePageTiff, DecodesTheThirdPage)
{
    EXPECT_TRUE(SampleImages::isSameImage(m_file.page(2, {15, 34}), m_pages[2]));
}

TEST_F(ThreePageTiff, DecodesAllPagesInOrder)
{
    for (unsigned long index = 0; index < 3; ++index) {
        const QImage& expected = m_pages[index];
        ASSERT_EQ(m_file.renderer().size(index), expected.size()) << "page " << index;
        EXPECT_TRUE(SampleImages::isSameImage(m_file.page(index, expected.size()), expected))
            << "page " << index;
    }
}

TEST_F(ThreePageTiff, DecodesAnEarlierPageAfterALaterOne)
{
    m_file.page(2, {15, 34});
    EXPECT_TRUE(SampleImages::isSameImage(m_file.page(0, {40, 20}), m_pages[0]));
}

TEST_F(ThreePageTiff, GivesEveryPageTheSizeOfItsOwnRequest)
{
    m_file.page(0, {80, 10});
    EXPECT_EQ(m_file.page(1, {12, 60}).size(), QSize(12, 60));
}

TEST_F(ThreePageTiff, TakesAnIndexAsASigned32BitNumber)
{
    EXPECT_EQ(m_file.renderer().size(0x100000002UL), QSize(15, 34));
}

// Decoding at the stored size and at another one.

struct KindRow
{
    const char* name;
    const char* format;
    QByteArray (*data)(const QImage& image);
};

const KindRow kindRows[] = {
    {"Tiff", "tiff", tiffData},
    {"Jpeg", "jpeg", jpegData},
    {"Png", "png", SampleImages::pngFile},
};

class AnyKind : public testing::TestWithParam<KindRow>
{
protected:
    QByteArray m_data = GetParam().data(SampleImages::quarters({64, 32}));
    RasterFile m_file{GetParam().format, m_data};
};

TEST_P(AnyKind, HasTheStoredSize)
{
    EXPECT_EQ(m_file.renderer().size(0), QSize(64, 32));
}

TEST_P(AnyKind, IsDecodedAtTheStoredSizeAsItIs)
{
    EXPECT_TRUE(SampleImages::isSameImage(m_file.page(0, {64, 32}),
                                          QImage::fromData(m_data, GetParam().format)));
}

TEST_P(AnyKind, IsDecodedAtASmallerSize)
{
    EXPECT_EQ(m_file.page(0, {40, 9}).size(), QSize(40, 9));
}

TEST_P(AnyKind, IsDecodedAtALargerSize)
{
    EXPECT_EQ(m_file.page(0, {101, 77}).size(), QSize(101, 77));
}

TEST_P(AnyKind, IsScaledWholeWithoutKeepingItsProportions)
{
    const QImage page = m_file.page(0, {32, 128});
    EXPECT_TRUE(isNearly(page.pixel(0, 0), qRgb(255, 0, 0)));
    EXPECT_TRUE(isNearly(page.pixel(31, 0), qRgb(0, 255, 0)));
    EXPECT_TRUE(isNearly(page.pixel(0, 127), qRgb(0, 0, 255)));
    EXPECT_TRUE(isNearly(page.pixel(31, 127), qRgb(255, 255, 255)));
}

TEST_P(AnyKind, IsFoundByItsContentIfNoFormatIsGiven)
{
    const RasterFile file("", m_data);
    EXPECT_EQ(file.renderer().size(0), QSize(64, 32));
    EXPECT_EQ(file.page(0, {64, 32}).size(), QSize(64, 32));
}

TEST_P(AnyKind, DoesNotLookAtTheResolutionOfTheRequest)
{
    QImage image;
    ASSERT_TRUE(m_file.renderer().render(0, {{64, 32}, {0, 0}}, image));
    EXPECT_EQ(image.size(), QSize(64, 32));
}

INSTANTIATE_TEST_SUITE_P(ImageDefaultRenderer, AnyKind, testing::ValuesIn(kindRows), rowName);

// The name of the file must not matter if the data are to decide.
TEST(ImageDefaultRenderer, WithoutAFormatDecidesByTheDataAndNotByTheFileName)
{
    const TemporaryFolder folder;
    const std::string name =
        folder.write("picture.png", jpegData(SampleImages::quarters({16, 32})));
    QFile device(QString::fromStdString(name));
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    ImageDefaultRenderer renderer{QByteArray()};
    renderer.setDevice(&device);
    EXPECT_EQ(renderer.size(0), QSize(16, 32));
}

// A page of the only image of a file is that image, whatever the index.
TEST(ImageDefaultRenderer, AJumpThatFailsIsNotAFailure)
{
    const RasterFile file("png", SampleImages::pngFile(SampleImages::quarters({16, 16})));
    EXPECT_EQ(file.page(7, {16, 16}).size(), QSize(16, 16));
}

TEST(ImageDefaultRenderer, ANameThatEndsInAt2xGivesADevicePixelRatioOfTwo)
{
    const TemporaryFolder folder;
    const std::string name =
        folder.write("photo@2x.png", SampleImages::pngFile(SampleImages::quarters({16, 32})));
    QFile device(QString::fromStdString(name));
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    ImageDefaultRenderer renderer("png");
    renderer.setDevice(&device);
    QImage image;
    ASSERT_TRUE(renderer.render(0, sized(16, 32), image));
    EXPECT_EQ(image.size(), QSize(16, 32));
    EXPECT_EQ(image.devicePixelRatio(), 2.0);
}

// Bilevel TIFF.

struct PhotometricRow
{
    const char* name;
    QImage (*picture)();
};

const PhotometricRow photometricRows[] = {
    {"MinIsWhite", [] { return SampleImages::bilevel({37, 21}); }},
    {"MinIsBlack",
     [] { return SampleImages::withColoursExchanged(SampleImages::bilevel({37, 21})); }},
};

class BilevelTiff : public testing::TestWithParam<PhotometricRow>
{
protected:
    RasterFile m_file{"tiff", tiffData(GetParam().picture())};
};

TEST_P(BilevelTiff, StaysBilevel)
{
    EXPECT_EQ(m_file.page(0, {37, 21}).format(), QImage::Format_Mono);
}

TEST_P(BilevelTiff, HasTheSamePixels)
{
    EXPECT_TRUE(
        SampleImages::isSameImage(m_file.page(0, {37, 21}), SampleImages::bilevel({37, 21})));
}

INSTANTIATE_TEST_SUITE_P(ImageDefaultRenderer, BilevelTiff, testing::ValuesIn(photometricRows),
                         rowName);

// Transparent PNG.

// 16 bits for each colour, and white for the transparent one.
QByteArray pngWithATransparentColour(const QSize& size)
{
    QImage image(size, QImage::Format_RGBX64);
    image.fill(Qt::gray);
    QByteArray file = SampleImages::pngFile(image);
    const QByteArray transparentWhite("\0\0\0\x06tRNS\xff\xff\xff\xff\xff\xff\x9e\xbd\x4b\x32", 18);
    constexpr int endOfHeader = 33;
    return file.insert(endOfHeader, transparentWhite);
}

// Without memory of the program's own, which would show in a fax, it cannot
// matter what stood in the memory that the decoder was given.
TEST(ImageDefaultRenderer, ShowsNoLeftoverMemoryInAPngWithATransparentColour)
{
    const RasterFile file("png", pngWithATransparentColour({64, 32}));
    mallopt(M_PERTURB, 0x55);
    const QImage first = file.page(0, {32, 16});
    mallopt(M_PERTURB, 0xAA);
    const RasterFile again("png", pngWithATransparentColour({64, 32}));
    const QImage second = again.page(0, {32, 16});
    mallopt(M_PERTURB, 0);
    EXPECT_TRUE(SampleImages::isSameImage(first, second));
}

TEST(ImageDefaultRenderer, KeepsTheTransparencyOfAPng)
{
    const QImage picture = SampleImages::transparent({40, 30});
    const RasterFile file("png", SampleImages::pngFile(picture));
    const QImage page = file.page(0, {40, 30});
    EXPECT_TRUE(page.hasAlphaChannel());
    EXPECT_TRUE(SampleImages::isSameImage(page, picture));
}

// Orientation metadata. Tag 6 says, for example, that the picture as it is
// stored has to be turned clockwise by a quarter turn to be seen upright.

struct OrientationRow
{
    const char* name;
    int orientation;
    bool isMirrored; // from left to right, in front of the turn
    int degreesClockwise;
    QSize size; // of the page as it appears, when 400 x 300 are stored
};

const OrientationRow orientationRows[] = {
    {"Tag1IsUpright", 1, false, 0, {400, 300}},
    {"Tag2IsMirrored", 2, true, 0, {400, 300}},
    {"Tag3IsTurnedByHalf", 3, false, 180, {400, 300}},
    {"Tag4IsMirroredAndTurnedByHalf", 4, true, 180, {400, 300}},
    {"Tag5IsMirroredAndTurnedLeft", 5, true, 270, {300, 400}},
    {"Tag6IsTurnedRight", 6, false, 90, {300, 400}},
    {"Tag7IsMirroredAndTurnedRight", 7, true, 90, {300, 400}},
    {"Tag8IsTurnedLeft", 8, false, 270, {300, 400}},
};

class Orientation : public testing::TestWithParam<OrientationRow>
{
protected:
    static QImage upright(const QImage& stored)
    {
        return stored.mirrored(GetParam().isMirrored, false)
            .transformed(QTransform().rotate(GetParam().degreesClockwise));
    }

    QImage m_stored = SampleImages::quarters({400, 300});
    QByteArray m_plainJpeg = SampleImages::jpegFile(m_stored);
    RasterFile m_jpeg{"jpeg", SampleImages::jpegFile(m_stored, GetParam().orientation)};
    RasterFile m_tiff{
        "tiff",
        SampleImages::tiffFile({{m_stored, static_cast<std::uint16_t>(GetParam().orientation)}})};
};

TEST_P(Orientation, GivesTheSizeOfAJpegAsItAppears)
{
    EXPECT_EQ(m_jpeg.renderer().size(0), GetParam().size);
}

TEST_P(Orientation, IsAppliedToAJpeg)
{
    EXPECT_TRUE(SampleImages::isSameImage(m_jpeg.page(0, {400, 300}),
                                          upright(QImage::fromData(m_plainJpeg))));
}

// A request is for the picture as it is stored: it is turned after scaling.
TEST_P(Orientation, IsAppliedToAJpegAfterItWasScaled)
{
    const QSize expected = GetParam().degreesClockwise % 180 == 0 ? QSize(80, 30) : QSize(30, 80);
    EXPECT_EQ(m_jpeg.page(0, {80, 30}).size(), expected);
}

TEST_P(Orientation, GivesTheSizeOfATiffAsItAppears)
{
    EXPECT_EQ(m_tiff.renderer().size(0), GetParam().size);
}

TEST_P(Orientation, IsAppliedToATiff)
{
    EXPECT_TRUE(SampleImages::isSameImage(m_tiff.page(0, {400, 300}), upright(m_stored)));
}

INSTANTIATE_TEST_SUITE_P(ImageDefaultRenderer, Orientation, testing::ValuesIn(orientationRows),
                         rowName);

// Data that are not what they should be. Whether pages are counted depends on
// the plug-in: that of TIFF counts before it looks. None of them is rendered.

struct BadRow
{
    const char* name;
    const char* format;
    QByteArray (*data)();
    unsigned long count;
};

QByteArray junk()
{
    return "This is no picture at all, but it is longer than any signature.";
}

QByteArray validPng()
{
    return SampleImages::pngFile(SampleImages::quarters({64, 64}));
}

QByteArray validJpeg()
{
    return SampleImages::jpegFile(SampleImages::quarters({64, 64}));
}

QByteArray validTiff()
{
    return tiffData(SampleImages::quarters({64, 64}));
}

const BadRow badRows[] = {
    {"JunkAsPngHasNoPages", "png", junk, 0},
    {"JunkAsJpegHasNoPages", "jpeg", junk, 0},
    {"JunkAsTiffHasOnePage", "tiff", junk, 1},
    {"JpegDataAsPngHaveNoPages", "png", validJpeg, 0},
    {"TiffDataAsPngHaveNoPages", "png", validTiff, 0},
    {"PngDataAsJpegHaveNoPages", "jpeg", validPng, 0},
    {"TiffDataAsJpegHaveNoPages", "jpeg", validTiff, 0},
    {"PngDataAsTiffHaveOnePage", "tiff", validPng, 1},
    {"JpegDataAsTiffHaveOnePage", "tiff", validJpeg, 1},
    {"NothingAsPngHasNoPages", "png", [] { return QByteArray(); }, 0},
    {"NothingAsJpegHasNoPages", "jpeg", [] { return QByteArray(); }, 0},
    {"NothingAsTiffHasOnePage", "tiff", [] { return QByteArray(); }, 1},
    {"APngCutInItsSignatureHasNoPages", "png", [] { return validPng().left(4); }, 0},
    {"APngCutInItsHeaderHasOnePage", "png", [] { return validPng().left(20); }, 1},
    {"AJpegCutInItsHeaderHasOnePage", "jpeg", [] { return validJpeg().left(60); }, 1},
    {"ATiffCutInItsHeaderHasOnePage", "tiff", [] { return validTiff().left(6); }, 1},
};

class BadData : public testing::TestWithParam<BadRow>
{
protected:
    RasterFile m_file{GetParam().format, GetParam().data()};
};

TEST_P(BadData, CountsWhatThePlugInCounts)
{
    EXPECT_EQ(m_file.renderer().count(), GetParam().count);
}

TEST_P(BadData, HasAnInvalidSize)
{
    EXPECT_FALSE(m_file.renderer().size(0).isValid());
}

TEST_P(BadData, IsNotRendered)
{
    EXPECT_FALSE(m_file.isRendered());
}

INSTANTIATE_TEST_SUITE_P(ImageDefaultRenderer, BadData, testing::ValuesIn(badRows), rowName);

} // namespace
