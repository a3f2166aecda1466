#pragma once

#include "render/pdf/DrawingRun.h"

#include <memory>

/// A run of Ghostscript that was started before its pages are asked for.
///
/// There is never more than one, and never another beside it: it is killed as
/// soon as a different run is wanted. What becomes of it shows when it is read.
class ReadAhead
{
public:
    /// Starts a run in the place of the one before.
    void start(const PageRun& run);

    /// See DrawingRun::receive().
    void receive(unsigned long pageCount);

    /// Hands the run over if it is this one, else starts this one now. Never null.
    std::unique_ptr<DrawingRun> take(const PageRun& run);

    /// Kills the run, if there is one.
    void forget();

private:
    std::unique_ptr<DrawingRun> m_run; // null if nothing was started
};
