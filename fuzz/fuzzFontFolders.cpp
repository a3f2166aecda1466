// A file of fontconfig, which may come from anybody who may write into the home
// folder.

#include "Require.h"

#include "fence/FontFolders.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    // A home folder that nobody has: what the file includes stays small.
    setenv("HOME", "/nonexistent", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int descriptor = memfd_create("fonts.conf", 0);
    static const std::string fileName = "/proc/self/fd/" + std::to_string(descriptor);
    setenv("FONTCONFIG_FILE", fileName.c_str(), 1);
    require(ftruncate(descriptor, 0) == 0 &&
                pwrite(descriptor, data, size, 0) == static_cast<ssize_t>(size),
            "the file can be written");

    const std::vector<std::string> folders = FontFolders::readable();
    const auto isOne = [&folders](const std::string& path) {
        return std::find(folders.begin(), folders.end(), path) != folders.end();
    };
    require(isOne(fileName), "the file itself can be read");
    require(isOne(FontFolders::userCache()), "the cache can be read");
    require(!isOne(""), "no folder is without a name");
    return 0;
}
