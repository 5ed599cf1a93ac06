#include "platform/faults.h"

namespace pixkit::platform {

std::size_t openHandles() noexcept {
    return 0;
}

} // namespace pixkit::platform
