#include "process/ProcessWrapper.h"

#include "process/CollectingHandler.h"
#include "support/PrintQt.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

namespace {

// A child that tells its process id and then falls silent for longer than any
// of the waits.
const QString shell = QStringLiteral("sh");
const QStringList silentChild{QStringLiteral("-c"), QStringLiteral("echo $$; exec sleep 300")};

TEST(ProcessTimeouts, ACollectedChildFailsAfterThirtySeconds)
{
    QByteArray output = "before";
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(ProcessWrapper::executeProcess(shell, silentChild, &output));
    EXPECT_GE(timer.elapsed(), 29900);
    EXPECT_LT(timer.elapsed(), 45000);
    EXPECT_EQ(output, QByteArray("before"));
}

TEST(ProcessTimeouts, AStreamedChildSucceedsAfterTwoWaitsAndIsKilled)
{
    CollectingHandler handler;
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(ProcessWrapper::executeProcess(shell, silentChild, &handler));
    EXPECT_GE(timer.elapsed(), 59800);
    EXPECT_LT(timer.elapsed(), 80000);

    const int child = handler.collected().trimmed().toInt();
    ASSERT_GT(child, 0);
    EXPECT_EQ(kill(child, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

} // namespace
