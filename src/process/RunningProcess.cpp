#include "process/RunningProcess.h"

#include "process/ProcessOutputHandler.h"

#include <QByteArray>
#include <QDeadlineTimer>

#include <algorithm>

namespace {

// The end of a child usually shows in the pipe at once. It does not if a child of
// its own goes on holding the other end, so now and then it is asked for.
constexpr int endCheckMs = 100;

int remainingMs(const QDeadlineTimer& deadline)
{
    return static_cast<int>(deadline.remainingTime());
}

} // namespace

RunningProcess::RunningProcess(const QString& program, const QStringList& arguments,
                               ProcessOutputHandler* handler, int timeoutMs)
    : m_timeoutMs(timeoutMs),
      m_handler(handler)
{
    if (m_output.isOpen()) {
        m_wrapper.start(program, arguments);
        m_output.closeWritingEnd();
    }
}

void RunningProcess::receive(std::size_t limit)
{
    while (m_handler != nullptr && m_received < limit && takePiece(limit - m_received) > 0) {
    }
}

bool RunningProcess::read()
{
    if (!m_output.isOpen() || !m_wrapper.hasStarted()) {
        return false;
    }
    while (m_handler != nullptr && awaitPiece(QDeadlineTimer(m_timeoutMs))) {
    }
    // What comes now is nobody's, but the child must not be stopped by it. A
    // time-out is not looked at on purpose: what has arrived by then is judged by
    // its receiver.
    m_handler = nullptr;
    const QDeadlineTimer deadline(m_timeoutMs);
    while (awaitPiece(deadline)) {
    }
    return m_wrapper.hasSucceeded();
}

// False if there is no next piece: because the child has ended, or none has come
// in time.
bool RunningProcess::awaitPiece(const QDeadlineTimer& deadline)
{
    for (;;) {
        const ssize_t size = takePiece(m_piece.size());
        if (size > 0) {
            if (static_cast<std::size_t>(size) < m_piece.size()) {
                m_output.letGather();
            }
            return true;
        }
        if (size == 0) {
            // Closed. What is waited for then is the end of the child.
            m_process.waitForFinished(remainingMs(deadline));
            return false;
        }
        if (hasEnded() || deadline.hasExpired()) {
            return false;
        }
        if (!m_output.waitForBytes(std::min(remainingMs(deadline), endCheckMs))) {
            m_process.waitForFinished(0);
        }
    }
}

// Reads without waiting. The result is that of OutputPipe::read().
ssize_t RunningProcess::takePiece(std::size_t limit)
{
    const ssize_t size = m_output.read(m_piece.data(), std::min(limit, m_piece.size()));
    if (size > 0) {
        m_received += static_cast<std::size_t>(size);
        // Only looked at, not kept.
        const auto piece = QByteArray::fromRawData(m_piece.data(), static_cast<int>(size));
        if (m_handler != nullptr && !m_handler->processOutput(piece)) {
            m_handler = nullptr;
        }
    }
    return size;
}
