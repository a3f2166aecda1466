#pragma once

#include "app/settings/FaxConfiguration.h"

#include <cstddef>

/// The words that option values are written with: the parser compares against
/// them and the help listing shows them.
namespace OptionWords {

/// A word of the command line and what it stands for.
template <typename Value>
struct Word
{
    const char* text;
    Value value;
};

inline constexpr Word<FaxPaperSize> paperSizes[] = {
    {"a4", FaxPaperSize::A4}, {"letter", FaxPaperSize::Letter}, {"legal", FaxPaperSize::Legal}};

inline constexpr Word<FaxResolution> resolutions[] = {{"standard", FaxResolution::Standard},
                                                      {"fine", FaxResolution::Fine},
                                                      {"superfine", FaxResolution::Superfine},
                                                      {"ultrafine", FaxResolution::Ultrafine}};

inline constexpr Word<FaxCompression> compressions[] = {{"g3", FaxCompression::G3},
                                                        {"g4", FaxCompression::G4}};

inline constexpr Word<FaxTransformationFlag> transformations[] = {
    {"fittopaper", FaxTransformationFlag::FitToPaper}};

/// The word of `words` for `value`; null if there is none.
template <typename Value, std::size_t count>
constexpr const char* wordFor(const Word<Value> (&words)[count], Value value)
{
    for (const Word<Value>& word : words) {
        if (word.value == value) {
            return word.text;
        }
    }
    return nullptr;
}

} // namespace OptionWords
