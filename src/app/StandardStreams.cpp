#include "app/StandardStreams.h"

#include <iostream>

#include <fcntl.h>
#include <unistd.h>

void StandardStreams::ensureOpen()
{
    // open() gives the lowest free number, so this ends with the first one
    // above the three.
    int descriptor = -1;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO) {
        close(descriptor);
    }
}

bool StandardStreams::flushOutput()
{
    return std::cout.flush().good();
}
