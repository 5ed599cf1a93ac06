// Who may open what takes the place of a file.
#include "platform/files.h"
#include "support/Pictures.h"
#include <windows.h>

namespace pixkit::test {
namespace {

Bytes accessListOf(const std::filesystem::path& file) {
    Bytes descriptor(4096);
    DWORD size = 0;
    BOOL isThere = FALSE, isDefault = FALSE;
    ACL* list = nullptr;
    EXPECT_TRUE(::GetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), 4096, &size));
    EXPECT_TRUE(::GetSecurityDescriptorDacl(descriptor.data(), &isThere, &list, &isDefault) && list != nullptr);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(list);
    return list != nullptr ? Bytes(bytes, bytes + list->AclSize) : Bytes();
}

// From now on nobody but its owner may do anything with the file.
void makePrivate(const std::filesystem::path& file) {
    std::uint8_t old[1024], list[256];
    DWORD size = 0;
    PSID owner = nullptr;
    BOOL isDefault = FALSE;
    SECURITY_DESCRIPTOR wanted;
    ASSERT_TRUE(::GetFileSecurityW(file.c_str(), OWNER_SECURITY_INFORMATION, old, sizeof old, &size) &&
                ::GetSecurityDescriptorOwner(old, &owner, &isDefault));
    auto* const acl = reinterpret_cast<ACL*>(list);
    ::InitializeAcl(acl, sizeof list, ACL_REVISION);
    ::AddAccessAllowedAce(acl, ACL_REVISION, FILE_ALL_ACCESS, owner);
    ::InitializeSecurityDescriptor(&wanted, SECURITY_DESCRIPTOR_REVISION);
    ::SetSecurityDescriptorDacl(&wanted, TRUE, acl, FALSE);
    ASSERT_TRUE(::SetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, &wanted));
}

} // namespace

TEST(FileAccess, APrivateFileIsOpenToOthersWhileItIsReplacedOrAfterwards) {
    const TemporaryFolder folder;
    const auto target = folder.path(u8"target.bmp"), draft = folder.path(u8"draft");
    writeFile(target, {1, 2, 3});
    const Bytes usual = accessListOf(target);
    makePrivate(target);
    const Bytes wanted = accessListOf(target);
    if (wanted == usual) GTEST_SKIP() << "this system keeps no access lists";
    {
        const platform::UniqueFile file(platform::CreateDraftW(draft.string(), target.string()));
        EXPECT_TRUE(file && platform::KeepDraft(file.get(), draft.string()));
    }
    EXPECT_EQ(accessListOf(draft), wanted);
    cPixSheet sheet;
    sheet.InitializeDIB(2, 2);
    EXPECT_TRUE(sheet.SaveToFile_Bitmap(folder.name(u8"target.bmp"), false, 0, false));
    EXPECT_EQ(accessListOf(target), wanted);
    writeFile(folder.path(u8"new"), {1});
    EXPECT_EQ(accessListOf(folder.path(u8"new")), usual);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
