// What tests open of the seam, on both sides.
#include "platform/Lock.h"
#include "platform/faults.h"
#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <optional>

namespace pixkit::platform {

namespace {

struct Plan {
    int after = 0;
    int times = 0; // 0: not armed
};

std::atomic<bool> anythingArmed{false};
Lock planMutex;
std::array<Plan, static_cast<std::size_t>(SeamCall::count)> plans;
std::array<std::atomic<long>, static_cast<std::size_t>(SeamCall::count)> made;

std::optional<OsVersion> version;

} // namespace

void armFault(SeamCall call, int after, int times) noexcept {
    const std::scoped_lock lock(planMutex);
    plans.at(static_cast<std::size_t>(call)) = {after, times};
    anythingArmed.store(true, std::memory_order_relaxed);
}

void disarmFaults() noexcept {
    const std::scoped_lock lock(planMutex);
    plans.fill({});
    anythingArmed.store(false, std::memory_order_relaxed);
}

long callsMade(SeamCall call) noexcept {
    return made.at(static_cast<std::size_t>(call)).load(std::memory_order_relaxed);
}

bool faultDue(SeamCall call) noexcept {
    made.at(static_cast<std::size_t>(call)).fetch_add(1, std::memory_order_relaxed);
    if (!anythingArmed.load(std::memory_order_relaxed)) return false;
    const std::scoped_lock lock(planMutex);
    Plan& plan = plans.at(static_cast<std::size_t>(call));
    if (plan.times == 0) return false;
    if (plan.after > 0) {
        --plan.after;
        return false;
    }
    if (plan.times > 0) --plan.times;
    return true;
}

PretendedVersion::PretendedVersion(OsVersion pretended) noexcept {
    version = pretended;
}

PretendedVersion::~PretendedVersion() {
    version.reset();
}

const OsVersion* pretendedVersion() noexcept {
    return version ? &*version : nullptr;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
