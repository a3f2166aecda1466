#pragma once

#include "support/GhostscriptAnswer.h"
#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"

#include <QString>
#include <QStringList>

#include <map>
#include <utility>
#include <vector>

#include <sys/types.h>

/// A program called "gs" in front of the search path for as long as it lives. It
/// records the arguments of each run, then answers as it was told.
class FakeGhostscript
{
public:
    using RunsFrom = std::map<int, GhostscriptAnswer>;

    struct Answers
    {
        Answers() = default;
        Answers(GhostscriptAnswer toTheQuery, GhostscriptAnswer toARun, RunsFrom toRunsFrom = {})
            : query(std::move(toTheQuery)),
              run(std::move(toARun)),
              runsFrom(std::move(toRunsFrom))
        {
        }

        GhostscriptAnswer query; ///< when it is asked about a document
        GhostscriptAnswer run;   ///< when it has to draw pages
        RunsFrom runsFrom;       ///< in the place of `run` where the first page has this number
    };

    explicit FakeGhostscript(const Answers& answers);

    /// Answers everything alike.
    explicit FakeGhostscript(const GhostscriptAnswer& answer);

    /// The arguments of all runs up to now, in order.
    std::vector<QStringList> runs() const;

    /// The arguments of those runs that rendered pages, cut down to the words
    /// that name the pages and the size: "-dFirstPage=1 -dLastPage=2 -g8x8".
    QStringList renderedRanges() const;

    /// How many runs were started while the one before was still running.
    int overlaps() const;

    /// The process number of the run that was started last, or 0.
    pid_t lastProcess() const;

private:
    TemporaryFolder m_folder;
    QString m_realGhostscript; // before the search path changes
    SearchPath m_searchPath;
};
