// Preloaded into the program: plays a conquered decoder of PNG pictures. Tries
// ATTEMPT with ARGUMENT, both environment variables, when the first picture is
// begun, and reports "succeeded" or "failed" on standard error.

#include "Attacks.h"

#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

extern "C" void* png_create_read_struct(const char* version, void* error, void* onError,
                                        void* onWarning);

namespace {

const char* setting(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

void report(const char* text, std::size_t size)
{
    if (write(STDERR_FILENO, text, size) < 0) {
        _exit(EXIT_FAILURE);
    }
}

} // namespace

void* png_create_read_struct(const char* version, void* error, void* onError, void* onWarning)
{
    const int result = attempt(setting("ATTEMPT"), setting("ARGUMENT"));
    if (result == 0) {
        report("succeeded\n", 10);
    } else if (result > 0) {
        report("failed\n", 7);
    }
    using Function = void* (*)(const char*, void*, void*, void*);
    const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "png_create_read_struct"));
    return next(version, error, onError, onWarning);
}
