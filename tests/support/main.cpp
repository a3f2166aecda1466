#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTextCodec>

#include <gtest/gtest.h>

// Read by LeakSanitizer. Qt's offscreen plug-in does not free its screen, and
// fontconfig keeps what it has read, when the application object ends.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer chose the name.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen\n"
           "leak:QPlatformScreen\n"
           "leak:libfontconfig\n";
}

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
