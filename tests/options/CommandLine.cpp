#include "options/CommandLine.h"

#include <utility>

std::unique_ptr<OptionsParser> parsed(Arguments arguments)
{
    // The program's texts name it themselves, whatever it was started as.
    std::string startedAs = "/somewhere/else";
    std::vector<char*> values{startedAs.data()};
    for (std::string& argument : arguments) {
        values.push_back(argument.data());
    }
    const int count = static_cast<int>(values.size());
    values.push_back(nullptr);

    auto parser = std::make_unique<OptionsParser>();
    parser->parseCommandLine(count, values.data());
    return parser;
}

std::unique_ptr<OptionsParser> checked(const Arguments& arguments)
{
    std::unique_ptr<OptionsParser> parser = parsed(arguments);
    parser->checkHelp();
    parser->checkVersion();
    parser->checkRequiredOptions();
    parser->checkMargins();
    return parser;
}
