#include "shared/resources.h"
#include "platform/HandlerSlot.h"
#include <utility>

namespace pixkit {

namespace {
HandlerSlot<ResourceProvider> providerInUse;
}

void setResourceProvider(ResourceProvider provider) {
    providerInUse.set(std::move(provider));
}

ResourceProvider resourceProvider() {
    const auto provider = providerInUse.get();
    return provider ? *provider : ResourceProvider();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
