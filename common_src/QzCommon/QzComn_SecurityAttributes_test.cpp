#include "common_src/QzCommon/QzComn_SecurityAttributes.h"

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>

namespace QzCommon {
namespace AccessControl {
namespace {

std::wstring SidText(PSID sid) {
    LPWSTR text = nullptr;
    if (!::ConvertSidToStringSidW(sid, &text))
        return L"?";
    std::wstring result = text;
    ::LocalFree(text);
    return result;
}

// Reads the DACL back out of the descriptor: Wine ignores a DACL given to the
// registry, so this is where the entries can be seen. The rights of the
// registry keys themselves are checked where keys are created.
TEST(SecurityAttributes, EveryKindGrantsItsRightsToTheSevenAccountsInOrder) {
    const wchar_t* const accounts[kAccountCount] = {L"S-1-5-32-544", L"S-1-5-32-547", L"S-1-5-18",
                                                    L"S-1-5-11",     L"S-1-5-32-545", L"S-1-5-4",
                                                    L"S-1-3-0"};
    for (DWORD kind = 0; kind < 13; ++kind) {
        SCOPED_TRACE("kind " + std::to_string(kind));
        SecurityAttributes sa(kind, kind % 2 == 1);
        const SECURITY_ATTRIBUTES* record = sa.Get();
        EXPECT_EQ(kind % 2 == 1 ? TRUE : FALSE, record->bInheritHandle);
        SECURITY_DESCRIPTOR_CONTROL control = 0;
        DWORD revision = 0;
        ASSERT_TRUE(
            ::GetSecurityDescriptorControl(record->lpSecurityDescriptor, &control, &revision));
        EXPECT_EQ(SE_SELF_RELATIVE | SE_DACL_PRESENT,
                  control & (SE_SELF_RELATIVE | SE_DACL_PRESENT | SE_DACL_DEFAULTED));
        BOOL present = FALSE, defaulted = TRUE;
        PACL dacl = nullptr;
        ASSERT_TRUE(::GetSecurityDescriptorDacl(record->lpSecurityDescriptor, &present, &dacl,
                                                &defaulted) &&
                    dacl);
        std::uint32_t masks[kAccountCount];
        ASSERT_TRUE(LookupAccessMasks(kind, masks));
        ASSERT_EQ(kAccountCount, dacl->AceCount);
        for (DWORD i = 0; i < kAccountCount; ++i) {
            void* raw = nullptr;
            ASSERT_TRUE(::GetAce(dacl, i, &raw));
            auto* ace = static_cast<ACCESS_ALLOWED_ACE*>(raw);
            EXPECT_EQ(ACCESS_ALLOWED_ACE_TYPE, ace->Header.AceType) << i;
            EXPECT_EQ(0, ace->Header.AceFlags) << "no inheritance, entry " << i;
            EXPECT_EQ(masks[i], ace->Mask) << i;
            EXPECT_EQ(accounts[i], SidText(&ace->SidStart)) << i;
        }
    }
}

TEST(SecurityAttributes, UnknownKindsLeaveTheDescriptorEmptyWithoutThrowing) {
    SecurityAttributes sa(13, true);
    EXPECT_EQ(nullptr, sa.Get()->lpSecurityDescriptor);
    EXPECT_EQ(sizeof(SECURITY_ATTRIBUTES), sa.Get()->nLength);
    auto error = Capture<Exception>([] { BuildSecurityDescriptor(0xFFFFFFFFu); });
    ASSERT_TRUE(error);
    EXPECT_EQ(50u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_SecurityAttributes", error->m_strSourceFile);
}

}  // namespace
}  // namespace AccessControl
}  // namespace QzCommon
