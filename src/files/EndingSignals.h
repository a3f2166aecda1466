#pragma once

#include <array>
#include <csignal>

/// What the program does about the signals whose default action ends it: a last
/// clean-up before they do. At most one object exists at a time.
///
/// Only signals with their default action are dealt with. One that is ignored
/// stays ignored, and one that has a handler is that handler's business. The
/// clean-up runs on a stack of its own, so that it survives a stack overflow.
/// Nothing here throws or allocates.
class EndingSignals
{
public:
    /// Runs in a signal handler: async-signal-safe calls only.
    using CleanUp = void (*)();

    /// From now on, `first` and then `second`, which may be null, run before a
    /// signal ends the program as it would have ended it without, with a core
    /// dump where it makes one. A crash may come at once; all other signals wait
    /// for release().
    explicit EndingSignals(CleanUp first, CleanUp second = nullptr);

    /// Gives every signal its old action and lets those that wait go on.
    ~EndingSignals();

    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

    /// Lets the signals that wait, and all later ones, come at once.
    void release();

private:
    static void handle(int number, siginfo_t* info, void* context);
    void cleanUpAndEnd(int number, siginfo_t* info) const;

    std::array<CleanUp, 2> m_cleanUps;
    bool m_isHolding = true;
    sigset_t m_caught = {};
    sigset_t m_maskBefore = {};
    stack_t m_stackBefore = {};
    std::array<struct sigaction, NSIG> m_actionsBefore = {}; // by their numbers
};
