#include "render/ImageGlobalRendererFactory.h"

#include "app/settings/RenderSize.h"
#include "render/html/ImageHtmlRenderer.h"
#include "render/pdf/ImagePdfRenderer.h"
#include "render/picture/ImageDefaultRenderer.h"
#include "support/PrintQt.h"
#include "support/SampleImages.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

std::unique_ptr<ImageRenderer> created(FileFormat format)
{
    return std::unique_ptr<ImageRenderer>(
        ImageGlobalRendererFactory::instance().createRenderer(format));
}

template <typename Renderer>
bool isA(const std::unique_ptr<ImageRenderer>& renderer)
{
    return dynamic_cast<const Renderer*>(renderer.get()) != nullptr;
}

TEST(ImageGlobalRendererFactory, IsOneForTheWholeProcess)
{
    EXPECT_EQ(&ImageGlobalRendererFactory::instance(), &ImageGlobalRendererFactory::instance());
}

TEST(ImageGlobalRendererFactory, CreatesAPdfRendererForPdf)
{
    EXPECT_TRUE(isA<ImagePdfRenderer>(created(FileFormat::Pdf)));
}

TEST(ImageGlobalRendererFactory, CreatesAnHtmlRendererForHtml)
{
    EXPECT_TRUE(isA<ImageHtmlRenderer>(created(FileFormat::Html)));
}

TEST(ImageGlobalRendererFactory, CreatesNothingForTheUnknownFormat)
{
    EXPECT_EQ(created(FileFormat::Unknown), nullptr);
}

TEST(ImageGlobalRendererFactory, CreatesNothingForAValueOutsideTheEnumeration)
{
    EXPECT_EQ(created(static_cast<FileFormat>(6)), nullptr);
}

TEST(ImageGlobalRendererFactory, CreatesANewRendererForEachCall)
{
    const auto first = created(FileFormat::Png);
    const auto second = created(FileFormat::Png);
    EXPECT_NE(first, second);
}

struct FormatRow
{
    const char* name;
    FileFormat format;
};

const FormatRow formatRows[] = {
    {"Pdf", FileFormat::Pdf}, {"Tiff", FileFormat::Tiff}, {"Jpeg", FileFormat::Jpeg},
    {"Png", FileFormat::Png}, {"Html", FileFormat::Html},
};

class AnyRenderer : public testing::TestWithParam<FormatRow>
{
};

TEST_P(AnyRenderer, IsCreatedWithoutADevice)
{
    const auto renderer = created(GetParam().format);
    ASSERT_NE(renderer, nullptr);
    EXPECT_EQ(renderer->device(), nullptr);
}

TEST_P(AnyRenderer, WithoutADeviceCountsNoPages)
{
    const auto renderer = created(GetParam().format);
    ASSERT_NE(renderer, nullptr);
    EXPECT_EQ(renderer->count(), 0UL);
}

INSTANTIATE_TEST_SUITE_P(ImageGlobalRendererFactory, AnyRenderer, testing::ValuesIn(formatRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class RasterFormat : public testing::TestWithParam<FormatRow>
{
};

TEST_P(RasterFormat, IsGivenTheDefaultRenderer)
{
    EXPECT_TRUE(isA<ImageDefaultRenderer>(created(GetParam().format)));
}

const FormatRow rasterRows[] = {
    {"Tiff", FileFormat::Tiff}, {"Jpeg", FileFormat::Jpeg}, {"Png", FileFormat::Png}};

INSTANTIATE_TEST_SUITE_P(ImageGlobalRendererFactory, RasterFormat, testing::ValuesIn(rasterRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Whether the raster renderer was made for one format shows in what it decodes.

struct DataRow
{
    const char* name;
    QByteArray (*data)(const QImage& image);
    FileFormat format;
    bool isDecoded;
};

QByteArray tiffData(const QImage& image)
{
    return SampleImages::tiffFile({{image}});
}

QByteArray jpegData(const QImage& image)
{
    return SampleImages::jpegFile(image);
}

const DataRow dataRows[] = {
    {"TiffTakesTiffData", tiffData, FileFormat::Tiff, true},
    {"TiffRefusesJpegData", jpegData, FileFormat::Tiff, false},
    {"TiffRefusesPngData", SampleImages::pngFile, FileFormat::Tiff, false},
    {"JpegTakesJpegData", jpegData, FileFormat::Jpeg, true},
    {"JpegRefusesTiffData", tiffData, FileFormat::Jpeg, false},
    {"JpegRefusesPngData", SampleImages::pngFile, FileFormat::Jpeg, false},
    {"PngTakesPngData", SampleImages::pngFile, FileFormat::Png, true},
    {"PngRefusesTiffData", tiffData, FileFormat::Png, false},
    {"PngRefusesJpegData", jpegData, FileFormat::Png, false},
};

class RasterRenderer : public testing::TestWithParam<DataRow>
{
};

TEST_P(RasterRenderer, DecodesDataOfItsFormatOnly)
{
    QByteArray data = GetParam().data(SampleImages::quarters({16, 16}));
    QBuffer device(&data);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    const auto renderer = created(GetParam().format);
    ASSERT_NE(renderer, nullptr);
    renderer->setDevice(&device);

    QImage image;
    EXPECT_EQ(renderer->render(0, {{16, 16}, {204, 196}}, image), GetParam().isDecoded);
}

INSTANTIATE_TEST_SUITE_P(ImageGlobalRendererFactory, RasterRenderer, testing::ValuesIn(dataRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
