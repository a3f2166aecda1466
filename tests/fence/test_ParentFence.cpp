#include "fence/ParentFence.h"

#include "Attacks.h"
#include "fence/Attempts.h"
#include "fence/Outcome.h"
#include "fence/Scene.h"
#include "support/FakeGhostscript.h"

#include <QDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <memory>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The second table of SECURITY.md. The output lies in a folder of its own.
const AttemptRow rows[] = {
    {"ReadingAFile", "readFile", "{secret}", succeeds, succeeds, succeeds},
    {"MakingAFile", "createFile", "{new}", succeeds, fails, fails},
    {"MakingAFolder", "makeFolder", "{new}", succeeds, fails, fails},
    {"WritingOverAnInput", "writeFile", "{neighbour}", succeeds, fails, fails},
    {"RemovingAFile", "removeFile", "{neighbour}", succeeds, fails, fails},
    {"TruncatingAFileByName", "truncateByName", "{neighbour}", succeeds, fails, fails},
    {"TruncatingAFileOpenedForReading", "truncateByReading", "{neighbour}", succeeds, fails, fails},
    {"TruncatingAFileOpenedForDeviceCalls", "truncateByDeviceAccess", "{neighbour}", succeeds,
     fails, fails},
    {"ChangingTheModeOfAFile", "changeMode", "{neighbour}", succeeds, fails, fails},
    {"LinkingAFile", "linkIntoFolder", "{secret}", succeeds, fails, fails},
    {"MakingAFileBesideTheOutput", "createFile", "{output}2", succeeds, fails, fails},
    {"WritingOverAFileBesideTheOutput", "writeFile", "{beside}", succeeds, fails, fails},
    {"RemovingAFileBesideTheOutput", "removeFile", "{beside}", succeeds, succeeds, succeeds},
    {"RunningAShell", "runShell", "", succeeds, fails, fails},
    {"RunningAProgramByTheLoader", "runByLoader", "{loader} /bin/true", succeeds, succeeds,
     succeeds},
    {"RunningAProgramFromMemory", "runFromMemory", "", succeeds, fails, fails},
    {"Forking", "forkProcess", "", succeeds, succeeds, succeeds},
    {"SpeakingTcp", "useTcp", "{port}", succeeds, fails, fails},
    {"SpeakingUdp", "useUdp", "{port}", succeeds, fails, fails},
    {"SpeakingToAUnixSocket", "useUnixSocket", "{unix}", succeeds, fails, fails},
    {"SpeakingToAnAbstractSocket", "useUnixSocket", "{abstract}", succeeds, fails, fails},
    {"SignallingAnotherProcess", "signalParent", "", succeeds, succeeds, fails},
    {"SignallingTheGroup", "signalGroup", "", succeeds, fails, fails},
    {"SignallingTheGroupByAFile", "signalGroupByFile", "", succeeds, fails, fails},
    {"SharingMemory", "shareMemory", "", differs, fails, fails},
    {"NewNamespacesByCloning", "cloneNamespace", "", differs, fails, fails},
    {"NewNamespacesByTheNewCall", "reachKernel", MORVALTIDE_CALL(__NR_clone3), differs, fails,
     fails},
    {"NewNamespaces", "reachKernel", MORVALTIDE_CALL(__NR_unshare), succeeds, fails, fails},
    {"DescriptorsOfOthers", "reachKernel", MORVALTIDE_CALL(__NR_pidfd_getfd), succeeds, fails,
     fails},
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
constexpr int newest = LandlockInterface::latestAbi;

class ConqueredParent : public testing::TestWithParam<AttemptRow>
{
protected:
    void expect(Outcome outcome, int newestAbi) const
    {
        if (outcome == Outcome::differs) {
            return;
        }
        const Scene scene;
        const Parent parent;
        std::string argument = scene.argument(GetParam().argument);
        if (argument == "{output}2") {
            argument = parent.folder().path("new");
        } else if (argument == "{beside}") {
            argument = parent.folder().path("beside");
        }
        EXPECT_EQ(parent.succeeds(GetParam().attempt, argument, newestAbi),
                  outcome == Outcome::succeeds)
            << "ABI " << newestAbi;
    }
};

TEST_P(ConqueredParent, HasThisOutcome)
{
    if (LandlockRuleset::kernelAbi() < abiOfDebian12) {
        GTEST_SKIP() << "no Landlock here";
    }
    expect(GetParam().unfenced, unfenced);
    expect(GetParam().withAbi2, abiOfDebian12);
    constexpr int abiOfScopes = 6;
    if (LandlockRuleset::kernelAbi() >= abiOfScopes) {
        expect(GetParam().withNewest, abiOfScopes);
        expect(GetParam().withNewest, newest);
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

    bool removesIn(const TemporaryFolder& folder) const
    {
        return m_parent.succeeds("removeFile", folder.write("file", ""), newest);
    }

    Parent m_parent;
    TemporaryFolder m_other;
};

TEST_F(Output, BehindALinkOpensBothFolders)
{
    const std::string link = m_other.path("link.tif");
    ASSERT_EQ(symlink(m_parent.output().c_str(), link.c_str()), 0);
    EXPECT_FALSE(removesIn(m_other));
    m_parent.setOutput(link);
    EXPECT_TRUE(removesIn(m_other));
    EXPECT_TRUE(removesIn(m_parent.folder()));
}

TEST_F(Output, ThatIsAFifoOpensNoFolder)
{
    const std::string fifo = m_parent.folder().path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    m_parent.setOutput(fifo);
    EXPECT_FALSE(removesIn(m_parent.folder()));
}

TEST_F(Output, OnADeviceOpensNoFolder)
{
    m_parent.setOutput("/dev/null");
    EXPECT_FALSE(removesIn(m_parent.folder()));
    const std::string file = "/dev/shm/morvaltide-test-" + std::to_string(getpid());
    std::ofstream(file) << "content";
    EXPECT_FALSE(m_parent.succeeds("removeFile", file, newest));
    EXPECT_EQ(unlink(file.c_str()), 0);
}

TEST_F(Output, BehindStandardOutputOpensItsOwnFolderOnly)
{
    const auto removes = [this](const std::string& file) {
        std::ofstream(file) << "content";
        const int status = Attempts::statusOf([&] {
            dup2(open(m_parent.output().c_str(), O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
            const ParentFence fence(InterpreterLocation(QStringLiteral("gs")), "/dev/stdout");
            return attempt("removeFile", file.c_str());
        });
        unlink(file.c_str());
        return status == 0;
    };
    EXPECT_TRUE(removes(m_parent.folder().path("new")));
    EXPECT_FALSE(removes("/dev/shm/morvaltide-test-" + std::to_string(getpid())));
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

TEST(ParentFence, OfAWrapperTakesNewPrivilegesAway)
{
    const Parent parent;
    const FakeGhostscript wrapper{GhostscriptAnswer()};
    EXPECT_EQ(Attempts::statusOf([&parent] {
                  const ParentFence fence(InterpreterLocation(QStringLiteral("gs")),
                                          parent.output());
                  return prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0);
              }),
              1);
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

TEST(ParentFence, LetsItsTemporaryFolderGo)
{
    const Parent parent;
    const TemporaryFolder place;
    EXPECT_EQ(Attempts::statusOf([&] {
                  qputenv("TMPDIR", QByteArray::fromStdString(place.path("")));
                  const ParentFence fence(InterpreterLocation(QStringLiteral("gs")),
                                          parent.output());
                  return QDir(place.qPath(QString())).isEmpty() ? 1 : 0;
              }),
              0);
    EXPECT_TRUE(QDir(place.qPath(QString())).isEmpty());
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
