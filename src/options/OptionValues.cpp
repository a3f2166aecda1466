#include "options/OptionValues.h"

#include "options/OptionWords.h"
#include "options/StringConverter.h"

#include <boost/program_options/errors.hpp>
#include <boost/program_options/value_semantic.hpp>

namespace po = boost::program_options;

namespace {

template <typename Value, std::size_t count>
void validateWord(boost::any& slot, const std::vector<std::string>& tokens,
                  const OptionWords::Word<Value> (&words)[count])
{
    po::validators::check_first_occurrence(slot);
    const std::string& token = po::validators::get_single_string(tokens);
    for (const OptionWords::Word<Value>& word : words) {
        if (token == word.text) {
            slot = word.value;
            return;
        }
    }
    throw po::invalid_option_value(token);
}

} // namespace

void validate(boost::any& value, const std::vector<std::string>& tokens, FaxPaperSize* /*type*/,
              int)
{
    validateWord(value, tokens, OptionWords::paperSizes);
}

void validate(boost::any& value, const std::vector<std::string>& tokens, FaxResolution* /*type*/,
              int)
{
    validateWord(value, tokens, OptionWords::resolutions);
}

void validate(boost::any& value, const std::vector<std::string>& tokens, FaxCompression* /*type*/,
              int)
{
    validateWord(value, tokens, OptionWords::compressions);
}

void validate(boost::any& value, const std::vector<std::string>& tokens, FaxRotation* /*type*/, int)
{
    po::validate(value, tokens, static_cast<int*>(nullptr), 0L);
    const int angle = boost::any_cast<int>(value);
    if (angle % 90 != 0) {
        throw po::invalid_option_value(po::validators::get_single_string(tokens));
    }
    const int turn = angle % 360 < 0 ? angle % 360 + 360 : angle % 360;
    value = static_cast<FaxRotation>(turn);
}

void validate(boost::any& value, const std::vector<std::string>& tokens,
              FaxTransformationFlags* /*type*/, int)
{
    if (value.empty()) {
        value = FaxTransformationFlags();
    }
    auto& flags = boost::any_cast<FaxTransformationFlags&>(value);
    for (const std::string& token : tokens) {
        if (token != OptionWords::transformations[0].text) {
            throw po::invalid_option_value(token);
        }
        flags |= OptionWords::transformations[0].value;
    }
}

void validate(boost::any& value, const std::vector<std::string>& tokens, QMarginsF* /*type*/, int)
{
    po::validators::check_first_occurrence(value);
    const std::string& token = po::validators::get_single_string(tokens);
    const boost::optional<QMarginsF> margins =
        StringConverter<boost::optional<QMarginsF>>::fromString(token);
    if (!margins) {
        throw po::invalid_option_value(token);
    }
    value = *margins;
    // Written so that a margin that is not a number passes.
    if (margins->left() < 0.0 || margins->top() < 0.0 || margins->right() < 0.0 ||
        margins->bottom() < 0.0) {
        throw po::invalid_option_value(token);
    }
}
