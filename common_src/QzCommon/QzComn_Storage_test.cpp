// The stores against the real registry and profile functions.
#include "common_src/QzCommon/QzComn_Registry.h"
#include "common_src/QzCommon/QzComn_IniFile.h"

#include <sddl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <vector>

#include "common_src/QzCommon/QzComn_SecurityAttributes.h"
#include "common_src/QzCommon/QzComn_String.h"
#include "common_src/QzCommon/QzComn_test_util.h"

// While armed, the store's read buffers (nothrow new[]) end flush against a
// no-access page: reading one character past a buffer faults at once instead
// of finding whatever zeros happen to follow it on the heap. Guarded blocks
// are never freed; the test makes a few dozen.
namespace {
bool g_guardReads = false;
void* g_guarded[128];
int g_guardedCount = 0;
}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (!g_guardReads || g_guardedCount == 128)
        return std::malloc(size != 0 ? size : 1);
    const std::size_t page = 4096, pages = (size + page - 1) / page;
    char* region = static_cast<char*>(
        ::VirtualAlloc(nullptr, (pages + 1) * page, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    DWORD old = 0;
    ::VirtualProtect(region + pages * page, page, PAGE_NOACCESS, &old);
    g_guarded[g_guardedCount] = region + pages * page - size;
    return g_guarded[g_guardedCount++];
}

void operator delete[](void* p) noexcept {
    if (std::find(g_guarded, g_guarded + g_guardedCount, p) == g_guarded + g_guardedCount)
        std::free(p);
}

void operator delete[](void* p, std::size_t) noexcept {
    operator delete[](p);
}

namespace QzCommon {
namespace Storage {
namespace {

template <class F>
DWORD ErrorOf(F&& body) {
    auto error = Capture<Exception>(std::forward<F>(body));
    return error ? error->m_dwErrorCode : 0;
}

// A registry store on a fresh key under HKCU\Software and a profile store on
// a fresh file, section "Main".
class StoreTest : public ::testing::Test {
protected:
    StoreTest() {
        store.Create(Parent(), key.node());
        ini.Open(StorageLocation(dir.path().c_str(), L"t.ini"), L"Main");
    }
    StorageLocation Parent() const { return StorageLocation(HKEY_CURRENT_USER, L"Software"); }
    void WriteRaw(const wchar_t* name, const std::wstring& value) {
        ::WritePrivateProfileStringW(L"Main", name, value.c_str(), (dir.path() + L"t.ini").c_str());
    }

    testing_util::TempKey key{HKEY_CURRENT_USER};
    Registry store;
    testing_util::TempFolder dir;
    IniFile ini;
};

TEST_F(StoreTest, RegistryValuesRoundTripAndAWrongTypeOrSizeIsError13) {
    store.WriteString(L"Text", L"hello");
    store.WriteDword(L"Number", 4294967295u);
    EXPECT_EQ(L"hello", store.ReadString(L"Text", L"x"));
    EXPECT_EQ(4294967295u, store.ReadDword(L"Number", 0));
    ByteBuffer blob{9};

    const ULONGLONG seven = 7;
    key.SetRaw(L"Bin4", REG_BINARY, &seven, 4);
    key.SetRaw(L"Dword8", REG_DWORD, &seven, 8);
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadDword(L"Bin4", 1); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadString(L"Number", L""); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadBinary(L"Number", blob); }));
    EXPECT_EQ(ByteBuffer{9}, blob);
    DWORD error = 0;
    EXPECT_EQ(55u, store.ReadDwordNoThrow(L"Dword8", 55, &error));
    EXPECT_EQ(13u, error);
    EXPECT_EQ(L"dflt", store.ReadStringNoThrow(L"Missing", L"dflt", &error));
    EXPECT_EQ(2u, error);  // the system's code passes through
}

// Every read runs against a buffer that ends at a no-access page.
TEST_F(StoreTest, RegistryStringReadsStopAtTheFirstZeroAndNeverReadPastTheBuffer) {
    key.SetRaw(L"Multi", REG_MULTI_SZ, L"a\0b\0", 10);
    key.SetRaw(L"Expand", REG_EXPAND_SZ, L"%SystemRoot%\\x", 30);
    key.SetRaw(L"Unterminated", REG_SZ, L"abc", 6);
    const wchar_t text[] = L"abcdefghijklmnopqrstuvwxyz";
    for (DWORD bytes = 1; bytes < 2 * 26; bytes += 2)
        key.SetRaw(L"Odd" + std::to_wstring(bytes), REG_SZ, text, bytes);
    g_guardReads = true;
    EXPECT_EQ(L"a|%SystemRoot%\\x|abc",
              store.ReadString(L"Multi", L"") + L"|" + store.ReadString(L"Expand", L"") + L"|" +
                  store.ReadString(L"Unterminated", L""));
    for (DWORD bytes = 1; bytes < 2 * 26; bytes += 2) {
        // The half character counts as a whole one, as the system's own
        // readers take it.
        EXPECT_EQ(std::wstring(text, bytes / 2 + 1),
                  store.ReadString(L"Odd" + std::to_wstring(bytes), L"-"))
            << bytes;
    }
    g_guardReads = false;
}

// Callers log the error code and the source file of the module. A failed
// open leaves a registry store closed and a profile store as it was.
TEST_F(StoreTest, ErrorsCarryTheirCodeAndModuleAndFailedOpensLeaveTheStoreSafe) {
    auto error = Capture<Exception>([&] { Registry().Close(false); });
    ASSERT_TRUE(error);
    EXPECT_EQ(6u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_Registry", error->m_strSourceFile);
    error = Capture<Exception>([&] { IniFile().ReadString(L"k", L"d"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(160u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_IniFile", error->m_strSourceFile);

    EXPECT_EQ(160u, ErrorOf([&] { store.Open(HKEY(nullptr), L"Software", kView64); }));
    EXPECT_EQ(2u, ErrorOf([&] { store.Open(Parent(), key.node() + L"\\missing"); }));
    EXPECT_FALSE(store.IsOpen());
    EXPECT_EQ(6u, ErrorOf([&] { store.ReadString(L"k", L""); }));
    EXPECT_EQ(160u, ErrorOf([&] { ini.WriteDword(L"", 1); }));
    EXPECT_EQ(160u, ErrorOf([&] { ini.Open(StorageLocation(L"C:", L"x.ini"), L""); }));
    EXPECT_EQ(dir.path() + L"t.ini", ini.GetFilePath());  // no doubled backslash

    // A missing folder: the write fails with the system's reason, reads give defaults.
    IniFile nowhere;
    nowhere.Open(StorageLocation((dir.path() + L"no\\such").c_str(), L"x.ini"), L"S");
    const DWORD failed = ErrorOf([&] { nowhere.WriteString(L"k", L"v"); });
    EXPECT_TRUE(failed != 0 && failed != 160) << failed;
    EXPECT_EQ(L"d", nowhere.ReadString(L"k", L"d"));
}

TEST_F(StoreTest, ProfileReadStringReturnsValuesWholeAcrossBufferBoundaries) {
    // 255 and 511 characters are n - 1 for the 256- and 512-character buffers,
    // where a value that fitted and one that was cut look the same.
    for (size_t length : {255u, 256u, 511u, 2000u}) {
        const std::wstring value(length, L'v');
        WriteRaw(L"Long", value);
        EXPECT_EQ(value, ini.ReadString(L"Long", L"")) << "length " << length;
    }
    const std::wstring longDefault(700, L'd');
    EXPECT_EQ(longDefault, ini.ReadString(L"Absent", longDefault));
}

TEST_F(StoreTest, ProfileDwordsAreWrittenInDecimalAndReadFromTheLeadingDigits) {
    EXPECT_TRUE(ini.WriteDword(L"Max", 4294967295u));
    EXPECT_TRUE(ini.Flush());
    EXPECT_NE(std::string::npos, dir.ReadFile(L"t.ini").find("Max=4294967295\r\n"));
    const std::pair<const wchar_t*, DWORD> cases[] = {
        {L"12abc", 12}, {L"abc", 99}, {L"", 99}, {L"-1", 4294967295u}};
    for (const auto& [text, expected] : cases) {
        WriteRaw(L"N", text);
        EXPECT_EQ(expected, ini.ReadDword(L"N", 99)) << testing::PrintToString(text);
    }
}

// What each open asks the system for, seen through the calls: Wine grants
// everything and ignores a DACL, a limited user on Windows does not.
std::vector<REGSAM> g_access;
std::vector<std::pair<DWORD, std::wstring>> g_createRights;  // mask, account

LONG WINAPI RecordingOpen(HKEY root, LPCWSTR path, DWORD options, REGSAM access, PHKEY out) {
    g_access.push_back(access);
    return ::RegOpenKeyExW(root, path, options, access, out);
}

LONG WINAPI RecordingCreate(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR cls, DWORD options,
                            REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY out,
                            LPDWORD disp) {
    g_access.push_back(access);
    BOOL present = FALSE, defaulted = FALSE;
    PACL dacl = nullptr;
    void* ace = nullptr;
    if (security && !security->bInheritHandle)
        ::GetSecurityDescriptorDacl(security->lpSecurityDescriptor, &present, &dacl, &defaulted);
    for (DWORD i = 0; dacl && g_createRights.size() < 7 && ::GetAce(dacl, i, &ace); ++i) {
        auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(ace);
        LPWSTR sid = nullptr;
        ::ConvertSidToStringSidW(&allowed->SidStart, &sid);
        g_createRights.emplace_back(allowed->Mask, sid ? sid : L"?");
        ::LocalFree(sid);
    }
    return ::RegCreateKeyExW(root, path, reserved, cls, options, access, security, out, disp);
}

TEST_F(StoreTest, ReadOpensAskNoWriteRightsAndCreatedKeysGetTheProductsRights) {
    const detail::RegistryOpenCalls saved = detail::ActiveRegistryOpenCalls();
    detail::ActiveRegistryOpenCalls() = {&RecordingOpen, &RecordingCreate};
    g_access.clear();
    g_createRights.clear();
    Registry r(kView32);
    r.Create(Parent(), key.node());
    r.Open(Parent(), key.node());
    r.OpenForEnumeration(Parent(), key.node());
    detail::ActiveRegistryOpenCalls() = saved;
    ASSERT_EQ(3u, g_access.size());
    for (size_t i = 0; i < g_access.size(); ++i) {
        EXPECT_EQ(KEY_WOW64_32KEY, g_access[i] & (KEY_WOW64_32KEY | KEY_WOW64_64KEY)) << i;
        const REGSAM beyond_reading = g_access[i] & ~(KEY_READ | KEY_WOW64_32KEY);
        EXPECT_EQ(i == 0, beyond_reading != 0) << i;  // only Create asks to write
    }
    // The installer and the scanning process were built against exactly
    // these rights, in this order, on the keys the add-in creates.
    const std::vector<std::pair<DWORD, std::wstring>> rights = {
        {0x1003F, L"S-1-5-32-544"}, {0x3F, L"S-1-5-32-547"},    {0x1003F, L"S-1-5-18"},
        {0x20009, L"S-1-5-11"},     {0x20009, L"S-1-5-32-545"}, {0x20009, L"S-1-5-4"},
        {0xF003F, L"S-1-3-0"}};
    EXPECT_EQ(rights, g_createRights);
    // A kind the table does not know builds no descriptor.
    EXPECT_EQ(nullptr, AccessControl::SecurityAttributes(13, true).Get()->lpSecurityDescriptor);
}

}  // namespace
}  // namespace Storage

namespace String {
namespace {

TEST(Utf8ToWide, ConvertsMultiByteSequencesAndStopsAtTheFirstZero) {
    std::wstring out = L"old";
    std::uint32_t error = 99;
    EXPECT_TRUE(Utf8ToWide("h\xC3\xA9llo \xE2\x82\xAC \xF0\x9F\x98\x80", out, &error));
    EXPECT_EQ(L"h\u00e9llo \u20ac \xD83D\xDE00", out);  // the emoji as a surrogate pair
    EXPECT_EQ(99u, error);
    EXPECT_TRUE(Utf8ToWide(std::string("ab\0cd", 5), out));
    EXPECT_EQ(L"ab", out);
}

}  // namespace
}  // namespace String
}  // namespace QzCommon
