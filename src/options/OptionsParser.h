#pragma once

#include "app/settings/FaxConfiguration.h"

#include <boost/program_options/options_description.hpp>
#include <boost/program_options/positional_options.hpp>
#include <boost/program_options/variables_map.hpp>

#include <string>
#include <vector>

/// The command line: option table, parsing, help and version, checks, and one
/// getter per setting.
///
/// Call parseCommandLine(), the four checks in the order below, then the
/// getters. Errors are exceptions derived from std::exception whose text is the
/// message for the user.
class OptionsParser
{
public:
    OptionsParser();
    ~OptionsParser();
    OptionsParser(const OptionsParser&) = delete;
    OptionsParser& operator=(const OptionsParser&) = delete;

    /// Parses and stores `argv[1]` to `argv[argc - 1]`.
    void parseCommandLine(int argc, char** argv);

    /// Prints the help text and throws OptionsApplicationExit if it was asked for.
    void checkHelp() const;

    /// Prints the version line and throws OptionsApplicationExit if it was asked for.
    void checkVersion() const;

    /// Throws boost::program_options::required_option if the output file or the
    /// input files are missing.
    void checkRequiredOptions();

    /// Throws std::logic_error if the margins leave less than 0.1 inch of the
    /// paper in either direction.
    void checkMargins() const;

    /// The input file names in command-line order; only after
    /// checkRequiredOptions() has passed.
    const std::vector<std::string>& files() const;

    FaxPaperSize paperSize() const;                     ///< A4 if not given.
    FaxResolution resolution() const;                   ///< Fine if not given.
    FaxRotation rotation() const;                       ///< No rotation if not given.
    FaxCompression compression() const;                 ///< Group 3 if not given.
    QMarginsF margins() const;                          ///< Inches; zero if not given.
    FaxTransformationFlags transformationFlags() const; ///< No flag if not given.

    /// The output file name; only after checkRequiredOptions() has passed.
    const std::string& outputFile() const;

    /// The cover page file name; empty if not given.
    std::string coverPage() const;

private:
    void setOptions();

    boost::program_options::options_description m_visible;
    boost::program_options::options_description m_hidden;
    boost::program_options::positional_options_description m_positional;
    boost::program_options::variables_map m_variables;
};
