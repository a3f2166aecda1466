// A class 1 modem (ITU-T T.31) on a pseudo-terminal, with a fax machine at the
// other end of its line, both played by spandsp:
//
//   faxModem SPEED RECEIVED
//
// Prints the name of the terminal, then a line for each call that ends, with
// the result, the number of pages and the coding. The pages of call N are stored in
// RECEIVED-N.tif. One second of the line takes 1/SPEED seconds. Whatever number
// is dialled, the machine answers; there is no other line. Runs until killed.

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include <array>
#include <ctime>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

// These belong in front of the library's own header, which uses them.
#include <cinttypes>
#include <tiffio.h>

#include <spandsp.h>

namespace {

constexpr int samplesPerStep = 160; // 20 ms
constexpr long stepNanoseconds = 20'000'000;
constexpr long nanosecondsPerSecond = 1'000'000'000;

using Samples = std::array<std::int16_t, samplesPerStep>;

// Both sides of a pseudo-terminal. The one of the fax server is kept open, so
// that nothing breaks while the server has closed it.
class Terminal
{
public:
    Terminal()
    {
        if (m_modemSide == -1 || grantpt(m_modemSide) != 0 || unlockpt(m_modemSide) != 0) {
            throw std::runtime_error("no pseudo-terminal");
        }
        m_name = ptsname(m_modemSide);
        m_serverSide = ::open(m_name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings = {};
        tcgetattr(m_serverSide, &settings);
        cfmakeraw(&settings);
        tcsetattr(m_serverSide, TCSANOW, &settings);
    }

    ~Terminal()
    {
        ::close(m_serverSide);
        ::close(m_modemSide);
    }

    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    const std::string& name() const { return m_name; }

    void write(const std::uint8_t* bytes, std::size_t size) const
    {
        // What nobody reads is lost, as on a wire.
        static_cast<void>(::write(m_modemSide, bytes, size) == -1);
    }

    // The number of bytes that are there already.
    int read(std::array<char, 128>& bytes) const
    {
        const ssize_t size = ::read(m_modemSide, bytes.data(), bytes.size());
        return size < 0 ? 0 : static_cast<int>(size);
    }

private:
    int m_modemSide = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    int m_serverSide = -1;
    std::string m_name;
};

// The machine that is called.
class Receiver
{
public:
    explicit Receiver(const std::string& fileName) : m_fax(fax_init(nullptr, FALSE))
    {
        fax_set_transmit_on_idle(m_fax.get(), TRUE);
        t30_state_t* t30 = fax_get_t30_state(m_fax.get());
        t30_set_supported_modems(t30, T30_SUPPORT_V27TER | T30_SUPPORT_V29 | T30_SUPPORT_V17);
        t30_set_supported_compressions(t30, T30_SUPPORT_T4_1D_COMPRESSION |
                                                T30_SUPPORT_T4_2D_COMPRESSION |
                                                T30_SUPPORT_T6_COMPRESSION);
        t30_set_ecm_capability(t30, TRUE);
        t30_set_supported_image_sizes(
            t30, T30_SUPPORT_215MM_WIDTH | T30_SUPPORT_A4_LENGTH | T30_SUPPORT_US_LETTER_LENGTH |
                     T30_SUPPORT_US_LEGAL_LENGTH | T30_SUPPORT_UNLIMITED_LENGTH);
        t30_set_supported_resolutions(
            t30, T30_SUPPORT_STANDARD_RESOLUTION | T30_SUPPORT_FINE_RESOLUTION |
                     T30_SUPPORT_SUPERFINE_RESOLUTION | T30_SUPPORT_R8_RESOLUTION |
                     T30_SUPPORT_R16_RESOLUTION);
        t30_set_phase_e_handler(t30, finish, this);
        t30_set_rx_file(t30, fileName.c_str(), -1);
        t30_set_rx_encoding(t30, T4_COMPRESSION_ITU_T6);
    }

    // Hears 20 ms of the line and says what it has to say.
    Samples exchange(Samples heard) const
    {
        Samples said = {};
        fax_rx(m_fax.get(), heard.data(), samplesPerStep);
        fax_tx(m_fax.get(), said.data(), samplesPerStep);
        return said;
    }

    // The line goes dead.
    void hangUp() const
    {
        if (!m_isFinished) {
            t30_terminate(fax_get_t30_state(m_fax.get()));
        }
    }

private:
    struct Release
    {
        void operator()(fax_state_t* fax) const { fax_free(fax); }
    };

    static void finish(t30_state_t* t30, void* receiver, int code)
    {
        static_cast<Receiver*>(receiver)->m_isFinished = true;
        t30_stats_t statistics = {};
        t30_get_transfer_statistics(t30, &statistics);
        std::cout << t30_completion_code_to_str(code) << ", " << statistics.pages_rx << " pages, "
                  << t4_encoding_to_str(statistics.encoding) << std::endl;
    }

    std::unique_ptr<fax_state_t, Release> m_fax;
    bool m_isFinished = false;
};

class Modem
{
public:
    explicit Modem(std::string received)
        : m_received(std::move(received)),
          m_t31(t31_init(nullptr, say, this, control, this, sendNoPacket, nullptr))
    {
        t31_set_transmit_on_idle(m_t31.get(), TRUE);
    }

    const std::string& terminalName() const { return m_terminal.name(); }

    // 20 ms of the modem's life.
    void advance()
    {
        std::array<char, 128> bytes = {};
        int size = 0;
        while (m_isReadyForData && (size = m_terminal.read(bytes)) > 0) {
            t31_at_rx(m_t31.get(), bytes.data(), size);
        }
        if (m_isDialling) {
            m_isDialling = false;
            m_isHangingUp = false;
            m_receiver = std::make_unique<Receiver>(m_received + '-' +
                                                    std::to_string(++m_callNumber) + ".tif");
            t31_call_event(m_t31.get(), AT_CALL_EVENT_CONNECTED);
        }
        Samples line = {};
        if (m_receiver) {
            t31_tx(m_t31.get(), line.data(), samplesPerStep);
            line = m_receiver->exchange(line);
        }
        t31_rx(m_t31.get(), line.data(), samplesPerStep);
        if (m_isHangingUp && m_receiver) {
            m_receiver->hangUp();
            m_receiver.reset();
        }
    }

private:
    struct Release
    {
        void operator()(t31_state_t* t31) const { t31_free(t31); }
    };

    static int say(at_state_t* /*at*/, void* modem, const std::uint8_t* bytes, std::size_t size)
    {
        static_cast<Modem*>(modem)->m_terminal.write(bytes, size);
        return 0;
    }

    // Only noted here: the library must not be called back from within.
    static int control(t31_state_t* /*t31*/, void* modem, int operation, const char* value)
    {
        auto* self = static_cast<Modem*>(modem);
        if (operation == AT_MODEM_CONTROL_CALL) {
            self->m_isDialling = true;
        } else if (operation == AT_MODEM_CONTROL_CTS) {
            // Hardware flow control, which a pseudo-terminal lacks.
            self->m_isReadyForData = value != nullptr;
        } else if (operation == AT_MODEM_CONTROL_HANGUP || operation == AT_MODEM_CONTROL_ONHOOK) {
            self->m_isHangingUp = true;
        }
        return 0;
    }

    static int sendNoPacket(t38_core_state_t* /*core*/, void* /*modem*/,
                            const std::uint8_t* /*bytes*/, int /*size*/, int /*repetitions*/)
    {
        return 0;
    }

    std::string m_received;
    Terminal m_terminal;
    std::unique_ptr<t31_state_t, Release> m_t31;
    std::unique_ptr<Receiver> m_receiver; // null between calls
    int m_callNumber = 0;
    bool m_isDialling = false;
    bool m_isHangingUp = false;
    bool m_isReadyForData = true;
};

} // namespace

int main(int argumentCount, char* arguments[])
{
    if (argumentCount != 3) {
        std::cerr << "usage: faxModem SPEED RECEIVED\n";
        return 2;
    }
    const int speed = std::atoi(arguments[1]);
    if (speed < 1) {
        std::cerr << "faxModem: the speed is a whole number from 1\n";
        return 2;
    }
    Modem modem(arguments[2]);
    std::cout << modem.terminalName() << std::endl;
    timespec next = {};
    clock_gettime(CLOCK_MONOTONIC, &next);
    while (true) {
        modem.advance();
        next.tv_nsec += stepNanoseconds / speed;
        if (next.tv_nsec >= nanosecondsPerSecond) {
            next.tv_nsec -= nanosecondsPerSecond;
            ++next.tv_sec;
        }
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, nullptr);
    }
}
