#pragma once

#include "options/OptionsParser.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// The words of a command line after the program name.
using Arguments = std::vector<std::string>;

/// A parser that has read `arguments`, without any check.
std::unique_ptr<OptionsParser> parsed(Arguments arguments);

/// A parser that has read `arguments` and run its four checks in order.
std::unique_ptr<OptionsParser> checked(const Arguments& arguments);

/// The Error that `action` ends with. Anything else that it ends with goes on
/// to GoogleTest, which fails the test and shows the text.
template <typename Error, typename Action>
Error errorOf(const Action& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error;
    }
    throw std::runtime_error("nothing was thrown");
}
