// The fixture of the stand-in's own tests: the DLL loaded and registered
// once, a fresh mailbox directory per test, and a leak check after each.
#pragma once

#include <windows.h>

#include "actions/QzStoreInterfaces.h"
#include "common_src/win32/handles.h"
#include "tools/store_stub/store_stub_control.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::tools::testing {

using velk::win32::com_ptr;
using velk::win32::unique_bstr;

inline std::string ReadFileBytes(const std::wstring& path, bool* exists = nullptr) {
    std::string bytes;
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
    if (exists)
        *exists = file != INVALID_HANDLE_VALUE;
    if (file == INVALID_HANDLE_VALUE)
        return bytes;
    char buffer[4096];
    DWORD got = 0;
    while (::ReadFile(file, buffer, sizeof buffer, &got, nullptr) && got)
        bytes.append(buffer, got);
    ::CloseHandle(file);
    return bytes;
}

inline bool FileExists(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

inline void WriteFileBytes(const std::wstring& path, const std::string& bytes) {
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file) << "cannot write " << path.size();
    DWORD done = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr);
    ::CloseHandle(file);
}

inline void DeleteTree(const std::wstring& dir) {
    WIN32_FIND_DATAW data;
    HANDLE find = ::FindFirstFileW((dir + L"\\*").c_str(), &data);
    if (find != INVALID_HANDLE_VALUE) {
        do {
            std::wstring name = data.cFileName;
            if (name == L"." || name == L"..")
                continue;
            std::wstring path = dir + L"\\" + name;
            if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                DeleteTree(path);
            else
                ::DeleteFileW(path.c_str());
        } while (::FindNextFileW(find, &data));
        ::FindClose(find);
    }
    ::RemoveDirectoryW(dir.c_str());
}

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
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        static int counter = 0;
        root_ = std::wstring(temp) + L"store_stub_" + std::to_wstring(::GetCurrentProcessId()) +
                L"_" + std::to_wstring(++counter);
        ASSERT_EQ(S_OK, store().SetMailboxRoot(root_));
        store().Reset();
    }

    void TearDown() override {
        store().ReleaseHold();
        EXPECT_EQ(0, store().OutstandingRefs()) << Narrow(store().DescribeLiveObjects());
        EXPECT_EQ(0, store().LiveObjects());
        store().Reset();
        ::CoUninitialize();
        DeleteTree(root_);
    }

    static StoreStub& store() { return *store_; }

    std::wstring FolderDir(ULONG folder) const { return root_ + L"\\" + std::to_wstring(folder); }
    std::wstring MessagePath(ULONG folder, ULONG msg) const {
        return FolderDir(folder) + L"\\" + std::to_wstring(msg) + L".eml";
    }
    // A message as a file, written directly: what the store finds on disk.
    void PutFile(ULONG folder, ULONG msg, const std::string& bytes) {
        ::CreateDirectoryW(FolderDir(folder).c_str(), nullptr);
        WriteFileBytes(MessagePath(folder, msg), bytes);
    }
    std::string File(ULONG folder, ULONG msg, bool* exists = nullptr) const {
        return ReadFileBytes(MessagePath(folder, msg), exists);
    }

    static com_ptr<IQzFolderMgr> CreateMgr() {
        com_ptr<IQzFolderMgr> mgr;
        HRESULT hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                                        mgr.put_void());
        EXPECT_EQ(S_OK, hr);
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
    static HRESULT SetHeader(IQzMessage* msg, const wchar_t* name, const wchar_t* value,
                             ULONG handle = STORE_STUB_BODY_HANDLE) {
        ULONG ignored = 0;
        return msg->SetHeader(handle, Bstr(name).get(), Bstr(value).get(), &ignored);
    }
    static HRESULT Commit(IQzMessage* msg) {
        ULONG ignored = 0;
        return msg->Commit(&ignored);
    }

    static std::string Narrow(const std::wstring& text) {
        std::string out;
        for (wchar_t c : text)
            out += c < 128 ? static_cast<char>(c) : '?';
        return out;
    }

    std::wstring root_;

private:
    static inline StoreStub* store_ = nullptr;
};

}  // namespace velk::tools::testing
