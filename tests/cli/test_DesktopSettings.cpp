#include "CliTest.h"

#include "support/SampleImages.h"
#include "support/SamplePdf.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>

namespace {

using Settings = std::map<std::string, std::optional<std::string>>;

struct Row
{
    const char* name;
    Settings settings;
};

// Each of these loads a plug-in or changes text, unless it is kept from Qt.
const Row rows[] = {
    {"Theme", {{"QT_QPA_PLATFORMTHEME", "gtk3"}}},
    {"ThemeAndDisplay", {{"QT_QPA_PLATFORMTHEME", "gtk3"}, {"DISPLAY", ":99"}}},
    {"Gnome",
     {{"XDG_CURRENT_DESKTOP", "GNOME"},
      {"XDG_SESSION_DESKTOP", "gnome"},
      {"XDG_SESSION_TYPE", "x11"},
      {"DESKTOP_SESSION", "gnome"},
      {"GNOME_DESKTOP_SESSION_ID", "this-is-deprecated"}}},
    {"Kde", {{"XDG_CURRENT_DESKTOP", "KDE"}, {"KDE_FULL_SESSION", "true"}}},
    {"Wayland", {{"XDG_SESSION_TYPE", "wayland"}, {"WAYLAND_DISPLAY", "wayland-99"}}},
    {"Style", {{"QT_STYLE_OVERRIDE", "gtk2"}}},
    {"Accessibility", {{"QT_ACCESSIBILITY", "1"}, {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}}},
    {"ComposedCharacters", {{"QT_IM_MODULE", "compose"}}},
    {"InputMethod", {{"QT_IM_MODULE", "ibus"}}},
    {"GenericPlugin", {{"QT_QPA_GENERIC_PLUGINS", "evdevkeyboard"}}},
    {"FontDpi", {{"QT_FONT_DPI", "192"}}},
    {"ScaleFactor", {{"QT_SCALE_FACTOR", "2"}}},
    {"ScaleFactorOfTheScreen", {{"QT_SCREEN_SCALE_FACTORS", "1.5"}}},
    {"ScaleFactorFromTheScreen",
     {{"QT_AUTO_SCREEN_SCALE_FACTOR", "1"}, {"QT_ENABLE_HIGHDPI_SCALING", "1"}}},
    {"DevicePixelRatio", {{"QT_DEVICE_PIXEL_RATIO", "2"}}},
    {"PhysicalDpi", {{"QT_USE_PHYSICAL_DPI", "1"}, {"QT_ENABLE_HIGHDPI_SCALING", "1"}}},
    {"NoAntialiasing", {{"QT_NO_ANTIALIASING", "1"}}},
    {"NoHighResolutionMarks", {{"QT_HIGHDPI_DISABLE_2X_IMAGE_LOADING", "1"}}},
};

class AllDesktopSettings : public CliTest
{
protected:
    void SetUp() override
    {
        folder().write("cover.html", "<html><body><h1>Cover</h1><b>bold</b><hr></body></html>");
        folder().write("in@2x.png", SampleImages::pngFile(SampleImages::quarters({64, 48})));
        folder().write("in.jpg", SampleImages::jpegFile(SampleImages::quarters({64, 48})));
        folder().write("in.pdf", SamplePdf::equalPages(1));
    }

    ProgramStart conversion(const std::string& output, const Settings& settings) const
    {
        ProgramStart conversion =
            start({"-r", "standard", "-C", "cover.html", "-o", output, "in@2x.png", "in.jpg"});
        // What the desktop of whoever runs the tests says must not matter.
        for (const char* name : {"QT_QPA_PLATFORMTHEME", "QT_IM_MODULE", "XDG_CURRENT_DESKTOP"}) {
            conversion.environment[name] = std::nullopt;
        }
        for (const auto& [name, value] : settings) {
            conversion.environment[name] = value;
        }
        return conversion;
    }

    // The kinds of the plug-ins in what the dynamic linker said about its work.
    QSet<QString> loadedKinds() const
    {
        static const QRegularExpression plugin(QStringLiteral("/plugins/([a-z]+)/"));
        QSet<QString> kinds;
        const QDir reports(folder().qPath(QStringLiteral("linker")));
        for (const QString& name : reports.entryList(QDir::Files)) {
            const QByteArray report = content("linker/" + name.toStdString());
            QRegularExpressionMatchIterator matches =
                plugin.globalMatch(QString::fromLatin1(report));
            while (matches.hasNext()) {
                kinds << matches.next().captured(1);
            }
        }
        return kinds;
    }
};

class DesktopSettings : public AllDesktopSettings, public testing::WithParamInterface<Row>
{
};

TEST_P(DesktopSettings, ChangeNeitherTheFileNorThePlugins)
{
    // The same for all of them.
    static QByteArray plain;
    if (plain.isEmpty()) {
        ASSERT_TRUE(isSilentSuccess(runProgram(conversion("plain.tif", {}))));
        plain = content("plain.tif");
    }
    ASSERT_TRUE(QDir(folder().qPath(QString())).mkdir(QStringLiteral("linker")));
    ProgramStart observed = conversion("out.tif", GetParam().settings);
    observed.environment["LD_DEBUG"] = "files";
    observed.environment["LD_DEBUG_OUTPUT"] = folder().path("linker/report");
    ASSERT_TRUE(isSilentSuccess(runProgram(observed)));
    EXPECT_EQ(pages().size(), 3U);
    EXPECT_TRUE(content("out.tif") == plain);
    // But for the platform and for pictures.
    EXPECT_EQ(loadedKinds(),
              (QSet<QString>{QStringLiteral("imageformats"), QStringLiteral("platforms")}));
}

INSTANTIATE_TEST_SUITE_P(Cli, DesktopSettings, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Behind its fence Ghostscript could not write the report of the linker, and would
// print it.
TEST_F(AllDesktopSettings, TogetherDoNotChangeThePagesOfAPdf)
{
    Settings all;
    for (const Row& row : rows) {
        all.insert(row.settings.begin(), row.settings.end());
    }
    for (const auto& [output, settings] :
         std::map<std::string, Settings>{{"plain.tif", {}}, {"out.tif", all}}) {
        ProgramStart withPdf = conversion(output, settings);
        withPdf.arguments.emplace_back("in.pdf");
        ASSERT_TRUE(isSilentSuccess(runProgram(withPdf)));
    }
    EXPECT_EQ(pages().size(), 4U);
    EXPECT_TRUE(content("out.tif") == content("plain.tif"));
}

} // namespace
