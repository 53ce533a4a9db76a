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
    store.WriteString(L"", L"default value");
    EXPECT_EQ(L"hello", store.ReadString(L"Text", L"x"));
    EXPECT_EQ(4294967295u, store.ReadDword(L"Number", 0));
    ByteBuffer blob;
    EXPECT_TRUE(store.ReadBinary(L"Blob", blob));
    EXPECT_EQ((ByteBuffer{0, 1, 255, 0}), blob);
    EXPECT_EQ(L"default value", store.ReadString(std::wstring(), L"x"));

    // The typed reads above checked type and size; these two only a raw read shows.
    DWORD type = 0, bytes = 0;
    HKEY raw = nullptr;
    ::RegOpenKeyExW(HKEY_CURRENT_USER, key.path().c_str(), 0, KEY_QUERY_VALUE, &raw);
    ::RegQueryValueExW(raw, L"Text", nullptr, &type, nullptr, &bytes);
    EXPECT_EQ(12u, bytes);  // five characters and the terminator
    ::RegQueryValueExW(raw, L"Big", nullptr, &type, nullptr, &bytes);
    EXPECT_EQ(static_cast<DWORD>(REG_QWORD), type);
    EXPECT_EQ(8u, bytes);
    ::RegCloseKey(raw);
}

TEST_F(RegistryTest, StringReadsStopAtTheFirstZeroAndDoNotExpand) {
    key.SetRaw(L"Multi", REG_MULTI_SZ, L"a\0b\0", 10);
    key.SetRaw(L"Expand", REG_EXPAND_SZ, L"%SystemRoot%\\x", 30);
    key.SetRaw(L"Unterminated", REG_SZ, L"abc", 6);
    key.SetRaw(L"Odd", REG_SZ, L"xyz", 5);  // the half character reads as a whole one
    EXPECT_EQ(L"a", store.ReadString(L"Multi", L""));
    EXPECT_EQ(L"%SystemRoot%\\x", store.ReadString(L"Expand", L""));
    EXPECT_EQ(L"abc", store.ReadString(L"Unterminated", L""));
    EXPECT_EQ(L"xyz", store.ReadString(L"Odd", L""));
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
    key.SetRaw(L"Text", REG_SZ, L"t", 4);
    ByteBuffer out{9};
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadDword(L"Bin4", 1); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadDword(L"Dword8", 1); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadString(L"Dword", L""); }));
    EXPECT_EQ(13u, ErrorOf([&] { store.ReadBinary(L"Text", out); }));
    EXPECT_EQ((ByteBuffer{9}), out);

    DWORD error = 0;
    EXPECT_EQ(55u, store.ReadDwordNoThrow(L"Dword8", 55, &error));
    EXPECT_EQ(13u, error);
    error = 0;
    EXPECT_EQ(L"dflt", store.ReadStringNoThrow(L"Bin4", L"dflt", &error));
    EXPECT_EQ(13u, error);
    error = 0;
    EXPECT_FALSE(store.ReadBinaryNoThrow(L"Dword", out, &error));
    EXPECT_EQ(13u, error);
    EXPECT_EQ(66u, store.ReadDwordNoThrow(L"Missing", 66, &error));
    EXPECT_EQ(2u, error);  // the system's code passes through
}

TEST_F(RegistryTest, EnumerationNeedsItsOwnOpenAndNamesFitIn255Characters) {
    StringList names;
    EXPECT_EQ(5u, ErrorOf([&] { store.EnumerateNodes(names); }));  // Create's rights lack it
    Registry reader;
    reader.OpenForEnumeration(Parent(), key.node());
    EXPECT_TRUE(reader.EnumerateNodes(names) && reader.EnumerateValues(names));
    EXPECT_TRUE(names.empty());

    for (const wchar_t* sub : {L"beta", L"alpha", L"gamma"})
        Registry().Create(StorageLocation(HKEY_CURRENT_USER, key.path().c_str()), sub);
    store.WriteDword(L"v1", 1);
    store.WriteDword(L"v2", 2);
    EXPECT_TRUE(reader.EnumerateNodes(names));
    std::vector<std::wstring> sorted(names.begin(), names.end());
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ((std::vector<std::wstring>{L"alpha", L"beta", L"gamma"}), sorted);
    names.clear();
    EXPECT_TRUE(reader.EnumerateValues(names));
    EXPECT_EQ(2u, names.size());

    // The name buffer holds 254 characters and the terminator.
    store.WriteDword(std::wstring(254, L'n'), 1);
    EXPECT_TRUE(reader.EnumerateValues(names));
    store.WriteDword(std::wstring(255, L'n'), 1);
    EXPECT_EQ(234u, ErrorOf([&] { reader.EnumerateValues(names); }));  // ERROR_MORE_DATA
}

TEST_F(RegistryTest, ClosedStoresAnswerError6AndNullRootsError160) {
    auto error = Capture<Exception>([&] { Registry().Close(false); });
    ASSERT_TRUE(error);
    EXPECT_EQ(6u, error->m_dwErrorCode);
    // Other components print this string; it must not change.
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_Registry", error->m_strSourceFile);
    EXPECT_GT(error->m_dwSourceLine, 0u);

    EXPECT_TRUE(store.Close(true));
    StringList names;
    EXPECT_EQ(6u, ErrorOf([&] { store.ReadString(L"k", L""); }));
    EXPECT_EQ(6u, ErrorOf([&] { store.WriteQword(L"k", 1); }));
    EXPECT_EQ(6u, ErrorOf([&] { store.EnumerateValues(names); }));
    EXPECT_EQ(6u, ErrorOf([&] { store.Close(false); }));
    EXPECT_EQ(160u,
              ErrorOf([&] { store.Create(StorageLocation(HKEY(nullptr), L"Software"), L"x"); }));
    EXPECT_EQ(160u, ErrorOf([&] { store.Open(HKEY(nullptr), L"Software", kView64); }));

    // A failed open throws the system's code and leaves the store closed.
    store.Open(Parent(), key.node());
    EXPECT_EQ(2u, ErrorOf([&] { store.Open(Parent(), key.node() + L"\\missing"); }));
    EXPECT_FALSE(store.IsOpen());
}

TEST_F(RegistryTest, DeleteValueAndDeleteNodeRemoveOnlyWhatTheyName) {
    store.WriteString(L"k", L"v");
    store.WriteString(L"keep", L"v");
    Registry writer, child;
    writer.OpenForWrite(StorageLocation(HKEY_CURRENT_USER, L"Software\\"), key.node());
    EXPECT_TRUE(writer.DeleteValue(L"k"));
    EXPECT_EQ(2u, ErrorOf([&] { store.ReadString(L"k", L""); }));
    EXPECT_EQ(L"v", store.ReadString(L"keep", L""));

    child.Create(StorageLocation(HKEY_CURRENT_USER, key.path().c_str()), L"child");
    EXPECT_NE(0u, ErrorOf([&] { store.DeleteNode(); }));  // it has a sub-key
    EXPECT_TRUE(child.DeleteNode());
    EXPECT_TRUE(store.DeleteNode());
    EXPECT_FALSE(key.Exists());
}

// The exact rights and security each open asks for, seen through the calls.
std::vector<REGSAM> g_access;
std::vector<DWORD> g_createMasks;
SECURITY_ATTRIBUTES g_createSecurity;

LONG WINAPI RecordingOpen(HKEY root, LPCWSTR path, DWORD options, REGSAM access, PHKEY out) {
    g_access.push_back(access);
    return ::RegOpenKeyExW(root, path, options, access, out);
}

LONG WINAPI RecordingCreate(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR cls, DWORD options,
                            REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY out,
                            LPDWORD disp) {
    g_access.push_back(access);
    if (!security)
        return ERROR_INVALID_PARAMETER;
    g_createSecurity = *security;
    BOOL present = FALSE, defaulted = FALSE;
    PACL dacl = nullptr;
    void* ace = nullptr;
    ::GetSecurityDescriptorDacl(security->lpSecurityDescriptor, &present, &dacl, &defaulted);
    for (DWORD i = 0; dacl && ::GetAce(dacl, i, &ace); ++i)
        g_createMasks.push_back(static_cast<ACCESS_ALLOWED_ACE*>(ace)->Mask);
    EXPECT_EQ(static_cast<DWORD>(REG_OPTION_NON_VOLATILE), options);
    return ::RegCreateKeyExW(root, path, reserved, cls, options, access, security, out, disp);
}

TEST_F(RegistryTest, EachOpenAsksForItsExactRightsPlusTheViewFlag) {
    const detail::RegistryOpenCalls saved = detail::ActiveRegistryOpenCalls();
    detail::ActiveRegistryOpenCalls() = {&RecordingOpen, &RecordingCreate};
    g_access.clear();
    g_createMasks.clear();
    for (DWORD view : {0u, 1u, 2u, 3u}) {
        Registry r(view);
        r.Create(Parent(), key.node());
        r.Open(Parent(), key.node());
        r.OpenForWrite(Parent(), key.node());
        r.OpenForEnumeration(Parent(), key.node());
    }
    Registry r;
    r.Open(HKEY_CURRENT_USER, key.path().c_str(), kView64);  // the view stays for later opens
    r.OpenForWrite(Parent(), key.node());
    detail::ActiveRegistryOpenCalls() = saved;

    // Create, Open, OpenForWrite, OpenForEnumeration per view: none, 32, 64, unknown.
    EXPECT_EQ((std::vector<REGSAM>{0x7, 0x1, 0x10002, 0x9, 0x207, 0x201, 0x10202, 0x209, 0x107,
                                   0x101, 0x10102, 0x109, 0x7, 0x1, 0x10002, 0x9, 0x101, 0x10102}),
              g_access);
    // Keys are created with the registry-key security attributes, not inheritable.
    EXPECT_EQ(24u, g_createSecurity.nLength);
    EXPECT_FALSE(g_createSecurity.bInheritHandle);
    EXPECT_EQ(28u, g_createMasks.size());
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
    EXPECT_TRUE(IsNative64BitSystem());  // the test bed is a 64-bit prefix
}

}  // namespace
}  // namespace Storage
}  // namespace QzCommon
