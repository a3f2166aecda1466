#include "process/BytesCopy.h"

#include <algorithm>
#include <cstring>

std::size_t BytesCopy::copy(const char* bytes, std::size_t size)
{
    const std::size_t taken = std::min(size, remaining);
    if (taken != 0) {
        std::memcpy(data, bytes, taken);
        data += taken;
        remaining -= taken;
    }
    return taken;
}
