#include "gdiplus/Session.h"
#include "platform/Lock.h"
#include "platform/NeverDestroyed.h"
#include "platform/system.h"
#include <algorithm>
#include <limits>
#include <mutex>
#include <vector>

namespace pixkit {

namespace {

using platform::GdiplusApi;

// A start-up that belongs to a caller.
struct Token {
    std::int32_t number;
    std::uintptr_t token;
    std::shared_ptr<const GdiplusApi> library;
};

struct State {
    platform::Lock mutex;
    std::weak_ptr<const GdiplusSession> started;
    std::shared_ptr<const GdiplusSession> kept; // between calls
    std::size_t users = 0;
    std::weak_ptr<const GdiplusApi> proven; // a library that has started once
    std::vector<Token> tokens;
    std::int32_t lastNumber = 0;
};

State& state() noexcept {
    static constinit platform::NeverDestroyed<State> only;
    return only.value;
}

std::shared_ptr<const GdiplusSession> start(const std::shared_ptr<const GdiplusApi>& library) {
    std::uintptr_t token = 0;
    if (!succeeded(library->GdiplusStartup, token)) return nullptr;
    try {
        return std::make_shared<const GdiplusSession>(library, token);
    } catch (...) {
        library->GdiplusShutdown(token);
        return nullptr;
    }
}

} // namespace

std::shared_ptr<const GdiplusSession> GdiplusSession::get() noexcept {
    const auto library = platform::gdiplusLibrary();
    if (!library) return nullptr;
    State& now = state();
    std::shared_ptr<const GdiplusSession> replaced; // ends behind the lock
    const std::scoped_lock lock(now.mutex);
    auto session = now.started.lock();
    if (!session || session->library() != library) {
        session = platform::isUnderLoaderLock() ? nullptr : start(library);
        if (!session) return nullptr;
        now.started = session;
        now.proven = library;
        replaced = std::move(now.kept);
    }
    if (now.users > 0) now.kept = session;
    return session;
}

bool GdiplusSession::isPossible() noexcept {
    const auto library = platform::gdiplusLibrary();
    if (!library) return false;
    {
        const std::scoped_lock lock(state().mutex);
        if (state().proven.lock() == library) return true;
    }
    return get() != nullptr;
}

void GdiplusSession::forget() noexcept {
    platform::forgetGdiplusLibrary();
    const std::scoped_lock lock(state().mutex);
    state().started.reset();
    state().proven.reset();
}

GdiplusUser::GdiplusUser() noexcept {
    const std::scoped_lock lock(state().mutex);
    ++state().users;
}

GdiplusUser::~GdiplusUser() {
    std::shared_ptr<const GdiplusSession> last; // ends behind the lock
    const std::scoped_lock lock(state().mutex);
    // An image that goes with its library leaves GDI+ started.
    if (--state().users == 0 && !platform::isUnderLoaderLock()) last.swap(state().kept);
}

namespace {

std::int32_t numberOf(std::uintptr_t token) noexcept {
    if constexpr (sizeof token <= sizeof(std::int32_t)) return static_cast<std::int32_t>(token);
    State& now = state();
    do {
        now.lastNumber = now.lastNumber == std::numeric_limits<std::int32_t>::max() ? 1 : now.lastNumber + 1;
    } while (std::ranges::count(now.tokens, now.lastNumber, &Token::number) != 0);
    return now.lastNumber;
}

} // namespace

std::int32_t createGdiplusToken() noexcept {
    const auto library = platform::gdiplusLibrary();
    std::uintptr_t token = 0;
    if (!library || !succeeded(library->GdiplusStartup, token)) return 0;
    try {
        const std::scoped_lock lock(state().mutex);
        const std::int32_t number = numberOf(token);
        state().tokens.push_back({number, token, library});
        return number;
    } catch (...) {
        library->GdiplusShutdown(token);
        return 0;
    }
}

bool destroyGdiplusToken(std::int32_t token) noexcept {
    Token found;
    {
        const std::scoped_lock lock(state().mutex);
        auto& tokens = state().tokens;
        const auto place = std::ranges::find(tokens, token, &Token::number);
        if (place == tokens.end()) return false;
        found = std::move(*place);
        tokens.erase(place);
        if (tokens.empty()) tokens.shrink_to_fit();
    }
    found.library->GdiplusShutdown(found.token);
    return true;
}

bool areGdiplusTokensOut() noexcept {
    const std::scoped_lock lock(state().mutex);
    return !state().tokens.empty();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
