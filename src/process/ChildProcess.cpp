#include "process/ChildProcess.h"

#include "fence/ChildFence.h"
#include "fence/Descriptors.h"
#include "process/FencedDocument.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

ChildProcess::ChildProcess(ProcessChannelMode channelMode)
    : m_parentPid(getpid()),
      m_hasPipe(channelMode != ForwardedChannels && channelMode != ForwardedOutputChannel)
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

// Runs in the child between fork and exec: async-signal-safe calls only.
void ChildProcess::setupChildProcess()
{
    sigprocmask(SIG_SETMASK, &m_signalMask, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != m_parentPid) {
        // The parent ended before the request was in force.
        _exit(EXIT_FAILURE);
    }
    if (m_hasPipe) {
        fcntl(STDOUT_FILENO, F_SETPIPE_SZ, pipeBytes);
    }
    Descriptors::closeOthersOnExec();
    if (m_fence) {
        m_fence->enter();
    }
}
