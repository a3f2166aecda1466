#include "fence/ChildFence.h"

#include "fence/Attempts.h"
#include "fence/Outcome.h"
#include "fence/Scene.h"
#include "process/ChildProcess.h"
#include "process/FencedDocument.h"
#include "process/ProcessWrapper.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The first table of SECURITY.md.
const AttemptRow rows[] = {
    {"ReadingASecretFile", "readFile", "{secret}", succeeds, fails, fails},
    {"ReadingThePasswordFile", "readFile", "/etc/passwd", succeeds, fails, fails},
    {"ReadingAnotherInput", "readFile", "{neighbour}", succeeds, fails, fails},
    {"AskingForTheSizeOfAFile", "askForSize", "{secret}", succeeds, succeeds, succeeds},
    {"SpeakingOnStandardError", "speakOnStandardError", "", succeeds, succeeds, succeeds},
    {"ReadingTheDocument", "readFile", "{document}", succeeds, succeeds, succeeds},
    {"ReadingTheMemoryOfTheParent", "readMemoryOfParent", "", differs, fails, fails},
    {"ReadingThroughASymbolicLink", "readThroughLink", "{secret}", succeeds, fails, fails},
    {"ReadingThroughAHardLink", "linkIntoFolder", "{secret}", succeeds, fails, fails},
    {"ListingAFolder", "listFolder", "{folder}", succeeds, fails, fails},
    {"WatchingAFolder", "watchFolder", "{folder}", succeeds, fails, fails},
    {"MakingAFile", "createFile", "{new}", succeeds, fails, fails},
    {"MakingAFolder", "makeFolder", "{new}", succeeds, fails, fails},
    {"WritingOverAnInput", "writeFile", "{neighbour}", succeeds, fails, fails},
    {"WritingOverTheDocument", "writeFile", "{document}", succeeds, fails, fails},
    {"RemovingAFile", "removeFile", "{neighbour}", succeeds, fails, fails},
    {"TruncatingAFileByName", "truncateByName", "{neighbour}", succeeds, fails, fails},
    {"TruncatingAFileOpenedForReading", "truncateByReading", "{neighbour}", succeeds, fails, fails},
    {"TruncatingTheDocument", "truncateByReading", "{document}", succeeds, fails, fails},
    {"TruncatingAFileOpenedForDeviceCalls", "truncateByDeviceAccess", "{neighbour}", succeeds,
     fails, fails},
    {"OpeningAFileForDeviceCalls", "openForDeviceCalls", "{neighbour}", succeeds, fails, fails},
    {"ChangingTheModeOfAFile", "changeMode", "{neighbour}", succeeds, fails, fails},
    {"ChangingTheModeOfTheDocument", "changeModeOfOpenFile", "{document}", succeeds, fails, fails},
    {"SettingAnAttribute", "setAttribute", "{document}", differs, fails, fails},
    {"SettingFlagsOfTheDocument", "setFlags", "{document}", differs, fails, fails},
    {"RunningAShell", "runShell", "", succeeds, fails, fails},
    {"RunningAProgramByTheLoader", "runByLoader", "{loader} /bin/true", succeeds, fails, fails},
    {"RunningTheDocumentByTheLoader", "runByLoader", "{loader} {document}", succeeds, succeeds,
     succeeds},
    {"RunningAProgramFromMemory", "runFromMemory", "", succeeds, fails, fails},
    {"Forking", "forkProcess", "", succeeds, fails, fails},
    {"ForkingByTheNewCall", "forkByClone3", "", succeeds, fails, fails},
    {"StartingAThread", "startThread", "", succeeds, fails, fails},
    {"SpeakingTcp", "useTcp", "{port}", succeeds, fails, fails},
    {"SpeakingUdp", "useUdp", "{port}", succeeds, fails, fails},
    {"SpeakingToAUnixSocket", "useUnixSocket", "{unix}", succeeds, fails, fails},
    {"SpeakingToAnAbstractSocket", "useUnixSocket", "{abstract}", succeeds, fails, fails},
    {"MakingAPairOfSockets", "makeSocketPair", "", succeeds, fails, fails},
    {"SharingMemory", "shareMemory", "", differs, fails, fails},
    {"SharingASemaphore", "shareSemaphore", "", differs, fails, fails},
    {"SendingMessages", "sendMessages", "", differs, fails, fails},
    {"SendingMessagesByName", "reachKernel", MORVALTIDE_CALL(__NR_mq_open), differs, fails, fails},
    {"SignallingTheParent", "signalParent", "", succeeds, fails, fails},
    {"SignallingAThreadOfTheParent", "signalThreadOfParent", "", succeeds, fails, fails},
    {"SignallingTheGroup", "signalGroup", "", succeeds, fails, fails},
    {"SignallingTheParentByAFile", "signalParentByFile", "", succeeds, fails, fails},
    {"SignallingTheGroupByAFile", "signalGroupByFile", "", succeeds, fails, fails},
    {"SignallingByASocket", "callDevice", "0x8901", succeeds, fails, fails},
    {"SignallingWithAValue", "reachKernel", MORVALTIDE_CALL(__NR_rt_sigqueueinfo), differs, fails,
     fails},
    {"SignallingThroughADescriptor", "reachKernel", MORVALTIDE_CALL(__NR_pidfd_send_signal),
     succeeds, fails, fails},
    {"SignallingItself", "signalItself", "", succeeds, succeeds, succeeds},
    {"TracingTheParent", "traceParent", "", differs, fails, fails},
    {"OutlivingTheParent", "outliveParent", "", succeeds, fails, fails},
    {"OutlivingTheParentByAThread", "outliveByThread", "", succeeds, fails, fails},
    {"ChoosingTheProcessorsOfTheParent", "chooseProcessorsOfParent", "", succeeds, fails, fails},
    {"EatingAllMemory", "eatMemory", "", succeeds, fails, fails},
    {"WritingAFileOfMoreThan4GiB", "fillDisk", "", succeeds, fails, fails},
    {"WritingManyLargeFiles", "fillDiskWithManyFiles", "", succeeds, succeeds, succeeds},
    {"DumpingCore", "dumpCore", "", differs, fails, fails},
    {"RaisingItsLimits", "raiseLimits", "", succeeds, fails, fails},
    {"TypingIntoTheTerminal", "callDevice", "0x5412", succeeds, fails, fails},
    {"ChoosingALineDiscipline", "callDevice", "0x5423", succeeds, fails, fails},
    {"UsingALeakedDescriptor", "useDescriptor", "50", succeeds, fails, fails},
    {"UsingItsTemporaryFolder", "useTemporaryFolder", "", succeeds, succeeds, succeeds},
    {"CallingAsX32", "callAsX32", "", differs, fails, fails},
    {"CallingAsAForeignArchitecture", "callAsForeignArchitecture", "", differs, fails, fails},
    {"Bpf", "reachKernel", MORVALTIDE_CALL(__NR_bpf), differs, fails, fails},
    {"Perf", "reachKernel", MORVALTIDE_CALL(__NR_perf_event_open), differs, fails, fails},
    {"UserFaults", "reachKernel", MORVALTIDE_CALL(__NR_userfaultfd), differs, fails, fails},
    {"IoUring", "reachKernel", MORVALTIDE_CALL(__NR_io_uring_setup), differs, fails, fails},
    {"Keys", "reachKernel", MORVALTIDE_CALL(__NR_keyctl), differs, fails, fails},
    {"Mounting", "reachKernel", MORVALTIDE_CALL(__NR_mount), differs, fails, fails},
    {"NewNamespaces", "reachKernel", MORVALTIDE_CALL(__NR_unshare), succeeds, fails, fails},
    {"NewNamespacesByCloning", "cloneNamespace", "", differs, fails, fails},
    {"OtherNamespaces", "reachKernel", MORVALTIDE_CALL(__NR_setns), succeeds, fails, fails},
    {"MemoryOfOthers", "reachKernel", MORVALTIDE_CALL(__NR_process_vm_readv), differs, fails,
     fails},
    {"DescriptorsOfOthers", "reachKernel", MORVALTIDE_CALL(__NR_pidfd_getfd), succeeds, fails,
     fails},
    {"OpeningByHandle", "reachKernel", MORVALTIDE_CALL(__NR_open_by_handle_at), differs, fails,
     fails},
};

class Conquered : public testing::TestWithParam<AttemptRow>
{
protected:
    void expect(Outcome outcome, const Attempts::Surroundings& surroundings) const
    {
        if (outcome != Outcome::differs) {
            const Scene scene;
            const AttemptRow& row = GetParam();
            EXPECT_EQ(Attempts::succeeds(
                          {row.attempt, scene.argument(row.argument), scene.argument("{document}")},
                          surroundings),
                      outcome == Outcome::succeeds)
                << "ABI " << surroundings.newestAbi;
        }
    }

    void expectAll(bool isOrdinaryUser) const
    {
        Attempts::Surroundings surroundings;
        surroundings.isOrdinaryUser = isOrdinaryUser;
        if (LandlockRuleset::kernelAbi() == 0) {
            GTEST_SKIP() << "no Landlock here";
        }
        expect(GetParam().withNewest, surroundings);
        constexpr int abiOfDebian12 = 2;
        surroundings.newestAbi = abiOfDebian12;
        expect(GetParam().withAbi2, surroundings);
        surroundings.isFenced = false;
        expect(GetParam().unfenced, surroundings);
    }
};

TEST_P(Conquered, HasThisOutcome)
{
    expectAll(false);
}

TEST_P(Conquered, HasThisOutcomeForAnOrdinaryUser)
{
    if (!Scene::canPlayOrdinaryUser()) {
        GTEST_SKIP() << "not root, or the programs are out of reach for others";
    }
    expectAll(true);
}

INSTANTIATE_TEST_SUITE_P(ChildFence, Conquered, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

bool readsSecret(const Attempts::Surroundings& surroundings)
{
    const Scene scene;
    return Attempts::succeeds(
        {"readFile", scene.argument("{secret}"), scene.argument("{document}")}, surroundings);
}

bool readsDocument(const Attempts::Surroundings& surroundings)
{
    const Scene scene;
    return Attempts::succeeds(
        {"readFile", scene.argument("{document}"), scene.argument("{document}")}, surroundings);
}

// Without a filter, only Landlock could stop it, from ABI 3 on.
bool emptiesOpenedFile(const Attempts::Surroundings& surroundings)
{
    const Scene scene;
    return Attempts::succeeds({"truncateByReading", scene.argument("{neighbour}"), ""},
                              surroundings);
}

class EachAbi : public testing::TestWithParam<int>
{
};

TEST_P(EachAbi, KeepsFilesSafe)
{
    if (LandlockRuleset::kernelAbi() == 0) {
        GTEST_SKIP() << "no Landlock here";
    }
    Attempts::Surroundings surroundings;
    surroundings.newestAbi = GetParam();
    EXPECT_FALSE(readsSecret(surroundings));
    EXPECT_TRUE(readsDocument(surroundings));
    EXPECT_TRUE(Attempts::succeeds({"useTemporaryFolder", "", ""}, surroundings));
}

INSTANTIATE_TEST_SUITE_P(ChildFence, EachAbi, testing::Range(1, 8),
                         [](const auto& test) { return "Abi" + std::to_string(test.param); });

TEST(ChildFence, StopsTcpByItsRulesAloneFromAbi4On)
{
    constexpr int firstAbi = 4;
    if (LandlockRuleset::kernelAbi() < firstAbi) {
        GTEST_SKIP() << "no rules for TCP here";
    }
    const Scene scene;
    Attempts::Surroundings surroundings;
    surroundings.seccompError = ENOSYS;
    const Attempts::Attempt tcp = {"useTcp", scene.argument("{port}"), ""};
    for (int abi = firstAbi - 1; abi <= firstAbi; ++abi) {
        surroundings.newestAbi = abi;
        EXPECT_EQ(Attempts::succeeds(tcp, surroundings), abi < firstAbi) << abi;
    }
}

class MissingFeature : public testing::TestWithParam<int>
{
};

TEST_P(MissingFeature, LandlockLeavesTheRest)
{
    Attempts::Surroundings surroundings;
    surroundings.landlockError = GetParam();
    EXPECT_TRUE(readsSecret(surroundings));
    EXPECT_FALSE(Attempts::succeeds({"forkProcess", "", ""}, surroundings));
    EXPECT_FALSE(Attempts::succeeds({"useDescriptor", "50", ""}, surroundings));
}

TEST_P(MissingFeature, SeccompLeavesTheRest)
{
    if (LandlockRuleset::kernelAbi() == 0) {
        GTEST_SKIP() << "no Landlock here";
    }
    Attempts::Surroundings surroundings;
    surroundings.seccompError = GetParam();
    EXPECT_FALSE(emptiesOpenedFile(surroundings));
    EXPECT_TRUE(Attempts::succeeds({"forkProcess", "", ""}, surroundings));
    EXPECT_FALSE(readsSecret(surroundings));
    EXPECT_FALSE(Attempts::succeeds({"useDescriptor", "50", ""}, surroundings));
}

INSTANTIATE_TEST_SUITE_P(ChildFence, MissingFeature, testing::Values(ENOSYS, EPERM),
                         [](const auto& test) { return "Error" + std::to_string(test.param); });

TEST(ChildFence, IsLeftOutWhereItWouldBeDeadly)
{
    Attempts::Surroundings surroundings;
    surroundings.landlockError = Attempts::killed;
    EXPECT_TRUE(readsSecret(surroundings));
    surroundings.landlockError = 0;
    surroundings.seccompError = Attempts::killed;
    EXPECT_TRUE(readsSecret(surroundings));
    EXPECT_FALSE(Attempts::succeeds({"fillDisk", "", ""}, surroundings));
}

class ThreadOption : public testing::TestWithParam<const char*>
{
};

TEST_P(ThreadOption, LetsTheChildStartThreads)
{
    qputenv("GS_OPTIONS", GetParam());
    EXPECT_TRUE(Attempts::succeeds({"startThread", "", ""}, {}));
    EXPECT_FALSE(Attempts::succeeds({"forkProcess", "", ""}, {}));
    EXPECT_FALSE(Attempts::succeeds({"cloneNamespace", "", ""}, {}));
    qunsetenv("GS_OPTIONS");
}

INSTANTIATE_TEST_SUITE_P(ChildFence, ThreadOption,
                         testing::Values("-dNumRenderingThreads=2", "-dBGPrint=true", "@file"));

TEST(ChildFence, RemovesWhatWasLeftInTheTemporaryFolder)
{
    const TemporaryFolder folder;
    qputenv("TMPDIR", QFile::encodeName(folder.qPath(QString())));
    EXPECT_TRUE(Attempts::succeeds({"leaveTemporaryFile", "", ""}, {}));
    qunsetenv("TMPDIR");
    EXPECT_EQ(folder.entries(), QStringList());
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName.toStdString();
    return file.readAll();
}

// What the kernel says about the real interpreter behind the real fence.
class RealChild : public testing::Test
{
protected:
    RealChild()
    {
        const FencedDocument document(QStringLiteral("gs"), m_folder.qPath(QStringLiteral("a")));
        m_folder.write("a", "");
        m_child = std::make_unique<ChildProcess>(QProcess::SeparateChannels);
    }

    // Ends with the test; it waits for commands on standard input.
    void start()
    {
        ProcessWrapper(*m_child).start(QStringLiteral("gs"),
                                       {QStringLiteral("-q"), QStringLiteral("-dNODISPLAY"),
                                        QStringLiteral("-c"), QStringLiteral("(x) print flush"),
                                        QStringLiteral("-")});
        EXPECT_TRUE(m_child->waitForReadyRead());
    }

    QByteArray system(const char* name) const
    {
        return contentOf(QStringLiteral("/proc/%1/").arg(m_child->processId()) +
                         QLatin1String(name));
    }

    TemporaryFolder m_folder;
    std::unique_ptr<ChildProcess> m_child;
};

TEST_F(RealChild, HasTheWholeFence)
{
    start();
    const QByteArray status = system("status");
    EXPECT_TRUE(status.contains("NoNewPrivs:\t1\n")) << status.toStdString();
    EXPECT_TRUE(status.contains("Seccomp:\t2\n")) << status.toStdString();
}

TEST_F(RealChild, HasOneFilter)
{
    const auto filterCount = [](const QByteArray& status) {
        const QByteArray name = "Seccomp_filters:";
        const auto start = status.indexOf(name);
        return start < 0 ? -1 : status.mid(start + name.size()).simplified().split(' ')[0].toInt();
    };
    const int own = filterCount(contentOf(QStringLiteral("/proc/self/status")));
    if (own < 0) {
        GTEST_SKIP() << "Linux before 5.10 does not count them";
    }
    start();
    EXPECT_EQ(filterCount(system("status")), own + 1);
}

TEST_F(RealChild, HasTheStandardStreamsAndNoOtherDescriptor)
{
    constexpr int leaked = 50;
    ASSERT_EQ(dup2(STDERR_FILENO, leaked), leaked);
    start();
    close(leaked);
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(m_child->processId()));
    EXPECT_EQ(
        descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name),
        QStringList({QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")}));
}

TEST_F(RealChild, HasItsLimits)
{
    start();
    const QList<QByteArray> lines = system("limits").split('\n');
    const auto hard = [&lines](const char* name) {
        for (const QByteArray& line : lines) {
            if (line.startsWith(name)) {
                return line.mid(static_cast<int>(qstrlen(name))).simplified().split(' ').value(1);
            }
        }
        return QByteArray();
    };
    EXPECT_EQ(hard("Max core file size"), QByteArray("0"));
    EXPECT_EQ(hard("Max cpu time"), QByteArray("3605"));
    EXPECT_EQ(hard("Max address space").toULongLong(), ProcessLimits::addressSpaceBytes());
    EXPECT_GE(hard("Max file size").toULongLong(), 4294967296U);
}

// A script may start programs and read files, but gets no more privileges.
TEST(Wrapper, RunsWithoutTheRulesForFilesAndPrograms)
{
    const TemporaryFolder folder;
    const std::string secret = folder.write("secret", "content");
    const GhostscriptAnswer reading =
        GhostscriptAnswer::command({QStringLiteral("cat"), QString::fromStdString(secret)});
    const FakeGhostscript script(
        reading.through({QStringLiteral("cat")}) +
        GhostscriptAnswer::command({QStringLiteral("grep"), QStringLiteral("-E"),
                                    QStringLiteral("NoNewPrivs|Seccomp:"),
                                    QStringLiteral("/proc/self/status")}));
    const FencedDocument document(QStringLiteral("gs"), QString());
    ChildProcess child(QProcess::SeparateChannels);
    ProcessWrapper(child).start(QStringLiteral("gs"), QStringList());
    ASSERT_TRUE(child.waitForFinished());
    EXPECT_EQ(child.readAllStandardOutput(), QByteArray("contentNoNewPrivs:\t1\nSeccomp:\t2\n"));
}

} // namespace
