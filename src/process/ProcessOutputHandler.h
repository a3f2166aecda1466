#pragma once

class QByteArray;

/// The sink for what a child process writes on its standard output.
class ProcessOutputHandler
{
public:
    ProcessOutputHandler() = default;
    ProcessOutputHandler(const ProcessOutputHandler&) = delete;
    ProcessOutputHandler& operator=(const ProcessOutputHandler&) = delete;
    virtual ~ProcessOutputHandler() = default;

    /// Receives the next chunk, which may be of any length; true asks for more,
    /// false says that nothing more is taken.
    virtual bool processOutput(const QByteArray& output) = 0;
};
