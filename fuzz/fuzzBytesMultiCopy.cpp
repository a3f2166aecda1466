// The cutting of a stream into destinations, against a plain model of it.

#include "Require.h"

#include "process/BytesMultiCopy.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

// Exactly as large as asked for, so that a byte too many is found.
struct Destination
{
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t size;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t maximumCount = 8;
    constexpr std::size_t maximumSize = 64;
    FuzzedDataProvider input(data, size);
    const auto count = input.ConsumeIntegralInRange<std::size_t>(0, maximumCount);
    const auto available = input.ConsumeIntegralInRange<std::size_t>(0, maximumCount);

    std::vector<Destination> destinations;
    std::size_t capacity = 0;
    BytesMultiCopy multiCopy(count, [&] {
        require(destinations.size() < count, "no more destinations are asked for than there are");
        if (destinations.size() >= available) {
            return BytesCopy();
        }
        const auto destinationSize = input.ConsumeIntegralInRange<std::size_t>(0, maximumSize);
        destinations.push_back(
            {std::make_unique<unsigned char[]>(destinationSize), destinationSize});
        capacity += destinationSize;
        return BytesCopy{destinations.back().bytes.get(), destinationSize};
    });

    std::string taken;
    while (input.remaining_bytes() > 0) {
        const std::string chunk =
            input.ConsumeRandomLengthString(input.ConsumeIntegralInRange<std::size_t>(0, 200));
        const std::size_t chunkTaken =
            multiCopy.copy(QByteArray(chunk.data(), static_cast<int>(chunk.size())));
        require(chunkTaken <= chunk.size(), "no more is taken than is offered");
        taken.append(chunk, 0, chunkTaken);
        require(taken.size() <= capacity, "no more is taken than there is room for");
    }

    std::string written;
    for (const Destination& destination : destinations) {
        written.append(destination.bytes.get(), destination.bytes.get() + destination.size);
    }
    require(written.compare(0, taken.size(), taken) == 0, "the bytes are in order, without gaps");
    return 0;
}
