#pragma once

#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"

#include <QByteArray>
#include <QStringList>

#include <vector>

/// A shell script called "gs" in front of the search path for as long as it
/// lives. It records the arguments of each run, then plays the given commands.
class FakeGhostscript
{
public:
    explicit FakeGhostscript(const QByteArray& commands);

    /// Commands that run the real Ghostscript with the same arguments. To be
    /// asked for while no stand-in is in force.
    static QByteArray realGhostscript();

    /// Commands that print `answer` when asked for the page sizes, and that
    /// draw each page of a run by filling all its bytes with its page number.
    static QByteArray numberedPages(const QByteArray& answer);

    /// The arguments of all runs up to now, in order.
    std::vector<QStringList> runs() const;

    /// The arguments of those runs that rendered pages, cut down to the words
    /// that name the pages and the size: "-dFirstPage=1 -dLastPage=2 -g8x8".
    QStringList renderedRanges() const;

    /// How many runs were started while the one before was still running.
    int overlaps() const;

private:
    QByteArray noteOverlap() const;

    TemporaryFolder m_folder;
    SearchPath m_searchPath;
};
