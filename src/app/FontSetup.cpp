#include "app/FontSetup.h"

#include <QFile>

#include <cstdio>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr char noPlaceForCaches[] = "Fontconfig error: No writable cache directories\n";

// Of the library that Qt's platform has loaded. Any question to Qt would take longer,
// and some are answered without it.
void setUp()
{
    void* const fontconfig = dlopen("libfontconfig.so.1", RTLD_LAZY | RTLD_NOLOAD);
    if (fontconfig != nullptr) {
        using Initialise = int (*)();
        const auto initialise = reinterpret_cast<Initialise>(dlsym(fontconfig, "FcInit"));
        if (initialise != nullptr) {
            initialise();
        }
        dlclose(fontconfig);
    }
}

// Passes on what is in the file.
void repeatRemarks(int remarks)
{
    QFile file;
    lseek(remarks, 0, SEEK_SET);
    file.open(remarks, QIODevice::ReadOnly);
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (line != noPlaceForCaches) {
            fputs(line.constData(), stderr);
        }
    }
}

} // namespace

void FontSetup::complete()
{
    const int remarks = memfd_create("remarks", MFD_CLOEXEC);
    const int standardError = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (remarks == -1 || standardError == -1) {
        setUp();
    } else {
        dup2(remarks, STDERR_FILENO);
        setUp();
        dup2(standardError, STDERR_FILENO);
        repeatRemarks(remarks);
    }
    close(remarks);
    close(standardError);
}
