// The stand-in's process-wide state: the backend, the journal, the armed
// faults, the hold, and the registry of live objects for the leak check.
// One instance per loaded module; every member is safe from any thread.
#pragma once

#include <windows.h>

#include "common_src/win32/handles.h"
#include "tools/store_stub/store_backend.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velk::tools::store {

// What an armed fault makes of the call it catches.
enum class FaultKind : ULONG { kFail = 0, kNullOut = 1 };

struct Fault {
    FaultKind kind;
    HRESULT hr;
};

// A journal position that survives a clear between the start and the end of
// a call (the end is then simply not recorded).
struct JournalTicket {
    unsigned long long epoch = 0;
    size_t index = static_cast<size_t>(-1);
};

class Control {
public:
    static Control& Instance();

    // The store lock: held for every backend access.
    velk::win32::critical_section& lock() { return lock_; }
    // Only under lock().
    Backend& backend() { return *backend_; }

    void SetBackend(std::unique_ptr<Backend> backend);
    void Reset();

    // ---- journal ----
    bool journaling() const { return journaling_.load(std::memory_order_relaxed); }
    void EnableJournal(bool on) { journaling_.store(on, std::memory_order_relaxed); }
    JournalTicket Record(std::wstring call, const std::wstring& target);
    void Complete(const JournalTicket& ticket, HRESULT hr);
    void ClearJournal();
    std::wstring Journal(ULONG flags);

    // ---- faults ----
    void ArmFault(const std::wstring& method, ULONG nth, Fault fault);
    void ClearFaults();
    ULONG PendingFaults();
    // Counts the call against every armed fault; the one that reaches its
    // count fires (and is gone).
    bool TakeFault(const wchar_t* method, Fault& fault);

    // ---- hold ----
    void ArmHold(const std::wstring& method);
    // Blocks the calling store call when the hold is armed for it.
    void HoldIfArmed(const wchar_t* method);
    bool WaitUntilHeld(DWORD timeout_ms);
    void ReleaseHold();

    // ---- contract ----
    void CountViolation() { violations_.fetch_add(1); }
    ULONG violations() const { return violations_.load(); }

    // ---- leak check ----
    void ObjectCreated(const void* object, const wchar_t* kind, const std::wstring& target,
                       const std::atomic<LONG>* refs);
    void ObjectDestroyed(const void* object);
    void RefAdded() { refs_.fetch_add(1); }
    void RefReleased() { refs_.fetch_sub(1); }
    LONG LiveObjects();
    LONG OutstandingRefs() const { return refs_.load(); }
    std::wstring DescribeLiveObjects();

    // Server locks of the class factory, for DllCanUnloadNow.
    std::atomic<LONG>& server_locks() { return server_locks_; }

private:
    Control();

    struct Entry {
        std::wstring call;
        std::wstring target;
        HRESULT hr = S_OK;
        bool done = false;
    };
    struct ArmedFault {
        std::wstring method;
        ULONG remaining;
        Fault fault;
    };
    // One hold: its own events, so a late waker of an old hold never meets
    // the events of a new one.
    struct Hold {
        std::wstring method;
        bool caught = false;
        velk::win32::unique_event held{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        velk::win32::unique_event release{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    };
    struct LiveObject {
        const wchar_t* kind;
        std::wstring target;
        const std::atomic<LONG>* refs;
    };

    velk::win32::critical_section lock_;
    std::unique_ptr<Backend> backend_;

    velk::win32::critical_section journal_lock_;
    std::atomic<bool> journaling_{true};
    std::vector<Entry> journal_;
    unsigned long long epoch_ = 1;

    velk::win32::critical_section fault_lock_;
    std::vector<ArmedFault> faults_;
    std::atomic<bool> any_fault_{false};

    velk::win32::critical_section hold_lock_;
    std::shared_ptr<Hold> hold_;           // armed or holding
    std::shared_ptr<Hold> waitable_;       // what WaitUntilHeld waits on
    std::atomic<bool> hold_armed_{false};  // lets calls skip the lock when none is

    std::atomic<ULONG> violations_{0};

    velk::win32::critical_section live_lock_;
    std::map<const void*, LiveObject> live_;
    std::atomic<LONG> refs_{0};
    std::atomic<LONG> server_locks_{0};
};

}  // namespace velk::tools::store
