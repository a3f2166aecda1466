#include "render/pdf/DrawingRun.h"

#include "process/RunningProcess.h"
#include "render/pdf/GhostScriptCommand.h"
#include "render/pdf/PageImage.h"

#include <utility>

bool PageRun::operator==(const PageRun& other) const
{
    return fileName == other.fileName && index == other.index && end == other.end &&
           size.size == other.size.size && size.dpi == other.size.dpi;
}

DrawingRun::DrawingRun(const PageRun& run)
    : m_run(run),
      m_writer(run.count(), [this] { return addPage(); })
{
    // What there is no room for need not be drawn.
    if (run.count() == 1) {
        m_onlyPage = PageImage::create(run.size.size);
        if (m_onlyPage.isNull()) {
            return;
        }
    }
    m_process = GhostScriptCommand(run.fileName)
                    .startPages(run.index + 1, run.end, run.size, QStringLiteral("bit"), &m_writer);
}

DrawingRun::~DrawingRun() = default;

void DrawingRun::receive(unsigned long pageCount)
{
    if (m_process) {
        m_process->receive(pageCount * PageImage::bytes(m_run.size.size));
    }
}

bool DrawingRun::read()
{
    return m_process && m_process->read() && !m_isPageMissing;
}

bool DrawingRun::hasEnded() const
{
    return m_process && m_process->hasEnded();
}

BytesCopy DrawingRun::addPage()
{
    QImage image = m_run.count() == 1 ? std::move(m_onlyPage) : PageImage::create(m_run.size.size);
    if (image.isNull()) {
        // It is missing from the stream for good: the next one would start in the
        // middle of its rows.
        m_isPageMissing = true;
        return BytesCopy();
    }
    m_pages.push_back(std::move(image));
    QImage& page = m_pages.back();
    return {page.bits(), static_cast<std::size_t>(page.sizeInBytes())};
}
