// The store's method-table positions as the contract numbers them, checked
// without the interface header the add-in and the stand-in are built from:
// each method is called through the raw table by its slot number against the
// store stand-in, whose journal names the method that answered. A header
// that shifts a slot makes the add-in and the stand-in agree with each other
// and disagree with the real server; this test sees that.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "actions/actions_test_support.h"

namespace {

using velk::actions::testing::StoreFixture;

// {6E3B9A14-0C57-4D2E-B8F1-93A2C5D7E048} and {6E3B9A38-...}, spelt out here.
constexpr CLSID kStoreClass = {
    0x6E3B9A14, 0x0C57, 0x4D2E, {0xB8, 0xF1, 0x93, 0xA2, 0xC5, 0xD7, 0xE0, 0x48}};
constexpr IID kFolderMgr = {
    0x6E3B9A38, 0x0C57, 0x4D2E, {0xB8, 0xF1, 0x93, 0xA2, 0xC5, 0xD7, 0xE0, 0x48}};

// Calls method `slot` of `object`'s table (IUnknown's three counted from 0).
template <class... Args>
HRESULT Slot(void* object, int slot, Args... args) {
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*, Args...);
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Method>(table[slot])(object, args...);
}
void Release(void* object) {
    reinterpret_cast<IUnknown*>(object)->Release();
}

TEST(StoreSlots, EveryContractMethodAnswersAtItsSlot) {
    velk::win32::com_apartment apartment(COINIT_APARTMENTTHREADED);
    StoreFixture store;
    ASSERT_TRUE(store.Setup());
    store->PutMessage(1, 7, "Subject: a\r\n\r\nbody\r\n");
    store->PutMessage(1, 8, "Subject: b\r\n\r\nbody\r\n");
    store->CreateFolder(2);
    store->Reset();

    void* mgr = nullptr;
    ASSERT_EQ(S_OK,
              ::CoCreateInstance(kStoreClass, nullptr, CLSCTX_INPROC_SERVER, kFolderMgr, &mgr));
    void* folder = nullptr;
    ASSERT_EQ(S_OK, Slot(mgr, 13, ULONG(1), &folder));
    void* msg = nullptr;
    ASSERT_EQ(S_OK, Slot(folder, 10, &msg));
    Release(msg);
    ASSERT_EQ(S_OK, Slot(folder, 11, &msg));
    Release(msg);
    ASSERT_EQ(S_OK, Slot(folder, 12, ULONG(7), &msg));
    ULONG ignored = 0, body = 0;
    BSTR text = nullptr;
    EXPECT_EQ(S_OK, Slot(msg, 16, &ignored));
    EXPECT_EQ(S_OK, Slot(msg, 21, &text));
    ::SysFreeString(text);
    EXPECT_EQ(S_OK, Slot(msg, 32, ULONG(0), ULONG(0), &body));
    BSTR subject = ::SysAllocString(L"s"), name = ::SysAllocString(L"X-A"),
         value = ::SysAllocString(L"1");
    EXPECT_EQ(S_OK, Slot(msg, 47, body, ULONG(5), subject, &ignored));
    EXPECT_EQ(S_OK, Slot(msg, 48, body, name, value, &ignored));
    BYTE found = 0;
    text = nullptr;
    EXPECT_EQ(S_OK, Slot(msg, 49, body, name, &found, &text));
    ::SysFreeString(text);
    EXPECT_EQ(S_OK, Slot(msg, 53, &ignored));
    EXPECT_EQ(S_OK, Slot(msg, 17, ULONG(1)));
    Release(msg);
    EXPECT_EQ(S_OK, Slot(folder, 14, ULONG(8), ULONG(1), &ignored));
    Release(folder);
    store->PutMessage(1, 9, "Subject: c\r\n\r\nbody\r\n");
    ULONG moved = 0;
    EXPECT_EQ(S_OK, Slot(mgr, 22, ULONG(1), ULONG(2), ULONG(9), &moved));
    Release(mgr);
    for (BSTR b : {subject, name, value})
        ::SysFreeString(b);

    std::vector<std::wstring> called;
    for (const std::wstring& line : store->JournalLines())
        called.push_back(line.substr(0, line.find(L'(')));
    EXPECT_EQ(
        (std::vector<std::wstring>{
            L"CreateInstance", L"GetFolder", L"GetFirstMessage", L"GetNextMessage", L"GetMessage",
            L"PostProcess", L"GetHeaderText", L"GetBodyHandle", L"SetPropById", L"SetHeader",
            L"QueryHeader", L"Commit", L"Delete", L"DeleteMessage", L"MoveMessage"}),
        called);
    EXPECT_EQ(0, store->ContractViolations());
    EXPECT_EQ(0, store->LiveObjects());
}

}  // namespace
