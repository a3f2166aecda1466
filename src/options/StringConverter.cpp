#include "options/StringConverter.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>

#include <fmt/format.h>

#include <QtGlobal>

#include <stdexcept>
#include <vector>

namespace {

std::string numberText(double number)
{
    std::string text = fmt::format("{}", number);
    // fmt writes a whole number with its decimal or without, depending on its
    // version; the messages of this program show it.
    if (text.find_first_not_of("-0123456789") == std::string::npos) {
        text += ".0";
    }
    return text;
}

QMarginsF marginsFromPieces(const std::vector<std::string>& pieces)
{
    const double first = std::stod(pieces.at(0));
    switch (pieces.size()) {
    case 1:
        return {first, first, first, first};
    case 2: {
        const double vertical = std::stod(pieces[1]);
        return {first, vertical, first, vertical};
    }
    case 4: {
        const double bottom = std::stod(pieces[3]);
        const double right = std::stod(pieces[2]);
        const double top = std::stod(pieces[1]);
        return {first, top, right, bottom};
    }
    default:
        throw std::invalid_argument("margins");
    }
}

} // namespace

std::string StringConverter<QMarginsF>::toShortString(const QMarginsF& margins)
{
    std::string left = numberText(margins.left());
    const std::string top = numberText(margins.top());
    if (qFuzzyCompare(margins.left(), margins.right()) &&
        qFuzzyCompare(margins.top(), margins.bottom())) {
        if (qFuzzyCompare(margins.left(), margins.top())) {
            return left;
        }
        return fmt::format("{},{}", left, top);
    }
    return fmt::format("{},{},{},{}", left, top, numberText(margins.right()),
                       numberText(margins.bottom()));
}

boost::optional<QMarginsF>
StringConverter<boost::optional<QMarginsF>>::fromString(const std::string& text)
{
    std::vector<std::string> pieces;
    boost::algorithm::split(
        pieces, text, [](char character) { return character == ','; },
        boost::algorithm::token_compress_off);
    for (std::string& piece : pieces) {
        boost::algorithm::trim(piece);
    }
    try {
        return marginsFromPieces(pieces);
    } catch (const std::logic_error&) {
        // std::invalid_argument and std::out_of_range of std::stod.
        return boost::none;
    }
}
