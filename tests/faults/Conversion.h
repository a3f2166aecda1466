#pragma once

#include "support/ProgramRun.h"

#include <QImage>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

/// Runs of the real program in an environment where something fails, and the
/// only two ways in which they may end.
namespace Conversion {

using Settings = std::map<std::string, std::string>;

/// The program under test.
ProgramStart with(const std::vector<std::string>& arguments);

/// The same with a library loaded into it that fails what `settings`, handed
/// over as environment variables, ask for.
ProgramStart with(const std::vector<std::string>& arguments, const std::string& library,
                  const Settings& settings);

/// Which lines on standard error count as the program's own.
enum class OwnLine
{
    Message,           ///< "can't ...".
    MessageOrBadAlloc, ///< The same, or the text of the exception for lack of memory.
};

/// True for exit status 1, no output file, nothing on standard output, and one
/// line of the program's own on standard error. Lines of the libraries may stand
/// in front of it and, from closing the file, behind it.
testing::AssertionResult hasFailedCleanly(const ProgramResult& result,
                                          const std::string& outputFile,
                                          OwnLine ownLine = OwnLine::Message);

/// True for exit status 0, nothing on standard output, and an output file with
/// this content.
testing::AssertionResult hasSucceeded(const ProgramResult& result, const std::string& outputFile,
                                      const std::string& content);

/// The whole content of a file; empty if it cannot be read.
std::string contentOf(const std::string& fileName);

/// Letter paper at standard resolution, 1728 x 1078 pixels, whose upper rows are
/// black.
QImage blackLetterPage(int blackRows);

} // namespace Conversion
