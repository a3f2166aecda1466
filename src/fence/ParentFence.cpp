#include "fence/ParentFence.h"

#include "fence/FencePermission.h"
#include "fence/FileAccessRules.h"
#include "fence/FontFolders.h"
#include "fence/InterpreterLocation.h"
#include "fence/SystemCallFilter.h"

#include <filesystem>
#include <vector>

#include <sys/prctl.h>

namespace {

constexpr std::uint64_t readingAnything =
    LandlockInterface::readFile | LandlockInterface::readFolder;

bool startsWith(const std::string& path, const std::string& start)
{
    return path.compare(0, start.size(), start) == 0;
}

// The folder of the output and, where the name is a link, of the file behind
// it. None for devices, and for the system's own links to what a process has
// open, such as /dev/stdout: nothing is ever removed there.
std::vector<std::string> outputFolders(const std::string& outputFile)
{
    namespace fs = std::filesystem;
    std::error_code error;
    std::vector<std::string> folders;
    if (!fs::is_regular_file(outputFile, error)) {
        return folders;
    }
    for (const fs::path& file :
         {fs::absolute(outputFile, error), fs::canonical(outputFile, error)}) {
        const std::string folder = fs::canonical(file.parent_path(), error).string() + '/';
        const bool isNew = folders.empty() || folders.front() != folder;
        if (!error && isNew && !startsWith(folder, "/dev/") && !startsWith(folder, "/proc/")) {
            folders.push_back(folder);
        }
    }
    return folders;
}

} // namespace

ParentFence::ParentFence(const InterpreterLocation& interpreter, const std::string& outputFile,
                         int newestAbi)
{
    if (!FencePermission::isGranted()) {
        return;
    }
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (interpreter.isWrapper()) {
        SystemCallFilter::forWrapper().install();
        return;
    }
    m_temporaryFolder = PrivateFolder::shared();
    rulesFor(interpreter, outputFile, newestAbi).restrictSelf();
    SystemCallFilter::forConverter().install();
}

LandlockRuleset ParentFence::rulesFor(const InterpreterLocation& interpreter,
                                      const std::string& outputFile, int newestAbi) const
{
    FileAccessRules rules(readingAnything);
    rules.allowExecuting(interpreter.path());
    rules.allowExecuting(interpreter.loader());
    for (const std::string& folder : outputFolders(outputFile)) {
        rules.allowRemovingFiles(folder);
    }
    rules.allowChangingFolders(FontFolders::userCache());
    rules.allowChangingFolders("/var/cache/fontconfig");
    rules.allowChangingFiles("/dev/null");
    const std::string& temporaryFolder = m_temporaryFolder->path();
    rules.allowChangingFiles(temporaryFolder);
    rules.allowRemovingFolders(std::filesystem::path(temporaryFolder).parent_path().string());
    return LandlockRuleset(rules, newestAbi);
}
