#include "companions/hylafax/QueueTest.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/TiffFile.h"

#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::uint16_t compressionTag = 259;
constexpr std::uint16_t optionsTag = 292;

bool isSameRow(const QImage& one, int y, const QImage& other, int otherY)
{
    return otherY >= 0 && otherY < other.height() &&
           std::memcmp(one.constScanLine(y), other.constScanLine(otherY),
                       static_cast<std::size_t>(other.width()) / 8) == 0;
}

// Every row of `tall` is one of `low` that belongs there, or its neighbour.
testing::AssertionResult hasEveryRowTwice(const QImage& tall, const QImage& low)
{
    if (tall.size() != QSize(low.width(), 2 * low.height())) {
        return testing::AssertionFailure() << "the picture has " << tall.height() << " rows";
    }
    for (int y = 0; y < tall.height(); ++y) {
        if (!isSameRow(tall, y, low, y / 2) && !isSameRow(tall, y, low, y / 2 - 1) &&
            !isSameRow(tall, y, low, y / 2 + 1)) {
            return testing::AssertionFailure() << "row " << y << " is none of the document's";
        }
    }
    return testing::AssertionSuccess();
}

class HylaFaxTiff : public QueueTest
{
protected:
    // The program's own fax of two pages becomes the document of the queue.
    std::vector<TiffPage> submitFax(const std::vector<std::string>& options)
    {
        const std::string fax = path("sample.tif");
        std::vector<std::string> all = options;
        const QByteArray drawing = SamplePdf::equalPages(2);
        ProgramStart start;
        start.program = MORVALTIDE_PROGRAM;
        write("sample.pdf", drawing);
        all.insert(all.end(), {"-o", fax, path("sample.pdf")});
        start.arguments = all;
        EXPECT_EQ(runProgram(start).exitStatus, 0);
        QFile file(QString::fromStdString(fax));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        m_content = file.readAll();
        submit(m_content);
        return readTiff(fax);
    }

    QueueRequest m_request = {DocumentKind::Tiff};
    QByteArray m_content;
};

TEST_F(HylaFaxTiff, ThatIsARightFaxIsPassedOnByteForByte)
{
    if (!hasTiffcheck()) {
        GTEST_SKIP() << "tiffcheck is not installed (Debian package hylafax-server)";
    }
    submitFax({"-c", "g4"});
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    EXPECT_EQ(outputContent(), m_content);
}

TEST_F(HylaFaxTiff, InAnotherCodingKeepsEveryDot)
{
    if (!hasTiffcheck()) {
        GTEST_SKIP() << "tiffcheck is not installed (Debian package hylafax-server)";
    }
    const std::vector<TiffPage> sent = submitFax({"-c", "g4", "-p", "letter"});
    m_request.format = "-1";
    m_request.length = "280";
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    const std::vector<TiffPage> actual = pages();
    ASSERT_EQ(actual.size(), 2U);
    for (std::size_t page = 0; page < actual.size(); ++page) {
        EXPECT_EQ(actual[page].tags.at(compressionTag), std::vector{3.0});
        EXPECT_TRUE(isSamePicture(actual[page].pixels, sent[page].pixels)) << "page " << page;
    }
}

TEST_F(HylaFaxTiff, InGroup3GetsTheFillBitsThatItLacks)
{
    if (!hasTiffcheck()) {
        GTEST_SKIP() << "tiffcheck is not installed (Debian package hylafax-server)";
    }
    const std::vector<TiffPage> sent = submitFax({});
    m_request.format = "-1";
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    const std::vector<TiffPage> actual = pages();
    ASSERT_EQ(actual.size(), 2U);
    for (std::size_t page = 0; page < actual.size(); ++page) {
        EXPECT_EQ(actual[page].tags.at(optionsTag), std::vector{4.0});
        EXPECT_TRUE(isSamePicture(actual[page].pixels, sent[page].pixels)) << "page " << page;
    }

    // Such a fax is passed on.
    const QByteArray padded = outputContent();
    submit(padded);
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    EXPECT_EQ(outputContent(), padded);
}

TEST_F(HylaFaxTiff, OfStandardResolutionKeepsItsProportionsAtFine)
{
    const std::vector<TiffPage> sent = submitFax({"-r", "standard"});
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    const std::vector<TiffPage> actual = pages();
    ASSERT_EQ(actual.size(), 2U);
    EXPECT_TRUE(hasEveryRowTwice(actual[0].pixels, sent[0].pixels));
    EXPECT_TRUE(hasEveryRowTwice(actual[1].pixels, sent[1].pixels));
}

TEST_F(HylaFaxTiff, OfSquareDotsFillsThePage)
{
    const QByteArray picture = SampleImages::tiffFile({{SampleImages::transparent({300, 400}), 1}});
    submit(picture);
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    const std::vector<TiffPage> expected =
        directPages("expected.tif", picture, {"-t", "fittopaper"});
    ASSERT_EQ(pages().size(), 1U);
    EXPECT_TRUE(isSamePicture(pages()[0].pixels, expected.at(0).pixels));
}

} // namespace
