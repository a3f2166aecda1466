#pragma once

#include "app/settings/RenderSize.h"

#include <QString>

#include <cstddef>
#include <memory>

class RunningProcess;

/// The pages of one run of Ghostscript with its "bit" device.
struct PageRun
{
    QString fileName;
    unsigned long index; ///< Of the first page, counted from 0.
    unsigned long end;   ///< The index after the last page.
    RenderSize size;     ///< Of every page.

    bool operator==(const PageRun& other) const;
};

/// A run of Ghostscript that was started before its pages are asked for.
///
/// There is never more than one, and never another beside it: it is killed as
/// soon as a different run is wanted. What becomes of it shows when it is read.
class ReadAhead
{
public:
    ReadAhead();

    /// Kills the run.
    ~ReadAhead();

    /// Starts a run in the place of the one before.
    void start(const PageRun& run);

    /// Takes up to `limit` bytes of what the run has drawn, without waiting, so
    /// that it can go on.
    void receive(std::size_t limit);

    /// Hands the run over if it is this one, else starts this one now. Null if
    /// the file may not reach Ghostscript.
    std::unique_ptr<RunningProcess> take(const PageRun& run);

    /// Kills the run, if there is one.
    void forget();

private:
    PageRun m_run{};
    std::unique_ptr<RunningProcess> m_process; // null if nothing was started
};
