#pragma once

#include <QStringList>

class ProcessOutputHandler;
class QByteArray;
class QProcess;
class QString;

/// Runs a child process to its end and routes its standard output.
///
/// Each result is true if the child ran, exited normally and returned exit code
/// 0. The program is looked up on the search path; nothing is written to its
/// standard input. Nothing is printed: what the child writes on standard error
/// goes to the program's own.
class ProcessWrapper
{
public:
    /// The limit of every single wait in milliseconds.
    static constexpr int defaultTimeoutMs = 30000;

    /// `process` is not owned and must outlive the wrapper. While it starts,
    /// SIGPIPE is blocked, which a ChildProcess undoes for its child. The
    /// environment of this program stays as it is, whatever that of the child.
    explicit ProcessWrapper(QProcess& process, int timeoutMs = defaultTimeoutMs);

    /// Ignores the output. A child that has not finished in time is a failure.
    bool execute(const QString& program, const QStringList& arguments) const;

    /// Replaces `*output` with the whole standard output if the run succeeded;
    /// `output` may be null. A child that has not finished in time is a failure.
    bool execute(const QString& program, const QStringList& arguments, QByteArray* output) const;

    /// Feeds the standard output to `handler`, which may be null, as it
    /// arrives, until the handler refuses a chunk or the child is silent for
    /// too long.
    ///
    /// A child that is still running after the last wait counts as a success,
    /// with whatever output has arrived.
    bool execute(const QString& program, const QStringList& arguments,
                 ProcessOutputHandler* handler) const;

    /// Starts the child and nothing more.
    void start(const QString& program, const QStringList& arguments) const;

    /// Waits until a child that was told to start has done so; false if it could
    /// not.
    bool hasStarted() const;

    /// True unless a child that has started failed, or ended by a signal. One that
    /// is still running counts as a success.
    bool hasSucceeded() const;

    /// As the members of the same arguments, with a process of their own that
    /// is killed if it is still running on return. Without a place for it, the
    /// output goes to the program's own standard output.
    static bool executeProcess(const QString& program, const QStringList& arguments);
    static bool executeProcess(const QString& program, const QStringList& arguments,
                               QByteArray* output);
    static bool executeProcess(const QString& program, const QStringList& arguments,
                               ProcessOutputHandler* handler);

private:
    bool passOn(ProcessOutputHandler& handler) const;

    QProcess& m_process;
    int m_timeoutMs;
};
