#include "CliTest.h"

#include "support/SampleImages.h"
#include "support/SamplePdf.h"

namespace {

const QSize a4Fine(1728, 2292);

struct SizeRow
{
    const char* name;
    QSize picture; ///< Black all over.
    QRect black;   ///< What is black on the page.
};

const SizeRow sizeRows[] = {
    {"OnePixel", {1, 1}, {863, 1145, 1, 1}},
    {"AsLargeAsThePage", {1728, 2292}, {0, 0, 1728, 2292}},
    {"OnePixelWiderThanThePage", {1729, 2292}, {0, 45, 1728, 2201}},
    {"VeryWide", {60000, 800}, {0, 1135, 1728, 22}},
    {"VeryHigh", {800, 60000}, {848, 0, 32, 2292}},
};

class PictureSize : public CliTest, public testing::WithParamInterface<SizeRow>
{
};

TEST_P(PictureSize, IsNoObstacle)
{
    folder().write("in.png", blackPng(GetParam().picture));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.png"})));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 1U);
    EXPECT_TRUE(isSamePicture(output[0].pixels, pageWith(a4Fine, GetParam().black)));
}

INSTANTIATE_TEST_SUITE_P(Cli, PictureSize, testing::ValuesIn(sizeRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class ManyInputs : public CliTest
{
};

TEST_F(ManyInputs, NeedNoMoreDescriptorsThanOne)
{
    constexpr unsigned long descriptorLimit = 64;
    constexpr int inputCount = 100;
    folder().write("in.png", blackPng({20, 20}));
    folder().write("in.jpg", SampleImages::jpegFile(SampleImages::quarters({64, 48})));
    folder().write("in.tif", SampleImages::tiffFile({{SampleImages::bilevel({32, 32})}}));
    folder().write("in.pdf", SamplePdf::equalPages(1));
    std::vector<std::string> arguments = {"-r", "standard", "-o", "out.tif", "in.pdf"};
    const char* const names[] = {"in.png", "in.jpg", "in.tif"};
    while (arguments.size() < inputCount + 3) {
        arguments.emplace_back(names[arguments.size() % 3]);
    }
    arguments.emplace_back("in.pdf");
    ProgramStart limited = start(arguments);
    limited.openFilesLimit = descriptorLimit;
    ASSERT_TRUE(isSilentSuccess(runProgram(limited)));
    EXPECT_EQ(pages().size(), 100U);
}

class SameCommand : public CliTest
{
};

TEST_F(SameCommand, GivesTheSameBytesTwice)
{
    folder().write("cover.html", "<html><body><h1>Cover</h1></body></html>");
    folder().write("in.png", SampleImages::pngFile(SampleImages::transparent({300, 200})));
    folder().write("in.jpg", SampleImages::jpegFile(SampleImages::quarters({64, 48})));
    folder().write("in.tif", SampleImages::tiffFile({{SampleImages::bilevel({32, 32})},
                                                     {SampleImages::quarters({32, 32})}}));
    folder().write("in.pdf", SamplePdf::equalPages(3));
    const std::vector<std::string> arguments = {"-C",     "cover.html", "-o",     "out.tif",
                                                "in.png", "in.jpg",     "in.tif", "in.pdf"};
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    const QByteArray first = content("out.tif");
    EXPECT_EQ(pages().size(), 8U);
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    EXPECT_TRUE(content("out.tif") == first);
}

} // namespace
