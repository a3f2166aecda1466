#include "interop/FaxCall.h"
#include "support/ProgramRun.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QSize>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace {

struct Geometry
{
    const char* name;
    const char* paper;
    const char* resolution;
    QSize size;
};

void PrintTo(const Geometry& geometry, std::ostream* stream)
{
    *stream << geometry.name;
}

const Geometry geometries[] = {
    {"A4Standard", "a4", "standard", {1728, 1146}},
    {"A4Fine", "a4", "fine", {1728, 2292}},
    {"A4Superfine", "a4", "superfine", {1728, 4572}},
    {"A4Ultrafine", "a4", "ultrafine", {3456, 4572}},
    {"LetterStandard", "letter", "standard", {1728, 1078}},
    {"LetterFine", "letter", "fine", {1728, 2156}},
    {"LetterSuperfine", "letter", "superfine", {1728, 4301}},
    {"LetterUltrafine", "letter", "ultrafine", {3456, 4301}},
    {"LegalStandard", "legal", "standard", {1728, 1372}},
    {"LegalFine", "legal", "fine", {1728, 2744}},
    {"LegalSuperfine", "legal", "superfine", {1728, 5474}},
    {"LegalUltrafine", "legal", "ultrafine", {3456, 5474}},
};

constexpr char letterText[] = "<html><body><h1>To whom it may concern</h1>"
                              "<p>A page of <b>text</b> with a <i>table</i>:</p>"
                              "<table border='1'><tr><td>one</td><td>two</td></tr></table>"
                              "<p>The quick brown fox jumps over the lazy dog.</p></body></html>";

class ReceivedPages : public testing::TestWithParam<std::tuple<Geometry, FaxCompression>>
{
protected:
    // A page of text, a drawing and a dithered picture.
    void convert() const
    {
        const auto& [geometry, compression] = GetParam();
        ProgramStart start;
        start.program = MORVALTIDE_PROGRAM;
        start.arguments = {
            "-p",
            geometry.paper,
            "-r",
            geometry.resolution,
            "-c",
            compression == FaxCompression::G4 ? "g4" : "g3",
            "-C",
            m_folder.write("text.html", letterText),
            "-o",
            m_sent,
            m_folder.write("drawing.pdf", SamplePdf::equalPages(1)),
            m_folder.write("picture.png",
                           SampleImages::pngFile(SampleImages::transparent({900, 700})))};
        const ProgramResult result = runProgram(start);
        ASSERT_EQ(result.exitStatus, 0) << result.error;
    }

    TemporaryFolder m_folder;
    std::string m_sent = m_folder.path("sent.tif");
    std::string m_received = m_folder.path("received.tif");
};

TEST_P(ReceivedPages, AreThoseSentBitForBit)
{
    const auto& [geometry, compression] = GetParam();
    ASSERT_NO_FATAL_FAILURE(convert());

    const FaxCall::Result call = FaxCall::run(m_sent, m_received, compression);
    EXPECT_EQ(call.sender, "OK");
    EXPECT_EQ(call.receiver, "OK");
    EXPECT_EQ(call.pageCount, 3);

    const std::vector<TiffPage> sent = readTiff(m_sent);
    const std::vector<TiffPage> received = readTiff(m_received);
    ASSERT_EQ(sent.size(), 3U);
    ASSERT_EQ(received.size(), 3U);
    for (std::size_t page = 0; page < sent.size(); ++page) {
        EXPECT_EQ(received[page].pixels.size(), geometry.size) << "page " << page;
        EXPECT_TRUE(isSamePicture(received[page].pixels, sent[page].pixels)) << "page " << page;
    }
}

INSTANTIATE_TEST_SUITE_P(FaxCall, ReceivedPages,
                         testing::Combine(testing::ValuesIn(geometries),
                                          testing::Values(FaxCompression::G3, FaxCompression::G4)),
                         [](const auto& test) {
                             const bool isGroup4 = std::get<1>(test.param) == FaxCompression::G4;
                             return std::string(std::get<0>(test.param).name) +
                                    (isGroup4 ? "Group4" : "Group3");
                         });

} // namespace
