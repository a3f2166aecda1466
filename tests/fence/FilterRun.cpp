#include "fence/FilterRun.h"

#include <algorithm>
#include <cstring>

#include <linux/audit.h>

namespace {

constexpr std::uint32_t refused = 1;

std::uint32_t wordOf(const seccomp_data& call, std::uint32_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, reinterpret_cast<const char*>(&call) + offset, sizeof word);
    return word;
}

bool isTrue(std::uint16_t code, std::uint32_t value, std::uint32_t operand)
{
    switch (BPF_OP(code)) {
    case BPF_JEQ:
        return value == operand;
    case BPF_JGE:
        return value >= operand;
    case BPF_JSET:
        return (value & operand) != 0;
    default:
        return false;
    }
}

} // namespace

#if defined(__aarch64__)
const std::uint32_t FilterRun::architecture = AUDIT_ARCH_AARCH64;
#else
const std::uint32_t FilterRun::architecture = AUDIT_ARCH_X86_64;
#endif

std::uint32_t FilterRun::resultOf(const FilterProgram::Instructions& program, long call,
                                  std::initializer_list<std::uint64_t> arguments)
{
    seccomp_data data = {};
    data.nr = static_cast<int>(call);
    data.arch = architecture;
    std::copy(arguments.begin(), arguments.end(), data.args);
    return resultOf(program, data);
}

std::uint32_t FilterRun::resultOf(const FilterProgram::Instructions& program,
                                  const seccomp_data& call)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < program.size(); ++i) {
        const sock_filter& instruction = program[i];
        switch (instruction.code) {
        case BPF_LD | BPF_W | BPF_ABS:
            value = wordOf(call, instruction.k);
            break;
        case BPF_ALU | BPF_AND | BPF_K:
            value &= instruction.k;
            break;
        case BPF_JMP | BPF_JA:
            i += instruction.k;
            break;
        case BPF_JMP | BPF_JEQ | BPF_K:
        case BPF_JMP | BPF_JGE | BPF_K:
        case BPF_JMP | BPF_JSET | BPF_K:
            i += isTrue(instruction.code, value, instruction.k) ? instruction.jt : instruction.jf;
            break;
        case BPF_RET | BPF_K:
            return instruction.k;
        default:
            return refused;
        }
    }
    return refused;
}
