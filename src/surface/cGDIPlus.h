// The bridge to GDI+.
#pragma once

namespace pixkit {

// This version draws, loads and saves without GDI+: the bridge says truthfully that it cannot be started, so
// isGDIplusEnabled stays false and nobody asks further.
class cGDIPlus {
  public:
    static constexpr bool isGDIplusOk() noexcept { return false; }
};

} // namespace pixkit
