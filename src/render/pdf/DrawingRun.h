#pragma once

#include "app/settings/RenderSize.h"
#include "process/ProcessBytesMultiWriter.h"

#include <QImage>
#include <QString>

#include <cstddef>
#include <deque>
#include <memory>

class RunningProcess;

/// The pages of one run of Ghostscript with its "bit" device.
struct PageRun
{
    QString fileName;
    unsigned long index; ///< Of the first page, counted from 0.
    unsigned long end;   ///< The index after the last page.
    RenderSize size;     ///< Of every page.

    unsigned long count() const { return end - index; }
    bool operator==(const PageRun& other) const;
};

/// A run of Ghostscript on its way, and the page images that it fills.
class DrawingRun
{
public:
    /// Starts it, unless the file may not reach Ghostscript, or its only page is
    /// too large. Whether that worked shows in read().
    explicit DrawingRun(const PageRun& run);

    /// Kills it if it is still under way.
    ~DrawingRun();

    DrawingRun(const DrawingRun&) = delete;
    DrawingRun& operator=(const DrawingRun&) = delete;

    const PageRun& run() const { return m_run; }

    /// Takes what has been drawn of the first `pageCount` pages, without waiting,
    /// so that Ghostscript can go on.
    void receive(unsigned long pageCount);

    /// Waits for the rest. False if the run failed, or an image could not be made.
    bool read();

    /// After read(): true if every page was drawn to its end, and the run has come
    /// to its own. Otherwise pages may be missing, and the last one partly white.
    bool isComplete() const { return m_writer.isComplete(); }
    bool hasEnded() const;

    /// The pages up to now.
    std::deque<QImage>& pages() { return m_pages; }

private:
    BytesCopy addPage();

    PageRun m_run;
    std::deque<QImage> m_pages;
    QImage m_onlyPage; // of a run of one page, until there is something on it
    bool m_isPageMissing = false;
    ProcessBytesMultiWriter m_writer;
    std::unique_ptr<RunningProcess> m_process;
};
