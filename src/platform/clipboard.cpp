#include "platform/clipboard.h"
#include "platform/HandlerSlot.h"
#include "platform/SystemClipboard.h"
#include "platform/faults.h"
#include <chrono>
#include <thread>
#include <utility>

namespace pixkit::platform {

namespace {

HandlerSlot<ClipboardProvider> providerInUse;

std::shared_ptr<const ClipboardProvider> providerOrSystem() {
    if (auto provider = providerInUse.get()) return provider;
    auto system = systemClipboard();
    return system ? std::make_shared<const ClipboardProvider>(std::move(system)) : nullptr;
}

} // namespace

void setClipboardProvider(ClipboardProvider provider) {
    providerInUse.set(std::move(provider));
}

OpenClipboard::OpenClipboard() : m_provider(providerOrSystem()) {
    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;
    if (!m_provider) return;
    const auto end = Clock::now() + 500ms;
    for (;;) {
        m_isOpen = !faultDue(SeamCall::openClipboard) && m_provider->open();
        if (m_isOpen || Clock::now() >= end) return;
        std::this_thread::sleep_for(10ms);
    }
}

OpenClipboard::~OpenClipboard() {
    if (m_isOpen) m_provider->close();
}

std::vector<std::uint8_t> OpenClipboard::get(const std::string& format) const {
    if (faultDue(SeamCall::getClipboardData)) return {};
    return m_provider->get(format);
}

} // namespace pixkit::platform
