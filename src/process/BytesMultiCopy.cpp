#include "process/BytesMultiCopy.h"

#include <QByteArray>

#include <utility>

BytesMultiCopy::BytesMultiCopy(std::size_t destinations, Producer producer)
    : m_destinationsLeft(destinations),
      m_producer(std::move(producer))
{
}

std::size_t BytesMultiCopy::copy(const QByteArray& bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    std::size_t taken = 0;
    while (m_destinationsLeft != 0) {
        taken += m_current.copy(bytes.constData() + taken, size - taken);
        if (taken == size) {
            if (m_destinationsLeft == 1 && m_current.remaining == 0) {
                m_destinationsLeft = 0;
            }
            break;
        }
        // Bytes are left over. A destination counts as done when it is left
        // behind, so one that was never there does not count.
        if (m_current.data != nullptr && --m_destinationsLeft == 0) {
            break;
        }
        m_current = m_producer();
        if (m_current.data == nullptr) {
            break;
        }
    }
    return taken;
}
