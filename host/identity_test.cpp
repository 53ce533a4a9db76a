#include "host/identity.h"

#include <gtest/gtest.h>

#include <shlwapi.h>

#include <string>

#include "common_src/win32/handles.h"

namespace velk::host {
namespace {

// A private root stands in for HKEY_CURRENT_USER, so the prefix's own
// identities (used by the mail-client stand-in) stay untouched.
class IdentityTest : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = L"Software\\VelkTests\\Identity" + std::to_wstring(::GetCurrentProcessId());
        ASSERT_EQ(ERROR_SUCCESS,
                  ::RegCreateKeyExW(HKEY_CURRENT_USER, (path_ + L"\\Identities").c_str(), 0,
                                    nullptr, 0, KEY_ALL_ACCESS, nullptr, ids_.put(), nullptr));
        ::RegOpenKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, KEY_READ, root_.put());
    }
    void TearDown() override {
        ids_.reset();
        root_.reset();
        ::SHDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
    }
    void Set(const wchar_t* name, DWORD type, const void* data, size_t bytes) {
        ::RegSetValueExW(ids_.get(), name, 0, type, static_cast<const BYTE*>(data),
                         static_cast<DWORD>(bytes));
    }
    void SetString(const wchar_t* name, const std::wstring& v) {
        Set(name, REG_SZ, v.c_str(), (v.size() + 1) * sizeof(wchar_t));
    }
    std::wstring Lookup() { return LookupIdentityId(root_.get()); }

    std::wstring path_;
    win32::unique_hkey root_, ids_;
};

TEST_F(IdentityTest, LastUserIdWinsOverTheDefault) {
    EXPECT_EQ(L"", Lookup());
    SetString(L"Default User ID", L"{DEFAULT}");
    EXPECT_EQ(L"{DEFAULT}", Lookup());
    SetString(L"Last User ID", L"{LAST-1234}");
    EXPECT_EQ(L"{LAST-1234}", Lookup());
    // Stored without its terminator: still read whole.
    const wchar_t raw[] = {L'{', L'A', L'B', L'}'};
    Set(L"Last User ID", REG_SZ, raw, sizeof(raw));
    EXPECT_EQ(L"{AB}", Lookup());
}

TEST_F(IdentityTest, UnusableValuesFallThroughToTheNextOne) {
    const DWORD number = 7;
    Set(L"Last User ID", REG_DWORD, &number, sizeof(number));
    EXPECT_EQ(L"", Lookup());
    SetString(L"Default User ID", L"{DEFAULT}");
    EXPECT_EQ(L"{DEFAULT}", Lookup());
    // A value that would climb out of the user folder is not an identity.
    SetString(L"Last User ID", L"..\\..\\Windows");
    EXPECT_EQ(L"{DEFAULT}", Lookup());
    SetString(L"Last User ID", L"..");
    EXPECT_EQ(L"{DEFAULT}", Lookup());
}

}  // namespace
}  // namespace velk::host
