#include "app/QtEnvironment.h"

#include "qt/Platform.h"

#include <QByteArray>
#include <QLoggingCategory>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace {

constexpr std::string_view prefixOfQt = "QT_";

// Where plug-ins are, and what Qt says about its work.
constexpr std::string_view keptVariables[] = {
    "QT_DEBUG_PLUGINS",   "QT_LOGGING_CONF", "QT_LOGGING_RULES",
    "QT_MESSAGE_PATTERN", "QT_PLUGIN_PATH",  "QT_QPA_PLATFORM_PLUGIN_PATH",
};

bool isKept(std::string_view name)
{
    return name.substr(0, prefixOfQt.size()) != prefixOfQt ||
           std::find(std::begin(keptVariables), std::end(keptVariables), name) !=
               std::end(keptVariables);
}

// Desktops set variables that load a platform theme, an input method or other
// plug-ins, which may ask for a display, or that change the size and the look
// of text. There are dozens of them, more in each version of Qt, and none has a
// meaning for a fax.
void forgetDesktop()
{
    std::vector<std::string> forgotten;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view setting = *entry;
        const std::string_view name = setting.substr(0, setting.find('='));
        if (!isKept(name)) {
            forgotten.emplace_back(name);
        }
    }
    for (const std::string& name : forgotten) {
        qunsetenv(name.c_str());
    }
}

} // namespace

void QtEnvironment::prepare()
{
    forgetDesktop();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // A program that is silent on success cannot pass on the remarks of Qt and
    // its plug-ins. QT_LOGGING_RULES turns them on again.
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    Platform::prepare();
}
