#pragma once
#include "surface/HostAccess.h"

namespace pixkit {

// Takes the host out of its device context after drawing, whichever way it was drawn: also when it was selected
// before, so that callers do not depend on the way.
class HostRelease {
  public:
    explicit HostRelease(cPixSheet* host) noexcept : m_host(host) {}
    ~HostRelease() {
        if (m_host != nullptr) HostAccess::LoadDIBinDC(*m_host, false);
    }
    HostRelease(const HostRelease&) = delete;
    HostRelease& operator=(const HostRelease&) = delete;

  private:
    cPixSheet* m_host;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
