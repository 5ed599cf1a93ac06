// GDI+ while it is started, by whom and for how long. Starting it costs far more than a small drawing, and instances
// are made by the thousand: so it is started when there is first something to do, once for the whole process, and stays
// started between calls as long as somebody says that more may come. Nothing of it happens while a library is loaded or
// unloaded, nor at the end of the process, where the system forbids it: there it is left as it is.
#pragma once
#include "gdiplus/GdiplusUser.h"
#include "platform/faults.h"
#include "platform/gdiplus.h"
#include <cstdint>
#include <memory>
#include <utility>

namespace pixkit {

// Makes one call of the library, which may throw. False when it did not succeed. The calls that give something back are
// made directly: nobody can do anything about their failure.
template <class... Parameters, class... Arguments>
bool succeeded(const std::function<platform::GpStatus(Parameters...)>& call, Arguments&&... arguments) noexcept {
    try {
        return !platform::faultDue(platform::SeamCall::gdiplus) &&
               call(std::forward<Arguments>(arguments)...) == platform::GpStatus::Ok;
    } catch (...) {
        return false;
    }
}

// One start-up of GDI+, and the shutdown that belongs to it: as long as somebody holds it GDI+ is started.
class GdiplusSession {
  public:
    // The process's; null where there is no GDI+ and where it does not start.
    static std::shared_ptr<const GdiplusSession> get() noexcept;
    // Whether get() has given a session, or gives one now: does not start GDI+ again to find out.
    static bool isPossible() noexcept;
    // Lets go of the library once nobody uses it any more, before the component may be unloaded.
    static void forget() noexcept;

    // For get() alone.
    GdiplusSession(std::shared_ptr<const platform::GdiplusApi> library, std::uintptr_t token) noexcept
        : m_library(std::move(library)), m_token(token) {}
    ~GdiplusSession() { m_library->GdiplusShutdown(m_token); }
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;

    const platform::GdiplusApi& api() const noexcept { return *m_library; }
    const std::shared_ptr<const platform::GdiplusApi>& library() const noexcept { return m_library; }

  private:
    std::shared_ptr<const platform::GdiplusApi> m_library;
    std::uintptr_t m_token;
};

// Starts GDI+ for a caller and returns the token of this start-up, by which it is ended; 0 on failure. Where a token of
// the system does not fit into 32 bits it has a number in its place.
std::int32_t createGdiplusToken() noexcept;
// False, with nothing done, for tokens that are not out.
bool destroyGdiplusToken(std::int32_t token) noexcept;
// Whether any are: who can end them has to stay loaded.
bool areGdiplusTokensOut() noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
