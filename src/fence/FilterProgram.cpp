#include "fence/FilterProgram.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <linux/audit.h>

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t architecture = 0; // none: no filter
#endif

// The decisions that there always are.
constexpr std::size_t allowed = 0;
constexpr std::size_t foreign = 1;

constexpr std::uint16_t skip = BPF_JMP | BPF_JA;

/// Writes a program from its end to its beginning, since instructions lead
/// forward only. A place is how many instructions there are from it to the end.
class BackwardAssembler
{
public:
    std::size_t put(const sock_filter& instruction)
    {
        m_instructions.push_back(instruction);
        return m_instructions.size();
    }

    std::size_t put(const FilterProgram::Instructions& instructions)
    {
        m_instructions.insert(m_instructions.end(), instructions.rbegin(), instructions.rend());
        return m_instructions.size();
    }

    std::size_t putComparison(std::uint32_t operand, std::size_t ifAtLeast, std::size_t ifLess)
    {
        const std::size_t upper = near(ifAtLeast);
        const std::size_t lower = near(ifLess);
        return put({FilterProgram::isAtLeast, static_cast<std::uint8_t>(distanceTo(upper)),
                    static_cast<std::uint8_t>(distanceTo(lower)), operand});
    }

    // What is put next goes on there.
    void leadTo(std::size_t place)
    {
        if (distanceTo(place) > 0) {
            put({skip, 0, 0, static_cast<std::uint32_t>(distanceTo(place))});
        }
    }

    FilterProgram::Instructions program() const
    {
        return {m_instructions.rbegin(), m_instructions.rend()};
    }

private:
    std::size_t distanceTo(std::size_t place) const { return m_instructions.size() - place; }

    // A comparison reaches 255 instructions, and there may be one more in between.
    std::size_t near(std::size_t place)
    {
        constexpr std::size_t reach = 250;
        if (distanceTo(place) > reach) {
            leadTo(place);
            return m_instructions.size();
        }
        return place;
    }

    FilterProgram::Instructions m_instructions;
};

/// Finds the range of a call by halving what is left of them: the kernel tries
/// each of its calls once when the filter is put in force, so a long row of
/// comparisons would take time.
template <typename Ranges>
std::size_t putSearch(BackwardAssembler& assembler, const Ranges& ranges, std::size_t first,
                      std::size_t end, const std::vector<std::size_t>& decisions)
{
    if (end - first == 1) {
        return decisions[ranges[first].decision];
    }
    const std::size_t middle = first + (end - first) / 2;
    const std::size_t upper = putSearch(assembler, ranges, middle, end, decisions);
    const std::size_t lower = putSearch(assembler, ranges, first, middle, decisions);
    return assembler.putComparison(ranges[middle].number, upper, lower);
}

bool isSame(const FilterProgram::Instructions& one, const FilterProgram::Instructions& other)
{
    return one.size() == other.size() &&
           std::memcmp(one.data(), other.data(), one.size() * sizeof one[0]) == 0;
}

} // namespace

FilterProgram::FilterProgram() : m_decisions{{permission()}, {failure(ENOSYS)}} {}

void FilterProgram::fail(const std::vector<long>& calls, int error)
{
    const std::size_t decision = decisionFor({failure(error)});
    for (const long call : calls) {
        m_calls.push_back({static_cast<std::uint32_t>(call), decision});
    }
}

void FilterProgram::decide(long call, const Instructions& decision)
{
    m_calls.push_back({static_cast<std::uint32_t>(call), decisionFor(decision)});
}

FilterProgram::Instructions FilterProgram::assembled() const
{
    if (architecture == 0) {
        return {};
    }
    const std::vector<Range> all = ranges();
    BackwardAssembler assembler;
    // The places of those that are in use: each instruction takes the kernel time.
    std::vector<std::size_t> decisions(m_decisions.size());
    for (std::size_t i = 0; i < m_decisions.size(); ++i) {
        if (std::any_of(all.begin(), all.end(),
                        [i](const Range& range) { return range.decision == i; })) {
            decisions[i] = assembler.put(m_decisions[i]);
        }
    }
    assembler.leadTo(putSearch(assembler, all, 0, all.size(), decisions));
    assembler.put({{load, 0, 0, offsetof(seccomp_data, arch)},
                   {isEqual, 1, 0, architecture},
                   failure(ENOSYS),
                   {load, 0, 0, offsetof(seccomp_data, nr)}});
    return assembler.program();
}

std::size_t FilterProgram::decisionFor(const Instructions& decision)
{
    const auto known =
        std::find_if(m_decisions.begin(), m_decisions.end(),
                     [&decision](const Instructions& other) { return isSame(decision, other); });
    const auto index = static_cast<std::size_t>(known - m_decisions.begin());
    if (known == m_decisions.end()) {
        m_decisions.push_back(decision);
    }
    return index;
}

std::vector<FilterProgram::Range> FilterProgram::ranges() const
{
    std::vector<Call> calls = m_calls;
    std::stable_sort(calls.begin(), calls.end(),
                     [](const Call& one, const Call& other) { return one.number < other.number; });
    std::vector<Range> result = {{0, allowed}};
    for (const Call& call : calls) {
        // Of a call that was decided on before, or next to one that was.
        while (result.back().number >= call.number && call.number > 0) {
            result.pop_back();
        }
        if (result.back().decision != call.decision) {
            result.push_back(call);
        }
        result.push_back({call.number + 1, allowed});
    }
#if defined(__x86_64__)
    constexpr std::uint32_t firstX32Call = 0x40000000;
    result.push_back({firstX32Call, foreign});
#endif
    return result;
}
