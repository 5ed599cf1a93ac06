// Resources of the program that uses the library: where the system has none, the program provides them.
#pragma once
#include "platform/api.h"
#include "platform/pictures.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace pixkit {

// A resource or a kind of resources, by number or by name (UTF-8).
using ResourceId = std::variant<std::int32_t, std::string>;

// Kinds of picture resources; the values are those that host programs go by.
enum class PictureResource : std::int32_t { bitmap = 0, icon = 1, cursor = 2 };

// Both may throw; that, an empty function, null and no bytes mean that there is no such resource.
struct ResourceProvider {
    std::function<std::unique_ptr<platform::StdPicture>(const ResourceId& index, PictureResource kind)> picture;
    std::function<std::vector<std::uint8_t>(const ResourceId& index, const std::string& section)> bytes;

    explicit operator bool() const noexcept { return picture || bytes; }
};

// Whom LoadPicture_Resource asks, for the whole process; an empty provider (the initial state) has nothing.
PIXKIT_API void setResourceProvider(ResourceProvider provider);
// The provider in use, which may replace itself while it answers.
ResourceProvider resourceProvider();

} // namespace pixkit
// SPDX-License-Identifier: MIT
