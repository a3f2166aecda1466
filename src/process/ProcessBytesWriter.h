#pragma once

#include "process/BytesCopy.h"
#include "process/ProcessOutputHandler.h"

/// Copies a child's output into one fixed piece of memory.
///
/// What does not fit of a chunk is dropped; the chunks after that are refused.
class ProcessBytesWriter final : public ProcessOutputHandler
{
public:
    explicit ProcessBytesWriter(const BytesCopy& target);

    bool processOutput(const QByteArray& output) override;

    /// What is left to be filled.
    const BytesCopy& target() const { return m_target; }

private:
    BytesCopy m_target;
};
