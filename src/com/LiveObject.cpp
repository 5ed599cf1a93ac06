#include "com/LiveObject.h"
#include "platform/Lock.h"
#include "platform/NeverDestroyed.h"
#include <mutex>
#include <set>

namespace pixkit::com {

namespace {

platform::Lock listMutex; // apartments make objects concurrently

// An empty set holds no memory, so nothing is left where the DLL is unloaded.
platform::NeverDestroyed<std::set<_cPixSheet*>> list;

} // namespace

LiveObject::LiveObject(_cPixSheet* object) : m_object(object) {
    const std::scoped_lock lock(listMutex);
    list.value.insert(object);
}

LiveObject::~LiveObject() {
    const std::scoped_lock lock(listMutex);
    list.value.erase(m_object);
}

bool LiveObject::isOne(_cPixSheet* object) noexcept {
    const std::scoped_lock lock(listMutex);
    return list.value.contains(object);
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
