// What the type library inside this DLL says of the interface: the one description that dispatch follows.
#pragma once
#include "com/Automation.h"
#include <array>
#include <memory>
#include <vector>

namespace pixkit::com {

// How a member takes an argument, or gives its result.
struct Parameter {
    enum class Kind {
        value,   // a number or string
        variant, // a VARIANT as it is
        variantReference,
        object,    // an interface
        reference, // a number by reference
        objectReference,
        arrayReference,
    };
    Kind kind = Kind::value;
    VARTYPE type = VT_EMPTY; // of the value, or of an array's elements
    IID interfaceId = {};    // of an object
    bool isOptional = false;
    std::shared_ptr<const Variant> defaultValue; // null: zero, empty, Nothing
};

struct Member {
    MEMBERID id = MEMBERID_NIL;
    INVOKEKIND kind = INVOKE_FUNC;
    ULONG_PTR tableOffset = 0; // in the virtual function table, in bytes
    std::vector<Parameter> parameters;
    bool takesAnyNumber = false; // the last parameter is an array of all further arguments
    bool hasResult = false;
    Parameter result;
};

inline constexpr std::size_t maximumParameters = 24;

class TypeInformation {
  public:
    // Read from the DLL at first use and shared; an HRESULT of the system's when that fails.
    static HRESULT get(std::shared_ptr<const TypeInformation>& information) noexcept;
    // Lets go of what is shared; get() reads it again.
    static void forget() noexcept;

    ITypeInfo* interfaceInfo() const noexcept { return m_interface.get(); }
    ITypeInfo* classInfo() const noexcept { return m_class.get(); }
    // The member that a call with these DISPATCH_ flags means, or null.
    const Member* find(DISPID id, WORD flags) const noexcept;

  private:
    HRESULT read();

    ComPtr<ITypeInfo> m_interface;
    ComPtr<ITypeInfo> m_class;
    std::vector<Member> m_members; // ascending by id
};

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
