#include "fax/FaxOutputWriter.h"

#include "RecordingWriter.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"

#include <QBuffer>

#include <limits>
#include <string>

// What is refused and how, and what is handed to the format writer.
namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

FaxConfiguration standardA4(const QMarginsF& margins = {})
{
    return {FaxPaperSize::A4, FaxResolution::Standard, FaxRotation::Rotate0, {},
            margins,          FaxCompression::G4};
}

QByteArray png()
{
    return SampleImages::pngFile(SampleImages::bilevel({40, 30}));
}

QByteArray jpeg()
{
    return SampleImages::jpegFile(SampleImages::quarters({40, 30}));
}

QByteArray tiff()
{
    return SampleImages::tiffFile({{SampleImages::bilevel({40, 30})}});
}

QByteArray threePages()
{
    const QImage image = SampleImages::bilevel({40, 30});
    return SampleImages::tiffFile({{image}, {image}, {image}});
}

QByteArray line()
{
    return SampleImages::pngFile(SampleImages::bilevel({20000, 3}));
}

QByteArray pdf()
{
    return SamplePdf::equalPages(1);
}

QByteArray html()
{
    return "<html><body><hr></body></html>";
}

QByteArray plainText()
{
    return "plain words without any markup";
}

QByteArray junk()
{
    return {300, '\x01'};
}

QByteArray nothing()
{
    return {};
}

QByteArray jpegCutInItsHeader()
{
    return jpeg().left(100);
}

QByteArray pngCutInItsHeader()
{
    return png().left(12);
}

enum class Call
{
    WritePage,
    WriteCoverPage,
};

struct FailureRow
{
    const char* name;
    const char* fileName;
    QByteArray (*content)(); // null for a file that is missing
    QMarginsF margins;
    Call call;
    FaxPageErrorCode code;
    const char* message;
};

const FailureRow failureRows[] = {
    {"AMissingFileIsNotFound",
     "scan.png",
     nullptr,
     {},
     Call::WritePage,
     FaxPageErrorCode::FileNotFound,
     "file not found"},
    {"AMissingCoverPageIsNotFound",
     "cover.html",
     nullptr,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::FileNotFound,
     "file not found"},
    {"AMissingFileIsReportedBeforeUselessMargins",
     "scan.png",
     nullptr,
     {notANumber, 0, 0, 0},
     Call::WritePage,
     FaxPageErrorCode::FileNotFound,
     "file not found"},
    {"HtmlIsNoInputPage",
     "page.html",
     html,
     {},
     Call::WritePage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported html format"},
    {"HtmlFoundByContentIsNoInputPage",
     "page",
     html,
     {},
     Call::WritePage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported html format"},
    {"AnUnknownFormatHasNoName",
     "page.bin",
     junk,
     {},
     Call::WritePage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported  format"},
    {"AnEmptyFileHasNoFormat",
     "page",
     nothing,
     {},
     Call::WritePage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported  format"},
    {"PdfIsNoCoverPage",
     "cover.pdf",
     pdf,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported pdf format"},
    {"TiffIsNoCoverPage",
     "cover.tif",
     tiff,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported tiff format"},
    {"JpegIsNoCoverPage",
     "cover.jpg",
     jpeg,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported jpeg format"},
    {"PngIsNoCoverPage",
     "cover.png",
     png,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported png format"},
    {"AnUnknownFormatIsNoCoverPage",
     "cover.bin",
     junk,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported  format"},
    {"TheFormatIsReportedBeforeUselessMargins",
     "page.html",
     html,
     {notANumber, 0, 0, 0},
     Call::WritePage,
     FaxPageErrorCode::UnsupportedFormat,
     "unsupported html format"},
    {"JunkNamedPng",
     "scan.png",
     junk,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidFormat,
     "invalid png format"},
    {"AnEmptyPng",
     "scan.png",
     nothing,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidFormat,
     "invalid png format"},
    {"APngNamedJpg",
     "photo.jpg",
     png,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidFormat,
     "invalid jpeg format"},
    {"AJpegNamedPng",
     "scan.png",
     jpeg,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidFormat,
     "invalid png format"},
    {"JunkNamedPdf",
     "document.pdf",
     junk,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidFormat,
     "invalid pdf format"},
    {"AMarginThatIsNotANumber",
     "scan.png",
     png,
     {notANumber, 0, 0, 0},
     Call::WritePage,
     FaxPageErrorCode::InvalidRenderSize,
     "invalid render size"},
    {"MarginsThatAreNotNumbers",
     "scan.png",
     png,
     {notANumber, notANumber, notANumber, notANumber},
     Call::WritePage,
     FaxPageErrorCode::InvalidRenderSize,
     "invalid render size"},
    {"MarginsThatLeaveNoWidth",
     "scan.png",
     png,
     {4.3, 0, 4.3, 0},
     Call::WritePage,
     FaxPageErrorCode::InvalidRenderSize,
     "invalid render size"},
    {"MarginsThatLeaveNoHeight",
     "scan.png",
     png,
     {0, 6, 0, 6},
     Call::WritePage,
     FaxPageErrorCode::InvalidRenderSize,
     "invalid render size"},
    {"UselessMarginsAreReportedBeforeTheContent",
     "scan.png",
     junk,
     {0, 6, 0, 6},
     Call::WritePage,
     FaxPageErrorCode::InvalidRenderSize,
     "invalid render size"},
    {"JunkNamedTifCountsOnePage",
     "scan.tif",
     junk,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
    {"APngNamedTifCountsOnePage",
     "scan.tif",
     png,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
    {"AJpegCutInItsHeader",
     "photo.jpg",
     jpegCutInItsHeader,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
    {"APngCutInItsHeader",
     "scan.png",
     pngCutInItsHeader,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
    {"ALineThatIsReducedToNoHeight",
     "line.png",
     line,
     {},
     Call::WritePage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
    {"ACoverPageWithoutMarkup",
     "cover.html",
     plainText,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
    {"AnEmptyCoverPage",
     "cover.html",
     nothing,
     {},
     Call::WriteCoverPage,
     FaxPageErrorCode::InvalidData,
     "invalid data"},
};

void PrintTo(const FailureRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxOutputWriterFailure : public testing::TestWithParam<FailureRow>
{
};

TEST_P(FaxOutputWriterFailure, IsTold)
{
    const FailureRow& row = GetParam();
    const TemporaryFolder folder;
    const std::string name = row.content == nullptr ? folder.path(row.fileName)
                                                    : folder.write(row.fileName, row.content());
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4(row.margins));
    EXPECT_FALSE(row.call == Call::WritePage ? writer.writePage(name)
                                             : writer.writeCoverPage(name));
    EXPECT_EQ(writer.lastError().code, row.code);
    EXPECT_EQ(writer.lastError().message, row.message);
    EXPECT_TRUE(output.pages().empty());
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxOutputWriterFailure, testing::ValuesIn(failureRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxOutputWriterError, NumbersItsCodes)
{
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::None), 0);
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::FileNotFound), 1);
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::UnsupportedFormat), 2);
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::InvalidFormat), 3);
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::InvalidRenderSize), 4);
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::InvalidData), 5);
    EXPECT_EQ(static_cast<int>(FaxPageErrorCode::WriteFailed), 6);
}

TEST(FaxOutputWriterError, IsNoneAtFirst)
{
    RecordingWriter output;
    const FaxOutputWriter writer(&output, standardA4());
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::None);
    EXPECT_EQ(writer.lastError().message, "");
}

TEST(FaxOutputWriterError, IsAFolder)
{
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writePage(folder.path(".")));
    EXPECT_EQ(writer.lastError().message, "file not found");
}

TEST(FaxOutputWriterError, IsOverwrittenByTheNextFailure)
{
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writePage(folder.path("missing.png")));
    EXPECT_FALSE(writer.writePage(folder.write("scan.png", junk())));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::InvalidFormat);
    EXPECT_EQ(writer.lastError().message, "invalid png format");
}

TEST(FaxOutputWriterError, IsLeftAsItWasByASuccess)
{
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writePage(folder.path("missing.png")));
    EXPECT_TRUE(writer.writePage(folder.write("scan.png", png())));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::FileNotFound);
    EXPECT_EQ(writer.lastError().message, "file not found");
}

TEST(FaxOutputWriterError, OfAWriteLeavesThePagesBeforeIt)
{
    const TemporaryFolder folder;
    RecordingWriter output(2);
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writePage(folder.write("scan.tif", threePages())));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::WriteFailed);
    EXPECT_EQ(writer.lastError().message, "failed to write");
    EXPECT_EQ(output.pages().size(), 2U);
}

TEST(FaxOutputWriterError, OfTheFirstWriteIsTold)
{
    const TemporaryFolder folder;
    RecordingWriter output(0);
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writeCoverPage(folder.write("cover.html", html())));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::WriteFailed);
}

TEST(FaxOutputWriterError, InTheMiddleOfAFileLeavesThePagesBeforeIt)
{
    const TemporaryFolder folder;
    const QImage page = SampleImages::bilevel({40, 30});
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writePage(folder.write(
        "scan.tif",
        SampleImages::tiffFile({{page}, {SampleImages::bilevel({20000, 3})}, {page}}))));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::InvalidData);
    EXPECT_EQ(output.pages().size(), 1U);
}

// --- The page loop on an open device

const FaxSizeDetails usable = {{204, 196}, {300, 200}, QRect(0, 0, 300, 200)};

struct DetailsRow
{
    const char* name;
    FaxSizeDetails details;
};

const DetailsRow uselessDetails[] = {
    {"WithoutHorizontalResolution", {{0, 196}, {300, 200}, QRect(0, 0, 300, 200)}},
    {"WithoutVerticalResolution", {{204, 0}, {300, 200}, QRect(0, 0, 300, 200)}},
    {"WithoutWidth", {{204, 196}, {0, 200}, QRect(0, 0, 300, 200)}},
    {"WithoutHeight", {{204, 196}, {300, 0}, QRect(0, 0, 300, 200)}},
    {"WithNegativeWidth", {{204, 196}, {-1, 200}, QRect(0, 0, 300, 200)}},
    {"WithAnAreaWithoutWidth", {{204, 196}, {300, 200}, QRect(QPoint(9, 0), QPoint(8, 199))}},
    {"WithAnAreaWithoutHeight", {{204, 196}, {300, 200}, QRect(QPoint(0, 9), QPoint(299, 8))}},
    {"WithAnAreaInsideOut", {{204, 196}, {300, 200}, QRect(QPoint(200, 0), QPoint(99, 199))}},
};

void PrintTo(const DetailsRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxOutputWriterGeometry : public testing::TestWithParam<DetailsRow>
{
};

TEST_P(FaxOutputWriterGeometry, IsRefusedBeforeTheDeviceIsRead)
{
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    QByteArray content = png();
    QBuffer device(&content);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    EXPECT_FALSE(writer.writePage(FileFormat::Png, &device, false, 0, GetParam().details));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::InvalidRenderSize);
    EXPECT_EQ(writer.lastError().message, "invalid render size");
    EXPECT_EQ(device.pos(), 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxOutputWriterGeometry, testing::ValuesIn(uselessDetails),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxOutputWriterDevice, WithAnAreaOfOnePixelIsEnough)
{
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    QByteArray content = png();
    QBuffer device(&content);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    EXPECT_TRUE(writer.writePage(FileFormat::Png, &device, false, 0,
                                 {{204, 196}, {300, 200}, QRect(9, 9, 1, 1)}));
}

struct FormatRow
{
    const char* name;
    FileFormat format;
    const char* message;
};

const FormatRow formatRows[] = {
    {"Pdf", FileFormat::Pdf, "invalid pdf format"},
    {"Png", FileFormat::Png, "invalid png format"},
    {"Jpeg", FileFormat::Jpeg, "invalid jpeg format"},
    {"Html", FileFormat::Html, "invalid html format"},
    {"Unknown", FileFormat::Unknown, "invalid  format"},
};

void PrintTo(const FormatRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxOutputWriterFormat : public testing::TestWithParam<FormatRow>
{
};

TEST_P(FaxOutputWriterFormat, IsInvalidWithoutADevice)
{
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    EXPECT_FALSE(writer.writePage(GetParam().format, nullptr, false, 0, usable));
    EXPECT_EQ(writer.lastError().code, FaxPageErrorCode::InvalidFormat);
    EXPECT_EQ(writer.lastError().message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxOutputWriterFormat, testing::ValuesIn(formatRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxOutputWriterDevice, OfHtmlThatCannotBeReadIsInvalid)
{
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    QBuffer device;
    ASSERT_TRUE(device.open(QIODevice::WriteOnly));
    EXPECT_FALSE(writer.writePage(FileFormat::Html, &device, true, 0, usable));
    EXPECT_EQ(writer.lastError().message, "invalid html format");
}

// --- What is handed over

TEST(FaxOutputWriterPage, CarriesTheResolutionUnswappedAndTheCompression)
{
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxConfiguration configuration = standardA4();
    configuration.rotation = FaxRotation::Rotate90;
    configuration.compression = FaxCompression::G3;
    FaxOutputWriter writer(&output, configuration);
    ASSERT_TRUE(writer.writePage(folder.write("scan.png", png())));
    ASSERT_EQ(output.pages().size(), 1U);
    EXPECT_EQ(output.pages()[0].dpi, (LogicalDpi{204, 98}));
    EXPECT_EQ(output.pages()[0].compression, FaxCompression::G3);
}

TEST(FaxOutputWriterPage, CarriesTheResolutionOfTheGivenGeometry)
{
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4());
    QByteArray content = png();
    QBuffer device(&content);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    ASSERT_TRUE(writer.writePage(FileFormat::Png, &device, false, 90,
                                 {{300, 150}, {300, 200}, QRect(0, 0, 300, 200)}));
    ASSERT_EQ(output.pages().size(), 1U);
    EXPECT_EQ(output.pages()[0].dpi, (LogicalDpi{300, 150}));
    EXPECT_EQ(output.pages()[0].compression, FaxCompression::G4);
}

} // namespace
