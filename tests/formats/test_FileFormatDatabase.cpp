#include "formats/FileFormatDatabase.h"

#include "support/PrintQt.h"
#include "support/SampleImages.h"

#include <QBuffer>
#include <QMimeDatabase>
#include <QMimeType>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

const auto rowName = [](const auto& test) { return std::string{test.param.name}; };

// A minimal start of a PDF file, enough for it to be recognised.
const QByteArray pdfData = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n1 0 obj\n<< /Type /Catalog >>\nendobj\n";

/// Data in memory that remembers whether anybody opened or read it.
class RecordingDevice : public QIODevice
{
public:
    explicit RecordingDevice(QByteArray data) : m_data(std::move(data)) {}

    bool open(OpenMode mode) override
    {
        m_isTouched = true;
        return QIODevice::open(mode);
    }

    bool isTouched() const { return m_isTouched; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        m_isTouched = true;
        QBuffer buffer(&m_data);
        buffer.open(QIODevice::ReadOnly);
        buffer.seek(pos());
        return buffer.read(data, maxSize);
    }

    qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

private:
    QByteArray m_data;
    bool m_isTouched = false;
};

// The table.

struct FormatRow
{
    const char* name;
    FileFormat format;
    int value;
    const char* formatName;
    const char* mimeType;
    QStringList suffixes;
};

const FormatRow formatRows[] = {
    {"Pdf", FileFormat::Pdf, 1, "pdf", "application/pdf", {QStringLiteral("pdf")}},
    {"Tiff",
     FileFormat::Tiff,
     2,
     "tiff",
     "image/tiff",
     {QStringLiteral("tiff"), QStringLiteral("tif")}},
    {"Jpeg",
     FileFormat::Jpeg,
     3,
     "jpeg",
     "image/jpeg",
     {QStringLiteral("jpeg"), QStringLiteral("jpg")}},
    {"Png", FileFormat::Png, 4, "png", "image/png", {QStringLiteral("png")}},
    {"Html", FileFormat::Html, 5, "html", "text/html", {QStringLiteral("html")}},
};

class FormatTable : public testing::TestWithParam<FormatRow>
{
};

TEST_P(FormatTable, HasTheValueOfTheEnumeration)
{
    EXPECT_EQ(static_cast<int>(GetParam().format), GetParam().value);
}

TEST_P(FormatTable, GivesTheName)
{
    EXPECT_EQ(FileFormatDatabase::formatName(GetParam().format), QByteArray(GetParam().formatName));
}

TEST_P(FormatTable, GivesTheMimeType)
{
    EXPECT_EQ(FileFormatDatabase::formatMimeType(GetParam().format),
              QLatin1String(GetParam().mimeType));
}

TEST_P(FormatTable, GivesTheSuffixesInOrder)
{
    EXPECT_EQ(FileFormatDatabase::formatSuffixes(GetParam().format), GetParam().suffixes);
}

TEST_P(FormatTable, GivesTheFirstSuffixAsThePreferredOne)
{
    EXPECT_EQ(FileFormatDatabase::formatSuffix(GetParam().format), GetParam().suffixes.first());
}

TEST_P(FormatTable, IsFoundByItsMimeTypeString)
{
    const QString mimeType = QLatin1String(GetParam().mimeType);
    EXPECT_EQ(FileFormatDatabase::formatFromMimeType(mimeType), GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatTable, testing::ValuesIn(formatRows), rowName);

TEST(FileFormatDatabase, TheUnknownFormatHasANullName)
{
    EXPECT_TRUE(FileFormatDatabase::formatName(FileFormat::Unknown).isNull());
}

TEST(FileFormatDatabase, TheUnknownFormatHasANullMimeType)
{
    EXPECT_TRUE(FileFormatDatabase::formatMimeType(FileFormat::Unknown).isNull());
}

TEST(FileFormatDatabase, TheUnknownFormatHasANullSuffix)
{
    EXPECT_TRUE(FileFormatDatabase::formatSuffix(FileFormat::Unknown).isNull());
}

TEST(FileFormatDatabase, TheUnknownFormatHasNoSuffixes)
{
    EXPECT_TRUE(FileFormatDatabase::formatSuffixes(FileFormat::Unknown).isEmpty());
}

TEST(FileFormatDatabase, TheUnknownFormatIsZero)
{
    EXPECT_EQ(static_cast<int>(FileFormat::Unknown), 0);
}

// By name.

struct NameRow
{
    const char* name;
    QByteArray formatName;
    FileFormat format;
};

const NameRow nameRows[] = {
    {"PdfIsPdf", "pdf", FileFormat::Pdf},
    {"TiffIsTiff", "tiff", FileFormat::Tiff},
    {"JpegIsJpeg", "jpeg", FileFormat::Jpeg},
    {"PngIsPng", "png", FileFormat::Png},
    {"HtmlIsHtml", "html", FileFormat::Html},
    {"TheShortSuffixTifIsNoName", "tif", FileFormat::Unknown},
    {"TheShortSuffixJpgIsNoName", "jpg", FileFormat::Unknown},
    {"AnUpperCaseNameIsUnknown", "TIFF", FileFormat::Unknown},
    {"AnEmptyNameIsUnknown", "", FileFormat::Unknown},
    {"ANullNameIsUnknown", QByteArray(), FileFormat::Unknown},
    {"TheBeginningOfANameIsUnknown", "pn", FileFormat::Unknown},
    {"ANameWithAZeroByteAtItsEndIsUnknown", QByteArray("png\0", 4), FileFormat::Unknown},
};

class FormatFromName : public testing::TestWithParam<NameRow>
{
};

TEST_P(FormatFromName, IsExact)
{
    EXPECT_EQ(FileFormatDatabase::formatFromName(GetParam().formatName), GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromName, testing::ValuesIn(nameRows), rowName);

// By suffix, file name and MIME type string.

struct TextRow
{
    const char* name;
    const char* text;
    FileFormat format;
};

const TextRow suffixRows[] = {
    {"PdfIsPdf", "pdf", FileFormat::Pdf},
    {"TiffIsTiff", "tiff", FileFormat::Tiff},
    {"TifIsTiff", "tif", FileFormat::Tiff},
    {"JpegIsJpeg", "jpeg", FileFormat::Jpeg},
    {"JpgIsJpeg", "jpg", FileFormat::Jpeg},
    {"PngIsPng", "png", FileFormat::Png},
    {"HtmlIsHtml", "html", FileFormat::Html},
    {"HtmIsUnknown", "htm", FileFormat::Unknown},
    {"UpperCaseIsUnknown", "PDF", FileFormat::Unknown},
    {"ALeadingDotIsUnknown", ".pdf", FileFormat::Unknown},
    {"EmptyIsUnknown", "", FileFormat::Unknown},
};

class FormatFromSuffix : public testing::TestWithParam<TextRow>
{
};

TEST_P(FormatFromSuffix, IsExact)
{
    EXPECT_EQ(FileFormatDatabase::formatFromSuffix(QLatin1String(GetParam().text)),
              GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromSuffix, testing::ValuesIn(suffixRows),
                         rowName);

const TextRow fileNameRows[] = {
    {"ReportPdfIsPdf", "report.pdf", FileFormat::Pdf},
    {"UpperCasePdfIsUnknown", "report.PDF", FileFormat::Unknown},
    {"PhotoJpgIsJpeg", "photo.jpg", FileFormat::Jpeg},
    {"PhotoJpegIsJpeg", "photo.jpeg", FileFormat::Jpeg},
    {"PageHtmIsUnknown", "page.htm", FileFormat::Unknown},
    {"OnlyTheLastDotCounts", "archive.tar.tif", FileFormat::Tiff},
    {"AKnownSuffixInFrontOfTheLastDotDoesNotCount", "scan.tif.bak", FileFormat::Unknown},
    {"ANameWithoutADotIsUnknown", "page", FileFormat::Unknown},
    {"ANameThatIsASuffixIsUnknown", "pdf", FileFormat::Unknown},
    {"ANameThatEndsInADotIsUnknown", "page.", FileFormat::Unknown},
    {"AHiddenFileGoesByTheTextAfterItsDot", ".png", FileFormat::Png},
    {"TheSuffixOfAFolderDoesNotCount", "scans.tif/page", FileFormat::Unknown},
    {"TheFolderIsNoPartOfTheName", "in.box/page.html", FileFormat::Html},
    {"EmptyIsUnknown", "", FileFormat::Unknown},
};

class FormatFromFileName : public testing::TestWithParam<TextRow>
{
};

TEST_P(FormatFromFileName, GoesByTheSuffix)
{
    EXPECT_EQ(FileFormatDatabase::formatFromFileName(QLatin1String(GetParam().text)),
              GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromFileName, testing::ValuesIn(fileNameRows),
                         rowName);

const TextRow mimeTypeRows[] = {
    {"UpperCaseIsUnknown", "IMAGE/PNG", FileFormat::Unknown},
    {"AnAliasIsUnknown", "application/x-pdf", FileFormat::Unknown},
    {"ADescendantIsUnknown", "image/x-adobe-dng", FileFormat::Unknown},
    {"PlainTextIsUnknown", "text/plain", FileFormat::Unknown},
    {"ParametersAreUnknown", "text/html; charset=utf-8", FileFormat::Unknown},
    {"EmptyIsUnknown", "", FileFormat::Unknown},
};

class FormatFromMimeTypeString : public testing::TestWithParam<TextRow>
{
};

TEST_P(FormatFromMimeTypeString, IsExact)
{
    const QString mimeType = QLatin1String(GetParam().text);
    EXPECT_EQ(FileFormatDatabase::formatFromMimeType(mimeType), GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromMimeTypeString,
                         testing::ValuesIn(mimeTypeRows), rowName);

// By MIME type object. The hierarchy is that of the shared MIME database.

const TextRow mimeTypeObjectRows[] = {
    {"PdfIsPdf", "application/pdf", FileFormat::Pdf},
    {"TiffIsTiff", "image/tiff", FileFormat::Tiff},
    {"JpegIsJpeg", "image/jpeg", FileFormat::Jpeg},
    {"PngIsPng", "image/png", FileFormat::Png},
    {"HtmlIsHtml", "text/html", FileFormat::Html},
    {"ACameraRawTypeDerivedFromTiffIsTiff", "image/x-canon-cr2", FileFormat::Tiff},
    {"ABookmarkFileDerivedFromHtmlIsHtml", "application/x-mozilla-bookmarks", FileFormat::Html},
    {"AnAliasIsTheTypeItStandsFor", "application/x-pdf", FileFormat::Pdf},
    {"PlainTextIsUnknown", "text/plain", FileFormat::Unknown},
    {"TheAncestorOfAllFilesIsUnknown", "application/octet-stream", FileFormat::Unknown},
    {"PostScriptIsUnknown", "application/postscript", FileFormat::Unknown},
    {"AnotherImageIsUnknown", "image/gif", FileFormat::Unknown},
};

class FormatFromMimeTypeObject : public testing::TestWithParam<TextRow>
{
};

TEST_P(FormatFromMimeTypeObject, FollowsTheHierarchy)
{
    const QMimeType mimeType = QMimeDatabase().mimeTypeForName(QLatin1String(GetParam().text));
    ASSERT_TRUE(mimeType.isValid());
    EXPECT_EQ(FileFormatDatabase::formatFromMimeType(mimeType), GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromMimeTypeObject,
                         testing::ValuesIn(mimeTypeObjectRows), rowName);

TEST(FileFormatDatabase, AnInvalidMimeTypeIsUnknown)
{
    EXPECT_EQ(FileFormatDatabase::formatFromMimeType(QMimeType()), FileFormat::Unknown);
}

// Whether XHTML descends from HTML is for the MIME database to say.
TEST(FileFormatDatabase, XhtmlIsHtmlExactlyIfItIsDerivedFromHtml)
{
    const QMimeType xhtml =
        QMimeDatabase().mimeTypeForName(QStringLiteral("application/xhtml+xml"));
    ASSERT_TRUE(xhtml.isValid());
    const bool isDerived = xhtml.allAncestors().contains(QStringLiteral("text/html"));
    EXPECT_EQ(FileFormatDatabase::formatFromMimeType(xhtml),
              isDerived ? FileFormat::Html : FileFormat::Unknown);
}

// By content.

struct ContentRow
{
    const char* name;
    QByteArray (*data)();
    FileFormat format;
};

const ContentRow contentRows[] = {
    {"PdfDataIsPdf", [] { return pdfData; }, FileFormat::Pdf},
    {"TiffDataIsTiff", [] { return SampleImages::tiffFile({{SampleImages::bilevel({8, 8})}}); },
     FileFormat::Tiff},
    {"JpegDataIsJpeg", [] { return SampleImages::jpegFile(SampleImages::quarters({8, 8})); },
     FileFormat::Jpeg},
    {"PngDataIsPng", [] { return SampleImages::pngFile(SampleImages::quarters({8, 8})); },
     FileFormat::Png},
    {"HtmlDataIsHtml", [] { return QByteArray("<!DOCTYPE html>\n<html><p>Hello</p></html>\n"); },
     FileFormat::Html},
    {"PlainTextIsUnknown", [] { return QByteArray("Dear Sir or Madam,\n"); }, FileFormat::Unknown},
    {"PostScriptIsUnknown", [] { return QByteArray("%!PS-Adobe-3.0\nshowpage\n"); },
     FileFormat::Unknown},
    {"BinaryJunkIsUnknown", [] { return QByteArray("\x01\x02\xFF\x00\x7F\x80\x03", 7); },
     FileFormat::Unknown},
    {"NothingIsUnknown", [] { return QByteArray(); }, FileFormat::Unknown},
};

class FormatFromContent : public testing::TestWithParam<ContentRow>
{
};

TEST_P(FormatFromContent, IsFoundByTheData)
{
    QByteArray data = GetParam().data();
    QBuffer device(&data);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    EXPECT_EQ(FileFormatDatabase::formatFromContent(&device), GetParam().format);
}

TEST_P(FormatFromContent, LeavesTheDeviceAtItsBeginning)
{
    QByteArray data = GetParam().data();
    QBuffer device(&data);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    FileFormatDatabase::formatFromContent(&device);
    EXPECT_EQ(device.readAll(), data);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromContent, testing::ValuesIn(contentRows),
                         rowName);

TEST(FileFormatDatabase, AClosedDeviceIsClosedAgainAfterDetection)
{
    QByteArray data = pdfData;
    QBuffer device(&data);
    EXPECT_EQ(FileFormatDatabase::formatFromContent(&device), FileFormat::Pdf);
    EXPECT_FALSE(device.isOpen());
}

// By file name, then by content.

struct FileRow
{
    const char* name;
    const char* fileName;
    FileFormat format;
    bool isContentRead;
};

const FileRow fileRows[] = {
    {"PdfDataNamedPngIsPng", "page.png", FileFormat::Png, false},
    {"PdfDataNamedTifIsTiff", "archive.tar.tif", FileFormat::Tiff, false},
    {"PdfDataNamedPdfIsPdf", "page.pdf", FileFormat::Pdf, false},
    {"PdfDataWithoutASuffixIsPdf", "page", FileFormat::Pdf, true},
    {"PdfDataWithAnUpperCaseSuffixIsPdf", "scan.PDF", FileFormat::Pdf, true},
    {"PdfDataNamedHtmIsPdf", "page.htm", FileFormat::Pdf, true},
    {"PdfDataWithoutANameIsPdf", "", FileFormat::Pdf, true},
};

class FormatFromFileNameAndContent : public testing::TestWithParam<FileRow>
{
};

TEST_P(FormatFromFileNameAndContent, GivesTheFormat)
{
    RecordingDevice device(pdfData);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    EXPECT_EQ(FileFormatDatabase::formatFromFileNameAndContent(QLatin1String(GetParam().fileName),
                                                               &device),
              GetParam().format);
}

TEST_P(FormatFromFileNameAndContent, ReadsTheContentOnlyIfTheSuffixDoesNotTell)
{
    RecordingDevice device(pdfData);
    FileFormatDatabase::formatFromFileNameAndContent(QLatin1String(GetParam().fileName), &device);
    EXPECT_EQ(device.isTouched(), GetParam().isContentRead);
}

INSTANTIATE_TEST_SUITE_P(FileFormatDatabase, FormatFromFileNameAndContent,
                         testing::ValuesIn(fileRows), rowName);

} // namespace
