#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTextCodec>

#include <gtest/gtest.h>

// Tests that paint or lay out text need the application object, so all have it.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
