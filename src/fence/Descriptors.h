#pragma once

/// The open files of the process by their numbers.
class Descriptors
{
public:
    /// Has all but 0, 1 and 2 closed when another program is executed.
    /// Async-signal-safe.
    static void closeOthersOnExec();
};
