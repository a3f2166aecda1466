#pragma once

#include "process/ChildProcess.h"
#include "process/OutputPipe.h"
#include "process/ProcessWrapper.h"

#include <array>
#include <cstddef>

class ProcessOutputHandler;
class QDeadlineTimer;

/// A child that works while the program does something else, until its pipe is
/// full. What it writes on standard error goes to the program's own at once.
class RunningProcess
{
public:
    /// Starts the child, see ProcessWrapper. Whether that worked shows in read().
    /// Its standard output goes to `handler`, which may be null and must outlive
    /// this object, and only while one of the calls below is under way.
    RunningProcess(const QString& program, const QStringList& arguments,
                   ProcessOutputHandler* handler, int timeoutMs = ProcessWrapper::defaultTimeoutMs);

    /// Kills the child if it is still running.
    ~RunningProcess() = default;

    RunningProcess(const RunningProcess&) = delete;
    RunningProcess& operator=(const RunningProcess&) = delete;

    /// Passes on what lies in the pipe, so that the child can go on writing, up to
    /// `limit` bytes of its whole output. Never waits.
    void receive(std::size_t limit);

    /// Passes on the rest, as the streaming form of ProcessWrapper, with the same
    /// result. Waits are counted from here.
    bool read();

    /// True once the child is known to have ended: after read(), if that did
    /// not give up waiting for it.
    bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }

private:
    bool awaitPiece(const QDeadlineTimer& deadline);
    ssize_t takePiece(std::size_t limit);

    OutputPipe m_output;
    ChildProcess m_process{m_output.writingEnd()};
    int m_timeoutMs;
    ProcessWrapper m_wrapper{m_process, m_timeoutMs};
    ProcessOutputHandler* m_handler; // null from when it takes no more; not owned
    std::size_t m_received = 0;
    std::array<char, 65536> m_piece = {};
};
