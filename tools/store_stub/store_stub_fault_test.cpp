// What tests of the add-in lean on: injected faults, the held call and the
// leak check.
#include "tools/store_stub/store_stub_test_support.h"

#include <atomic>
#include <thread>
#include <vector>

namespace velk::tools::testing {
namespace {

const std::string kMessage = "Subject: s\r\n\r\nbody\r\n";

using StoreStubFaults = StoreStubTest;

TEST_F(StoreStubFaults, TheNthCallOfTheNamedMethodFailsOnceAndChangesNothing) {
    PutFile(1, 7, kMessage);
    com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
    ASSERT_EQ(S_OK, store().InjectFault(L"SetHeader", 2, E_ACCESSDENIED));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"A", L"1"));
    EXPECT_EQ(E_ACCESSDENIED, SetHeader(msg.get(), L"B", L"1"));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"C", L"1"));
    EXPECT_EQ(0u, store().PendingFaults());
    ASSERT_EQ(S_OK, Commit(msg.get()));
    EXPECT_EQ("Subject: s\r\nA: 1\r\nC: 1\r\n\r\nbody\r\n", File(1, 7));
}

TEST_F(StoreStubFaults, AFailedCallZeroesItsOutsAndAFailedCommitLeavesTheFile) {
    PutFile(1, 7, kMessage);
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    ASSERT_EQ(S_OK, store().InjectFault(L"GetFolder", 1, E_OUTOFMEMORY));
    IQzFolder* raw = reinterpret_cast<IQzFolder*>(0x1234);
    EXPECT_EQ(E_OUTOFMEMORY, mgr->GetFolder(1, &raw));
    EXPECT_EQ(nullptr, raw);

    com_ptr<IQzMessage> msg = Message(Folder(mgr.get(), 1).get(), 7);
    ASSERT_EQ(S_OK, SetHeader(msg.get(), L"A", L"1"));
    ASSERT_EQ(S_OK, store().InjectFault(L"Commit", 1, E_FAIL));
    EXPECT_EQ(E_FAIL, Commit(msg.get()));
    EXPECT_EQ(kMessage, File(1, 7));
}

TEST_F(StoreStubFaults, NullOutSucceedsWithNothingHandedOut) {
    PutFile(1, 7, kMessage);
    ::CreateDirectoryW(FolderDir(2).c_str(), nullptr);

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
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetFirstMessage", 1));
    EXPECT_EQ(S_OK, folder->GetMessage(7, msg.put()));
    EXPECT_FALSE(msg);
    EXPECT_EQ(S_OK, folder->GetFirstMessage(msg.put()));
    EXPECT_FALSE(msg);

    msg = Message(folder.get(), 7);
    ULONG handle = 5;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetBodyHandle", 1));
    EXPECT_EQ(S_OK, msg->GetBodyHandle(0, 0, &handle));
    EXPECT_EQ(0u, handle);

    unique_bstr text;
    BYTE found = 1;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"GetHeaderText", 1));
    ASSERT_EQ(S_OK, store().InjectNullOut(L"QueryHeader", 1));
    EXPECT_EQ(S_OK, msg->GetHeaderText(text.put()));
    EXPECT_EQ(nullptr, text.get());
    EXPECT_EQ(S_OK,
              msg->QueryHeader(STORE_STUB_BODY_HANDLE, Bstr(L"Subject").get(), &found, text.put()));
    EXPECT_EQ(0, found);

    ULONG new_id = 9;
    ASSERT_EQ(S_OK, store().InjectNullOut(L"MoveMessage", 1));
    EXPECT_EQ(S_OK, mgr->MoveMessage(1, 2, 7, &new_id));
    EXPECT_EQ(0u, new_id);
    EXPECT_EQ(kMessage, File(1, 7)) << "a null-out move moves nothing";
    EXPECT_EQ(0u, store().PendingFaults());
}

TEST_F(StoreStubFaults, AStarCountsEveryCallSoEachStepOfAnOperationCanBeFailedInTurn) {
    PutFile(1, 7, kMessage);
    // One operation of five calls, failed at each step in turn: whatever
    // step fails, nothing is written and nothing leaks.
    auto operation = [&]() -> HRESULT {
        com_ptr<IQzFolderMgr> mgr;
        HRESULT hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                                        mgr.put_void());
        if (FAILED(hr))
            return hr;
        com_ptr<IQzFolder> folder;
        if (FAILED(hr = mgr->GetFolder(1, folder.put())))
            return hr;
        com_ptr<IQzMessage> msg;
        if (FAILED(hr = folder->GetMessage(7, msg.put())))
            return hr;
        if (FAILED(hr = SetHeader(msg.get(), L"X-Step", L"1")))
            return hr;
        return Commit(msg.get());
    };
    for (ULONG step = 1; step <= 5; ++step) {
        store().ClearJournal();
        ASSERT_EQ(S_OK, store().InjectFault(L"*", step, E_ABORT));
        EXPECT_EQ(E_ABORT, operation()) << "step " << step;
        EXPECT_EQ(step, store().JournalLines().size());
        EXPECT_EQ(kMessage, File(1, 7));
        EXPECT_EQ(0, store().OutstandingRefs()) << "step " << step;
    }
    EXPECT_EQ(S_OK, operation());
    EXPECT_EQ("Subject: s\r\nX-Step: 1\r\n\r\nbody\r\n", File(1, 7));
}

TEST_F(StoreStubFaults, BadArmingIsRefusedAndClearDisarms) {
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"Commit", 0, E_FAIL));
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"Commit", 1, S_OK));
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"", 1, E_FAIL));
    EXPECT_EQ(E_INVALIDARG, store().InjectFault(L"Commit", 1, E_FAIL, 7));
    ASSERT_EQ(S_OK, store().InjectFault(L"CreateInstance", 1, E_FAIL));
    EXPECT_EQ(1u, store().PendingFaults());
    store().ClearFaults();
    EXPECT_EQ(0u, store().PendingFaults());
    EXPECT_TRUE(CreateMgr());
}

// Runs `work` on a thread with its own apartment, as the add-in's worker.
class ApartmentThread {
public:
    template <class F>
    explicit ApartmentThread(F work)
        : thread_([this, work] {
              ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
              result_ = work();
              ::CoUninitialize();
              done_ = true;
          }) {}
    ~ApartmentThread() {
        if (thread_.joinable())
            thread_.join();
    }
    bool done() const { return done_; }
    HRESULT Join() {
        thread_.join();
        return result_;
    }

private:
    std::atomic<bool> done_{false};
    HRESULT result_ = E_PENDING;
    std::thread thread_;
};

using StoreStubHold = StoreStubTest;

TEST_F(StoreStubHold, HoldsOneCallJournaledUntilReleased) {
    PutFile(1, 7, kMessage);
    ASSERT_EQ(S_OK, store().HoldCall(L"GetFolder"));
    ApartmentThread worker([] {
        com_ptr<IQzFolderMgr> mgr;
        HRESULT hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                                        mgr.put_void());
        com_ptr<IQzFolder> folder;
        if (SUCCEEDED(hr))
            hr = mgr->GetFolder(1, folder.put());
        return SUCCEEDED(hr) && !folder ? E_POINTER : hr;
    });
    ASSERT_TRUE(store().WaitUntilHeld(10000));
    ::Sleep(50);
    EXPECT_FALSE(worker.done());
    EXPECT_EQ(L"GetFolder(1) -> pending", store().JournalLines(STORE_STUB_JOURNAL_RESULT).back());

    // The held call blocks only itself: other threads use the store.
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    EXPECT_TRUE(Folder(mgr.get(), 1)) << "only one call is held";

    store().ReleaseHold();
    EXPECT_EQ(S_OK, worker.Join());
    EXPECT_EQ(L"GetFolder(1) -> 0x00000000", store().JournalLines(STORE_STUB_JOURNAL_RESULT)[1]);
}

TEST_F(StoreStubHold, AHoldThatCaughtNothingIsNotWaitedForAndReleaseDisarmsIt) {
    PutFile(1, 7, kMessage);
    EXPECT_FALSE(store().WaitUntilHeld(20));
    ASSERT_EQ(S_OK, store().HoldCall(L"Commit"));
    EXPECT_FALSE(store().WaitUntilHeld(20));
    store().ReleaseHold();
    com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
    EXPECT_EQ(S_OK, Commit(msg.get())) << "disarmed: does not block";
    EXPECT_EQ(E_INVALIDARG, store().HoldCall(L""));
}

using StoreStubLeaks = StoreStubTest;

TEST_F(StoreStubLeaks, AReferenceKeptIsCountedAndNamedUntilReleased) {
    PutFile(1, 7, kMessage);
    auto can_unload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(::GetProcAddress(store().module(), "DllCanUnloadNow")));
    ASSERT_NE(nullptr, can_unload);

    IQzMessage* leaked = nullptr;
    {
        com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
        leaked = msg.get();
        leaked->AddRef();  // the deliberate leak
    }
    EXPECT_EQ(1, store().LiveObjects());
    EXPECT_EQ(1, store().OutstandingRefs());
    EXPECT_EQ(L"IQzMessage @1/7 refs=1\n", store().DescribeLiveObjects());
    EXPECT_EQ(S_FALSE, can_unload());

    IUnknown* unknown = nullptr;
    ASSERT_EQ(S_OK, leaked->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)));
    EXPECT_EQ(2, store().OutstandingRefs());
    unknown->Release();
    leaked->Release();
    EXPECT_EQ(0, store().LiveObjects());
    EXPECT_EQ(0, store().OutstandingRefs());
    EXPECT_EQ(S_OK, can_unload());
}

TEST_F(StoreStubLeaks, ConcurrentApartmentsKeepTheCountsAndTheStoreConsistent) {
    ASSERT_EQ(S_OK, store().UseMemoryStore());
    constexpr ULONG kPerThread = 200;
    for (ULONG i = 1; i <= 2 * kPerThread; ++i)
        ASSERT_EQ(S_OK, store().PutMessage(1, i, kMessage));
    ASSERT_EQ(S_OK, store().CreateFolder(2));
    auto mover = [](ULONG first) {
        return [first] {
            for (ULONG id = first; id < first + kPerThread; ++id) {
                com_ptr<IQzFolderMgr> mgr;
                HRESULT hr = ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                                IID_IQzFolderMgr, mgr.put_void());
                com_ptr<IQzFolder> folder;
                if (SUCCEEDED(hr))
                    hr = mgr->GetFolder(1, folder.put());
                com_ptr<IQzMessage> msg;
                if (SUCCEEDED(hr))
                    hr = folder->GetMessage(id, msg.put());
                if (SUCCEEDED(hr))
                    hr = SetHeader(msg.get(), L"X-Moved", L"1");
                if (SUCCEEDED(hr))
                    hr = Commit(msg.get());
                ULONG new_id = 0;
                if (SUCCEEDED(hr))
                    hr = mgr->MoveMessage(1, 2, id, &new_id);
                if (FAILED(hr))
                    return hr;
            }
            return S_OK;
        };
    };
    ApartmentThread a(mover(1));
    ApartmentThread b(mover(1 + kPerThread));
    EXPECT_EQ(S_OK, a.Join());
    EXPECT_EQ(S_OK, b.Join());

    std::vector<ULONG> moved = store().ListMessages(2);
    ASSERT_EQ(2 * kPerThread, moved.size());
    EXPECT_EQ(1u, moved.front());
    EXPECT_EQ(2 * kPerThread, moved.back()) << "every move took its own id";
    EXPECT_EQ(0u, store().ListMessages(1).size());
    EXPECT_EQ("Subject: s\r\nX-Moved: 1\r\n\r\nbody\r\n", store().ReadMessage(2, 17));
    EXPECT_EQ(2 * kPerThread * 6, store().JournalLines().size());
}

}  // namespace
}  // namespace velk::tools::testing
