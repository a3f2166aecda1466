#pragma once

#include "process/BytesCopy.h"

#include <cstddef>
#include <functional>

class QByteArray;

/// Cuts a stream of bytes into a fixed number of destinations, each filled
/// completely before the next one is asked for, whatever the chunks are.
class BytesMultiCopy
{
public:
    using Producer = std::function<BytesCopy()>;

    /// `producer` hands out the next destination, which it keeps owning; it is
    /// called only when bytes arrive that the current destination cannot take,
    /// at most `destinations` times. A destination with null data means that
    /// there is none.
    BytesMultiCopy(std::size_t destinations, Producer producer);

    /// Takes the next bytes of the stream and returns how many of them.
    ///
    /// Less than the size of `bytes` means that the destinations are used up or
    /// that the producer had none. Throws std::bad_function_call if a
    /// destination is needed and the producer is empty.
    std::size_t copy(const QByteArray& bytes);

    /// Destinations still to be filled, the one being filled included; 0 when
    /// nothing more is accepted.
    std::size_t destinationsLeft() const { return m_destinationsLeft; }

private:
    std::size_t m_destinationsLeft;
    Producer m_producer;
    BytesCopy m_current;
};
