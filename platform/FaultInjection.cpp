// The fault seam: one countdown per step. A test arms "the n-th call from now
// fails"; each check counts the call and, when the countdown reaches zero, the
// step fails once and the seam disarms itself for that step.

#include "platform/FaultInjection.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace vliptc::platform::fault {

namespace {

constexpr std::size_t kSteps = static_cast<std::size_t>(Step::kCount);

// Countdowns (0 = disarmed) and call counts since the last Reset. Atomics keep
// the seam safe to consult from several threads; tests arm it from one.
std::array<std::atomic<int>, kSteps> g_countdown{};
std::array<std::atomic<int>, kSteps> g_calls{};
std::atomic<bool> g_armed{false};

std::size_t Index(Step step) {
    return static_cast<std::size_t>(step);
}

}  // namespace

void FailNth(Step step, int n) {
    if (step == Step::kCount) return;
    g_countdown[Index(step)].store(n > 0 ? n : 0, std::memory_order_relaxed);
    if (n > 0) g_armed.store(true, std::memory_order_relaxed);
}

void Reset() {
    for (std::size_t i = 0; i < kSteps; ++i) {
        g_countdown[i].store(0, std::memory_order_relaxed);
        g_calls[i].store(0, std::memory_order_relaxed);
    }
    g_armed.store(false, std::memory_order_relaxed);
}

int Calls(Step step) {
    if (step == Step::kCount) return 0;
    return g_calls[Index(step)].load(std::memory_order_relaxed);
}

void StartCounting() {
    g_armed.store(true, std::memory_order_relaxed);
}

bool ShouldFail(Step step) {
    // Production never arms the seam: one relaxed load and out.
    if (!g_armed.load(std::memory_order_relaxed) || step == Step::kCount) return false;
    const std::size_t i = Index(step);
    g_calls[i].fetch_add(1, std::memory_order_relaxed);
    int left = g_countdown[i].load(std::memory_order_relaxed);
    while (left > 0) {
        if (g_countdown[i].compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
            return left == 1;
        }
    }
    return false;
}

}  // namespace vliptc::platform::fault
