#include "companions/hylafax/QueueTest.h"
#include "support/SamplePdf.h"

#include <QFileInfo>
#include <QStringList>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <unistd.h>

namespace {

class HylaFaxInterruption : public QueueTest
{
protected:
    // Starts a conversion that has no end, and returns once it is under way.
    std::unique_ptr<ProgramRun> startEndless()
    {
        submit("%!PS\n{} loop\n");
        QueueRequest request;
        request.kind = DocumentKind::PostScript;
        auto run = std::make_unique<ProgramRun>(start(request));
        constexpr int waitMicroseconds = 10000;
        while (!isUnderWay()) {
            usleep(waitMicroseconds);
        }
        return run;
    }

    // Ghostscript opens its output before it reads the document.
    bool isUnderWay() const
    {
        const QStringList folders = entries("tmp");
        return folders.size() == 1 &&
               QFileInfo::exists(QString::fromStdString(path("tmp")) + QLatin1Char('/') +
                                 folders.first() + QStringLiteral("/document.pdf"));
    }
};

TEST_F(HylaFaxInterruption, AtTheTimeLimitOfTheQueueLeavesNothing)
{
    const std::unique_ptr<ProgramRun> run = startEndless();
    run->sendSignal(SIGTERM);
    constexpr int endedByTerm = 143;
    EXPECT_EQ(run->finish().exitStatus, endedByTerm);
    EXPECT_EQ(entries("tmp"), QStringList());
    EXPECT_EQ(outputContent(), "");
}

TEST_F(HylaFaxInterruption, ByAKillIsClearedUpByTheNextRun)
{
    const std::unique_ptr<ProgramRun> run = startEndless();
    run->sendSignal(SIGKILL);
    EXPECT_EQ(run->finish().signal, SIGKILL);
    EXPECT_EQ(outputContent(), "");

    // The lock of the folder is free when Ghostscript is dead as well.
    submit(SamplePdf::equalPages(1));
    constexpr int waitMicroseconds = 10000;
    do {
        ASSERT_TRUE(isQueueSuccess(QueueTest::run({})));
        usleep(waitMicroseconds);
    } while (!entries("tmp").isEmpty());
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(HylaFaxInterruption, DoesNotDisturbAnotherRun)
{
    const std::unique_ptr<ProgramRun> other = startEndless();
    submit(SamplePdf::equalPages(1));
    ASSERT_TRUE(isQueueSuccess(QueueTest::run({})));
    EXPECT_TRUE(isUnderWay());
    other->sendSignal(SIGTERM);
    other->finish();
    EXPECT_EQ(entries("tmp"), QStringList());
}

} // namespace
