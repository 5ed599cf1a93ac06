// A loaded module as the linker laid it out: its headers and its imports.
#pragma once
#include <cstdint>
#include <cstring>
#include <windows.h>

namespace pixkit::test {

class ImageFile {
  public:
    explicit ImageFile(HMODULE module)
        : m_base(reinterpret_cast<std::uint8_t*>(module)),
          m_headers(
              *reinterpret_cast<IMAGE_NT_HEADERS*>(m_base + reinterpret_cast<IMAGE_DOS_HEADER*>(m_base)->e_lfanew)) {}

    const IMAGE_NT_HEADERS& headers() const { return m_headers; }
    template <class Use>
    void eachImport(Use use) const {
        const auto& directory = m_headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        auto* import = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(m_base + directory.VirtualAddress);
        for (; import->Name != 0; ++import) {
            auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(m_base + import->OriginalFirstThunk);
            auto* places = reinterpret_cast<IMAGE_THUNK_DATA*>(m_base + import->FirstThunk);
            for (; names->u1.AddressOfData != 0; ++names, ++places) {
                const bool byNumber = IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal);
                const char* function =
                    byNumber ? "" : reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(m_base + names->u1.AddressOfData)->Name;
                use(reinterpret_cast<const char*>(m_base + import->Name), function, *places);
            }
        }
    }

    // Lets the module call another function in the place of one that it imports. Returns how often it imports that.
    int replaceImport(const char* name, void* address) const {
        int replaced = 0;
        eachImport([&](const char*, const char* function, IMAGE_THUNK_DATA& place) {
            if (std::strcmp(function, name) != 0) return;
            DWORD protection = 0;
            ::VirtualProtect(&place, sizeof place, PAGE_READWRITE, &protection);
            std::memcpy(&place, &address, sizeof address);
            ++replaced;
        });
        return replaced;
    }

  private:
    std::uint8_t* m_base;
    const IMAGE_NT_HEADERS& m_headers;
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
