#pragma once

#include "process/ProcessOutputHandler.h"

#include <QByteArray>

/// Gathers what it is given, up to a number of chunks.
class CollectingHandler final : public ProcessOutputHandler
{
public:
    explicit CollectingHandler(int acceptedChunks = -1) : m_acceptedChunks(acceptedChunks) {}

    bool processOutput(const QByteArray& output) override
    {
        ++m_chunks;
        if (m_acceptedChunks >= 0 && m_chunks > m_acceptedChunks) {
            return false;
        }
        m_collected += output;
        return true;
    }

    const QByteArray& collected() const { return m_collected; }
    int chunks() const { return m_chunks; }

private:
    int m_acceptedChunks; // negative for no limit
    int m_chunks = 0;
    QByteArray m_collected;
};
