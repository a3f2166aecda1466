#pragma once

#include "qt/PreparedProcess.h"

#include <csignal>
#include <memory>

class ChildFence;

/// A child that does not outlive this program, however the program ends. It gets
/// no open file but the standard streams, and a fence if there is a
/// FencedDocument when it is made. The signals that it has blocked are those
/// that were blocked then. With a fence, it is to be started by a ProcessWrapper,
/// which keeps the environment of this program as it is.
class ChildProcess final : public PreparedProcess
{
public:
    explicit ChildProcess(ProcessChannelMode channelMode);

    /// Sends its standard output to `output`, the writing end of a pipe, and its
    /// standard error to the program's own.
    explicit ChildProcess(int output);

    /// Kills the child if it is still running.
    ~ChildProcess() override;

protected:
    void prepareChild() override;

private:
    ChildProcess(ProcessChannelMode channelMode, int output);

    qint64 m_parentPid;
    int m_output; // negative where the channel mode decides
    sigset_t m_signalMask = {};
    std::unique_ptr<ChildFence> m_fence; // null for none
};
