#include "process/EnvironmentChange.h"

#include "process/ProcessWrapper.h"
#include "support/PrintQt.h"

#include <gtest/gtest.h>

namespace {

const char* const variable = "MORVALTIDE_TEST_VARIABLE";

class EnvironmentChangeTest : public testing::Test
{
protected:
    ~EnvironmentChangeTest() override { qunsetenv(variable); }
};

TEST_F(EnvironmentChangeTest, EndsWithTheOldValue)
{
    qputenv(variable, "old \xff");
    {
        const EnvironmentChange change(variable, "new");
        EXPECT_TRUE(change.isInForce());
        EXPECT_EQ(qgetenv(variable), QByteArray("new"));
    }
    EXPECT_EQ(qgetenv(variable), QByteArray("old \xff"));
}

TEST_F(EnvironmentChangeTest, EndsWithTheEmptyValueThatTheVariableHad)
{
    qputenv(variable, "");
    {
        const EnvironmentChange change(variable, "new");
    }
    EXPECT_TRUE(qEnvironmentVariableIsSet(variable));
    EXPECT_EQ(qgetenv(variable), QByteArray(""));
}

TEST_F(EnvironmentChangeTest, EndsWithoutAVariableThatWasNotThere)
{
    {
        const EnvironmentChange change(variable, "new");
    }
    EXPECT_FALSE(qEnvironmentVariableIsSet(variable));
}

TEST_F(EnvironmentChangeTest, ReachesAChildByteForByte)
{
    const EnvironmentChange change(variable, "\xff new");
    QByteArray output;
    EXPECT_TRUE(ProcessWrapper::executeProcess(QStringLiteral("printenv"),
                                               {QString::fromLatin1(variable)}, &output));
    EXPECT_EQ(output, QByteArray("\xff new\n"));
}

} // namespace
