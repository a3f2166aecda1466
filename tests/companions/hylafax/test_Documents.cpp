#include "companions/hylafax/QueueTest.h"
#include "support/ProgramRun.h"
#include "support/SamplePdf.h"
#include "support/TiffFile.h"

#include <QImage>
#include <QPainter>
#include <QSize>

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace {

enum Tag : std::uint16_t
{
    ImageWidth = 256,
    ImageLength = 257,
    Compression = 259,
    StripOffsets = 273,
    XResolution = 282,
    YResolution = 283,
    T4Options = 292,
};

struct Geometry
{
    const char* name;
    QueueRequest request;
    std::vector<std::string> options; // of the program
    QSize size;
    double xResolution;
    double yResolution;
    double compression; // 3 is group 3, 4 is group 4
};

void PrintTo(const Geometry& geometry, std::ostream* stream)
{
    *stream << geometry.name;
}

QueueRequest pdf(const char* resolution, const char* width, const char* length, const char* format)
{
    return {DocumentKind::Pdf, resolution, width, length, format};
}

const Geometry geometries[] = {
    {"A4Standard", pdf("98", "1728", "297", "-1"), {"-r", "standard"}, {1728, 1146}, 204, 98, 3},
    {"A4Fine", pdf("196", "1728", "297", "-3"), {}, {1728, 2292}, 204, 196, 4},
    {"A4Superfine",
     pdf("391", "1728", "297", "-3"),
     {"-r", "superfine"},
     {1728, 4572},
     204,
     391,
     4},
    {"A4Ultrafine",
     pdf("391", "3456", "297", "-3"),
     {"-r", "ultrafine"},
     {3456, 4572},
     408,
     391,
     4},
    {"LetterFine", pdf("196", "1728", "280", "-2"), {"-p", "letter"}, {1728, 2156}, 204, 196, 3},
    {"LegalFine", pdf("196", "1728", "364", "-1"), {"-p", "legal"}, {1728, 2744}, 204, 196, 3},
};

class HylaFaxPages : public QueueTest, public testing::WithParamInterface<Geometry>
{
};

TEST_P(HylaFaxPages, AreThoseOfTheProgramInTheSizeThatTheQueueAsksFor)
{
    const Geometry& geometry = GetParam();
    const QByteArray content = SamplePdf::equalPages(2);
    submit(content);
    ASSERT_TRUE(isQueueSuccess(run(geometry.request)));

    const std::vector<TiffPage> expected = directPages("expected.pdf", content, geometry.options);
    const std::vector<TiffPage> actual = pages();
    ASSERT_EQ(expected.size(), 2U);
    ASSERT_EQ(actual.size(), 2U);
    for (std::size_t page = 0; page < actual.size(); ++page) {
        EXPECT_EQ(actual[page].pixels.size(), geometry.size);
        EXPECT_TRUE(isSamePicture(actual[page].pixels, expected[page].pixels)) << "page " << page;
        const auto& tags = actual[page].tags;
        EXPECT_EQ(tags.at(XResolution), std::vector{geometry.xResolution});
        EXPECT_EQ(tags.at(YResolution), std::vector{geometry.yResolution});
        EXPECT_EQ(tags.at(Compression), std::vector{geometry.compression});
        EXPECT_EQ(tags.at(StripOffsets).size(), 1U);
        // With fill bits in front of every end of line, as the queue's own are.
        if (geometry.request.format == "-1") {
            EXPECT_EQ(tags.at(T4Options), std::vector{4.0});
        } else if (geometry.request.format == "-2") {
            EXPECT_EQ(tags.at(T4Options), std::vector{5.0});
        }
    }
}

TEST_P(HylaFaxPages, NeedNoOtherConversionForTheServer)
{
    if (!hasTiffcheck()) {
        GTEST_SKIP() << "tiffcheck is not installed (Debian package hylafax-server)";
    }
    const QueueRequest& request = GetParam().request;
    submit(SamplePdf::equalPages(1));
    ASSERT_TRUE(isQueueSuccess(run(request)));
    ProgramStart check;
    check.program = "/usr/sbin/tiffcheck";
    check.arguments = {"-r", request.resolution, "-w",        request.width, "-l", request.length,
                       "-U", request.format,     path(output)};
    EXPECT_EQ(runProgram(check).output, "OK\n");
}

INSTANTIATE_TEST_SUITE_P(HylaFax, HylaFaxPages, testing::ValuesIn(geometries),
                         [](const auto& test) { return std::string{test.param.name}; });

class HylaFaxPostScript : public QueueTest
{
protected:
    QueueRequest m_request = {DocumentKind::PostScript};
};

QImage whitePage(const QSize& size)
{
    QImage page(size, QImage::Format_Mono);
    page.setColorTable({0xFFFFFFFF, 0xFF000000});
    page.fill(0);
    return page;
}

TEST_F(HylaFaxPostScript, IsDrawnWhereItsAuthorHasPutIt)
{
    // A page of 1728 by 2292 dots, less the fraction of one: 600 dots to the
    // right and 980 rows down begin 300 dots and 490 rows of black.
    submit("%!PS\n<</PageSize [609.88 841.96]>> setpagedevice\n"
           "211.9 302.06 105.6 179.8 rectfill showpage\n");
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    ASSERT_EQ(pages().size(), 1U);
    QImage expected = whitePage({1728, 2292});
    for (int y = 980; y < 1470; ++y) {
        for (int x = 600; x < 900; ++x) {
            expected.setPixel(x, y, 1);
        }
    }
    EXPECT_TRUE(isSamePicture(pages()[0].pixels, expected));
}

TEST_F(HylaFaxPostScript, KeepsEveryPage)
{
    submit("%!PS\n1 1 12 { 0 exch 20 mul 100 50 rectfill showpage } for quit\n");
    ASSERT_TRUE(isQueueSuccess(run(m_request)));
    EXPECT_EQ(pages().size(), 12U);
}

TEST_F(HylaFaxPostScript, ReadsNoFilesOfTheServer)
{
    write("etc/hosts.hfaxd", "secret");
    submit("%!PS\n(" + QByteArray::fromStdString(path("etc/hosts.hfaxd")) +
           ") (r) file pop showpage\n");
    EXPECT_TRUE(isRejected(
        run(m_request),
        "The PostScript document cannot be faxed: Error: /invalidfileaccess in --file--"));
}

} // namespace
