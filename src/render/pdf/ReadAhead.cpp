#include "render/pdf/ReadAhead.h"

#include <utility>

void ReadAhead::start(const PageRun& run)
{
    forget();
    m_run = std::make_unique<DrawingRun>(run);
}

void ReadAhead::receive(unsigned long pageCount)
{
    if (m_run) {
        m_run->receive(pageCount);
    }
}

std::unique_ptr<DrawingRun> ReadAhead::take(const PageRun& run)
{
    if (!m_run || !(m_run->run() == run)) {
        start(run);
    }
    return std::move(m_run);
}

void ReadAhead::forget()
{
    m_run.reset();
}
