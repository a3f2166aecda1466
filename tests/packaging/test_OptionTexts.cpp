#include "formats/FileFormatDatabase.h"
#include "packaging/OptionTexts.h"
#include "support/PrintQt.h"
#include "support/ProgramRun.h"

#include <QFile>

#include <gtest/gtest.h>

#include <string>

namespace {

QString fileText(const char* name)
{
    QFile file(QStringLiteral(MORVALTIDE_SOURCES "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return QString::fromUtf8(file.readAll());
}

OptionTexts helpOptions()
{
    ProgramStart start;
    start.program = MORVALTIDE_PROGRAM;
    start.arguments = {"--help"};
    return optionsOfHelp(QString::fromStdString(runProgram(start).output));
}

// One option a line, so that a difference shows as a line.
std::string namesOf(const OptionTexts& options)
{
    QString text;
    for (auto option = options.begin(); option != options.end(); ++option) {
        text += QStringLiteral("-%1 --%2\n").arg(option->letter, option.key());
    }
    return text.toStdString();
}

std::string valuesOf(const OptionTexts& options)
{
    QString text;
    for (auto option = options.begin(); option != options.end(); ++option) {
        text += option.key() + QLatin1String(": ") + option->values.join(QLatin1Char(' ')) +
                QLatin1Char('\n');
    }
    return text.toStdString();
}

struct TextRow
{
    const char* name;
    const char* fileName;
    OptionTexts (*read)(const QString& text);
};

const TextRow textRows[] = {
    {"TheManPage", "man/morvaltide.1.in", optionsOfManPage},
    {"TheCompletionForBash", "completions/morvaltide.bash", optionsOfBash},
    {"TheCompletionForZsh", "completions/_morvaltide", optionsOfZsh},
    {"TheCompletionForFish", "completions/morvaltide.fish", optionsOfFish},
};

class OptionsInAText : public testing::TestWithParam<TextRow>
{
protected:
    static OptionTexts options() { return GetParam().read(fileText(GetParam().fileName)); }
};

TEST_P(OptionsInAText, HaveTheNamesThatTheHelpLists)
{
    EXPECT_EQ(namesOf(options()), namesOf(helpOptions()));
}

TEST_P(OptionsInAText, HaveTheValuesThatTheHelpLists)
{
    EXPECT_EQ(valuesOf(options()), valuesOf(helpOptions()));
}

INSTANTIATE_TEST_SUITE_P(OptionTexts, OptionsInAText, testing::ValuesIn(textRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// The comparisons above would pass if nothing were read at all.
TEST(OptionTexts, TheHelpListsTenOptions)
{
    EXPECT_EQ(namesOf(helpOptions()), "-c --compression\n"
                                      "-C --cover-page\n"
                                      "-h --help\n"
                                      "-m --margins\n"
                                      "-o --output-file\n"
                                      "-p --paper-size\n"
                                      "-r --resolution\n"
                                      "-R --rotation\n"
                                      "-t --transformation\n"
                                      "-v --version\n");
}

TEST(OptionTexts, TheHelpListsTheValuesOfFiveOptions)
{
    EXPECT_EQ(valuesOf(helpOptions()), "compression: g3 g4\n"
                                       "cover-page: \n"
                                       "help: \n"
                                       "margins: \n"
                                       "output-file: \n"
                                       "paper-size: a4 legal letter\n"
                                       "resolution: fine standard superfine ultrafine\n"
                                       "rotation: -180 -270 -90 0 180 270 90\n"
                                       "transformation: fittopaper\n"
                                       "version: \n");
}

TEST(OptionTexts, TheManPageNamesTheDefaultsOfTheHelp)
{
    const OptionTexts help = helpOptions();
    const OptionTexts page = optionsOfManPage(fileText("man/morvaltide.1.in"));
    QStringList helpDefaults;
    QStringList pageDefaults;
    for (auto option = help.begin(); option != help.end(); ++option) {
        helpDefaults << option->defaultValue;
        pageDefaults << page[option.key()].defaultValue;
    }
    EXPECT_EQ(pageDefaults.join(QLatin1Char(' ')), helpDefaults.join(QLatin1Char(' ')));
}

struct SuffixRow
{
    const char* name;
    const char* fileName;
    QStringList (*read)(const QString& text);
};

const SuffixRow suffixRows[] = {
    {"Bash", "completions/morvaltide.bash", suffixesOfBash},
    {"Zsh", "completions/_morvaltide", suffixesOfZsh},
    {"Fish", "completions/morvaltide.fish", suffixesOfFish},
};

class SuffixesInACompletion : public testing::TestWithParam<SuffixRow>
{
};

TEST_P(SuffixesInACompletion, AreThoseOfTheFormatsThatDocumentsCanHave)
{
    QStringList known;
    for (const FileFormat format :
         {FileFormat::Pdf, FileFormat::Tiff, FileFormat::Jpeg, FileFormat::Png}) {
        known += FileFormatDatabase::formatSuffixes(format);
    }
    known.sort();
    EXPECT_EQ(GetParam().read(fileText(GetParam().fileName)).join(QLatin1Char(' ')),
              known.join(QLatin1Char(' ')));
}

INSTANTIATE_TEST_SUITE_P(OptionTexts, SuffixesInACompletion, testing::ValuesIn(suffixRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
