#include "process/ChildProcess.h"

#include "fence/ChildFence.h"
#include "fence/Descriptors.h"
#include "process/FencedDocument.h"

#include <csignal>
#include <cstdlib>

#include <sys/prctl.h>
#include <unistd.h>

ChildProcess::ChildProcess(ProcessChannelMode channelMode) : ChildProcess(channelMode, -1) {}

ChildProcess::ChildProcess(int output) : ChildProcess(ForwardedChannels, output) {}

ChildProcess::ChildProcess(ProcessChannelMode channelMode, int output)
    : m_parentPid(getpid()),
      m_output(output)
{
    sigprocmask(SIG_BLOCK, nullptr, &m_signalMask);
    setProcessChannelMode(channelMode);
    if (const FencedDocument* document = FencedDocument::current()) {
        m_fence = document->makeFence();
    }
}

ChildProcess::~ChildProcess()
{
    // QProcess would go on reading, and without the memory to do so, throw out
    // of its destructor.
    closeReadChannel(QProcess::StandardOutput);
    if (state() != QProcess::NotRunning) {
        // Its temporary files are removed next.
        kill();
        waitForFinished();
    }
}

void ChildProcess::prepareChild()
{
    sigprocmask(SIG_SETMASK, &m_signalMask, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != m_parentPid) {
        // The parent ended before the request was in force.
        _exit(EXIT_FAILURE);
    }
    if (m_output >= 0 && dup2(m_output, STDOUT_FILENO) < 0) {
        _exit(EXIT_FAILURE);
    }
    Descriptors::closeOthersOnExec();
    if (m_fence) {
        m_fence->enter();
    }
}
