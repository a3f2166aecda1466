#include "options/OptionsParser.h"

#include "app/settings/FaxSizeDetails.h"
#include "options/OptionValues.h"
#include "options/OptionWords.h"
#include "options/OptionsApplicationExit.h"
#include "options/StringConverter.h"

#include <boost/program_options/parsers.hpp>
#include <boost/program_options/value_semantic.hpp>

#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace po = boost::program_options;

namespace {

constexpr char programName[] = "morvaltide";

constexpr char helpOption[] = "help";
constexpr char versionOption[] = "version";
constexpr char paperSizeOption[] = "paper-size";
constexpr char resolutionOption[] = "resolution";
constexpr char rotationOption[] = "rotation";
constexpr char transformationOption[] = "transformation";
constexpr char marginsOption[] = "margins";
constexpr char compressionOption[] = "compression";
constexpr char coverPageOption[] = "cover-page";
constexpr char outputFileOption[] = "output-file";
constexpr char fileOption[] = "file";

// Less than this of the paper, in inches, is no room to print on.
constexpr double minimumContentInches = 0.1;

/// The key of an option with a short form, as the library wants it: "name,n".
template <std::size_t size>
std::string options_multikey_base(const char (&name)[size], char letter)
{
    std::string key;
    key.reserve(size - 1 + 2);
    key.append(name, size - 1);
    key += ',';
    key += letter;
    return key;
}

template <typename Value>
po::typed_value<Value>* namedValue(const char* valueName)
{
    return po::value<Value>()->value_name(valueName);
}

template <typename Value>
Value valueOr(const po::variables_map& variables, const char* name, const Value& defaultValue)
{
    return variables.count(name) == 0 ? defaultValue : variables[name].as<Value>();
}

} // namespace

OptionsParser::OptionsParser() : m_visible("options")
{
    setOptions();
}

OptionsParser::~OptionsParser() = default;

void OptionsParser::setOptions()
{
    using namespace OptionWords;
    constexpr FaxConfiguration defaults;
    const std::string paperSizeText = fmt::format(
        "specify paper size: {}, {}, {} (default: {})", paperSizes[0].text, paperSizes[1].text,
        paperSizes[2].text, wordFor(paperSizes, defaults.paperSize));
    const std::string resolutionText =
        fmt::format("specify resolution: {}, {}, {}, {} (default: {})", resolutions[0].text,
                    resolutions[1].text, resolutions[2].text, resolutions[3].text,
                    wordFor(resolutions, defaults.resolution));
    const std::string transformationText =
        fmt::format("specify transformation: {}", transformations[0].text);
    const std::string compressionText = fmt::format(
        "specify group encoding compression: {}, {} (default: {})", compressions[0].text,
        compressions[1].text, wordFor(compressions, defaults.compression));

    po::options_description_easy_init add = m_visible.add_options();
    add(options_multikey_base(helpOption, 'h').c_str(), "display this help message");
    add(options_multikey_base(versionOption, 'v').c_str(), "display version information");
    add(options_multikey_base(paperSizeOption, 'p').c_str(), namedValue<FaxPaperSize>("<size>"),
        paperSizeText.c_str());
    add(options_multikey_base(resolutionOption, 'r').c_str(), namedValue<FaxResolution>("<type>"),
        resolutionText.c_str());
    // The capitals keep the rotation apart from the resolution and the cover
    // page apart from the compression.
    add(options_multikey_base(rotationOption, 'R').c_str(), namedValue<FaxRotation>("<angle>"),
        "specify rotation angle: 0, 90, 180, 270, -90, -180, -270");
    add(options_multikey_base(transformationOption, 't').c_str(),
        namedValue<FaxTransformationFlags>("<flag>"), transformationText.c_str());
    add(options_multikey_base(marginsOption, 'm').c_str(), namedValue<QMarginsF>("<value>"),
        "specify margins in inches (in L,T,R,B or H,V or M formats)");
    add(options_multikey_base(compressionOption, 'c').c_str(),
        namedValue<FaxCompression>("<group>"), compressionText.c_str());
    add(options_multikey_base(coverPageOption, 'C').c_str(), namedValue<std::string>("<file>"),
        "specify cover page HTML file");
    add(options_multikey_base(outputFileOption, 'o').c_str(),
        namedValue<std::string>("<file>")->required(), "specify output file name");

    m_hidden.add_options()(fileOption, po::value<std::vector<std::string>>()->required());
    m_positional.add(fileOption, -1);
}

void OptionsParser::parseCommandLine(int argc, char** argv)
{
    po::options_description all;
    all.add(m_visible).add(m_hidden);
    // Newer versions of Boost count on the name of the program.
    po::store(po::command_line_parser(std::max(argc, 1), argv)
                  .options(all)
                  .positional(m_positional)
                  .run(),
              m_variables);
}

void OptionsParser::checkHelp() const
{
    if (m_variables.count(helpOption) == 0) {
        return;
    }
    std::cout << "usage: " << programName << " [option]... [file]...\n" << m_visible << std::endl;
    throw OptionsApplicationExit();
}

void OptionsParser::checkVersion() const
{
    if (m_variables.count(versionOption) == 0) {
        return;
    }
    std::cout << programName << " version " << MORVALTIDE_VERSION << std::endl;
    throw OptionsApplicationExit();
}

void OptionsParser::checkRequiredOptions()
{
    po::notify(m_variables);
}

void OptionsParser::checkMargins() const
{
    const QMarginsF given = margins();
    if (areMarginsAbsent(given)) {
        return;
    }
    const FaxPaperSize paper = paperSize();
    const double contentWidth = paperWidthInches(paper) - given.left() - given.right();
    const double contentHeight = paperHeightInches(paper) - given.top() - given.bottom();
    if (contentWidth < minimumContentInches || contentHeight < minimumContentInches) {
        throw std::logic_error(fmt::format("the argument ('{}') for option '--{}' is too large",
                                           StringConverter<QMarginsF>::toShortString(given),
                                           marginsOption));
    }
}

const std::vector<std::string>& OptionsParser::files() const
{
    return m_variables[fileOption].as<std::vector<std::string>>();
}

FaxPaperSize OptionsParser::paperSize() const
{
    return valueOr(m_variables, paperSizeOption, FaxConfiguration().paperSize);
}

FaxResolution OptionsParser::resolution() const
{
    return valueOr(m_variables, resolutionOption, FaxConfiguration().resolution);
}

FaxRotation OptionsParser::rotation() const
{
    return valueOr(m_variables, rotationOption, FaxConfiguration().rotation);
}

FaxCompression OptionsParser::compression() const
{
    return valueOr(m_variables, compressionOption, FaxConfiguration().compression);
}

QMarginsF OptionsParser::margins() const
{
    return valueOr(m_variables, marginsOption, FaxConfiguration().margins);
}

FaxTransformationFlags OptionsParser::transformationFlags() const
{
    return valueOr(m_variables, transformationOption, FaxConfiguration().transformationFlags);
}

const std::string& OptionsParser::outputFile() const
{
    return m_variables[outputFileOption].as<std::string>();
}

std::string OptionsParser::coverPage() const
{
    return valueOr(m_variables, coverPageOption, std::string());
}
