#include "platform/interaction.h"
#include "platform/SystemMessageBox.h"
#include <utility>

namespace pixkit::platform {

namespace {
MessageBoxHandler& handlerInUse() noexcept {
    static MessageBoxHandler handler;
    return handler;
}
} // namespace

void setMessageBoxHandler(MessageBoxHandler handler) {
    handlerInUse() = std::move(handler);
}

int MessageBoxW(const std::string& text, const std::string& caption, std::uint32_t style) noexcept {
    try {
        // A copy: the handler may replace itself while it answers.
        if (const MessageBoxHandler handler = handlerInUse()) return handler(text, caption, style);
        return systemMessageBox(text, caption, style);
    } catch (...) {
        // Nobody was asked, so nobody agreed.
        return cautiousAnswer(style);
    }
}

} // namespace pixkit::platform
