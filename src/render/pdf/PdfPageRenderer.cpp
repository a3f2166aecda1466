#include "render/pdf/PdfPageRenderer.h"

#include "app/settings/RenderSize.h"
#include "bilevel/BilevelColors.h"
#include "bilevel/BilevelImage.h"
#include "process/ProcessBytesMultiWriter.h"
#include "process/ProcessBytesWriter.h"
#include "process/RunningProcess.h"
#include "render/pdf/PdfDocument.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

// PostScript points.
constexpr double pointsPerInch = 72.0;

int packedBytesPerRow(int width)
{
    return (width + 7) / 8;
}

std::size_t pageBytes(const QSize& size)
{
    return static_cast<std::size_t>(packedBytesPerRow(size.width())) *
           static_cast<std::size_t>(size.height());
}

// An image whose rows are packed tighter than QImage would lay them out.
QImage createPackedImage(const QSize& size)
{
    void* buffer = std::calloc(pageBytes(size), 1);
    if (buffer == nullptr) {
        return QImage();
    }
    QImage image(static_cast<uchar*>(buffer), size.width(), size.height(),
                 packedBytesPerRow(size.width()), QImage::Format_Mono, std::free, buffer);
    if (image.isNull()) {
        std::free(buffer);
    }
    return image;
}

// A white page image; null if it cannot be made. It is white from the start
// because a run of Ghostscript can end early.
QImage createPageImage(const QSize& size)
{
    QImage image;
    if (packedBytesPerRow(size.width()) % 4 == 0) {
        image = QImage(size, QImage::Format_Mono);
        image.fill(0);
    } else {
        image = createPackedImage(size);
    }
    if (!image.isNull()) {
        image.setColorTable({opaqueWhite, opaqueBlack});
    }
    return image;
}

BytesCopy pixelsOf(QImage& image)
{
    return {image.bits(), static_cast<std::size_t>(image.sizeInBytes())};
}

// What became of a run of several pages.
enum class RunEnd
{
    Failed,
    TooEarly, // or nobody knows: fewer pages, a last page that is partly white, no end in sight
    Good
};

RunEnd readRun(RunningProcess& process, std::size_t pageCount, const QSize& size,
               std::deque<QImage>& pages)
{
    // A page that could not be made is missing from the stream for good: the
    // next one would start in the middle of its rows.
    bool isPageMissing = false;
    ProcessBytesMultiWriter writer(pageCount, [&] {
        QImage image = createPageImage(size);
        if (image.isNull()) {
            isPageMissing = true;
            return BytesCopy();
        }
        pages.push_back(std::move(image));
        return pixelsOf(pages.back());
    });
    if (!process.read(&writer) || isPageMissing || pages.empty()) {
        return RunEnd::Failed;
    }
    return writer.isComplete() && process.hasEnded() ? RunEnd::Good : RunEnd::TooEarly;
}

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
        m_readAhead.receive(readAheadRoom());
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
        index + std::min<unsigned long>(following, m_forwardCacheLimit / pageBytes(size));
    unsigned long end = index + 1;
    while (end <= last && sizes[end] == sizes[index]) {
        ++end;
    }
    return end;
}

// The bytes that the run ahead may take: half of what the pages handed out have
// left free, because Qt keeps them in blocks that do not fit where pages were.
std::size_t PdfPageRenderer::readAheadRoom() const
{
    const std::size_t taken =
        m_cache.empty() ? 0 : m_cache.size() * pageBytes(m_cache.front().size());
    return (m_forwardCacheLimit - std::min(taken, m_forwardCacheLimit)) / 2;
}

bool PdfPageRenderer::renderRun(unsigned long index, unsigned long end,
                                const RenderSize& renderSize, QImage& image)
{
    std::deque<QImage> pages;
    auto process = m_readAhead.take({m_document->fileName(), index, end, renderSize});
    const RunEnd runEnd =
        process ? readRun(*process, end - index, renderSize.size, pages) : RunEnd::Failed;
    process.reset();
    if (runEnd == RunEnd::Failed) {
        return false;
    }
    image.swap(pages.front());
    pages.pop_front();
    m_cache = std::move(pages);
    if (runEnd == RunEnd::Good) {
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
    QImage page = createPageImage(renderSize.size);
    if (page.isNull()) {
        return false;
    }
    ProcessBytesWriter writer(pixelsOf(page));
    const auto process = m_readAhead.take({m_document->fileName(), index, index + 1, renderSize});
    if (!process || !process->read(&writer) || writer.target().remaining != 0) {
        return false;
    }
    image.swap(page);
    return true;
}
