// What tests of the add-in lean on: injected faults, the held call and the
// leak check.
#include "tools/store_stub/store_stub_test_support.h"

#include <chrono>
#include <future>
#include <vector>

namespace velk::tools::testing {
namespace {

const std::string kMessage = "Subject: s\r\n\r\nbody\r\n";

// The add-in's usual operation: five calls, each a chance to fail.
HRESULT TagMessage(ULONG id, const wchar_t* header) {
    com_ptr<IQzFolderMgr> mgr;
    HRESULT hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                                    mgr.put_void());
    com_ptr<IQzFolder> folder;
    if (SUCCEEDED(hr))
        hr = mgr->GetFolder(1, folder.put());
    com_ptr<IQzMessage> msg;
    if (SUCCEEDED(hr))
        hr = folder->GetMessage(id, msg.put());
    ULONG ignored = 0;
    if (SUCCEEDED(hr))
        hr = msg->SetHeader(STORE_STUB_BODY_HANDLE, Bstr(header).get(), Bstr(L"1").get(), &ignored);
    return SUCCEEDED(hr) ? msg->Commit(&ignored) : hr;
}

using StoreStubFaults = StoreStubTest;

TEST_F(StoreStubFaults, TheNthCallOfTheNamedMethodFailsOnceAndChangesNothing) {
    Put(1, 7, kMessage);
    com_ptr<IQzMessage> msg = Message(1, 7);
    ASSERT_EQ(S_OK, store().InjectFault(L"SetHeader", 2, E_ACCESSDENIED));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"A", L"1"));
    EXPECT_EQ(E_ACCESSDENIED, SetHeader(msg.get(), L"B", L"1"));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"C", L"1"));
    EXPECT_EQ(0u, store().PendingFaults());
    ASSERT_EQ(S_OK, store().InjectFault(L"Commit", 1, E_FAIL));
    EXPECT_EQ(E_FAIL, Commit(msg.get()));
    EXPECT_EQ(kMessage, File(1, 7));
    ASSERT_EQ(S_OK, Commit(msg.get()));
    EXPECT_EQ("Subject: s\r\nA: 1\r\nC: 1\r\n\r\nbody\r\n", File(1, 7));
}

// Whatever step fails, the out-parameter is cleared, nothing is written and
// nothing leaks.
TEST_F(StoreStubFaults, AStarCountsEveryCallSoEachStepOfAnOperationCanBeFailedInTurn) {
    Put(1, 7, kMessage);
    for (ULONG step = 1; step <= 5; ++step) {
        store().ClearJournal();
        ASSERT_EQ(S_OK, store().InjectFault(L"*", step, E_ABORT));
        EXPECT_EQ(E_ABORT, TagMessage(7, L"X-Step")) << "step " << step;
        EXPECT_EQ(step, store().JournalLines().size());
        EXPECT_EQ(kMessage, File(1, 7));
        EXPECT_EQ(0, store().OutstandingRefs()) << "step " << step;
    }
    ASSERT_EQ(S_OK, store().InjectFault(L"GetFolder", 1, E_OUTOFMEMORY));
    IQzFolder* raw = reinterpret_cast<IQzFolder*>(0x1234);
    EXPECT_EQ(E_OUTOFMEMORY, CreateMgr()->GetFolder(1, &raw));
    EXPECT_EQ(nullptr, raw);
    EXPECT_EQ(S_OK, TagMessage(7, L"X-Step"));
    EXPECT_EQ("Subject: s\r\nX-Step: 1\r\n\r\nbody\r\n", File(1, 7));
}

TEST_F(StoreStubFaults, NullOutSucceedsWithNothingHandedOut) {
    Put(1, 7, kMessage);
    ASSERT_EQ(S_OK, store().CreateFolder(2));
    ASSERT_EQ(S_OK, store().InjectNullOut(L"CreateInstance", 1));
    com_ptr<IQzFolderMgr> none;
    EXPECT_EQ(S_OK, ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                                       none.put_void()));
    EXPECT_FALSE(none);

    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    com_ptr<IQzFolder> folder;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetFolder", 1));
    EXPECT_EQ(S_OK, mgr->GetFolder(1, folder.put()));
    EXPECT_FALSE(folder);
    folder = Folder(mgr.get(), 1);
    com_ptr<IQzMessage> msg;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetMessage", 1));
    EXPECT_EQ(S_OK, folder->GetMessage(7, msg.put()));
    EXPECT_FALSE(msg);
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetFirstMessage", 1));
    EXPECT_EQ(S_OK, folder->GetFirstMessage(msg.put()));
    EXPECT_FALSE(msg);

    msg = Message(folder.get(), 7);
    ULONG handle = 5;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetBodyHandle", 1));
    EXPECT_EQ(S_OK, msg->GetBodyHandle(0, 0, &handle));
    EXPECT_EQ(0u, handle);
    unique_bstr text;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetHeaderText", 1));
    EXPECT_EQ(S_OK, msg->GetHeaderText(text.put()));
    EXPECT_EQ(nullptr, text.get());

    ULONG new_id = 9;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"MoveMessage", 1));
    EXPECT_EQ(S_OK, mgr->MoveMessage(1, 2, 7, &new_id));
    EXPECT_EQ(0u, new_id);
    EXPECT_EQ(kMessage, File(1, 7)) << "a null-out move moves nothing";
    EXPECT_EQ(0u, store().PendingFaults());
}

TEST_F(StoreStubFaults, BadArmingIsRefusedAndClearDisarms) {
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"Commit", 0, E_FAIL));
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"Commit", 1, S_OK));
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"", 1, E_FAIL));
    EXPECT_EQ(E_INVALIDARG, store().HoldCall(L""));
    ASSERT_EQ(S_OK, store().InjectFault(L"CreateInstance", 1, E_FAIL));
    store().ClearFaults();
    EXPECT_EQ(0u, store().PendingFaults());
    EXPECT_TRUE(CreateMgr());
}

// Runs `work` on a thread with its own apartment, as the add-in's worker.
template <class F>
std::future<HRESULT> InApartment(F work) {
    return std::async(std::launch::async, [work] {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        const HRESULT hr = work();
        ::CoUninitialize();
        return hr;
    });
}

using StoreStubHold = StoreStubTest;

TEST_F(StoreStubHold, HoldsOneCallJournaledUntilReleasedWhileOtherCallsGoOn) {
    Put(1, 7, kMessage);
    EXPECT_FALSE(store().WaitUntilHeld(20)) << "nothing armed";
    ASSERT_EQ(S_OK, store().HoldCall(L"GetFolder"));
    std::future<HRESULT> worker = InApartment([] { return TagMessage(7, L"X-Held"); });
    ASSERT_TRUE(store().WaitUntilHeld(10000));
    EXPECT_EQ(std::future_status::timeout, worker.wait_for(std::chrono::milliseconds(50)));
    EXPECT_EQ(L"GetFolder(1) -> pending", store().JournalLines(STORE_STUB_JOURNAL_RESULT).back());
    EXPECT_TRUE(Folder(CreateMgr().get(), 1)) << "only one call is held";
    store().ReleaseHold();
    EXPECT_EQ(S_OK, worker.get());
    EXPECT_EQ(L"GetFolder(1) -> 0x00000000", store().JournalLines(STORE_STUB_JOURNAL_RESULT)[1]);

    ASSERT_EQ(S_OK, store().HoldCall(L"Commit"));
    EXPECT_FALSE(store().WaitUntilHeld(20)) << "armed, nothing caught yet";
    store().ReleaseHold();
    EXPECT_EQ(S_OK, TagMessage(7, L"X-Free")) << "disarmed: does not block";
}

using StoreStubLeaks = StoreStubTest;

TEST_F(StoreStubLeaks, AReferenceKeptIsCountedAndNamedUntilReleased) {
    Put(1, 7, kMessage);
    auto can_unload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(::GetProcAddress(store().module(), "DllCanUnloadNow")));
    ASSERT_NE(nullptr, can_unload);
    IQzMessage* leaked = nullptr;
    {
        com_ptr<IQzMessage> msg = Message(1, 7);
        leaked = msg.get();
        leaked->AddRef();  // the deliberate leak
    }
    EXPECT_EQ(1, store().LiveObjects());
    EXPECT_EQ(L"IQzMessage @1/7 refs=1\n", store().DescribeLiveObjects());
    EXPECT_EQ(S_FALSE, can_unload());
    IUnknown* unknown = nullptr;
    ASSERT_EQ(S_OK, leaked->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)));
    EXPECT_EQ(2, store().OutstandingRefs());
    unknown->Release();
    leaked->Release();
    EXPECT_EQ(0, store().LiveObjects());
    EXPECT_EQ(S_OK, can_unload());
}

TEST_F(StoreStubLeaks, ConcurrentApartmentsKeepTheCountsAndTheStoreConsistent) {
    ASSERT_EQ(S_OK, store().UseMemoryStore());
    constexpr ULONG kPerThread = 200;
    for (ULONG i = 1; i <= 2 * kPerThread; ++i)
        Put(1, i, kMessage);
    ASSERT_EQ(S_OK, store().CreateFolder(2));
    auto mover = [](ULONG first) {
        return [first] {
            for (ULONG id = first; id < first + kPerThread; ++id) {
                HRESULT hr = TagMessage(id, L"X-Moved");
                com_ptr<IQzFolderMgr> mgr;
                if (SUCCEEDED(hr))
                    hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                            IID_IQzFolderMgr, mgr.put_void());
                ULONG new_id = 0;
                if (SUCCEEDED(hr))
                    hr = mgr->MoveMessage(1, 2, id, &new_id);
                if (FAILED(hr))
                    return hr;
            }
            return S_OK;
        };
    };
    std::future<HRESULT> a = InApartment(mover(1));
    std::future<HRESULT> b = InApartment(mover(1 + kPerThread));
    EXPECT_EQ(S_OK, a.get());
    EXPECT_EQ(S_OK, b.get());
    std::vector<ULONG> moved = store().ListMessages(2);
    ASSERT_EQ(2 * kPerThread, moved.size());
    EXPECT_EQ(2 * kPerThread, moved.back()) << "every move took its own id";
    EXPECT_EQ(0u, store().ListMessages(1).size());
    EXPECT_EQ("Subject: s\r\nX-Moved: 1\r\n\r\nbody\r\n", store().ReadMessage(2, 17));
}

}  // namespace
}  // namespace velk::tools::testing
