#pragma once

#include "fence/FilterProgram.h"

#include <cstdint>
#include <initializer_list>

#include <linux/seccomp.h>

/// Runs a program for the kernel here, as the kernel would.
namespace FilterRun {

/// The result for a call with these arguments, the others being 0. A program
/// that the kernel would refuse has the result 1.
std::uint32_t resultOf(const FilterProgram::Instructions& program, long call,
                       std::initializer_list<std::uint64_t> arguments = {});

/// The same for a call of a foreign architecture.
std::uint32_t resultOf(const FilterProgram::Instructions& program, const seccomp_data& call);

/// The architecture of this machine, as the kernel calls it.
extern const std::uint32_t architecture;

constexpr std::uint32_t allowed = SECCOMP_RET_ALLOW;

constexpr std::uint32_t failsWith(int error)
{
    return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
}

} // namespace FilterRun
