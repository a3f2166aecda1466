#pragma once

/// The descriptors 0, 1 and 2 of the process.
class StandardStreams
{
public:
    /// Gives the null device to those that were closed at start, so that no
    /// file of the conversion gets one of their numbers and receives what
    /// belongs on standard output or standard error.
    static void ensureOpen();

    /// Writes out what was printed on standard output so far; false if some of
    /// it was lost, for example because the disk is full.
    static bool flushOutput();
};
