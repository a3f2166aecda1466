#include "qt/Platform.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <gtest/gtest.h>

// Tests that paint or lay out text need the application object, so all have it.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    Platform::prepare();
    const QGuiApplication application(argc, argv);
    Platform::complete();
    return RUN_ALL_TESTS();
}
