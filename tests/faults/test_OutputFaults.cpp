#include "faults/Conversion.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace {

// Three pages of different coded lengths, and the file that they normally give.
class ThreePages
{
public:
    ThreePages()
    {
        for (const int side : {40, 100, 200}) {
            m_options.push_back(
                m_folder.write(std::to_string(side) + ".png",
                               SampleImages::pngFile(SampleImages::transparent({side, side}))));
        }
        EXPECT_EQ(runProgram(Conversion::with(argumentsFor(output()))).exitStatus, 0);
        m_content = Conversion::contentOf(output());
        EXPECT_EQ(readTiff(output()).size(), 3U);
        std::filesystem::remove(output());
    }

    // Of a conversion into `outputFile`.
    std::vector<std::string> argumentsFor(const std::string& outputFile) const
    {
        std::vector<std::string> arguments = m_options;
        arguments.insert(arguments.end(), {"-o", outputFile});
        return arguments;
    }

    std::string output() const { return m_folder.path("out.tif"); }
    const std::string& content() const { return m_content; }
    const TemporaryFolder& folder() const { return m_folder; }

private:
    TemporaryFolder m_folder;
    std::vector<std::string> m_options = {"-r", "standard"};
    std::string m_content;
};

struct FaultRow
{
    const char* name;
    const char* call;
    const char* kind;
    const char* lasts;
    int fewestCalls; // that a conversion of three pages makes
};

void PrintTo(const FaultRow& row, std::ostream* stream)
{
    *stream << row.name;
}

// Nothing looks at the number of an error, but for that of an interruption: that the
// disk is full stands for all that last.
const FaultRow faultRows[] = {
    {"OneWriteThatFindsTheDiskFull", "write", "ENOSPC", "0", 10},
    {"OneWriteThatFailsWithAnInputOutputError", "write", "EIO", "0", 10},
    {"OneWriteThatIsInterrupted", "write", "EINTR", "0", 10},
    {"OneWriteThatIsShort", "write", "short", "0", 10},
    {"EveryWriteFromThereOnThatFindsTheDiskFull", "write", "ENOSPC", "1", 10},
    {"EveryWriteFromThereOnThatIsShort", "write", "short", "1", 10},
    {"ACloseThatFindsTheDiskFull", "close", "ENOSPC", "0", 1},
    {"ACloseThatFailsWithAnInputOutputError", "close", "EIO", "0", 1},
    {"ACloseThatIsInterrupted", "close", "EINTR", "0", 1},
};

class OutputFault : public testing::TestWithParam<FaultRow>
{
protected:
    // False once the conversion makes fewer calls than `number`.
    bool strike(int number)
    {
        const std::string report = m_pages.folder().path("struck");
        const ProgramResult result =
            runProgram(Conversion::with(m_pages.argumentsFor(m_pages.output()), writeFaults,
                                        {{"FAULT_FILE", m_pages.output()},
                                         {"FAULT_CALL", GetParam().call},
                                         {"FAULT_KIND", GetParam().kind},
                                         {"FAULT_NUMBER", std::to_string(number)},
                                         {"FAULT_LASTS", GetParam().lasts},
                                         {"FAULT_REPORT", report}}));
        const bool hasStruck = !std::filesystem::is_empty(report);
        std::filesystem::remove(report);
        if (result.exitStatus == 0 || !hasStruck) {
            EXPECT_TRUE(Conversion::hasSucceeded(result, m_pages.output(), m_pages.content()))
                << "call " << number;
        } else {
            EXPECT_TRUE(Conversion::hasFailedCleanly(result, m_pages.output()))
                << "call " << number;
        }
        std::filesystem::remove(m_pages.output());
        return hasStruck;
    }

private:
    static constexpr char writeFaults[] = MORVALTIDE_WRITE_FAULTS;

    ThreePages m_pages;
};

TEST_P(OutputFault, AtAnyPointGivesTheWholeFileOrNoneAndOneLine)
{
    int number = 1;
    while (strike(number)) {
        ++number;
    }
    EXPECT_GT(number, GetParam().fewestCalls);
}

INSTANTIATE_TEST_SUITE_P(FaxWriter, OutputFault, testing::ValuesIn(faultRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Runs a program with the option "-o" for a file in the folder "$1", which is a
// file system of "$0" bytes of its own. Then prints that file after a success,
// the names of all files left in the folder after a failure.
constexpr char inSmallFileSystem[] = R"(
folder=$1; shift
mount -t tmpfs -o size="$0" tmpfs "$folder" || exit 99
"$@" -o "$folder/out.tif"
status=$?
if [ $status -eq 0 ]; then cat "$folder/out.tif"; else ls -A "$folder"; fi
exit $status
)";

class SmallFileSystem : public testing::Test
{
protected:
    void SetUp() override
    {
        std::filesystem::create_directory(m_folder);
        for (const char* option : {"-m", "-rm"}) {
            m_option = option;
            // unshare itself may fail, in a changed root folder for example.
            if (run(1000000, {"true"}).exitStatus == 0) {
                return;
            }
        }
        GTEST_SKIP() << "this user may not mount a file system, not even in a namespace";
    }

    ProgramResult run(int size, const std::vector<std::string>& command) const
    {
        ProgramStart start;
        start.program = "/usr/bin/unshare";
        start.arguments = {m_option, "sh", "-c", inSmallFileSystem, std::to_string(size), m_folder};
        start.arguments.insert(start.arguments.end(), command.begin(), command.end());
        return runProgram(start);
    }

    // Of the conversion, without the output file.
    std::vector<std::string> command() const
    {
        std::vector<std::string> command = m_pages.argumentsFor({});
        command.resize(command.size() - 2);
        command.insert(command.begin(), testedProgram(MORVALTIDE_PROGRAM));
        return command;
    }

    ThreePages m_pages;
    std::string m_folder = m_pages.folder().path("small");
    std::string m_option;
};

TEST_F(SmallFileSystem, HoldsTheWholeFileOrNone)
{
    constexpr int bytesPerBlock = 4096;
    const auto neededBlocks = static_cast<int>(m_pages.content().size() / bytesPerBlock) + 1;
    ASSERT_GE(neededBlocks, 3);
    for (int blocks = 1; blocks < neededBlocks; ++blocks) {
        EXPECT_TRUE(Conversion::hasFailedCleanly(run(blocks * bytesPerBlock, command()), {}))
            << blocks << " blocks";
    }
    const ProgramResult result = run(neededBlocks * bytesPerBlock, command());
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_TRUE(result.output == m_pages.content());
}

TEST(OutputFile, ThatIsAFullDeviceIsAFailureAndTheDeviceStays)
{
    const ThreePages pages;
    const ProgramResult result = runProgram(Conversion::with(pages.argumentsFor("/dev/full")));
    EXPECT_TRUE(Conversion::hasFailedCleanly(result, pages.output()));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

} // namespace
