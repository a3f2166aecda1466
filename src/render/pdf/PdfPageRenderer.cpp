#include "render/pdf/PdfPageRenderer.h"

#include "app/settings/RenderSize.h"
#include "bilevel/BilevelImage.h"
#include "render/pdf/PageImage.h"
#include "render/pdf/PdfDocument.h"

#include <algorithm>
#include <utility>

namespace {

// PostScript points.
constexpr double pointsPerInch = 72.0;

// The size at which the pixels of a page are square, at the higher of its two
// resolutions.
QSize squarePixelSize(const QSize& size, const LogicalDpi& dpi)
{
    const double ratio = static_cast<double>(dpi.horizontal) / dpi.vertical;
    return ratio > 1.0 ? QSize(size.width(), qRound(size.height() * ratio))
                       : QSize(qRound(size.width() / ratio), size.height());
}

QSize naturalSize(const QSizeF& points, const LogicalDpi& dpi)
{
    if (dpi.horizontal == 0 || dpi.vertical == 0) {
        return {qRound(points.width()), qRound(points.height())};
    }
    return {qRound(dpi.horizontal * points.width() / pointsPerInch),
            qRound(dpi.vertical * points.height() / pointsPerInch)};
}

} // namespace

PdfPageRenderer::PdfPageRenderer(const PdfDocument* document) : m_document(document) {}

void PdfPageRenderer::setForwardCacheLimit(std::size_t limit)
{
    if (limit == m_forwardCacheLimit) {
        return;
    }
    m_forwardCacheLimit = limit;
    m_nextPage = 0;
    m_cache.clear();
    m_readAhead.forget();
}

void PdfPageRenderer::forgetReadAhead()
{
    m_readAhead.forget();
}

bool PdfPageRenderer::renderPage(unsigned long index, const RenderSize& renderSize, QImage& image)
{
    if (index >= m_document->pageSizes().size()) {
        return false;
    }
    const auto& [size, dpi] = renderSize;
    if (size.isEmpty()) {
        return getRenderedPage(index, {naturalSize(m_document->pageSizes()[index], dpi), {}},
                               image);
    }
    if (dpi.horizontal == 0 || dpi.vertical == 0 || dpi.horizontal == dpi.vertical) {
        return getRenderedPage(index, {size, {}}, image);
    }
    const QSize square = squarePixelSize(size, dpi);
    if (!getRenderedPage(index, {square, {}}, image)) {
        return false;
    }
    if (square != size) {
        image = BilevelImage::squeezed(image, size);
    }
    return true;
}

bool PdfPageRenderer::getRenderedPage(unsigned long index, const RenderSize& renderSize,
                                      QImage& image)
{
    if (renderSize.size.isEmpty()) {
        return false;
    }
    if (m_forwardCacheLimit == 0) {
        return renderSinglePage(index, renderSize, image);
    }

    const bool isInSequence = index == m_nextPage;
    m_nextPage = index + 1;
    if (isInSequence && !m_cache.empty() && m_cache.front().size() == renderSize.size) {
        image.swap(m_cache.front());
        m_cache.pop_front();
        m_readAhead.receive(readAheadRoom(renderSize.size));
        return true;
    }
    m_cache.clear();

    const unsigned long end = isInSequence ? endOfRun(index, renderSize.size) : index + 1;
    return end == index + 1 ? renderSinglePage(index, renderSize, image)
                            : renderRun(index, end, renderSize, image);
}

// The index after the last page that can be rendered together with the page at
// `index`: as many as the cache has room for and as have the same size.
unsigned long PdfPageRenderer::endOfRun(unsigned long index, const QSize& size) const
{
    const std::vector<QSizeF>& sizes = m_document->pageSizes();
    if (index >= sizes.size()) {
        return index + 1;
    }
    const unsigned long following = sizes.size() - (index + 1);
    const unsigned long last =
        index + std::min<unsigned long>(following, m_forwardCacheLimit / PageImage::bytes(size));
    unsigned long end = index + 1;
    while (end <= last && sizes[end] == sizes[index]) {
        ++end;
    }
    return end;
}

// How many pages of the run ahead there is room for: as many as were handed out.
unsigned long PdfPageRenderer::readAheadRoom(const QSize& size) const
{
    const unsigned long room = m_forwardCacheLimit / PageImage::bytes(size);
    return room - std::min<unsigned long>(m_cache.size(), room);
}

bool PdfPageRenderer::renderRun(unsigned long index, unsigned long end,
                                const RenderSize& renderSize, QImage& image)
{
    auto run = m_readAhead.take({m_document->fileName(), index, end, renderSize});
    std::deque<QImage>& pages = run->pages();
    if (!run->read() || pages.empty()) {
        return false;
    }
    const bool isGood = run->isComplete() && run->hasEnded();
    image.swap(pages.front());
    pages.pop_front();
    m_cache = std::move(pages);
    run.reset();
    if (isGood) {
        readAhead(index, end, renderSize);
    }
    return true;
}

// Lets Ghostscript draw what follows the run from `index` to `end` while the
// caller is busy with the pages of that run.
void PdfPageRenderer::readAhead(unsigned long index, unsigned long end,
                                const RenderSize& renderSize)
{
    const std::vector<QSizeF>& sizes = m_document->pageSizes();
    if (end < sizes.size() && sizes[end] == sizes[index]) {
        m_readAhead.start(
            {m_document->fileName(), end, endOfRun(end, renderSize.size), renderSize});
    }
}

// A page that is rendered alone has to be complete.
bool PdfPageRenderer::renderSinglePage(unsigned long index, const RenderSize& renderSize,
                                       QImage& image)
{
    const auto run = m_readAhead.take({m_document->fileName(), index, index + 1, renderSize});
    if (!run->read() || !run->isComplete()) {
        return false;
    }
    image.swap(run->pages().front());
    return true;
}
