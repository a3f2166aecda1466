#include "faults/Conversion.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace {

// Where Qt 5.15 goes on with an image that it could not allocate. No program
// can step in there, so these crashes are all that is allowed. The names are
// those that the linker knows.
constexpr std::array<const char*, 3> crashingFunctions = {
    "_ZNK6QImage22convertToFormat_helper", // reducing to one bit per pixel
    "_ZNK6QImage11transformed",            // turning by a multiple of 90 degrees
    "_ZN11QRingBuffer7reserve",            // reading what a child writes
};

struct ConversionRow
{
    const char* name;
    std::vector<const char*> arguments;
};

void PrintTo(const ConversionRow& row, std::ostream* stream)
{
    *stream << row.name;
}

const ConversionRow conversionRows[] = {
    {"AColourPngOnThreePages", {"-r", "standard", "colour.png", "colour.png", "colour.png"}},
    {"AColourPngEnlarged", {"-r", "standard", "-t", "fittopaper", "colour.png"}},
    {"AColourPngTurnedClockwise", {"-r", "standard", "-t", "fittopaper", "-R", "90", "colour.png"}},
    {"ABilevelPng", {"bilevel.png"}},
    {"ABilevelPngReduced", {"-r", "standard", "-m", "3", "bilevel.png"}},
    {"ABilevelPngTurnedCounterclockwise", {"-r", "standard", "-R", "270", "bilevel.png"}},
    {"AJpegUpsideDownWithMargins",
     {"-r", "standard", "-R", "180", "-m", "0.5", "-t", "fittopaper", "photo.jpg"}},
    {"ATiffOfTwoPagesTurnedClockwise", {"-r", "standard", "-R", "90", "-m", "1", "pages.tif"}},
    {"APdf", {"-r", "standard", "three.pdf"}},
    {"APdfTurnedClockwise", {"-r", "standard", "-R", "90", "three.pdf"}},
    {"APdfWithMarginsInGroup4", {"-r", "standard", "-m", "1", "-c", "g4", "three.pdf"}},
    {"ACoverPage", {"-r", "standard", "-C", "cover.html", "colour.png"}},
};

// The program runs in the folder, so that its arguments can be used as they are.
class ScarceMemory : public testing::TestWithParam<ConversionRow>
{
protected:
    ScarceMemory()
    {
        const QImage colour = SampleImages::quarters({600, 800});
        const QImage bilevel = SampleImages::bilevel({1600, 1000});
        m_folder.write("colour.png", SampleImages::pngFile(colour));
        m_folder.write("bilevel.png", SampleImages::pngFile(bilevel));
        m_folder.write("photo.jpg", SampleImages::jpegFile(colour));
        m_folder.write("pages.tif", SampleImages::tiffFile({{colour}, {bilevel}}));
        m_folder.write("three.pdf", SamplePdf::equalPages(3));
        m_folder.write("cover.html", "<html><body><h1>Cover</h1><p>text</p></body></html>");
        m_arguments.insert(m_arguments.end(), GetParam().arguments.begin(),
                           GetParam().arguments.end());
        EXPECT_EQ(run(Conversion::with(m_arguments)).exitStatus, 0);
        m_content = Conversion::contentOf(m_output);
        std::filesystem::remove(m_output);
    }

    ProgramResult run(ProgramStart start) const
    {
        start.folder = m_folder.path({});
        return runProgram(start);
    }

    // False once the conversion makes fewer allocations than `number`.
    bool strike(int number, const char* lasts)
    {
        const ProgramResult result = run(Conversion::with(m_arguments, MORVALTIDE_MEMORY_FAULTS,
                                                          {{"FAULT_NUMBER", std::to_string(number)},
                                                           {"FAULT_LASTS", lasts},
                                                           {"FAULT_REPORT", m_report}}));
        const std::string report = Conversion::contentOf(m_report);
        const std::string where = "allocation " + std::to_string(number) + '\n' + report;
        if (result.signal != 0) {
            EXPECT_TRUE(isCrashOfQt(report)) << "signal " << result.signal << ", " << where;
        } else if (result.exitStatus == 0) {
            EXPECT_TRUE(Conversion::hasSucceeded(result, m_output, m_content)) << where;
        } else {
            EXPECT_TRUE(Conversion::hasFailedCleanly(result, m_output,
                                                     Conversion::OwnLine::MessageOrBadAlloc))
                << where;
        }
        std::filesystem::remove(m_output);
        std::filesystem::remove(m_report);
        return !report.empty();
    }

private:
    static bool isCrashOfQt(const std::string& report)
    {
        const std::size_t crash = report.find("crash\n");
        return std::any_of(
            crashingFunctions.begin(), crashingFunctions.end(), [&report, crash](const char* name) {
                return crash != std::string::npos && report.find(name, crash) != std::string::npos;
            });
    }

    TemporaryFolder m_folder;
    std::string m_output = m_folder.path("out.tif");
    std::string m_report = m_folder.path("struck");
    std::vector<std::string> m_arguments = {"-o", "out.tif"};
    std::string m_content;
};

// Ghostscript's output is read in as many pieces as it happens to arrive in, so
// the number of allocations differs from run to run.
constexpr int fewestAllocations = 3;

TEST_P(ScarceMemory, ForOneAllocationGivesTheWholeFileOrNoneAndOneLine)
{
    int number = 1;
    while (strike(number, "0")) {
        ++number;
    }
    EXPECT_GT(number, fewestAllocations);
}

TEST_P(ScarceMemory, ForAllAllocationsFromOneOnGivesTheWholeFileOrNoneAndOneLine)
{
    int number = 1;
    while (strike(number, "1")) {
        ++number;
    }
    EXPECT_GT(number, fewestAllocations);
}

INSTANTIATE_TEST_SUITE_P(FaxWriter, ScarceMemory, testing::ValuesIn(conversionRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Of all sizes, from before the output is opened until the first page is under
// way. A library may crash for lack of a few bytes; the output must not stay.
class ScarceMemoryAroundTheOpening : public testing::TestWithParam<const char*>
{
protected:
    ScarceMemoryAroundTheOpening()
    {
        EXPECT_EQ(runProgram(Conversion::with(m_arguments)).exitStatus, 0);
        m_content = Conversion::contentOf(m_output);
        std::filesystem::remove(m_output);
    }

    // The call stack of the allocation that failed, with those that followed.
    std::string strike(int number)
    {
        const ProgramResult result =
            runProgram(Conversion::with(m_arguments, MORVALTIDE_MEMORY_FAULTS,
                                        {{"FAULT_NUMBER", std::to_string(number)},
                                         {"FAULT_FILE", m_output},
                                         {"FAULT_LASTS", GetParam()},
                                         {"FAULT_REPORT", m_report}}));
        std::string report = Conversion::contentOf(m_report);
        const std::string where = "allocation " + std::to_string(number) + '\n' + report;
        if (result.exitStatus == 0) {
            EXPECT_TRUE(Conversion::hasSucceeded(result, m_output, m_content)) << where;
        } else {
            EXPECT_FALSE(std::filesystem::exists(m_output)) << where;
            EXPECT_EQ(result.output, "") << where;
        }
        std::filesystem::remove(m_output);
        std::filesystem::remove(m_report);
        return report;
    }

private:
    TemporaryFolder m_folder;
    std::string m_picture =
        m_folder.write("in.png", SampleImages::pngFile(SampleImages::bilevel({16, 10})));
    // Longer than a name that fits into a string object.
    std::string m_output = m_folder.path("an-output-file-with-a-long-name.tif");
    std::string m_report = m_folder.path("struck");
    std::vector<std::string> m_arguments = {"-o", m_output, m_picture};
    std::string m_content;
};

TEST_P(ScarceMemoryAroundTheOpening, LeavesNoOutputUnlessItIsWhole)
{
    constexpr int behindTheOpening = 50;
    constexpr int mostAllocations = 150;
    int inTheOpening = 0;
    int last = 0;
    for (int number = 1; inTheOpening == 0 || number <= last + behindTheOpening; ++number) {
        const std::string report = strike(number);
        ASSERT_NE(report, "") << "there is no allocation " << number;
        ASSERT_LE(number, mostAllocations) << "the opening has not been seen, or not its end";
        if (report.find("TIFFClientOpen") < report.find("\nallocation")) {
            ++inTheOpening;
            last = number;
        }
    }
    EXPECT_GE(inTheOpening, 2);
}

INSTANTIATE_TEST_SUITE_P(FaxWriter, ScarceMemoryAroundTheOpening, testing::Values("0", "1"),
                         [](const auto& test) {
                             return std::string(*test.param == '0' ? "OneAllocation"
                                                                   : "AllAllocationsFromOneOn");
                         });

} // namespace
