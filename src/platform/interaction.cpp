#include "platform/interaction.h"
#include "platform/HandlerSlot.h"
#include "platform/SystemMessageBox.h"
#include <utility>

namespace pixkit::platform {

namespace {
HandlerSlot<MessageBoxHandler> handlerInUse;
}

void setMessageBoxHandler(MessageBoxHandler handler) {
    handlerInUse.set(std::move(handler));
}

bool isSomebodyThere() noexcept {
    return handlerInUse.get() != nullptr || isWindowStationVisible();
}

int MessageBoxW(const std::string& text, const std::string& caption, std::uint32_t style) noexcept {
    try {
        if (const auto handler = handlerInUse.get()) return (*handler)(text, caption, style);
        return systemMessageBox(text, caption, style);
    } catch (...) {
        // Nobody was asked, so nobody agreed.
        return cautiousAnswer(style);
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
