#include "fence/LandlockRuleset.h"
#include "fence/Scene.h"
#include "process/ChildProcess.h"
#include "process/FencedDocument.h"
#include "process/ProcessWrapper.h"
#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

namespace {

struct Row
{
    const char* name;
    const char* postScript;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

// What a document could do that has found its way out of Ghostscript's own
// restrictions, which -dNOSAFER stands in for.
const Row rows[] = {
    {"ReadsASecretFile", "({secret}) (r) file closefile"},
    {"ReadsThePasswordFile", "(/etc/passwd) (r) file closefile"},
    {"WritesANewFile", "({new}) (w) file closefile"},
    {"WritesOverAnInput", "({neighbour}) (w) file closefile"},
    {"WritesOverTheDocument", "({document}) (w) file closefile"},
    {"RemovesAFile", "({neighbour}) deletefile"},
    {"RenamesAFile", "({neighbour}) ({new}) renamefile"},
    {"RunsACommandThatItReads", "(%pipe%echo x) (r) file 2 string readstring pop pop"},
    {"RunsACommandThatItWritesTo", "(%pipe%cat) (w) file closefile"},
};

class HostilePostScript : public testing::TestWithParam<Row>
{
protected:
    // "succeeded" or "failed"; the child is as GhostScriptCommand makes it.
    static QByteArray run(const char* postScript, bool isFenced)
    {
        const Scene scene;
        const std::string code = '{' + scene.argument(postScript) +
                                 "} stopped {(failed)} {(succeeded)} ifelse print flush quit";
        std::unique_ptr<FencedDocument> document;
        if (isFenced) {
            document = std::make_unique<FencedDocument>(
                QStringLiteral("gs"), QString::fromStdString(scene.argument("{document}")));
        }
        ChildProcess child(QProcess::SeparateChannels);
        ProcessWrapper(child).start(QStringLiteral("gs"),
                                    {QStringLiteral("-q"), QStringLiteral("-dBATCH"),
                                     QStringLiteral("-dNODISPLAY"), QStringLiteral("-dNOPAUSE"),
                                     QStringLiteral("-dNOSAFER"), QStringLiteral("-c"),
                                     QString::fromStdString(code)});
        EXPECT_TRUE(child.waitForFinished());
        return child.readAllStandardOutput();
    }
};

TEST_P(HostilePostScript, IsStoppedByNothingButTheFence)
{
    if (LandlockRuleset::kernelAbi() == 0) {
        GTEST_SKIP() << "no Landlock here";
    }
    EXPECT_EQ(run(GetParam().postScript, false), QByteArray("succeeded"));
    EXPECT_EQ(run(GetParam().postScript, true), QByteArray("failed"));
}

INSTANTIATE_TEST_SUITE_P(ChildFence, HostilePostScript, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
