#include "faults/Conversion.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

testing::AssertionResult failure(const ProgramResult& result, const char* reason)
{
    return testing::AssertionFailure() << reason << "; exit status " << result.exitStatus
                                       << ", signal " << result.signal << ", standard error:\n"
                                       << result.error;
}

bool isOwn(const std::string& line, Conversion::OwnLine ownLine)
{
    return line.rfind("can't ", 0) == 0 ||
           (ownLine == Conversion::OwnLine::MessageOrBadAlloc && line == "std::bad_alloc");
}

int countOwnLines(const std::string& text, Conversion::OwnLine ownLine)
{
    std::istringstream lines(text);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        count += isOwn(line, ownLine) ? 1 : 0;
    }
    return count;
}

} // namespace

ProgramStart Conversion::with(const std::vector<std::string>& arguments)
{
    ProgramStart start;
    start.program = testedProgram(MORVALTIDE_PROGRAM);
    start.arguments = arguments;
    return start;
}

ProgramStart Conversion::with(const std::vector<std::string>& arguments, const std::string& library,
                              const Settings& settings)
{
    ProgramStart start = with(arguments);
    for (const auto& [name, value] : settings) {
        start.environment[name] = value;
    }
    start.environment["LD_PRELOAD"] = library;
    // The runtime of the address sanitizer would insist on being loaded first.
    const char* options = std::getenv("ASAN_OPTIONS");
    start.environment["ASAN_OPTIONS"] =
        std::string(options == nullptr ? "" : options) + ":verify_asan_link_order=0";
    return start;
}

testing::AssertionResult Conversion::hasFailedCleanly(const ProgramResult& result,
                                                      const std::string& outputFile,
                                                      OwnLine ownLine)
{
    if (result.exitStatus != 1) {
        return failure(result, "did not end with exit status 1");
    }
    if (std::filesystem::exists(std::filesystem::symlink_status(outputFile))) {
        return failure(result, "left an output file behind");
    }
    if (!result.output.empty()) {
        return failure(result, "wrote to standard output");
    }
    if (countOwnLines(result.error, ownLine) != 1) {
        return failure(result, "did not report itself in one line of its own");
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult Conversion::hasSucceeded(const ProgramResult& result,
                                                  const std::string& outputFile,
                                                  const std::string& content)
{
    if (result.exitStatus != 0) {
        return failure(result, "did not end with exit status 0");
    }
    if (!result.output.empty()) {
        return failure(result, "wrote to standard output");
    }
    if (contentOf(outputFile) != content) {
        return failure(result, "wrote a file that is not what it should be");
    }
    return testing::AssertionSuccess();
}

std::string Conversion::contentOf(const std::string& fileName)
{
    std::ifstream file(fileName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

QImage Conversion::blackLetterPage(int blackRows)
{
    QImage page(1728, 1078, QImage::Format_Mono);
    page.setColorTable({0xFFFFFFFF, 0xFF000000});
    page.fill(0);
    std::fill_n(page.bits(), blackRows * page.bytesPerLine(), uchar{0xFF});
    return page;
}
