#pragma once

#include "render/pdf/ReadAhead.h"

#include <QImage>

#include <cstddef>
#include <deque>

class PdfDocument;
struct RenderSize;

/// Renders the pages of a PDF document, each with the following pages of the
/// same size in one run of Ghostscript as far as the forward cache has room. The
/// run after that is started as soon as one has ended well, so that Ghostscript
/// draws while the caller works on the pages (read-ahead).
///
/// Page images are as PageImage makes them; those that renderPage() squeezed have
/// the rows of QImage. Indices count from 0. On failure the result is false and
/// `image` is left as it was.
class PdfPageRenderer
{
public:
    /// `document` owns this renderer.
    explicit PdfPageRenderer(const PdfDocument* document);

    /// The bytes that pages rendered ahead may take; 0, the initial value,
    /// renders every page alone. A new limit forgets what was rendered ahead.
    void setForwardCacheLimit(std::size_t limit);

    /// Renders a page into the requested size.
    ///
    /// Where the two resolutions differ, the page is rendered with square
    /// pixels at the higher one and the other axis is squeezed without
    /// smoothing. A size below 1 x 1 asks for the page's own size at the
    /// requested resolution, or at 72 dots per inch without one.
    bool renderPage(unsigned long index, const RenderSize& renderSize, QImage& image);

    /// Renders a page into exactly the requested size, by way of the cache.
    bool getRenderedPage(unsigned long index, const RenderSize& renderSize, QImage& image);

    /// Ends a run of Ghostscript that was started ahead. To be called before
    /// another one is run on behalf of the document.
    void forgetReadAhead();

private:
    bool renderRun(unsigned long index, unsigned long end, const RenderSize& renderSize,
                   QImage& image);
    bool renderSinglePage(unsigned long index, const RenderSize& renderSize, QImage& image);
    void readAhead(unsigned long index, unsigned long end, const RenderSize& renderSize);
    unsigned long endOfRun(unsigned long index, const QSize& size) const;
    unsigned long readAheadRoom(const QSize& size) const;

    const PdfDocument* m_document;
    std::size_t m_forwardCacheLimit = 0;
    unsigned long m_nextPage = 0; // the page that would continue the last request

    // The pages from m_nextPage on, filled by one run that started right
    // before them; which pages and which size they are is not recorded.
    std::deque<QImage> m_cache;

    // The run that fills the cache next, with the page behind the cache first.
    ReadAhead m_readAhead;
};
