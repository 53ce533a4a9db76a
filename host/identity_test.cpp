#include "host/identity.h"

#include <gtest/gtest.h>

#include <shlwapi.h>

#include <string>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/handles.h"

namespace velk::host {
namespace {

// A private key stands in for HKEY_CURRENT_USER, so the prefix's own
// identities (used by the mail-client stand-in) stay untouched.
TEST(Identity, LastUserIdWinsUnlessItCannotNameTheUsersFolder) {
    QzCommon::testing_util::TempKey temp(HKEY_CURRENT_USER);
    win32::unique_hkey root;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, temp.path().c_str(), 0, nullptr,
                                               0, KEY_ALL_ACCESS, nullptr, root.put(), nullptr));
    auto set = [&](const wchar_t* name, DWORD type, const void* data, size_t bytes) {
        ::SHSetValueW(root.get(), L"Identities", name, type, data, static_cast<DWORD>(bytes));
    };
    auto set_text = [&](const wchar_t* name, const std::wstring& v) {
        set(name, REG_SZ, v.c_str(), (v.size() + 1) * sizeof(wchar_t));
    };

    EXPECT_EQ(L"", LookupIdentityId(root.get()));
    set_text(L"Default User ID", L"{DEFAULT}");
    EXPECT_EQ(L"{DEFAULT}", LookupIdentityId(root.get()));
    set_text(L"Last User ID", L"{LAST-1234}");
    EXPECT_EQ(L"{LAST-1234}", LookupIdentityId(root.get()));
    // Stored without its terminator: still read whole.
    const wchar_t raw[] = {L'{', L'A', L'B', L'}'};
    set(L"Last User ID", REG_SZ, raw, sizeof(raw));
    EXPECT_EQ(L"{AB}", LookupIdentityId(root.get()));

    // Not a string, or a name that would climb out of the users' folder.
    const DWORD number = 7;
    set(L"Last User ID", REG_DWORD, &number, sizeof(number));
    EXPECT_EQ(L"{DEFAULT}", LookupIdentityId(root.get()));
    for (const wchar_t* bad : {L"..\\..\\Windows", L".."}) {
        set_text(L"Last User ID", bad);
        EXPECT_EQ(L"{DEFAULT}", LookupIdentityId(root.get()));
    }
}

}  // namespace
}  // namespace velk::host
