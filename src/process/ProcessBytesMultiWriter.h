#pragma once

#include "process/BytesMultiCopy.h"
#include "process/ProcessOutputHandler.h"

#include <cstddef>

/// Cuts a child's output into a sequence of destinations, see BytesMultiCopy.
///
/// A chunk is refused if not one byte of it could be taken.
class ProcessBytesMultiWriter final : public ProcessOutputHandler
{
public:
    ProcessBytesMultiWriter(std::size_t destinations, BytesMultiCopy::Producer producer);

    bool processOutput(const QByteArray& output) override;

    /// True when the last destination has been filled.
    bool isComplete() const { return m_multiCopy.destinationsLeft() == 0; }

private:
    BytesMultiCopy m_multiCopy;
};
