#include "CliTest.h"

#include "support/SampleImages.h"

namespace {

constexpr std::uint16_t imageWidth = 256;
constexpr std::uint16_t imageLength = 257;
constexpr std::uint16_t compression = 259;
constexpr std::uint16_t xResolution = 282;
constexpr std::uint16_t yResolution = 283;

const QSize a4Standard(1728, 1146);
const QSize a4Fine(1728, 2292);

struct GeometryRow
{
    const char* name;
    std::vector<std::string> options;
    int width;
    int height;
    int horizontalDpi;
    int verticalDpi;
};

// Each word once; the sizes of all pages are tested where they are defined.
const GeometryRow geometryRows[] = {
    {"A4AndFineAreTheDefault", {}, 1728, 2292, 204, 196},
    {"A4Superfine", {"-p", "a4", "-r", "superfine"}, 1728, 4572, 204, 391},
    {"LetterStandard", {"-p", "letter", "-r", "standard"}, 1728, 1078, 204, 98},
    {"LegalFine", {"-p", "legal", "-r", "fine"}, 1728, 2744, 204, 196},
    {"LegalUltrafine", {"-p", "legal", "-r", "ultrafine"}, 3456, 5474, 408, 391},
};

class PaperAndResolution : public CliTest, public testing::WithParamInterface<GeometryRow>
{
};

TEST_P(PaperAndResolution, GiveThePageItsSizeAndItsDotsPerInch)
{
    const GeometryRow& row = GetParam();
    folder().write("in.png", blackPng({20, 20}));
    std::vector<std::string> arguments = row.options;
    arguments.insert(arguments.end(), {"-o", "out.tif", "in.png"});
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 1U);
    EXPECT_EQ(output[0].tags.at(imageWidth), std::vector<double>{static_cast<double>(row.width)});
    EXPECT_EQ(output[0].tags.at(imageLength), std::vector<double>{static_cast<double>(row.height)});
    EXPECT_EQ(output[0].tags.at(xResolution),
              std::vector<double>{static_cast<double>(row.horizontalDpi)});
    EXPECT_EQ(output[0].tags.at(yResolution),
              std::vector<double>{static_cast<double>(row.verticalDpi)});
}

INSTANTIATE_TEST_SUITE_P(Cli, PaperAndResolution, testing::ValuesIn(geometryRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct CompressionRow
{
    const char* name;
    std::vector<std::string> options;
    double tag;
};

const CompressionRow compressionRows[] = {
    {"Group3ByDefault", {}, 3},
    {"Group3", {"-c", "g3"}, 3},
    {"Group4", {"-c", "g4"}, 4},
};

class CompressionOption : public CliTest, public testing::WithParamInterface<CompressionRow>
{
};

TEST_P(CompressionOption, SelectsTheEncodingOfThePages)
{
    folder().write("in.png", blackPng({20, 20}));
    std::vector<std::string> arguments = GetParam().options;
    arguments.insert(arguments.end(), {"-o", "out.tif", "in.png"});
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 1U);
    EXPECT_EQ(output[0].tags.at(compression), std::vector<double>{GetParam().tag});
    EXPECT_TRUE(isSamePicture(output[0].pixels, pageWith(a4Fine, {854, 1136, 20, 20})));
}

INSTANTIATE_TEST_SUITE_P(Cli, CompressionOption, testing::ValuesIn(compressionRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct PlacingRow
{
    const char* name;
    std::vector<std::string> options;
    QSize picture; ///< Black all over.
    QSize page;
    QRect black; ///< What is black on the page.
};

const PlacingRow placingRows[] = {
    {"SmallPictureKeepsItsSizeInTheMiddle", {}, {20, 20}, a4Fine, {854, 1136, 20, 20}},
    {"SmallPictureIsEnlargedToFit", {"-t", "fittopaper"}, {20, 20}, a4Fine, {0, 316, 1728, 1660}},
    {"LargePictureIsReducedToFit", {}, {4000, 3000}, a4Fine, {0, 523, 1728, 1245}},
    {"PictureIsCentredBetweenFourMargins",
     {"-m", "1,0.5,0.25,2", "-t", "fittopaper"},
     {20, 20},
     a4Fine,
     {204, 291, 1473, 1415}},
    {"PictureIsCentredBetweenTwoMargins",
     {"-m", "0.5,1", "-t", "fittopaper"},
     {20, 20},
     a4Fine,
     {102, 414, 1524, 1464}},
    {"PictureIsCentredBetweenEqualMargins",
     {"-m", "0.5", "-r", "standard", "-t", "fittopaper"},
     {20, 20},
     a4Standard,
     {102, 207, 1524, 732}},
};

class Placing : public CliTest, public testing::WithParamInterface<PlacingRow>
{
};

TEST_P(Placing, FollowsMarginsAndFitOption)
{
    const PlacingRow& row = GetParam();
    folder().write("in.png", blackPng(row.picture));
    std::vector<std::string> arguments = row.options;
    arguments.insert(arguments.end(), {"-o", "out.tif", "in.png"});
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 1U);
    EXPECT_TRUE(isSamePicture(output[0].pixels, pageWith(row.page, row.black)));
}

INSTANTIATE_TEST_SUITE_P(Cli, Placing, testing::ValuesIn(placingRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct RotationRow
{
    const char* name;
    std::vector<std::string> options;
    QRect black; ///< Where the top left corner of the picture comes to lie.
};

const QRect topLeft(844, 1136, 10, 6);
const QRect topRight(868, 1126, 6, 10);
const QRect bottomRight(874, 1150, 10, 6);
const QRect bottomLeft(854, 1156, 6, 10);

const RotationRow rotationRows[] = {
    {"NoneByDefault", {}, topLeft},
    {"None", {"-R", "0"}, topLeft},
    {"QuarterTurnClockwise", {"-R", "90"}, topRight},
    {"HalfTurn", {"-R", "180"}, bottomRight},
    {"ThreeQuarterTurnClockwise", {"-R", "270"}, bottomLeft},
    {"QuarterTurnBack", {"-R", "-90"}, bottomLeft},
};

class RotationOption : public CliTest, public testing::WithParamInterface<RotationRow>
{
};

TEST_P(RotationOption, TurnsThePages)
{
    folder().write("in.png", SampleImages::pngFile(pageWith({40, 20}, {0, 0, 10, 6})));
    std::vector<std::string> arguments = GetParam().options;
    arguments.insert(arguments.end(), {"-o", "out.tif", "in.png"});
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 1U);
    EXPECT_TRUE(isSamePicture(output[0].pixels, pageWith(a4Fine, GetParam().black)));
}

INSTANTIATE_TEST_SUITE_P(Cli, RotationOption, testing::ValuesIn(rotationRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class CoverPageOption : public CliTest
{
protected:
    void SetUp() override
    {
        folder().write("cover.html", "<html><body><h1>Cover</h1><p>page</p></body></html>");
        folder().write("in.png", blackPng({20, 20}));
    }
};

TEST_F(CoverPageOption, PutsTheCoverInFrontOfAllPages)
{
    ASSERT_TRUE(isSilentSuccess(run({"in.png", "-C", "cover.html", "-o", "out.tif", "in.png"})));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 3U);
    const QImage page = pageWith(a4Fine, {854, 1136, 20, 20});
    EXPECT_FALSE(isSamePicture(output[0].pixels, page));
    EXPECT_TRUE(isSamePicture(output[1].pixels, page));
    EXPECT_TRUE(isSamePicture(output[2].pixels, page));
}

TEST_F(CoverPageOption, IsNotSubjectToMarginsAndRotation)
{
    ASSERT_TRUE(isSilentSuccess(run({"-C", "cover.html", "-o", "plain.tif", "in.png"})));
    ASSERT_TRUE(isSilentSuccess(
        run({"-C", "cover.html", "-m", "2", "-R", "90", "-o", "turned.tif", "in.png"})));
    const std::vector<TiffPage> plain = pages("plain.tif");
    const std::vector<TiffPage> turned = pages("turned.tif");
    ASSERT_EQ(plain.size(), 2U);
    ASSERT_EQ(turned.size(), 2U);
    EXPECT_TRUE(isSamePicture(turned[0].pixels, plain[0].pixels));
}

TEST_F(CoverPageOption, WithAnEmptyNameMeansNoCover)
{
    ASSERT_TRUE(isSilentSuccess(run({"-C", "", "-o", "out.tif", "in.png"})));
    EXPECT_EQ(pages().size(), 1U);
}

class InputFiles : public CliTest
{
};

TEST_F(InputFiles, AppearInCommandLineOrderHoweverTheyAreGiven)
{
    folder().write("one.png", blackPng({10, 10}));
    folder().write("two.png", blackPng({20, 20}));
    folder().write("three.png", blackPng({30, 30}));
    folder().write("four.png", blackPng({40, 40}));
    ASSERT_TRUE(isSilentSuccess(run({"three.png", "--file", "one.png", "-o", "out.tif", "four.png",
                                     "--file=two.png", "--", "one.png"})));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 5U);
    EXPECT_TRUE(isSamePicture(output[0].pixels, pageWith(a4Fine, {849, 1131, 30, 30})));
    EXPECT_TRUE(isSamePicture(output[1].pixels, pageWith(a4Fine, {859, 1141, 10, 10})));
    EXPECT_TRUE(isSamePicture(output[2].pixels, pageWith(a4Fine, {844, 1126, 40, 40})));
    EXPECT_TRUE(isSamePicture(output[3].pixels, pageWith(a4Fine, {854, 1136, 20, 20})));
    EXPECT_TRUE(isSamePicture(output[4].pixels, pageWith(a4Fine, {859, 1141, 10, 10})));
}

TEST_F(InputFiles, ContributeAllTheirPages)
{
    const QImage first = pageWith({20, 20}, {0, 0, 20, 20});
    const QImage second = pageWith({10, 10}, {0, 0, 10, 10});
    folder().write("in.tif", SampleImages::tiffFile({{first}, {second}, {first}}));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.tif"})));
    const std::vector<TiffPage> output = pages();
    ASSERT_EQ(output.size(), 3U);
    EXPECT_TRUE(isSamePicture(output[0].pixels, pageWith(a4Fine, {854, 1136, 20, 20})));
    EXPECT_TRUE(isSamePicture(output[1].pixels, pageWith(a4Fine, {859, 1141, 10, 10})));
    EXPECT_TRUE(isSamePicture(output[2].pixels, pageWith(a4Fine, {854, 1136, 20, 20})));
}

} // namespace
