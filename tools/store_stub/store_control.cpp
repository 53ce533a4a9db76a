#include "tools/store_stub/store_control.h"

#include "tools/store_stub/store_stub_control.h"

#include <cwchar>

namespace velk::tools::store {

using velk::win32::cs_guard;

namespace {

// A held call that nobody releases must not hang the test run for good.
constexpr DWORD kHoldLimitMs = 120000;

bool MethodMatches(const std::wstring& armed, const wchar_t* method) {
    return armed == L"*" || armed == method;
}

}  // namespace

Control& Control::Instance() {
    // Never destroyed: store objects may still be released after the
    // module's static destructors ran (a leaking test must not crash).
    static Control* instance = new Control();
    return *instance;
}

Control::Control() : backend_(std::make_unique<MemoryBackend>()) {}

void Control::SetBackend(std::unique_ptr<Backend> backend) {
    cs_guard guard(lock_);
    backend_ = std::move(backend);
}

void Control::Reset() {
    ClearJournal();
    EnableJournal(true);
    ClearFaults();
    ReleaseHold();
    {
        cs_guard guard(hold_lock_);
        waitable_.reset();  // an old hold must not answer WaitUntilHeld
    }
    violations_.store(0);
}

// ---- journal ----

JournalTicket Control::Record(std::wstring call, const std::wstring& target) {
    cs_guard guard(journal_lock_);
    journal_.push_back(Entry{std::move(call), target, S_OK, false});
    return JournalTicket{epoch_, journal_.size() - 1};
}

void Control::Complete(const JournalTicket& ticket, HRESULT hr) {
    if (ticket.epoch == 0)
        return;  // not journaled
    cs_guard guard(journal_lock_);
    if (ticket.epoch != epoch_ || ticket.index >= journal_.size())
        return;
    journal_[ticket.index].hr = hr;
    journal_[ticket.index].done = true;
}

void Control::ClearJournal() {
    cs_guard guard(journal_lock_);
    journal_.clear();
    journal_.shrink_to_fit();
    ++epoch_;
}

std::wstring Control::Journal(ULONG flags) {
    cs_guard guard(journal_lock_);
    std::wstring text;
    for (const Entry& e : journal_) {
        text += e.call;
        if (flags & STORE_STUB_JOURNAL_TARGET) {
            text += L" @";
            text += e.target;
        }
        if (flags & STORE_STUB_JOURNAL_RESULT) {
            if (e.done) {
                wchar_t hr[24];
                std::swprintf(hr, 24, L" -> 0x%08lX", static_cast<unsigned long>(e.hr));
                text += hr;
            } else {
                text += L" -> pending";
            }
        }
        text += L'\n';
    }
    return text;
}

// ---- faults ----

void Control::ArmFault(const std::wstring& method, ULONG nth, Fault fault) {
    cs_guard guard(fault_lock_);
    faults_.push_back(ArmedFault{method, nth, fault});
    any_fault_.store(true);
}

void Control::ClearFaults() {
    cs_guard guard(fault_lock_);
    faults_.clear();
    any_fault_.store(false);
}

ULONG Control::PendingFaults() {
    cs_guard guard(fault_lock_);
    return static_cast<ULONG>(faults_.size());
}

bool Control::TakeFault(const wchar_t* method, Fault& fault) {
    if (!any_fault_.load())
        return false;  // the benchmark's path: no lock
    cs_guard guard(fault_lock_);
    bool fired = false;
    for (auto it = faults_.begin(); it != faults_.end();) {
        if (MethodMatches(it->method, method) && --it->remaining == 0) {
            if (!fired)
                fault = it->fault;
            fired = true;
            it = faults_.erase(it);
        } else {
            ++it;
        }
    }
    any_fault_.store(!faults_.empty());
    return fired;
}

// ---- hold ----

void Control::ArmHold(const std::wstring& method) {
    auto hold = std::make_shared<Hold>();
    hold->method = method;
    cs_guard guard(hold_lock_);
    if (hold_)
        ::SetEvent(hold_->release.get());  // one hold at a time
    hold_ = hold;
    waitable_ = hold;
    hold_armed_.store(true);
}

void Control::HoldIfArmed(const wchar_t* method) {
    if (!hold_armed_.load())
        return;
    std::shared_ptr<Hold> mine;
    {
        cs_guard guard(hold_lock_);
        if (!hold_ || hold_->caught || !MethodMatches(hold_->method, method))
            return;
        hold_->caught = true;
        hold_armed_.store(false);
        mine = hold_;
        ::SetEvent(mine->held.get());
    }
    DWORD wait = ::WaitForSingleObject(mine->release.get(), kHoldLimitMs);
    {
        cs_guard guard(hold_lock_);
        if (hold_ == mine)
            hold_.reset();
    }
    if (wait != WAIT_OBJECT_0)
        Record(L"hold timed out", L"-");
}

bool Control::WaitUntilHeld(DWORD timeout_ms) {
    std::shared_ptr<Hold> hold;
    {
        cs_guard guard(hold_lock_);
        hold = waitable_;
    }
    return hold && ::WaitForSingleObject(hold->held.get(), timeout_ms) == WAIT_OBJECT_0;
}

void Control::ReleaseHold() {
    cs_guard guard(hold_lock_);
    hold_armed_.store(false);
    if (hold_)
        ::SetEvent(hold_->release.get());
    hold_.reset();
}

// ---- leak check ----

void Control::ObjectCreated(const void* object, const wchar_t* kind, const std::wstring& target,
                            const std::atomic<LONG>* refs) {
    cs_guard guard(live_lock_);
    live_[object] = LiveObject{kind, target, refs};
}

void Control::ObjectDestroyed(const void* object) {
    cs_guard guard(live_lock_);
    live_.erase(object);
}

LONG Control::LiveObjects() {
    cs_guard guard(live_lock_);
    return static_cast<LONG>(live_.size());
}

std::wstring Control::DescribeLiveObjects() {
    cs_guard guard(live_lock_);
    std::wstring text;
    for (const auto& entry : live_) {
        const LiveObject& o = entry.second;
        text += o.kind;
        text += L" @";
        text += o.target;
        text += L" refs=";
        text += std::to_wstring(o.refs->load());
        text += L'\n';
    }
    return text;
}

}  // namespace velk::tools::store
