// The whole command line; the input is its arguments, each with a zero byte
// behind it.

#include "Require.h"

#include "options/OptionsParser.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> splitArguments(const std::string& input)
{
    std::vector<std::string> arguments = {"morvaltide"};
    std::istringstream stream(input);
    for (std::string argument; std::getline(stream, argument, '\0');) {
        arguments.push_back(argument);
    }
    return arguments;
}

void readAll(const OptionsParser& options)
{
    require(!options.files().empty(), "there are input files once the checks have passed");
    const QMarginsF margins = options.margins();
    // Not a number passes on purpose.
    require(!(margins.left() < 0.0 || margins.top() < 0.0 || margins.right() < 0.0 ||
              margins.bottom() < 0.0),
            "no margin is negative");
    require(static_cast<int>(options.rotation()) % 90 == 0, "rotations are quarter turns");
    require(paperHeightInches(options.paperSize()) > 0.0, "the paper is a known one");
    require(pageWidthPixels(options.resolution()) > 0, "the resolution is a known one");
    options.compression();
    options.transformationFlags();
    options.outputFile();
    options.coverPage();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static std::ostringstream unread;
    std::cout.rdbuf(unread.rdbuf()); // help and version texts
    unread.str({});

    std::vector<std::string> arguments = splitArguments(std::string(data, data + size));
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    const int count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    OptionsParser options;
    try {
        options.parseCommandLine(count, pointers.data());
        options.checkHelp();
        options.checkVersion();
        options.checkRequiredOptions();
        options.checkMargins();
    } catch (const std::exception&) {
        return 0;
    }
    readAll(options);
    return 0;
}
