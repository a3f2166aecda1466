#pragma once

#include <exception>

/// Thrown after the help or the version text has been written, to end the
/// program early with exit status 0.
class OptionsApplicationExit : public std::exception
{
public:
    OptionsApplicationExit() = default;
    OptionsApplicationExit(const OptionsApplicationExit&) = default;
    OptionsApplicationExit& operator=(const OptionsApplicationExit&) = default;
    ~OptionsApplicationExit() override = default;
};
