#include "app/QtEnvironment.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row
{
    const char* name;
    const char* variable;
    bool isKept;
};

const Row rows[] = {
    {"ThemeIsForgotten", "QT_QPA_PLATFORMTHEME", false},
    {"FontDpiIsForgotten", "QT_FONT_DPI", false},
    {"WhatLaterVersionsKnowIsForgotten", "QT_SOMETHING_NEW", false},
    {"ShortestNameIsForgotten", "QT_", false},
    {"LoggingRulesAreKept", "QT_LOGGING_RULES", true},
    {"PlaceOfPluginsIsKept", "QT_PLUGIN_PATH", true},
    {"PlaceOfThePlatformPluginIsKept", "QT_QPA_PLATFORM_PLUGIN_PATH", true},
    {"NamesOfOthersAreKept", "QTDIR", true},
    {"NamesThatContainThePrefixAreKept", "MY_QT_FONT_DPI", true},
};

class Variable : public testing::TestWithParam<Row>
{
protected:
    void TearDown() override { qunsetenv(GetParam().variable); }
};

TEST_P(Variable, IsKeptOnlyIfItHasAMeaning)
{
    qputenv(GetParam().variable, "1");
    QtEnvironment::prepare();
    EXPECT_EQ(qgetenv(GetParam().variable) == "1", GetParam().isKept);
}

INSTANTIATE_TEST_SUITE_P(QtEnvironment, Variable, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(QtEnvironment, ForgetsSeveralVariablesAtOnce)
{
    for (int i = 0; i < 20; ++i) {
        qputenv(("QT_TEST_" + std::to_string(i)).c_str(), "1");
    }
    QtEnvironment::prepare();
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(qEnvironmentVariableIsSet(("QT_TEST_" + std::to_string(i)).c_str())) << i;
    }
}

TEST(QtEnvironment, ChoosesThePlatformWithoutADisplay)
{
    qputenv("QT_QPA_PLATFORM", "xcb");
    QtEnvironment::prepare();
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "offscreen");
}

} // namespace
