// Loading from what the system or the program already has in memory: pictures, handles, resources.
#include "codecs/ico/cICOparser.h"
#include "loading/ForeignPictures.h"
#include "loading/loadMember.h"
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "shared/resources.h"
#include "surface/cPixSheet.h"
#include <utility>

namespace pixkit {

namespace {
constexpr Reason noSuchResource = "there is no such resource";
}

bool cPixSheet::LoadPicture_StdPicture(const platform::StdPicture* Picture) noexcept {
    return loadMember(Call(*this, "LoadPicture_StdPicture", "Picture", Picture), *this, [&] {
        const auto type = Picture != nullptr ? Picture->Type() : platform::PictureType::none;
        if (state().m_Handle != 0 && type == platform::PictureType::bitmap &&
            platform::isSameObject(Picture->handle(), state().m_Handle)) { // a picture around this image
            LoadPicture_ByHandle(state().m_Handle);
            return state().m_outcome;
        }
        DestroyDIB();
        if (Picture == nullptr) return refused("there is no picture");
        return type == platform::PictureType::icon ? cICOparser::ConvertstdPicTo32bpp(Picture->handle(), *this)
                                                   : pixkit::ConvertstdPicTo32bpp(*Picture, *this);
    });
}

bool cPixSheet::LoadPicture_ByHandle(std::intptr_t Handle) noexcept {
    return loadMember(Call(*this, "LoadPicture_ByHandle", "Handle", Handle), *this, [&] {
        if (Handle != 0 &&
            platform::isSameObject(Handle, state().m_Handle)) { // the load frees the image before it reads
            LoadDIBinDC(false);
            cPixSheet other;
            other.state().m_isUnattended = state().m_isUnattended;
            other.state().m_limits = state().m_limits;
            other.LoadPicture_ByHandle(Handle);
            SwapDIBs(&other);
            return other.state().m_outcome;
        }
        DestroyDIB();
        return platform::GetObjectType(Handle) == platform::ObjectType::bitmap
                   ? pixkit::ConvertstdPicTo32bpp(Handle, *this)
                   : cICOparser::ConvertstdPicTo32bpp(Handle, *this);
    });
}

bool cPixSheet::LoadPicture_Resource(const ResourceId& ResIndex, const ResourceId& ResSection, std::int32_t iconCx,
                                     std::int32_t iconCy, std::int32_t streamStart, std::int32_t streamLength,
                                     std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_Resource",
                    "ResIndex, ResSection, iconCx, iconCy, streamStart, streamLength, iconBitDepth", ResIndex,
                    ResSection, iconCx, iconCy, streamStart, streamLength, iconBitDepth);
    return loadMember(call, *this, [&] {
        const ResourceProvider provider = resourceProvider();
        if (const auto* const section = std::get_if<std::string>(&ResSection)) {
            const ByteArray bytes(provider.bytes ? provider.bytes(ResIndex, *section) : std::vector<std::uint8_t>());
            if (bytes.size() == 0) return refused(noSuchResource);
            LoadPicture_Stream(bytes, iconCx, iconCy, streamStart, streamLength, false, iconBitDepth);
            return state().m_outcome;
        }
        const auto kind = static_cast<PictureResource>(std::get<std::int32_t>(ResSection));
        const auto picture = provider.picture ? provider.picture(ResIndex, kind) : nullptr;
        if (!picture) return refused(noSuchResource);
        LoadPicture_StdPicture(picture.get());
        return state().m_outcome;
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
