#include "support/WaitUntil.h"

#include <chrono>
#include <thread>

testing::AssertionResult waitUntil(const std::function<bool()>& condition)
{
    constexpr std::chrono::milliseconds pause(2);
    constexpr std::chrono::seconds limit(60);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return testing::AssertionFailure() << "it does not happen";
        }
        std::this_thread::sleep_for(pause);
    }
    return testing::AssertionSuccess();
}
