#pragma once

#include <QProcess>

#include <csignal>
#include <memory>

class ChildFence;

/// A child that does not outlive this program, however the program ends. It gets
/// no open file but the standard streams, and a fence if there is a
/// FencedDocument when it is made. The signals that it has blocked are those
/// that were blocked then.
class ChildProcess final : public QProcess
{
public:
    /// How much of its output a child can be ahead of its reader: the largest
    /// pipe that Linux grants to every user. With less, if the system refuses.
    static constexpr int pipeBytes = 1048576;

    explicit ChildProcess(ProcessChannelMode channelMode);

    /// Kills the child if it is still running.
    ~ChildProcess() override;

protected:
    void setupChildProcess() override;

private:
    qint64 m_parentPid;
    bool m_hasPipe; // for its standard output
    sigset_t m_signalMask = {};
    std::unique_ptr<ChildFence> m_fence; // null for none
};
