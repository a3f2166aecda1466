#include "interop/FaxCall.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

// These belong in front of the library's own header, which uses them.
#include <cinttypes>
#include <cstdlib>
#include <tiffio.h>

#include <spandsp.h>

namespace {

// One end of the call.
class Machine
{
public:
    Machine(bool isCalling, FaxCompression compression)
        : m_terminal(t38_terminal_init(nullptr, isCalling ? TRUE : FALSE, takePacket, this))
    {
        const bool isGroup4 = compression == FaxCompression::G4;
        t30_set_supported_modems(t30(), T30_SUPPORT_V27TER | T30_SUPPORT_V29 | T30_SUPPORT_V17);
        t30_set_supported_compressions(t30(), isGroup4 ? T30_SUPPORT_T6_COMPRESSION
                                                       : T30_SUPPORT_T4_1D_COMPRESSION);
        t30_set_ecm_capability(t30(), isGroup4 ? TRUE : FALSE);
        t30_set_supported_image_sizes(
            t30(), T30_SUPPORT_215MM_WIDTH | T30_SUPPORT_A4_LENGTH | T30_SUPPORT_US_LETTER_LENGTH |
                       T30_SUPPORT_US_LEGAL_LENGTH | T30_SUPPORT_UNLIMITED_LENGTH);
        t30_set_supported_resolutions(
            t30(), T30_SUPPORT_STANDARD_RESOLUTION | T30_SUPPORT_FINE_RESOLUTION |
                       T30_SUPPORT_SUPERFINE_RESOLUTION | T30_SUPPORT_R8_RESOLUTION |
                       T30_SUPPORT_R16_RESOLUTION);
        t30_set_phase_e_handler(t30(), finish, this);
    }

    t30_state_t* t30() const { return t38_terminal_get_t30_state(m_terminal.get()); }

    void advance(int samples) { t38_terminal_send_timeout(m_terminal.get(), samples); }

    // Hands everything said since the last time over to the other end.
    void sendTo(const Machine& other)
    {
        t38_core_state_t* receiver = t38_terminal_get_t38_core_state(other.m_terminal.get());
        for (; !m_packets.empty(); m_packets.pop_front()) {
            const std::vector<std::uint8_t>& packet = m_packets.front();
            t38_core_rx_ifp_packet(receiver, packet.data(), static_cast<int>(packet.size()),
                                   m_sequenceNumber++);
        }
    }

    bool isFinished() const { return m_isFinished; }
    const std::string& completion() const { return m_completion; }

private:
    struct Release
    {
        void operator()(t38_terminal_state_t* terminal) const { t38_terminal_free(terminal); }
    };

    static int takePacket(t38_core_state_t* /*core*/, void* machine, const std::uint8_t* bytes,
                          int size, int /*repetitions*/)
    {
        static_cast<Machine*>(machine)->m_packets.emplace_back(bytes, bytes + size);
        return 0;
    }

    static void finish(t30_state_t* /*state*/, void* machine, int code)
    {
        auto* self = static_cast<Machine*>(machine);
        self->m_isFinished = true;
        self->m_completion = t30_completion_code_to_str(code);
    }

    std::unique_ptr<t38_terminal_state_t, Release> m_terminal;
    std::deque<std::vector<std::uint8_t>> m_packets;
    std::uint16_t m_sequenceNumber = 0;
    bool m_isFinished = false;
    std::string m_completion = "did not finish";
};

} // namespace

FaxCall::Result FaxCall::run(const std::string& sentFile, const std::string& receivedFile,
                             FaxCompression compression)
{
    Machine sender(true, compression);
    Machine receiver(false, compression);
    t30_set_tx_file(sender.t30(), sentFile.c_str(), -1, -1);
    t30_set_rx_file(receiver.t30(), receivedFile.c_str(), -1);
    t30_set_rx_encoding(receiver.t30(), T4_COMPRESSION_ITU_T6);

    constexpr int samplesPerStep = 160; // 20 ms
    constexpr int stepsPerHour = 50 * 3600;
    for (int step = 0; step < stepsPerHour && !(sender.isFinished() && receiver.isFinished());
         ++step) {
        sender.advance(samplesPerStep);
        sender.sendTo(receiver);
        receiver.advance(samplesPerStep);
        receiver.sendTo(sender);
    }
    t30_stats_t statistics = {};
    t30_get_transfer_statistics(receiver.t30(), &statistics);
    return {sender.completion(), receiver.completion(), statistics.pages_rx};
}
