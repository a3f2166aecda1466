#include "fax/output/FaxTiffWriter.h"

#include "app/settings/LogicalDpi.h"
#include "support/PrintQt.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QFile>
#include <QImage>

#include <csignal>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>

namespace {

using Tags = std::map<std::uint16_t, std::vector<double>>;

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;
constexpr LogicalDpi fineDpi = {204, 196};

// Noise between white edges, which no coding of ITU-T T.4 makes shorter.
QImage noise(const QSize& size, const QVector<QRgb>& colours = {white, black})
{
    QImage image(size, QImage::Format_Mono);
    image.setColorTable(colours);
    const uint background = colours[0] == white ? 0 : 1;
    image.fill(background);
    std::uint32_t state = 4711;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 2; x < size.width() - 2; ++x) {
            state = state * 1664525U + 1013904223U;
            image.setPixel(x, y, state >> 31U);
        }
    }
    return image;
}

// What libtiff adds without being told to.
Tags withoutStrips(Tags tags)
{
    tags.erase(273);
    tags.erase(279);
    return tags;
}

std::vector<TiffPage> writtenPages(const QImage& image, const LogicalDpi& dpi,
                                   FaxCompression compression)
{
    const TemporaryFolder folder;
    const std::string name = folder.path("out.tif");
    FaxTiffWriter writer(name);
    EXPECT_TRUE(writer.write(image, dpi, compression));
    writer.close();
    return readTiff(name);
}

// --- Opening and closing

TEST(FaxTiffWriter, HasNoFileWithoutAName)
{
    const FaxTiffWriter writer;
    EXPECT_FALSE(writer.isOpen());
    EXPECT_EQ(writer.fileDescriptor(), -1);
}

TEST(FaxTiffWriter, StaysClosedForAnEmptyName)
{
    const FaxTiffWriter writer{std::string()};
    EXPECT_FALSE(writer.isOpen());
}

TEST(FaxTiffWriter, CreatesTheFileAtOnce)
{
    const TemporaryFolder folder;
    const FaxTiffWriter writer(folder.path("out.tif"));
    EXPECT_TRUE(writer.isOpen());
    EXPECT_EQ(folder.entries(), QStringList{QStringLiteral("out.tif")});
}

TEST(FaxTiffWriter, CannotCreateAFileInAFolderThatIsMissing)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer;
    EXPECT_FALSE(writer.open(folder.path("missing/out.tif")));
    EXPECT_FALSE(writer.isOpen());
}

TEST(FaxTiffWriter, CannotCreateAFileOnAFullDevice)
{
    FaxTiffWriter writer;
    EXPECT_FALSE(writer.open("/dev/full"));
}

TEST(FaxTiffWriter, ClosesTheFileWhenAnEmptyNameIsOpened)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("out.tif"));
    ASSERT_TRUE(writer.write(noise({40, 30}), fineDpi, FaxCompression::G4));
    EXPECT_FALSE(writer.open(std::string()));
    EXPECT_FALSE(writer.isOpen());
    EXPECT_EQ(readTiff(folder.path("out.tif")).size(), 1U);
}

TEST(FaxTiffWriter, CompletesTheFirstFileBeforeItCreatesASecond)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("first.tif"));
    ASSERT_TRUE(writer.write(noise({40, 30}), fineDpi, FaxCompression::G4));
    ASSERT_TRUE(writer.open(folder.path("second.tif")));
    EXPECT_EQ(readTiff(folder.path("first.tif")).size(), 1U);
    ASSERT_TRUE(writer.write(noise({24, 10}), fineDpi, FaxCompression::G3));
    writer.close();
    const std::vector<TiffPage> pages = readTiff(folder.path("second.tif"));
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages[0].pixels.size(), QSize(24, 10));
}

TEST(FaxTiffWriter, EmptiesAFileThatExists)
{
    const TemporaryFolder folder;
    const std::string name = folder.write("out.tif", QByteArray(100000, 'x'));
    FaxTiffWriter writer(name);
    ASSERT_TRUE(writer.write(noise({40, 30}), fineDpi, FaxCompression::G4));
    writer.close();
    EXPECT_EQ(readTiff(name).size(), 1U);
    EXPECT_LT(QFile(QString::fromStdString(name)).size(), 1000);
}

TEST(FaxTiffWriter, DoesNothingWhenItIsClosedTwice)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("out.tif"));
    ASSERT_TRUE(writer.write(noise({40, 30}), fineDpi, FaxCompression::G4));
    writer.close();
    writer.close();
    EXPECT_FALSE(writer.isOpen());
    EXPECT_TRUE(writer.isComplete());
    EXPECT_EQ(readTiff(folder.path("out.tif")).size(), 1U);
}

TEST(FaxTiffWriter, CompletesTheFileWhenItIsDestroyed)
{
    const TemporaryFolder folder;
    {
        FaxTiffWriter writer(folder.path("out.tif"));
        ASSERT_TRUE(writer.write(noise({40, 30}), fineDpi, FaxCompression::G4));
    }
    EXPECT_EQ(readTiff(folder.path("out.tif")).size(), 1U);
}

TEST(FaxTiffWriter, IsCompleteOnlyAfterClosing)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("out.tif"));
    EXPECT_FALSE(writer.isComplete());
    writer.close();
    EXPECT_TRUE(writer.isComplete());
    ASSERT_TRUE(writer.open(folder.path("second.tif")));
    EXPECT_FALSE(writer.isComplete());
}

TEST(FaxTiffWriter, KeepsTheFileFromProgramsThatAreRunMeanwhile)
{
    const TemporaryFolder folder;
    const FaxTiffWriter writer(folder.path("out.tif"));
    const int flags = fcntl(writer.fileDescriptor(), F_GETFD);
    ASSERT_NE(flags, -1);
    EXPECT_EQ(flags & FD_CLOEXEC, FD_CLOEXEC);
}

// --- Pages that are refused

TEST(FaxTiffWriter, RefusesEveryPageWhileItIsClosed)
{
    FaxTiffWriter writer;
    EXPECT_FALSE(writer.write(noise({40, 30}), fineDpi, FaxCompression::G4));
}

TEST(FaxTiffWriter, RefusesANullImage)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("out.tif"));
    EXPECT_FALSE(writer.write(QImage(), fineDpi, FaxCompression::G4));
}

class FaxTiffWriterFormat : public testing::TestWithParam<QImage::Format>
{
};

TEST_P(FaxTiffWriterFormat, OtherThanMonoIsRefusedAndNothingIsWritten)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("out.tif"));
    const QImage page = noise({40, 30});
    EXPECT_FALSE(writer.write(page.convertToFormat(GetParam()), fineDpi, FaxCompression::G4));
    EXPECT_TRUE(writer.isOpen());
    ASSERT_TRUE(writer.write(page, fineDpi, FaxCompression::G4));
    writer.close();
    const std::vector<TiffPage> pages = readTiff(folder.path("out.tif"));
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, page));
}

INSTANTIATE_TEST_SUITE_P(Formats, FaxTiffWriterFormat,
                         testing::Values(QImage::Format_MonoLSB, QImage::Format_Indexed8,
                                         QImage::Format_Grayscale8, QImage::Format_RGB32,
                                         QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied,
                                         QImage::Format_RGBA8888, QImage::Format_RGB16));

// Limits how large the files of this process can get, as a full disk would.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_previousHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limit = {bytes, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_previousHandler);
    }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_previous = {};
    void (*m_previousHandler)(int);
};

TEST(FaxTiffWriter, FailsWhenTheDiskIsFull)
{
    const TemporaryFolder folder;
    FaxTiffWriter writer(folder.path("out.tif"));
    const QImage page = noise({1728, 1000});
    testing::internal::CaptureStderr();
    bool isWritten = true;
    {
        const FileSizeLimit limit(100000);
        isWritten = writer.write(page, fineDpi, FaxCompression::G4);
    }
    // libtiff's own message stays as it is.
    EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
    EXPECT_FALSE(isWritten);
}

// --- What a page looks like in the file

struct PageRow
{
    const char* name;
    QSize size;
    LogicalDpi dpi;
    FaxCompression compression;
    Tags tags;
};

Tags expectedTags(double width, double height, double horizontalDpi, double verticalDpi,
                  double compression)
{
    return {{256, {width}},       {257, {height}}, {258, {1}},
            {259, {compression}}, {262, {0}},      {266, {1}},
            {274, {1}},           {277, {1}},      {282, {horizontalDpi}},
            {283, {verticalDpi}}, {284, {1}},      {296, {2}}};
}

const PageRow pageRows[] = {
    {"Group4", {1728, 60}, {204, 196}, FaxCompression::G4, expectedTags(1728, 60, 204, 196, 4)},
    {"Group3", {1728, 60}, {204, 98}, FaxCompression::G3, expectedTags(1728, 60, 204, 98, 3)},
    {"AnyOtherValueIsGroup3",
     {1728, 60},
     {204, 98},
     static_cast<FaxCompression>(2),
     expectedTags(1728, 60, 204, 98, 3)},
    {"UltrafineGroup4",
     {3456, 40},
     {408, 391},
     FaxCompression::G4,
     expectedTags(3456, 40, 408, 391, 4)},
    {"AnOddWidthInGroup4",
     {37, 5},
     {1, 65535},
     FaxCompression::G4,
     expectedTags(37, 5, 1, 65535, 4)},
    {"AnOddWidthInGroup3", {37, 5}, {300, 0}, FaxCompression::G3, expectedTags(37, 5, 300, 0, 3)},
    {"ASinglePixel", {1, 1}, {204, 196}, FaxCompression::G4, expectedTags(1, 1, 204, 196, 4)},
};

void PrintTo(const PageRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxTiffWriterPage : public testing::TestWithParam<PageRow>
{
};

TEST_P(FaxTiffWriterPage, HasTheseTagsAndNoOthers)
{
    const PageRow& row = GetParam();
    const auto pages = writtenPages(noise(row.size), row.dpi, row.compression);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(withoutStrips(pages[0].tags), row.tags);
    EXPECT_EQ(pages[0].tags.at(273).size(), 1U);
    EXPECT_EQ(pages[0].tags.at(279), std::vector<double>{double(pages[0].codedData.size())});
}

TEST_P(FaxTiffWriterPage, HasEveryPixelOfTheImage)
{
    const PageRow& row = GetParam();
    const QImage image = noise(row.size);
    const auto pages = writtenPages(image, row.dpi, row.compression);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, image));
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxTiffWriterPage, testing::ValuesIn(pageRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// ITU-T T.6: a row like the white one above it is the vertical mode code 1, and
// 000000000001 twice ends the page.
TEST(FaxTiffWriter, CodesAWhiteRowAsTheRecommendationSays)
{
    QImage image(8, 1, QImage::Format_Mono);
    image.setColorTable({white, black});
    image.fill(0);
    const auto pages = writtenPages(image, fineDpi, FaxCompression::G4);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages[0].codedData, (std::vector<unsigned char>{0x80, 0x08, 0x00, 0x80}));
}

struct ColourRow
{
    const char* name;
    QVector<QRgb> colours;
    double photometric;
};

const ColourRow colourRows[] = {
    {"WhiteAndBlack", {white, black}, 0},         {"WhiteAndAnything", {white, 0x12345678}, 0},
    {"WhiteAndWhite", {white, white}, 0},         {"BlackAndWhite", {black, white}, 1},
    {"AlmostWhite", {0xFFFEFFFF, black}, 1},      {"WhiteWithAlpha", {0xFEFFFFFF, black}, 1},
    {"TransparentWhite", {0x00FFFFFF, black}, 1},
};

void PrintTo(const ColourRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxTiffWriterColours : public testing::TestWithParam<ColourRow>
{
};

TEST_P(FaxTiffWriterColours, DecideThePhotometricInterpretationAlone)
{
    const QImage image = noise({300, 50});
    QImage coloured = image;
    coloured.setColorTable(GetParam().colours);
    const auto pages = writtenPages(coloured, fineDpi, FaxCompression::G4);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages[0].tags.at(262), std::vector<double>{GetParam().photometric});
    const auto plain = writtenPages(image, fineDpi, FaxCompression::G4);
    ASSERT_EQ(plain.size(), 1U);
    EXPECT_EQ(pages[0].codedData, plain[0].codedData);
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxTiffWriterColours, testing::ValuesIn(colourRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxTiffWriter, KeepsThePictureWhereWhiteIsOne)
{
    const QImage image = noise({300, 50}, {black, white});
    const auto pages = writtenPages(image, fineDpi, FaxCompression::G4);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, image));
}

TEST(FaxTiffWriter, WritesPackedRows)
{
    const QImage image = noise({37, 11});
    std::vector<uchar> rows;
    for (int y = 0; y < 11; ++y) {
        rows.insert(rows.end(), image.constScanLine(y), image.constScanLine(y) + 5);
    }
    QImage packed(rows.data(), 37, 11, 5, QImage::Format_Mono);
    packed.setColorTable({white, black});
    const auto pages = writtenPages(packed, fineDpi, FaxCompression::G4);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, image));
}

TEST(FaxTiffWriter, AppendsPagesInOrderEachWithItsOwnSizeAndResolution)
{
    const TemporaryFolder folder;
    const QImage images[] = {noise({1728, 40}), noise({37, 90}), noise({3456, 7})};
    FaxTiffWriter writer(folder.path("out.tif"));
    ASSERT_TRUE(writer.write(images[0], {204, 196}, FaxCompression::G4));
    ASSERT_TRUE(writer.write(images[1], {204, 98}, FaxCompression::G3));
    ASSERT_TRUE(writer.write(images[2], {408, 391}, FaxCompression::G4));
    writer.close();

    const std::vector<TiffPage> pages = readTiff(folder.path("out.tif"));
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_EQ(withoutStrips(pages[0].tags), expectedTags(1728, 40, 204, 196, 4));
    EXPECT_EQ(withoutStrips(pages[1].tags), expectedTags(37, 90, 204, 98, 3));
    EXPECT_EQ(withoutStrips(pages[2].tags), expectedTags(3456, 7, 408, 391, 4));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(isSamePicture(pages[i].pixels, images[i])) << "page " << i;
    }
}

} // namespace
