#pragma once

#include <cstddef>

#include <sys/types.h>

/// The pipe through which a child sends its standard output. Nothing here waits
/// longer than it is told to.
class OutputPipe
{
public:
    /// How much a child can be ahead of its reader: the largest pipe that Linux
    /// grants to every user. With less, if the system refuses.
    static constexpr int largestBytes = 1048576;

    OutputPipe();
    ~OutputPipe();

    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    /// False if the system had no pipe left.
    bool isOpen() const { return m_readingEnd >= 0; }

    /// For the child. Closed by the exec of any other program.
    int writingEnd() const { return m_writingEnd; }

    /// To be called when the child has it: as long as anybody holds that end, the
    /// output does not end.
    void closeWritingEnd();

    /// Reads up to `size` bytes of what is there. 0 at the end of the output,
    /// negative if there is nothing yet.
    ssize_t read(char* data, std::size_t size) const;

    /// True as soon as read() has bytes or the end to report; false if that takes
    /// longer.
    bool waitForBytes(int timeoutMs) const;

    /// Lets output gather for a moment, unless the end has come.
    void letGather() const;

private:
    bool waitFor(short events, int timeoutMs) const;

    int m_readingEnd = -1;
    int m_writingEnd = -1;
};
