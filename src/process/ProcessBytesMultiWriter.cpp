#include "process/ProcessBytesMultiWriter.h"

#include <QByteArray>

#include <utility>

ProcessBytesMultiWriter::ProcessBytesMultiWriter(std::size_t destinations,
                                                 BytesMultiCopy::Producer producer)
    : m_multiCopy(destinations, std::move(producer))
{
}

bool ProcessBytesMultiWriter::processOutput(const QByteArray& output)
{
    return output.isEmpty() || m_multiCopy.copy(output) != 0;
}
