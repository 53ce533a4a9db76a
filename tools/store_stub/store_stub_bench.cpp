// What the store stand-in costs per request, kept in memory with the
// journal off: the floor under the worker's throughput figure. One move
// request is the call sequence the add-in makes for it.
#include <windows.h>

#include "actions/QzStoreInterfaces.h"
#include "common_src/bench/bench.h"
#include "common_src/win32/handles.h"
#include "tools/store_stub/store_stub_control.h"

#include <chrono>
#include <cstdio>

using velk::win32::com_ptr;
using velk::win32::unique_bstr;

namespace {

constexpr ULONG kMessages = 20000;

HRESULT SetHeader(IQzMessage* msg, ULONG handle, const wchar_t* name, const wchar_t* value) {
    unique_bstr n(::SysAllocString(name)), v(::SysAllocString(value));
    ULONG ignored = 0;
    return msg->SetHeader(handle, n.get(), v.get(), &ignored);
}

// Creation to move, as for a spam verdict with a quarantine time.
HRESULT MoveRequest(ULONG id) {
    com_ptr<IQzFolderMgr> mgr;
    HRESULT hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                                    mgr.put_void());
    com_ptr<IQzFolder> folder;
    if (SUCCEEDED(hr))
        hr = mgr->GetFolder(1, folder.put());
    com_ptr<IQzMessage> msg;
    if (SUCCEEDED(hr))
        hr = folder->GetMessage(id, msg.put());
    ULONG handle = 0, ignored = 0, new_id = 0;
    if (SUCCEEDED(hr))
        hr = msg->GetBodyHandle(0, 0, &handle);
    if (SUCCEEDED(hr))
        hr = SetHeader(msg.get(), handle, L"x-has-been-detected_spam", L"1");
    if (SUCCEEDED(hr))
        hr = SetHeader(msg.get(), handle, L"X-Nuvexa-AntispamAddin-Checked", L"1");
    if (SUCCEEDED(hr))
        hr = SetHeader(msg.get(), handle, L"x-has-been-checked", L"1");
    if (SUCCEEDED(hr))
        hr = SetHeader(msg.get(), handle, L"X-Nuvexa-AntispamAddin-QuarantineTime", L"1700000000");
    if (SUCCEEDED(hr))
        hr = msg->Commit(&ignored);
    if (SUCCEEDED(hr))
        hr = mgr->MoveMessage(1, 2, id, &new_id);
    return hr;
}

}  // namespace

int main() {
    velk::win32::com_apartment apartment;
    velk::tools::StoreStub store;
    if (!store.Load() || FAILED(store.Register()) || FAILED(store.UseMemoryStore())) {
        std::printf("bench store_stub: cannot load or register the stand-in\n");
        return 1;
    }
    store.Reset();
    store.EnableJournal(false);
    const std::string eml =
        "Received: from mx.example.com\r\nFrom: a@example.com\r\nTo: b@example.com\r\n"
        "Subject: An offer\r\nDate: Mon, 1 Jan 2024 00:00:00 +0000\r\n\r\n" +
        std::string(2000, 'x') + "\r\n";
    for (ULONG id = 1; id <= kMessages; ++id)
        store.PutMessage(1, id, eml);
    store.CreateFolder(2);

    velk::bench::Report("store_stub CoCreateInstance+Release", velk::bench::Measure(5000, [] {
                            com_ptr<IQzFolderMgr> mgr;
                            ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                               IID_IQzFolderMgr, mgr.put_void());
                        }));

    ULONG next = 1;
    HRESULT failed = S_OK;
    auto start = std::chrono::steady_clock::now();
    velk::bench::Stats stats = velk::bench::Measure(
        kMessages - 10,
        [&] {
            HRESULT hr = MoveRequest(next++);
            if (FAILED(hr))
                failed = hr;
        },
        10);
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    velk::bench::Report("store_stub one move request's calls (memory)", stats);
    // No target of its own: the floor under the worker's figure, creation
    // included, since the add-in creates the store object per request.
    velk::bench::ReportValue("store_stub move requests per second (memory, no worker)",
                             kMessages / seconds, "requests/s");
    if (FAILED(failed) || store.ListMessages(2).size() != kMessages) {
        std::printf("bench store_stub: a request failed (0x%08lX)\n",
                    static_cast<unsigned long>(failed));
        return 1;
    }
    return store.OutstandingRefs() == 0 ? 0 : 1;
}
