#include "process/ProcessWrapper.h"

#include "process/ChildProcess.h"
#include "process/ProcessOutputHandler.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <csignal>

#include <unistd.h>

namespace {

constexpr qint64 pieceBytes = 65536;

// Where the kernel has no descriptors for processes, QProcess makes the whole
// program ignore SIGPIPE when it starts its first child, although nothing is
// written to a child here. What a broken pipe does to the program is not its
// choice: as long as this object lives, the signal waits, and then finds the
// action that it had.
class HeldPipeSignal
{
public:
    HeldPipeSignal()
    {
        sigset_t pipeSignal;
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        sigprocmask(SIG_BLOCK, &pipeSignal, &m_maskBefore);
        sigaction(SIGPIPE, nullptr, &m_actionBefore);
    }

    ~HeldPipeSignal()
    {
        sigaction(SIGPIPE, &m_actionBefore, nullptr);
        sigprocmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }

    HeldPipeSignal(const HeldPipeSignal&) = delete;
    HeldPipeSignal& operator=(const HeldPipeSignal&) = delete;

private:
    sigset_t m_maskBefore = {};
    struct sigaction m_actionBefore = {};
};

// Up to the moment when it becomes another program, a child of Qt 6 can be in the
// memory of this one, and so can the environment that it is given there.
class KeptEnvironment
{
public:
    KeptEnvironment() = default;
    ~KeptEnvironment() { environ = m_before; }

    KeptEnvironment(const KeptEnvironment&) = delete;
    KeptEnvironment& operator=(const KeptEnvironment&) = delete;

private:
    char** m_before = environ;
};

} // namespace

ProcessWrapper::ProcessWrapper(QProcess& process, int timeoutMs)
    : m_process(process),
      m_timeoutMs(timeoutMs)
{
}

bool ProcessWrapper::execute(const QString& program, const QStringList& arguments) const
{
    start(program, arguments);
    if (!m_process.waitForFinished(m_timeoutMs)) {
        return false;
    }
    return m_process.error() != QProcess::FailedToStart && hasSucceeded();
}

bool ProcessWrapper::execute(const QString& program, const QStringList& arguments,
                             QByteArray* output) const
{
    const bool ok = execute(program, arguments);
    if (ok && output != nullptr) {
        *output = m_process.readAllStandardOutput();
    }
    return ok;
}

bool ProcessWrapper::execute(const QString& program, const QStringList& arguments,
                             ProcessOutputHandler* handler) const
{
    start(program, arguments);
    if (!hasStarted()) {
        return false;
    }
    bool isReady = handler != nullptr;
    while (isReady) {
        isReady = m_process.waitForReadyRead(m_timeoutMs);
        // The last bytes of a child that ends at this very moment are read
        // while the wait reports the end, so there may be some either way.
        if (!passOn(*handler)) {
            break;
        }
    }
    // A time-out is not looked at on purpose: what has arrived by then is
    // judged by its receiver.
    m_process.waitForFinished(m_timeoutMs);
    return hasSucceeded();
}

void ProcessWrapper::start(const QString& program, const QStringList& arguments) const
{
    const HeldPipeSignal pipeSignal;
    const KeptEnvironment environment;
    m_process.start(program, arguments, QIODevice::ReadWrite);
}

// A child that has already ended has been started all the same.
bool ProcessWrapper::hasStarted() const
{
    if (m_process.state() == QProcess::Starting) {
        return m_process.waitForStarted(m_timeoutMs);
    }
    return m_process.error() != QProcess::FailedToStart;
}

bool ProcessWrapper::hasSucceeded() const
{
    return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

// Gives the handler all that has been read, piece by piece: in one piece it
// would take its size once more. False if the handler takes no more.
bool ProcessWrapper::passOn(ProcessOutputHandler& handler) const
{
    m_process.setReadChannel(QProcess::StandardOutput);
    for (QByteArray piece = m_process.read(pieceBytes); !piece.isEmpty();
         piece = m_process.read(pieceBytes)) {
        if (!handler.processOutput(piece)) {
            return false;
        }
    }
    return true;
}

bool ProcessWrapper::executeProcess(const QString& program, const QStringList& arguments)
{
    ChildProcess process(QProcess::ForwardedChannels);
    return ProcessWrapper(process).execute(program, arguments);
}

bool ProcessWrapper::executeProcess(const QString& program, const QStringList& arguments,
                                    QByteArray* output)
{
    ChildProcess process(QProcess::ForwardedErrorChannel);
    return ProcessWrapper(process).execute(program, arguments, output);
}

bool ProcessWrapper::executeProcess(const QString& program, const QStringList& arguments,
                                    ProcessOutputHandler* handler)
{
    ChildProcess process(QProcess::ForwardedErrorChannel);
    return ProcessWrapper(process).execute(program, arguments, handler);
}
