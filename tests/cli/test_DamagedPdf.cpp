#include "CliTest.h"

#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"

#include <tuple>

namespace {

// A rectangle and a line, in PDF operators.
const QByteArray drawing = "100 100 400 40 re f 9 w 50 50 m 500 700 l S\n";

// A Flate stream that starts with a good block, not compressed, and goes on with
// blocks of a type that does not exist.
QByteArray damagedFlateStream()
{
    const auto size = static_cast<char>(drawing.size());
    const char lengths[] = {size, 0, static_cast<char>(~size), '\xff'};
    return SamplePdf::stream("\x78\x01" + QByteArray(1, '\0') + QByteArray(lengths, 4) + drawing +
                                 QByteArray(20, '\x07') + '\n',
                             "/Filter/FlateDecode");
}

using Pages = std::vector<SamplePdf::Page>;

const SamplePdf::Page good{SamplePdf::letter};
const SamplePdf::Page damaged{SamplePdf::letter, 0, damagedFlateStream()};
const SamplePdf::Page withoutContents{SamplePdf::letter, 0, "null"};
const SamplePdf::Page withoutFont{
    SamplePdf::letter, 0, SamplePdf::stream(drawing + "BT /F1 48 Tf 100 300 Td (Text) Tj ET\n")};
const SamplePdf::Page unbalanced{
    SamplePdf::letter, 0, SamplePdf::stream("q Q Q Q\n" + drawing + "Q 10 10 100 100 re f\n")};

// Pages of different sizes are rendered one by one.
Pages inAlternatingSizes(Pages pages)
{
    for (std::size_t index = 1; index < pages.size(); index += 2) {
        pages[index].mediaBox = SamplePdf::a4;
    }
    return pages;
}

class DamagedPdf : public CliTest
{
protected:
    // Expects the file that comes of a Ghostscript that draws into a file and
    // whose standard output goes to standard error.
    ProgramResult expectThePagesAlone(const Pages& pages, const std::vector<std::string>& options,
                                      const std::optional<std::string>& ghostscriptOptions = {})
    {
        folder().write("in.pdf", SamplePdf::file(pages));
        std::vector<std::string> arguments = options;
        arguments.insert(arguments.end(), {"in.pdf", "-o", "plain.tif"});
        {
            const FakeGhostscript redirected(
                {GhostscriptAnswer::real(),
                 GhostscriptAnswer::realThroughFile(folder().qPath(QStringLiteral("drawn")))});
            EXPECT_EQ(run(arguments).exitStatus, 0);
        }
        arguments.back() = "out.tif";
        ProgramStart conversion = start(arguments);
        conversion.environment["GS_OPTIONS"] = ghostscriptOptions;
        ProgramResult result = runProgram(conversion);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(content("out.tif") == content("plain.tif"));
        return result;
    }
};

struct DamageRow
{
    const char* name;
    Pages pages;
    bool isRemarkedOn; ///< By every version of Ghostscript.
};

const DamageRow damageRows[] = {
    {"DamagedFlateStreamAlone", {damaged}, true},
    {"DamagedFlateStreamOnTheFirstPage", {damaged, good, good}, true},
    {"DamagedFlateStreamOnAMiddlePage", {good, damaged, good}, true},
    {"DamagedFlateStreamOnTheLastPage", {good, good, damaged}, true},
    {"DamagedFlateStreamOnEveryPage", {damaged, damaged, damaged}, true},
    {"DamagedFlateStreamAmongOtherSizes", inAlternatingSizes({good, damaged, good}), true},
    {"NoContentsAlone", {withoutContents}, true},
    {"NoContentsInARun", {withoutContents, good, good}, true},
    {"MissingFontAlone", {withoutFont}, false},
    {"MissingFontInARun", {withoutFont, good, good}, false},
    {"UnbalancedRestoreAlone", {unbalanced}, false},
    {"UnbalancedRestoreInARun", {unbalanced, good, good}, false},
};

class DamagedPage : public DamagedPdf, public testing::WithParamInterface<DamageRow>
{
};

TEST_P(DamagedPage, HasNoWordsOfGhostscriptInItsPixels)
{
    const ProgramResult result = expectThePagesAlone(GetParam().pages, {"-r", "standard"});
    if (GetParam().isRemarkedOn) {
        EXPECT_NE(result.error.find("**** Error"), std::string::npos) << result.error;
    }
}

INSTANTIATE_TEST_SUITE_P(Cli, DamagedPage, testing::ValuesIn(damageRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class DamagedPages : public DamagedPdf,
                     public testing::WithParamInterface<std::tuple<const char*, const char*>>
{
protected:
    std::vector<std::string> options() const
    {
        return {"-r", std::get<0>(GetParam()), "-R", std::get<1>(GetParam())};
    }

    const Pages m_pages{good, damaged, good, withoutContents, withoutFont, unbalanced, damaged};
};

TEST_P(DamagedPages, OfOneSizeHaveNoWordsInTheirPixels)
{
    expectThePagesAlone(m_pages, options());
}

TEST_P(DamagedPages, OfAlternatingSizesHaveNoWordsInTheirPixels)
{
    expectThePagesAlone(inAlternatingSizes(m_pages), options());
}

// Each resolution and each rotation once: the pages are turned when they are drawn.
INSTANTIATE_TEST_SUITE_P(Cli, DamagedPages,
                         testing::Values(std::tuple{"standard", "90"}, std::tuple{"fine", "0"},
                                         std::tuple{"superfine", "270"},
                                         std::tuple{"ultrafine", "180"}),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param)) + "At" +
                                    std::get<1>(test.param);
                         });

struct OptionsRow
{
    const char* name;
    const char* value;
};

const OptionsRow optionsRows[] = {
    {"AnOption", "-dNOINTERPOLATE"},
    {"ABackslashAtTheEnd", "-dNOINTERPOLATE -sNAME=\\"},
    {"ACommentAtTheEnd", "# -sstdout=%stdout"},
    {"AQuotedValue", "-sNAME=\"two words\" -dTWO"},
    {"StandardOutputAsItIs", "-sstdout=%stdout"},
};

class OptionsOfTheUser : public DamagedPdf, public testing::WithParamInterface<OptionsRow>
{
};

TEST_P(OptionsOfTheUser, LetNoWordsIntoThePixels)
{
    expectThePagesAlone({damaged, good, good}, {}, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Cli, OptionsOfTheUser, testing::ValuesIn(optionsRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
