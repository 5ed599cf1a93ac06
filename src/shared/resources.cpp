#include "shared/resources.h"
#include <utility>

namespace pixkit {

namespace {

ResourceProvider& providerInUse() {
    static ResourceProvider provider;
    return provider;
}

} // namespace

void setResourceProvider(ResourceProvider provider) {
    providerInUse() = std::move(provider);
}

ResourceProvider resourceProvider() {
    return providerInUse();
}

} // namespace pixkit
