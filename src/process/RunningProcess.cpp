#include "process/RunningProcess.h"

RunningProcess::RunningProcess(const QString& program, const QStringList& arguments)
{
    m_wrapper.start(program, arguments);
}

void RunningProcess::receive(std::size_t limit)
{
    // Qt reads all that there is, which is the content of a full pipe at most.
    const auto hasRoom = [this, limit] {
        return static_cast<std::size_t>(m_process.bytesAvailable()) + ChildProcess::pipeBytes <=
               limit;
    };
    while (hasRoom() && m_process.waitForReadyRead(0)) {
    }
}

bool RunningProcess::read(ProcessOutputHandler* handler)
{
    return m_wrapper.read(handler);
}
