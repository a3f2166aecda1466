#include "fence/ParentFence.h"

#include "Attacks.h"
#include "fence/Attempts.h"
#include "fence/Scene.h"
#include "support/FakeGhostscript.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <ostream>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Row
{
    const char* name;
    const char* attempt;
    const char* argument;
    bool succeedsUnfenced;
    bool succeedsWithAbi2;
    bool succeedsWithNewest;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

// The second table of SECURITY.md. The output lies in a folder of its own.
const Row rows[] = {
    {"ReadingAFile", "readFile", "{secret}", true, true, true},
    {"MakingAFile", "createFile", "{new}", true, false, false},
    {"MakingAFolder", "makeFolder", "{new}", true, false, false},
    {"WritingOverAnInput", "writeFile", "{neighbour}", true, false, false},
    {"RemovingAFile", "removeFile", "{neighbour}", true, false, false},
    {"TruncatingAFileByName", "truncateByName", "{neighbour}", true, false, false},
    {"TruncatingAFileOpenedForReading", "truncateByReading", "{neighbour}", true, false, false},
    {"ChangingTheModeOfAFile", "changeMode", "{neighbour}", true, false, false},
    {"LinkingAFile", "linkIntoFolder", "{secret}", true, false, false},
    {"MakingAFileBesideTheOutput", "createFile", "{output}2", true, true, true},
    {"WritingOverAFileBesideTheOutput", "writeFile", "{beside}", true, true, true},
    {"RunningAShell", "runShell", "", true, false, false},
    {"RunningAProgramByTheLoader", "runByLoader", "{loader} /bin/true", true, true, true},
    {"RunningAProgramFromMemory", "runFromMemory", "", true, false, false},
    {"Forking", "forkProcess", "", true, true, true},
    {"SpeakingTcp", "useTcp", "{port}", true, false, false},
    {"SpeakingUdp", "useUdp", "{port}", true, false, false},
    {"SpeakingToAUnixSocket", "useUnixSocket", "{unix}", true, false, false},
    {"SpeakingToAnAbstractSocket", "useUnixSocket", "{abstract}", true, false, false},
    {"SignallingAnotherProcess", "signalParent", "", true, true, false},
    {"SignallingTheGroup", "signalGroup", "", true, false, false},
    {"NewNamespaces", "reachKernel", MORVALTIDE_CALL(__NR_unshare), true, false, false},
    {"DescriptorsOfOthers", "reachKernel", MORVALTIDE_CALL(__NR_pidfd_getfd), true, false, false},
};

// An output in a folder of its own.
class Parent
{
public:
    Parent() : m_output(m_folder.write("out.tif", "")) { m_folder.write("beside", "content"); }

    const std::string& output() const { return m_output; }
    const TemporaryFolder& folder() const { return m_folder; }

    // An attempt of this process inside the fence, or outside with an ABI below 0.
    bool succeeds(const char* name, const std::string& argument, int newestAbi,
                  const Attempts::Surroundings& surroundings = {}) const
    {
        return Attempts::statusOf([&] {
                   Attempts::prepare(surroundings);
                   // Another program in place of this one removes nothing.
                   qputenv("TMPDIR", QByteArray::fromStdString(m_place.path("")));
                   std::unique_ptr<ParentFence> fence;
                   if (newestAbi >= 0) {
                       fence = std::make_unique<ParentFence>(
                           InterpreterLocation(QStringLiteral("gs")), m_output, newestAbi);
                   }
                   const int result = attempt(name, argument.c_str());
                   EXPECT_GE(result, 0) << name;
                   return result == 0 ? 0 : 1;
               }) == 0;
    }

    void setOutput(const std::string& output) { m_output = output; }

private:
    TemporaryFolder m_folder;
    TemporaryFolder m_place; // of temporary files
    std::string m_output;
};

constexpr int unfenced = -1;
constexpr int abiOfDebian12 = 2;
constexpr int newest = LandlockInterface::newestAbi;

class ConqueredParent : public testing::TestWithParam<Row>
{
protected:
    bool succeeds(int newestAbi) const
    {
        const Scene scene;
        const Parent parent;
        std::string argument = scene.argument(GetParam().argument);
        if (argument == "{output}2") {
            argument = parent.folder().path("new");
        } else if (argument == "{beside}") {
            argument = parent.folder().path("beside");
        }
        return parent.succeeds(GetParam().attempt, argument, newestAbi);
    }
};

TEST_P(ConqueredParent, HasThisOutcome)
{
    if (LandlockRuleset::kernelAbi() < abiOfDebian12) {
        GTEST_SKIP() << "no Landlock here";
    }
    EXPECT_EQ(succeeds(unfenced), GetParam().succeedsUnfenced);
    EXPECT_EQ(succeeds(abiOfDebian12), GetParam().succeedsWithAbi2);
    constexpr int abiOfScopes = 6;
    if (LandlockRuleset::kernelAbi() >= abiOfScopes) {
        EXPECT_EQ(succeeds(newest), GetParam().succeedsWithNewest);
    }
}

INSTANTIATE_TEST_SUITE_P(ParentFence, ConqueredParent, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

class Output : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LandlockRuleset::kernelAbi() == 0) {
            GTEST_SKIP() << "no Landlock here";
        }
    }

    bool createsIn(const TemporaryFolder& folder) const
    {
        return m_parent.succeeds("createFile", folder.path("new"), newest);
    }

    Parent m_parent;
    TemporaryFolder m_other;
};

TEST_F(Output, BehindALinkOpensBothFolders)
{
    const std::string link = m_other.path("link.tif");
    ASSERT_EQ(symlink(m_parent.output().c_str(), link.c_str()), 0);
    EXPECT_FALSE(createsIn(m_other));
    m_parent.setOutput(link);
    EXPECT_TRUE(createsIn(m_other));
    EXPECT_TRUE(createsIn(m_parent.folder()));
}

TEST_F(Output, ThatIsAFifoOpensNoFolder)
{
    const std::string fifo = m_parent.folder().path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    m_parent.setOutput(fifo);
    EXPECT_FALSE(createsIn(m_parent.folder()));
}

TEST_F(Output, OnADeviceOpensNoFolder)
{
    m_parent.setOutput("/dev/null");
    EXPECT_FALSE(createsIn(m_parent.folder()));
    EXPECT_FALSE(m_parent.succeeds("createFile", "/dev/shm/morvaltide-test", newest));
}

TEST(ParentFence, OfAWrapperLeavesFilesProgramsAndSocketsAlone)
{
    const Scene scene;
    const Parent parent;
    const FakeGhostscript wrapper{GhostscriptAnswer()};
    EXPECT_TRUE(parent.succeeds("createFile", scene.argument("{new}"), newest));
    EXPECT_TRUE(parent.succeeds("runShell", "", newest));
    EXPECT_TRUE(parent.succeeds("useTcp", scene.argument("{port}"), newest));
    EXPECT_FALSE(parent.succeeds("reachKernel", MORVALTIDE_CALL(__NR_bpf), newest));
}

TEST(ParentFence, IsLeftOutWhereItWouldBeDeadly)
{
    const Scene scene;
    const Parent parent;
    Attempts::Surroundings surroundings;
    surroundings.landlockError = Attempts::killed;
    EXPECT_TRUE(parent.succeeds("createFile", scene.argument("{new}"), newest, surroundings));
    surroundings.landlockError = 0;
    surroundings.seccompError = Attempts::killed;
    EXPECT_TRUE(parent.succeeds("useTcp", scene.argument("{port}"), newest, surroundings));
}

class MissingForParent : public testing::TestWithParam<int>
{
};

TEST_P(MissingForParent, LeavesTheRest)
{
    const Scene scene;
    const Parent parent;
    Attempts::Surroundings surroundings;
    surroundings.landlockError = GetParam();
    EXPECT_TRUE(parent.succeeds("createFile", scene.argument("{new}"), newest, surroundings));
    EXPECT_FALSE(parent.succeeds("useTcp", scene.argument("{port}"), newest, surroundings));
}

INSTANTIATE_TEST_SUITE_P(ParentFence, MissingForParent, testing::Values(ENOSYS, EPERM),
                         [](const auto& test) { return "Error" + std::to_string(test.param); });

} // namespace
