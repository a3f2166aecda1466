#pragma once

#include "fence/LandlockInterface.h"

#include <functional>
#include <string>

/// The number of a system call as the text that an attempt takes for its argument.
#define MORVALTIDE_CALL(name) MORVALTIDE_TEXT_OF(name)
#define MORVALTIDE_TEXT_OF(number) #number

/// Attempts of conquered code (attackers/Attacks.h), each in processes of its own.
namespace Attempts {

/// Instead of an error: whoever makes the call is ended.
constexpr int killed = -1;

/// What the fence finds, and who runs it.
struct Surroundings
{
    bool isFenced = true;
    int newestAbi = LandlockInterface::latestAbi;
    int landlockError = 0;       ///< All calls of Landlock fail with it; 0 for none.
    int seccompError = 0;        ///< The call of seccomp fails with it; 0 for none.
    int closeRangeError = 0;     ///< The call of close_range fails with it; 0 for none.
    bool isOrdinaryUser = false; ///< As root: becomes an ordinary user first.
};

/// An attempt of the conquered program, as a child inside a ChildFence.
struct Attempt
{
    std::string name;
    std::string argument;
    std::string document; ///< What the fence lets it read.
};

bool succeeds(const Attempt& attempt, const Surroundings& surroundings);

/// The exit status of a copy of this process that runs `role`; 128 and more for
/// a signal.
int statusOf(const std::function<int()>& role);

/// Prepares such a copy. No value of `surroundings` but the errors and the user
/// is looked at.
void prepare(const Surroundings& surroundings);

/// The user that an ordinary user is played by.
constexpr unsigned ordinaryUser = 65534;

} // namespace Attempts
