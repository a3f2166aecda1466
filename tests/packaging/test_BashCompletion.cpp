#include "support/ProgramRun.h"
#include "support/TemporaryFolder.h"

#include <QDir>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Row
{
    const char* name;
    std::vector<std::string> words; // as bash splits the line; the last one is completed
    std::set<std::string> offered;
};

const std::set<std::string> allOptions = {
    "-h", "--help",       "-v", "--version",        "-p", "--paper-size", "-r", "--resolution",
    "-R", "--rotation",   "-t", "--transformation", "-m", "--margins",    "-c", "--compression",
    "-C", "--cover-page", "-o", "--output-file"};
const std::set<std::string> allDocuments = {"a.pdf", "b.tif",     "b.tiff", "c.jpeg",
                                            "c.jpg", "d two.png", "e.PDF",  "folder"};

const Row rows[] = {
    {"ADashOffersAllOptions", {"morvaltide", "-"}, allOptions},
    {"ABeginningOffersTheOptionsThatHaveIt", {"morvaltide", "--r"}, {"--resolution", "--rotation"}},
    {"PaperSizesFollowTheLongOption",
     {"morvaltide", "--paper-size", ""},
     {"a4", "letter", "legal"}},
    {"PaperSizesAreCutDownToTheBeginning", {"morvaltide", "-p", "le"}, {"letter", "legal"}},
    {"ResolutionsFollowTheSmallLetter",
     {"morvaltide", "-r", ""},
     {"standard", "fine", "superfine", "ultrafine"}},
    {"RotationsFollowTheCapitalLetter",
     {"morvaltide", "-R", ""},
     {"0", "90", "180", "270", "-90", "-180", "-270"}},
    {"NegativeRotationsAreNotTakenForOptions", {"morvaltide", "-R", "-"}, {"-90", "-180", "-270"}},
    {"TheTransformationIsOffered", {"morvaltide", "-t", ""}, {"fittopaper"}},
    {"CompressionsFollowTheSmallLetter", {"morvaltide", "-c", ""}, {"g3", "g4"}},
    {"MarginsHaveNoWords", {"morvaltide", "-m", ""}, {}},
    {"ValuesFollowAnEqualsSign",
     {"morvaltide", "--resolution", "="},
     {"standard", "fine", "superfine", "ultrafine"}},
    {"ValuesAreCutDownAfterAnEqualsSign", {"morvaltide", "--resolution", "=", "su"}, {"superfine"}},
    {"DocumentsAreOfferedBySuffix", {"morvaltide", ""}, allDocuments},
    {"DocumentsAreOfferedAfterAnOptionWithItsValue", {"morvaltide", "-p", "a4", "a"}, {"a.pdf"}},
    {"DocumentsBelowAFolderAreOffered", {"morvaltide", "folder/"}, {"folder/f.png"}},
    {"ADocumentWithABlankIsFoundByItsQuotedBeginning", {"morvaltide", "d\\ t"}, {"d two.png"}},
    {"OnlyDocumentsFollowTheDoubleDash", {"morvaltide", "--", ""}, allDocuments},
    {"AnOptionAfterTheDoubleDashIsNone", {"morvaltide", "--", "-p", "b"}, {"b.tif", "b.tiff"}},
    {"TheCoverPageIsHtml", {"morvaltide", "-C", ""}, {"folder", "page.html"}},
    {"TheOutputIsTiff", {"morvaltide", "-o", ""}, {"b.tif", "b.tiff", "folder"}},
};

class BashCompletion : public testing::TestWithParam<Row>
{
};

std::set<std::string> linesOf(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.insert(line);
    }
    return lines;
}

TEST_P(BashCompletion, OffersWhatFits)
{
    const TemporaryFolder folder;
    for (const char* file : {"a.pdf", "b.tif", "b.tiff", "c.jpg", "c.jpeg", "d two.png", "e.PDF",
                             "page.html", "notes.txt"}) {
        folder.write(file, "");
    }
    ASSERT_TRUE(QDir(folder.qPath(QString())).mkdir(QStringLiteral("folder")));
    folder.write("folder/f.png", "");

    ProgramStart start;
    start.program = "/bin/bash";
    start.folder = folder.path("");
    start.environment["LC_ALL"] = "C";
    start.arguments = {
        "--norc", "-c",
        "source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1));"
        "_morvaltide; ((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"",
        MORVALTIDE_SOURCES "/completions/morvaltide.bash"};
    start.arguments.insert(start.arguments.end(), GetParam().words.begin(), GetParam().words.end());
    const ProgramResult result = runProgram(start);
    EXPECT_EQ(linesOf(result.output), GetParam().offered);
    EXPECT_EQ(result.error, "");
}

INSTANTIATE_TEST_SUITE_P(Completions, BashCompletion, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
