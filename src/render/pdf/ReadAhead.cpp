#include "render/pdf/ReadAhead.h"

#include "process/RunningProcess.h"
#include "render/pdf/GhostScriptCommand.h"

bool PageRun::operator==(const PageRun& other) const
{
    return fileName == other.fileName && index == other.index && end == other.end &&
           size.size == other.size.size && size.dpi == other.size.dpi;
}

ReadAhead::ReadAhead() = default;
ReadAhead::~ReadAhead() = default;

void ReadAhead::start(const PageRun& run)
{
    forget();
    m_run = run;
    m_process = GhostScriptCommand(run.fileName)
                    .startPages(run.index + 1, run.end, run.size, QStringLiteral("bit"));
}

void ReadAhead::receive(std::size_t limit)
{
    if (m_process) {
        m_process->receive(limit);
    }
}

std::unique_ptr<RunningProcess> ReadAhead::take(const PageRun& run)
{
    if (!m_process || !(m_run == run)) {
        start(run);
    }
    return std::move(m_process);
}

void ReadAhead::forget()
{
    m_process.reset();
}
