// The fixture of the stand-in's own tests: the DLL loaded and registered
// once, a fresh mailbox folder per test, and a leak check after each.
#pragma once

#include <windows.h>

#include "actions/QzStoreInterfaces.h"
#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/handles.h"
#include "tools/store_stub/store_stub_control.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace velk::tools::testing {

using velk::win32::com_ptr;
using velk::win32::unique_bstr;

inline unique_bstr Bstr(const wchar_t* text) {
    return unique_bstr(::SysAllocString(text));
}

inline std::wstring Text(BSTR b) {
    return b ? std::wstring(b, ::SysStringLen(b)) : L"<null>";
}

class StoreStubTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        store_ = new StoreStub();
        ASSERT_TRUE(store_->Load()) << "store_stub.dll not loadable";
        ASSERT_EQ(S_OK, store_->Register());
    }
    static void TearDownTestSuite() {
        delete store_;
        store_ = nullptr;
    }

    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        ASSERT_EQ(S_OK, store().SetMailboxRoot(root_.path()));
        store().Reset();
    }

    void TearDown() override {
        store().ReleaseHold();
        EXPECT_EQ(0, store().OutstandingRefs()) << store().DescribeLiveObjects();
        EXPECT_EQ(0, store().LiveObjects());
        store().Reset();
        ::CoUninitialize();
    }

    static StoreStub& store() { return *store_; }

    // A message as the store keeps it on disk: <root>\<folder>\<id>.eml.
    void Put(ULONG folder, ULONG msg, const std::string& bytes) {
        ASSERT_EQ(S_OK, store().PutMessage(folder, msg, bytes));
    }
    std::string File(ULONG folder, ULONG msg) const {
        return root_.ReadFile(std::to_wstring(folder) + L"\\" + std::to_wstring(msg) + L".eml");
    }
    bool Exists(ULONG folder, ULONG msg) const { return store().HasMessage(folder, msg); }

    static com_ptr<IQzFolderMgr> CreateMgr() {
        com_ptr<IQzFolderMgr> mgr;
        EXPECT_EQ(S_OK, ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                           IID_IQzFolderMgr, mgr.put_void()));
        return mgr;
    }
    static com_ptr<IQzFolder> Folder(IQzFolderMgr* mgr, ULONG id) {
        com_ptr<IQzFolder> folder;
        EXPECT_EQ(S_OK, mgr->GetFolder(id, folder.put()));
        return folder;
    }
    static com_ptr<IQzMessage> Message(IQzFolder* folder, ULONG id) {
        com_ptr<IQzMessage> msg;
        EXPECT_EQ(S_OK, folder->GetMessage(id, msg.put()));
        return msg;
    }
    com_ptr<IQzMessage> Message(ULONG folder, ULONG id) {
        return Message(Folder(CreateMgr().get(), folder).get(), id);
    }
    static HRESULT SetHeader(IQzMessage* msg, const wchar_t* name, const wchar_t* value,
                             ULONG handle = STORE_STUB_BODY_HANDLE) {
        ULONG ignored = 0;
        return msg->SetHeader(handle, Bstr(name).get(), Bstr(value).get(), &ignored);
    }
    static HRESULT Commit(IQzMessage* msg) {
        ULONG ignored = 0;
        return msg->Commit(&ignored);
    }

    QzCommon::testing_util::TempFolder root_;

private:
    static inline StoreStub* store_ = nullptr;
};

}  // namespace velk::tools::testing
