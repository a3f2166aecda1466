#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <linux/filter.h>
#include <linux/seccomp.h>

/// A program by which the kernel decides on each system call of a process
/// (seccomp). Calls are allowed unless something else is said of them; those of
/// foreign architectures fail with ENOSYS.
class FilterProgram
{
public:
    using Instructions = std::vector<sock_filter>;

    /// Codes of instructions.
    static constexpr std::uint16_t load = BPF_LD | BPF_W | BPF_ABS;
    static constexpr std::uint16_t isEqual = BPF_JMP | BPF_JEQ | BPF_K;
    static constexpr std::uint16_t isAtLeast = BPF_JMP | BPF_JGE | BPF_K;

    FilterProgram();

    /// Has calls fail with an error number.
    void fail(const std::vector<long>& calls, int error);

    /// Has a call decided by instructions of its own, all ways through which end
    /// with a result.
    void decide(long call, const Instructions& decision);

    /// The program; empty on an architecture that it is not made for. What was
    /// said last of a call holds.
    Instructions assembled() const;

    /// The results.
    static constexpr sock_filter failure(int error)
    {
        return {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)};
    }
    static constexpr sock_filter permission() { return {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW}; }

private:
    struct Call
    {
        std::uint32_t number;
        std::size_t decision;
    };

    /// All calls from a number on, up to those of the next range.
    using Range = Call;

    std::size_t decisionFor(const Instructions& decision);
    std::vector<Range> ranges() const;

    std::vector<Instructions> m_decisions; // each once
    std::vector<Call> m_calls;
};
