#pragma once

#include "process/ChildProcess.h"
#include "process/ProcessWrapper.h"

#include <cstddef>

class ProcessOutputHandler;

/// A child that works while the program does something else, and whose
/// standard output is asked for later. What it writes on standard error goes to
/// the program's own at once.
class RunningProcess
{
public:
    /// Starts the child, see ProcessWrapper. Whether that worked shows in read().
    RunningProcess(const QString& program, const QStringList& arguments);

    /// Kills the child if it is still running.
    ~RunningProcess() = default;

    RunningProcess(const RunningProcess&) = delete;
    RunningProcess& operator=(const RunningProcess&) = delete;

    /// Takes what lies in the pipe, so that the child can go on writing. Never
    /// waits, and never holds more than `limit` bytes.
    void receive(std::size_t limit);

    /// As ProcessWrapper::read(), with what has been received in front. To be
    /// called once.
    bool read(ProcessOutputHandler* handler);

    /// True once the child is known to have ended: after read(), if that did
    /// not give up waiting for it.
    bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }

private:
    ChildProcess m_process{QProcess::ForwardedErrorChannel};
    ProcessWrapper m_wrapper{m_process};
};
