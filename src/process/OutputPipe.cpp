#include "process/OutputPipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

// Ghostscript writes 4 KiB at a time. Were each of these pieces fetched at once,
// it would spend its time waking the reader up. In this time it fills a fraction
// of the pipe.
constexpr int gatheringMs = 1;

} // namespace

OutputPipe::OutputPipe()
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    m_readingEnd = ends[0];
    m_writingEnd = ends[1];
    // The child's end has flags of its own and goes on blocking.
    fcntl(m_readingEnd, F_SETFL, O_NONBLOCK);
    fcntl(m_readingEnd, F_SETPIPE_SZ, largestBytes);
}

OutputPipe::~OutputPipe()
{
    closeWritingEnd();
    if (m_readingEnd >= 0) {
        close(m_readingEnd);
    }
}

void OutputPipe::closeWritingEnd()
{
    if (m_writingEnd >= 0) {
        close(m_writingEnd);
        m_writingEnd = -1;
    }
}

ssize_t OutputPipe::read(char* data, std::size_t size) const
{
    return ::read(m_readingEnd, data, size);
}

bool OutputPipe::waitForBytes(int timeoutMs) const
{
    return waitFor(POLLIN, timeoutMs);
}

void OutputPipe::letGather() const
{
    waitFor(0, gatheringMs);
}

// The end of the output is reported whatever the events.
bool OutputPipe::waitFor(short events, int timeoutMs) const
{
    pollfd end{m_readingEnd, events, 0};
    return poll(&end, 1, timeoutMs) > 0;
}
