#include "common_src/QzCommon/QzComn_Registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <vector>

#include "common_src/QzCommon/QzComn_test_util.h"

// While armed, the store's read buffers (nothrow new[]) end flush against a
// no-access page: reading one character past a buffer faults at once instead
// of finding whatever zeros happen to follow it on the heap.
namespace {
bool g_guardReads = false;
struct GuardedBlock {
    void* region;
    void* user;
};
std::vector<GuardedBlock>* g_guarded = nullptr;
}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (!g_guardReads)
        return std::malloc(size != 0 ? size : 1);
    SYSTEM_INFO info{};
    ::GetSystemInfo(&info);
    const std::size_t page = info.dwPageSize;
    const std::size_t data_pages = (size + page - 1) / page + 1;
    char* region = static_cast<char*>(
        ::VirtualAlloc(nullptr, (data_pages + 1) * page, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    if (region == nullptr)
        return nullptr;
    DWORD old = 0;
    ::VirtualProtect(region + data_pages * page, page, PAGE_NOACCESS, &old);
    char* user = region + data_pages * page - size;
    if (g_guarded == nullptr)
        g_guarded = new std::vector<GuardedBlock>();
    g_guarded->push_back({region, user});
    return user;
}

void operator delete[](void* p) noexcept {
    if (g_guarded != nullptr) {
        for (auto it = g_guarded->begin(); it != g_guarded->end(); ++it) {
            if (it->user == p) {
                ::VirtualFree(it->region, 0, MEM_RELEASE);
                g_guarded->erase(it);
                return;
            }
        }
    }
    std::free(p);
}

void operator delete[](void* p, std::size_t) noexcept {
    operator delete[](p);
}

namespace QzCommon {
namespace Storage {
namespace {

using testing_util::TempKey;

template <class F>
DWORD ErrorOf(F&& body) {
    auto error = Capture<Exception>(std::forward<F>(body));
    return error ? error->m_dwErrorCode : 0;
}

class RegistryTest : public ::testing::Test {
protected:
    RegistryTest() { store.Create(Parent(), key.node()); }
    StorageLocation Parent() const { return StorageLocation(HKEY_CURRENT_USER, L"Software"); }

    TempKey key{HKEY_CURRENT_USER};
    Registry store;
};

TEST_F(RegistryTest, ValuesRoundTripAsTheirRegistryTypes) {
    store.WriteString(L"Text", L"hello");
    store.WriteDword(L"Number", 4294967295u);
    store.WriteQword(L"Big", 0x0102030405060708ull);
    store.WriteBinary(L"Blob", ByteBuffer{0, 1, 255, 0});
    EXPECT_EQ(L"hello", store.ReadString(L"Text", L"x"));
    EXPECT_EQ(4294967295u, store.ReadDword(L"Number", 0));
    ByteBuffer blob;
    EXPECT_TRUE(store.ReadBinary(L"Blob", blob));
    EXPECT_EQ((ByteBuffer{0, 1, 255, 0}), blob);

    // What other programs read: the terminator stored, a real 64-bit value.
    DWORD type = 0, bytes = 0;
    HKEY raw = nullptr;
    ::RegOpenKeyExW(HKEY_CURRENT_USER, key.path().c_str(), 0, KEY_QUERY_VALUE, &raw);
    ::RegQueryValueExW(raw, L"Text", nullptr, &type, nullptr, &bytes);
    EXPECT_EQ(12u, bytes);
    ::RegQueryValueExW(raw, L"Big", nullptr, &type, nullptr, &bytes);
    EXPECT_EQ(static_cast<DWORD>(REG_QWORD), type);
    ::RegCloseKey(raw);
}

TEST_F(RegistryTest, StringReadsStopAtTheFirstZeroAndDoNotExpand) {
    key.SetRaw(L"Multi", REG_MULTI_SZ, L"a\0b\0", 10);
    key.SetRaw(L"Expand", REG_EXPAND_SZ, L"%SystemRoot%\\x", 30);
    key.SetRaw(L"Unterminated", REG_SZ, L"abc", 6);
    key.SetRaw(L"Odd", REG_SZ, L"xyz", 5);  // the half character reads as a whole one
    EXPECT_EQ(L"a|%SystemRoot%\\x|abc|xyz",
              store.ReadString(L"Multi", L"") + L"|" + store.ReadString(L"Expand", L"") + L"|" +
                  store.ReadString(L"Unterminated", L"") + L"|" + store.ReadString(L"Odd", L""));
}

TEST_F(RegistryTest, OddByteCountsNeverReadPastTheBuffer) {
    const wchar_t text[] = L"abcdefghijklmnopqrstuvwxyz";
    for (DWORD bytes = 1; bytes < 2 * 26; bytes += 2)
        key.SetRaw(L"Odd" + std::to_wstring(bytes), REG_SZ, text, bytes);
    for (DWORD bytes = 1; bytes < 2 * 26; bytes += 2) {
        g_guardReads = true;
        const std::wstring read = store.ReadString(L"Odd" + std::to_wstring(bytes), L"-");
        g_guardReads = false;
        // The half character counts as a whole one, as the system's own
        // readers take it.
        EXPECT_EQ(std::wstring(text, bytes / 2 + 1), read) << bytes;
    }
}

TEST_F(RegistryTest, WrongTypeOrSizeIsError13AndNoThrowTwinsReportIt) {
    const ULONGLONG seven = 7;
    key.SetRaw(L"Bin4", REG_BINARY, &seven, 4);
    key.SetRaw(L"Dword8", REG_DWORD, &seven, 8);
    key.SetRaw(L"Dword", REG_DWORD, &seven, 4);
    ByteBuffer out{9};
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadDword(L"Bin4", 1); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadString(L"Dword", L""); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadBinary(L"Dword", out); }));
    EXPECT_EQ((ByteBuffer{9}), out);

    DWORD error = 0;
    EXPECT_EQ(55u, store.ReadDwordNoThrow(L"Dword8", 55, &error));
    EXPECT_EQ(13u, error);
    EXPECT_EQ(L"dflt", store.ReadStringNoThrow(L"Missing", L"dflt", &error));
    EXPECT_EQ(2u, error);  // the system's code passes through
}

TEST_F(RegistryTest, EnumerationNeedsItsOwnOpenAndDeletesRemoveOnlyWhatTheyName) {
    StringList names;
    EXPECT_EQ(5u, ErrorOf([&] { store.EnumerateNodes(names); }));  // Create's rights lack it
    Registry child, reader;
    child.Create(StorageLocation(HKEY_CURRENT_USER, key.path().c_str()), L"child");
    reader.OpenForEnumeration(Parent(), key.node());
    EXPECT_TRUE(reader.EnumerateNodes(names));
    EXPECT_EQ(StringList{L"child"}, names);
    EXPECT_NE(0u, ErrorOf([&] { store.DeleteNode(); }));  // it has a sub-key
    EXPECT_TRUE(child.DeleteNode() && store.DeleteNode());
    EXPECT_EQ(2u, ErrorOf([&] { reader.Open(Parent(), key.node()); }));
}

TEST_F(RegistryTest, ClosedStoresAnswerError6AndAFailedOpenLeavesTheStoreClosed) {
    auto error = Capture<Exception>([&] { Registry().Close(false); });
    ASSERT_TRUE(error);
    EXPECT_EQ(6u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_Registry", error->m_strSourceFile);
    EXPECT_EQ(160u, ErrorOf([&] { store.Open(HKEY(nullptr), L"Software", kView64); }));
    EXPECT_EQ(2u, ErrorOf([&] { store.Open(Parent(), key.node() + L"\\missing"); }));
    EXPECT_FALSE(store.IsOpen());
    EXPECT_EQ(6u, ErrorOf([&] { store.ReadString(L"k", L""); }));
}

// What each open asks the system for, seen through the calls: Wine grants
// everything, a limited user on Windows does not.
std::vector<REGSAM> g_access;
std::vector<DWORD> g_createMasks;

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
    for (DWORD i = 0; dacl && ::GetAce(dacl, i, &ace); ++i)
        g_createMasks.push_back(static_cast<ACCESS_ALLOWED_ACE*>(ace)->Mask);
    return ::RegCreateKeyExW(root, path, reserved, cls, options, access, security, out, disp);
}

TEST_F(RegistryTest, ReadOpensAskNoWriteRightsAndCreatedKeysGetTheProductsRights) {
    const detail::RegistryOpenCalls saved = detail::ActiveRegistryOpenCalls();
    detail::ActiveRegistryOpenCalls() = {&RecordingOpen, &RecordingCreate};
    g_access.clear();
    g_createMasks.clear();
    const std::pair<DWORD, REGSAM> views[] = {
        {kDefaultView, 0}, {kView32, KEY_WOW64_32KEY}, {kView64, KEY_WOW64_64KEY}};
    for (const auto& view : views) {
        Registry r(view.first);
        r.Create(Parent(), key.node());
        r.Open(Parent(), key.node());
        r.OpenForEnumeration(Parent(), key.node());
    }
    detail::ActiveRegistryOpenCalls() = saved;
    ASSERT_EQ(9u, g_access.size());
    for (size_t i = 0; i < g_access.size(); ++i) {
        const REGSAM view = views[i / 3].second;
        EXPECT_EQ(view, g_access[i] & (KEY_WOW64_32KEY | KEY_WOW64_64KEY)) << i;
        if (i % 3 != 0)  // Open and OpenForEnumeration read only
            EXPECT_EQ(0u, g_access[i] & ~(KEY_READ | view)) << i;
    }
    // Administrators, Power Users, Local System, Authenticated Users, Users,
    // Interactive, Creator Owner: the installer and the scanning process
    // were built against exactly these rights on the keys the add-in creates.
    ASSERT_EQ(21u, g_createMasks.size());
    EXPECT_EQ((std::vector<DWORD>{0x1003F, 0x3F, 0x1003F, 0x20009, 0x20009, 0x20009, 0xF003F}),
              std::vector<DWORD>(g_createMasks.begin(), g_createMasks.begin() + 7));
}

// A 64-bit process sees the 32-bit view of HKLM\Software elsewhere: a value
// written through one view is found only through that view.
TEST(RegistryViews, AValueWrittenThroughThe32BitViewIsNotInThe64BitView) {
    TempKey key(HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY);
    Registry writer(kView32);
    writer.Create(StorageLocation(HKEY_LOCAL_MACHINE, L"Software"), key.node());
    writer.WriteString(L"Where", L"32");
    Registry reader;
    EXPECT_TRUE(reader.Open(HKEY_LOCAL_MACHINE, key.path().c_str(), kView32));
    EXPECT_EQ(L"32", reader.ReadString(L"Where", L""));
    EXPECT_EQ(2u, ErrorOf([&] { reader.Open(HKEY_LOCAL_MACHINE, key.path().c_str(), kView64); }));
}

}  // namespace
}  // namespace Storage
}  // namespace QzCommon
