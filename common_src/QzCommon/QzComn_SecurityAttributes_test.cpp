#include "common_src/QzCommon/QzComn_SecurityAttributes.h"

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>

namespace QzCommon {
namespace AccessControl {
namespace {

// The accounts in entry order, and the masks per kind; the scanning process
// and the installer rely on exactly these.
const wchar_t* const kSids[7] = {L"S-1-5-32-544", L"S-1-5-32-547", L"S-1-5-18", L"S-1-5-11",
                                 L"S-1-5-32-545", L"S-1-5-4",      L"S-1-3-0"};
const DWORD kExpected[13][7] = {
    {0x13013F, 0x12002F, 0x13013F, 0x120029, 0x120029, 0x120029, 0x1F01FF},
    {0x1100C7, 0x100087, 0x1100C7, 0x100081, 0x100081, 0x100081, 0x1F01FF},
    {0x101F7, 0x18D, 0x1F5, 0x185, 0x185, 0x185, 0xF01FF},
    {0, 0, 0, 0, 0, 0, 0},
    {0x1003F, 0x3F, 0x1003F, 0x20009, 0x20009, 0x20009, 0xF003F},
    {0x100FFB, 0x100E92, 0x100FFB, 0x100410, 0x100410, 0x100410, 0x1F0FFF},
    {0x1000FB, 0x10006A, 0x1000FB, 0x100048, 0x100048, 0x100048, 0x1F03FB},
    {0, 0, 0, 0, 0, 0, 0},
    {0, 0, 0, 0, 0, 0, 0},
    {0x100002, 0x100002, 0x100002, 0x100002, 0x100002, 0x100002, 0x100002},
    {0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003},
    {0x100001, 0x100001, 0x100001, 0x100001, 0x100001, 0x100001, 0x100001},
    {0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001},
};

std::wstring SidText(PSID sid) {
    LPWSTR text = nullptr;
    if (!::ConvertSidToStringSidW(sid, &text))
        return L"?";
    std::wstring result = text;
    ::LocalFree(text);
    return result;
}

// Reads the DACL back out of the descriptor we built: Wine ignores a DACL
// given to the registry, so this is where the rights can be checked.
TEST(SecurityAttributes, EveryKindGrantsItsMasksToTheSevenAccountsInOrder) {
    for (DWORD kind = 0; kind < 13; ++kind) {
        SCOPED_TRACE("kind " + std::to_string(kind));
        SecurityAttributes sa(kind, kind % 2 == 1);
        const SECURITY_ATTRIBUTES* record = sa.Get();
        EXPECT_EQ(24u, record->nLength);
        EXPECT_EQ(kind % 2 == 1 ? TRUE : FALSE, record->bInheritHandle);
        PSECURITY_DESCRIPTOR sd = record->lpSecurityDescriptor;
        SECURITY_DESCRIPTOR_CONTROL control = 0;
        DWORD revision = 0;
        ASSERT_TRUE(sd && ::GetSecurityDescriptorControl(sd, &control, &revision));
        EXPECT_EQ(SE_SELF_RELATIVE | SE_DACL_PRESENT,
                  control & (SE_SELF_RELATIVE | SE_DACL_PRESENT | SE_DACL_DEFAULTED));

        BOOL present = FALSE, defaulted = TRUE;
        PACL dacl = nullptr;
        ASSERT_TRUE(::GetSecurityDescriptorDacl(sd, &present, &dacl, &defaulted) && dacl);
        EXPECT_EQ(2, dacl->AclRevision);
        ASSERT_EQ(7, dacl->AceCount);
        for (DWORD i = 0; i < 7; ++i) {
            void* raw = nullptr;
            ASSERT_TRUE(::GetAce(dacl, i, &raw));
            auto* ace = static_cast<ACCESS_ALLOWED_ACE*>(raw);
            EXPECT_EQ(ACCESS_ALLOWED_ACE_TYPE, ace->Header.AceType) << "entry " << i;
            EXPECT_EQ(0, ace->Header.AceFlags) << "entry " << i;
            EXPECT_EQ(kExpected[kind][i], ace->Mask) << "entry " << i;
            EXPECT_EQ(kSids[i], SidText(&ace->SidStart)) << "entry " << i;
        }
    }
}

TEST(SecurityAttributes, UnknownKindsLeaveTheDescriptorEmptyWithoutThrowing) {
    for (DWORD kind : {13u, 14u, 0xFFFFFFFFu}) {
        SecurityAttributes sa(kind, true);
        EXPECT_EQ(nullptr, sa.Get()->lpSecurityDescriptor);
        EXPECT_EQ(24u, sa.Get()->nLength);
        EXPECT_TRUE(sa.Get()->bInheritHandle);
    }
    // Underneath: error 50, reported from this module.
    auto error = Capture<Exception>([] { BuildSecurityDescriptor(13); });
    ASSERT_TRUE(error);
    EXPECT_EQ(50u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_SecurityAttributes", error->m_strSourceFile);
    EXPECT_GT(error->m_dwSourceLine, 0u);
}

}  // namespace
}  // namespace AccessControl
}  // namespace QzCommon
