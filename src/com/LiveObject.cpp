#include "com/LiveObject.h"
#include "platform/NeverDestroyed.h"
#include <mutex>
#include <set>

namespace pixkit::com {

namespace {

std::mutex listMutex; // apartments make objects concurrently

// An empty set holds no memory, so nothing is left where the DLL is unloaded.
std::set<_cPixSheet*>& list() noexcept {
    static platform::NeverDestroyed<std::set<_cPixSheet*>> objects;
    return objects.value;
}

} // namespace

LiveObject::LiveObject(_cPixSheet* object) : m_object(object) {
    const std::scoped_lock lock(listMutex);
    list().insert(object);
}

LiveObject::~LiveObject() {
    const std::scoped_lock lock(listMutex);
    list().erase(m_object);
}

bool LiveObject::isOne(_cPixSheet* object) noexcept {
    const std::scoped_lock lock(listMutex);
    return list().contains(object);
}

} // namespace pixkit::com
