#pragma once

/// The words that option values are written with: the parser compares against
/// them and the help listing shows them.
namespace OptionWords {

inline constexpr char a4[] = "a4";
inline constexpr char letter[] = "letter";
inline constexpr char legal[] = "legal";

inline constexpr char standard[] = "standard";
inline constexpr char fine[] = "fine";
inline constexpr char superfine[] = "superfine";
inline constexpr char ultrafine[] = "ultrafine";

inline constexpr char g3[] = "g3";
inline constexpr char g4[] = "g4";

inline constexpr char fitToPaper[] = "fittopaper";

} // namespace OptionWords
