#pragma once

#include <QByteArray>
#include <QSizeF>
#include <QString>

#include <memory>
#include <vector>

class ProcessOutputHandler;
class RunningProcess;
struct RenderSize;

/// The command lines of Ghostscript, run as "gs" from the search path, and how
/// its answers are read.
///
/// Nothing is printed here; what Ghostscript writes on standard error goes to
/// the program's own, and while it renders, so do its remarks on standard
/// output. A file whose name Ghostscript could take for something else (see
/// GhostScriptFileName), or that is not a PDF, never reaches it.
class GhostScriptCommand
{
public:
    /// The name as the file was opened, relative or absolute.
    explicit GhostScriptCommand(const QString& fileName);

    /// The sizes of all pages in points, width and height of each media box as
    /// it stands (negative if its corners are exchanged); (-1, -1) for a page
    /// whose line could not be read. Empty if Ghostscript fails.
    std::vector<QSizeF> getPageSizes() const;

    /// The number of pages; 0 if Ghostscript fails.
    unsigned long getPageCount() const;

    /// Renders the pages `firstPage` to `lastPage`, counted from 1, into
    /// `handler`, on Ghostscript's output device `outputDevice`, for example "bit".
    ///
    /// The stream of "bit" is nothing but rows, top to bottom, of
    /// ceil(width / 8) bytes each, the most significant bit leftmost, 1 for
    /// black, page after page. A size below 1 x 1 or a resolution of 0 leaves
    /// that choice to Ghostscript. True if it ran and exited with code 0.
    bool renderPages(unsigned long firstPage, unsigned long lastPage, const RenderSize& size,
                     const QString& outputDevice, ProcessOutputHandler* handler) const;

    /// Starts the same run and leaves its output to be read later; `handler` has
    /// to outlive it. Null if the file may not reach Ghostscript, or for want of
    /// memory.
    std::unique_ptr<RunningProcess> startPages(unsigned long firstPage, unsigned long lastPage,
                                               const RenderSize& size, const QString& outputDevice,
                                               ProcessOutputHandler* handler) const;

private:
    /// True if Ghostscript opens this very file, and as a PDF.
    bool isSafe() const;

    /// Runs a PostScript program in which "%1" stands for the file name; what
    /// it printed, empty on failure.
    QByteArray query(const QString& postScript) const;

    QString m_fileName;
};
