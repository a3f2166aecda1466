#pragma once

#include <QProcess>

/// A child that does not outlive this program, however the program ends.
class ChildProcess final : public QProcess
{
public:
    explicit ChildProcess(ProcessChannelMode channelMode);

    /// Kills the child if it is still running.
    ~ChildProcess() override;

protected:
    void setupChildProcess() override;

private:
    qint64 m_parentPid;
};
