#include "process/ProcessBytesWriter.h"

#include <QByteArray>

ProcessBytesWriter::ProcessBytesWriter(const BytesCopy& target) : m_target(target) {}

bool ProcessBytesWriter::processOutput(const QByteArray& output)
{
    if (output.isEmpty()) {
        return true;
    }
    return m_target.copy(output.constData(), static_cast<std::size_t>(output.size())) != 0;
}
