#pragma once

#include "app/settings/FaxCompression.h"
#include "app/settings/FaxPaperSize.h"
#include "app/settings/FaxResolution.h"
#include "app/settings/FaxRotation.h"
#include "app/settings/FaxTransformationFlag.h"

#include <QMarginsF>

#include <boost/any.hpp>

#include <string>
#include <vector>

// Boost program_options finds these hooks by argument-dependent lookup, one per
// value type, and calls them once for each occurrence of an option while the
// parsed command line is stored. That is why they are in the global namespace,
// where QMarginsF is.
//
// `value` is the slot that holds the option's value so far, `tokens` the text
// of this occurrence; the last two parameters select the overload. A token that
// the type rejects raises boost::program_options::invalid_option_value, and a
// second occurrence (except of FaxTransformationFlags, which add up)
// boost::program_options::multiple_occurrences.

/// Accepts "a4", "letter" and "legal".
void validate(boost::any& value, const std::vector<std::string>& tokens, FaxPaperSize* type, int);

/// Accepts "standard", "fine", "superfine" and "ultrafine".
void validate(boost::any& value, const std::vector<std::string>& tokens, FaxResolution* type, int);

/// Accepts "g3" and "g4".
void validate(boost::any& value, const std::vector<std::string>& tokens, FaxCompression* type, int);

/// Accepts every whole multiple of 90 degrees that fits in 32 bits, reduced
/// modulo 360.
void validate(boost::any& value, const std::vector<std::string>& tokens, FaxRotation* type, int);

/// Accepts "fittopaper".
void validate(boost::any& value, const std::vector<std::string>& tokens,
              FaxTransformationFlags* type, int);

/// Accepts what StringConverter<boost::optional<QMarginsF>>::fromString()
/// reads, unless a margin is negative; inches.
void validate(boost::any& value, const std::vector<std::string>& tokens, QMarginsF* type, int);
