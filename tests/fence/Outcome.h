#pragma once

#include <ostream>

/// What becomes of an attempt of conquered code.
enum class Outcome
{
    fails,
    succeeds,
    differs ///< From system to system.
};

constexpr Outcome fails = Outcome::fails;
constexpr Outcome succeeds = Outcome::succeeds;
constexpr Outcome differs = Outcome::differs;

/// A row of one of the tables of SECURITY.md.
struct AttemptRow
{
    const char* name; ///< Of the test.
    const char* attempt;
    const char* argument; ///< As for Scene::argument().
    Outcome unfenced;
    Outcome withAbi2; ///< That of Debian 12's kernel.
    Outcome withNewest;
};

inline void PrintTo(const AttemptRow& row, std::ostream* stream)
{
    *stream << row.name;
}
