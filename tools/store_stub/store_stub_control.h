// Test control of the message-store stand-in (store_stub.dll).
//
// The stand-in is the in-process COM server behind CLSID_QzStoreAccess. A
// test steers it through the plain C exports below, from the same module
// that COM loads: load it by path (VELK_STORE_STUB_DLL, defined for targets
// that link velk_store_stub_control) and register it once per process; the
// CoCreateInstance of the code under test then lands in that very module.
//
//   velk::tools::StoreStub store;
//   ASSERT_TRUE(store.Load());          // LoadLibrary + every export
//   ASSERT_EQ(S_OK, store.Register());  // HKLM\Software\Classes\CLSID\{...}
//   store.SetMailboxRoot(L"Z:\\tmp\\mbox");  // or store.UseMemoryStore()
//   store.Reset();                      // journal, faults, hold cleared
//   ... run the code under test ...
//   EXPECT_EQ(expected, store.JournalLines());
//   EXPECT_EQ(0, store.LiveObjects()) << store.DescribeLiveObjects();
//
// Layout on disk: folder id F is the directory <root>\F (decimal), message
// id M of that folder is the file <root>\F\M.eml. Header changes reach the
// file at Commit; moves and deletes act at once.
//
// Every export is safe to call from any thread, while store calls run.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// The body handle GetBodyHandle(0, 0) hands out. Header calls that pass any
// other handle fail with E_INVALIDARG, so a caller that drops it is seen.
#define STORE_STUB_BODY_HANDLE 0x0000B0D7UL

// StoreStub_InjectFault kinds.
#define STORE_STUB_FAULT_FAIL 0UL  // the call returns the given HRESULT, outs zeroed
#define STORE_STUB_FAULT_NULL_OUT \
    1UL  // the call returns S_OK with its out value zeroed
         // (null interface, 0 handle, 0 new id, null BSTR)

// StoreStub_GetJournal flags: what each line carries besides "Method(args)".
#define STORE_STUB_JOURNAL_PLAIN 0UL
#define STORE_STUB_JOURNAL_TARGET 1UL  // " @F" (folder) or " @F/M" (message) appended
#define STORE_STUB_JOURNAL_RESULT 2UL  // " -> 0x%08X" (the HRESULT returned) appended

extern "C" {
// Mailbox. Disk mode over <root>; the directory is created if missing.
typedef HRESULT(WINAPI* PFN_StoreStub_SetMailboxRoot)(LPCWSTR root);
// Memory mode: an empty store held in memory (for throughput figures).
typedef HRESULT(WINAPI* PFN_StoreStub_UseMemoryStore)(void);
// Clears journal, faults, hold and the violation count; journal back on.
// The mailbox and its messages are kept.
typedef void(WINAPI* PFN_StoreStub_Reset)(void);
typedef HRESULT(WINAPI* PFN_StoreStub_CreateFolder)(ULONG folderId);
// Writes a whole message (raw RFC 5322 bytes); creates its folder.
typedef HRESULT(WINAPI* PFN_StoreStub_PutMessage)(ULONG folderId, ULONG msgId, const char* bytes,
                                                  ULONG size);
// Reads a whole message. *size gets its size always; returns
// HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) when absent,
// HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER) when it does not fit.
typedef HRESULT(WINAPI* PFN_StoreStub_ReadMessage)(ULONG folderId, ULONG msgId, char* buffer,
                                                   ULONG capacity, ULONG* size);
// Message ids of a folder, ascending; returns how many there are in all.
typedef ULONG(WINAPI* PFN_StoreStub_ListMessages)(ULONG folderId, ULONG* ids, ULONG capacity);

// Journal: one line per store call in call order, "Method(arg, arg)", e.g.
// "SetHeader(X-Nuvexa-AntispamAddin-Checked, 1)"; lines end in L'\n'.
// Returns the units needed including the terminating NUL.
typedef ULONG(WINAPI* PFN_StoreStub_GetJournal)(ULONG flags, wchar_t* buffer, ULONG capacity);
typedef void(WINAPI* PFN_StoreStub_ClearJournal)(void);
typedef void(WINAPI* PFN_StoreStub_EnableJournal)(BOOL on);

// Fault injection: the nth call (1 = the next one) of `method` from now on
// fails as `kind` says. `method` is a name as it appears in the journal
// ("GetFolder", "Commit", ...) or L"*" for any call. Several faults may be
// armed; each fires once.
typedef HRESULT(WINAPI* PFN_StoreStub_InjectFault)(LPCWSTR method, ULONG nth, HRESULT hr,
                                                   ULONG kind);
typedef void(WINAPI* PFN_StoreStub_ClearFaults)(void);
// Armed faults that have not fired yet.
typedef ULONG(WINAPI* PFN_StoreStub_PendingFaults)(void);

// Hold: the next call of `method` (or L"*") is journaled, then blocks until
// StoreStub_ReleaseHold (at most two minutes, then it goes on and the
// journal says "hold timed out"). Only that one call is held.
typedef HRESULT(WINAPI* PFN_StoreStub_HoldCall)(LPCWSTR method);
typedef BOOL(WINAPI* PFN_StoreStub_WaitUntilHeld)(DWORD timeoutMs);
// Lets the held call go on, or disarms a hold that has not caught a call.
typedef void(WINAPI* PFN_StoreStub_ReleaseHold)(void);

// Leak check: store objects alive and the references held on them. Both
// are 0 once every interface handed out has been released.
typedef LONG(WINAPI* PFN_StoreStub_LiveObjects)(void);
typedef LONG(WINAPI* PFN_StoreStub_OutstandingRefs)(void);
// "IQzMessage @1/3 refs=2\n" per live object; returns units needed.
typedef ULONG(WINAPI* PFN_StoreStub_DescribeLiveObjects)(wchar_t* buffer, ULONG capacity);

// Calls of reserved slots and other breaches of the interface contract
// (also journaled, e.g. "IQzMessage::Reserved22()" or "SetHeader(...)
// with body handle 0").
typedef ULONG(WINAPI* PFN_StoreStub_ContractViolations)(void);
}

namespace velk::tools {

// Loads the stand-in and resolves its exports; every helper is a thin call.
class StoreStub {
public:
    StoreStub() = default;
    ~StoreStub() {
        if (module_)
            ::FreeLibrary(module_);
    }
    StoreStub(const StoreStub&) = delete;
    StoreStub& operator=(const StoreStub&) = delete;

#ifdef VELK_STORE_STUB_DLL
    bool Load() {
        return Load(VELK_STORE_STUB_DLL);
    }
#endif
    bool Load(const wchar_t* path) {
        if (!module_)
            module_ = ::LoadLibraryW(path);
        return module_ && Resolve();
    }
    HMODULE module() const {
        return module_;
    }

    // DllRegisterServer of the loaded module (writes its own path).
    HRESULT Register() const {
        return Call<HRESULT (*)()>("DllRegisterServer");
    }
    HRESULT Unregister() const {
        return Call<HRESULT (*)()>("DllUnregisterServer");
    }

    HRESULT SetMailboxRoot(const std::wstring& root) const {
        return setMailboxRoot_(root.c_str());
    }
    HRESULT UseMemoryStore() const {
        return useMemoryStore_();
    }
    void Reset() const {
        reset_();
    }
    HRESULT CreateFolder(ULONG folder) const {
        return createFolder_(folder);
    }
    HRESULT PutMessage(ULONG folder, ULONG msg, const std::string& bytes) const {
        return putMessage_(folder, msg, bytes.data(), static_cast<ULONG>(bytes.size()));
    }
    // The message's bytes; `exists` false when there is no such message.
    std::string ReadMessage(ULONG folder, ULONG msg, bool* exists = nullptr) const {
        ULONG size = 0;
        HRESULT hr = readMessage_(folder, msg, nullptr, 0, &size);
        std::string bytes(size, '\0');
        if (hr != HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))
            hr = readMessage_(folder, msg, bytes.empty() ? nullptr : &bytes[0], size, &size);
        if (exists)
            *exists = SUCCEEDED(hr);
        if (FAILED(hr))
            bytes.clear();
        return bytes;
    }
    bool HasMessage(ULONG folder, ULONG msg) const {
        bool exists = false;
        ReadMessage(folder, msg, &exists);
        return exists;
    }
    std::vector<ULONG> ListMessages(ULONG folder) const {
        std::vector<ULONG> ids(listMessages_(folder, nullptr, 0));
        if (!ids.empty())
            ids.resize(listMessages_(folder, ids.data(), static_cast<ULONG>(ids.size())));
        return ids;
    }

    std::wstring Journal(ULONG flags = STORE_STUB_JOURNAL_PLAIN) const {
        return Text([&](wchar_t* b, ULONG n) { return getJournal_(flags, b, n); });
    }
    std::vector<std::wstring> JournalLines(ULONG flags = STORE_STUB_JOURNAL_PLAIN) const {
        std::vector<std::wstring> lines;
        std::wstring all = Journal(flags);
        size_t start = 0;
        for (size_t nl; (nl = all.find(L'\n', start)) != std::wstring::npos; start = nl + 1)
            lines.push_back(all.substr(start, nl - start));
        return lines;
    }
    void ClearJournal() const {
        clearJournal_();
    }
    void EnableJournal(bool on) const {
        enableJournal_(on ? TRUE : FALSE);
    }

    HRESULT InjectFault(const wchar_t* method, ULONG nth, HRESULT hr,
                        ULONG kind = STORE_STUB_FAULT_FAIL) const {
        return injectFault_(method, nth, hr, kind);
    }
    HRESULT InjectNullOut(const wchar_t* method, ULONG nth) const {
        return injectFault_(method, nth, S_OK, STORE_STUB_FAULT_NULL_OUT);
    }
    void ClearFaults() const {
        clearFaults_();
    }
    ULONG PendingFaults() const {
        return pendingFaults_();
    }

    HRESULT HoldCall(const wchar_t* method) const {
        return holdCall_(method);
    }
    bool WaitUntilHeld(DWORD timeoutMs) const {
        return waitUntilHeld_(timeoutMs) != FALSE;
    }
    void ReleaseHold() const {
        releaseHold_();
    }

    LONG LiveObjects() const {
        return liveObjects_();
    }
    LONG OutstandingRefs() const {
        return outstandingRefs_();
    }
    std::wstring DescribeLiveObjects() const {
        return Text([&](wchar_t* b, ULONG n) { return describeLiveObjects_(b, n); });
    }
    ULONG ContractViolations() const {
        return contractViolations_();
    }

private:
    template <class Fn>
    Fn Proc(const char* name) const {
        return reinterpret_cast<Fn>(reinterpret_cast<void*>(::GetProcAddress(module_, name)));
    }
    template <class Fn>
    HRESULT Call(const char* name) const {
        Fn fn = Proc<Fn>(name);
        return fn ? fn() : E_NOTIMPL;
    }
    // The text may grow between the size query and the copy: ask again.
    template <class Get>
    static std::wstring Text(Get get) {
        std::wstring text;
        for (ULONG needed = get(nullptr, 0); needed;) {
            text.assign(needed, L'\0');
            ULONG got = get(&text[0], needed);
            if (got <= needed) {
                text.resize(got ? got - 1 : 0);
                return text;
            }
            needed = got;
        }
        return std::wstring();
    }
    bool Resolve() {
#define VELK_STORE_STUB_RESOLVE(member, name) \
    member = Proc<PFN_##name>(#name);         \
    if (!member)                              \
        return false;
        VELK_STORE_STUB_RESOLVE(setMailboxRoot_, StoreStub_SetMailboxRoot)
        VELK_STORE_STUB_RESOLVE(useMemoryStore_, StoreStub_UseMemoryStore)
        VELK_STORE_STUB_RESOLVE(reset_, StoreStub_Reset)
        VELK_STORE_STUB_RESOLVE(createFolder_, StoreStub_CreateFolder)
        VELK_STORE_STUB_RESOLVE(putMessage_, StoreStub_PutMessage)
        VELK_STORE_STUB_RESOLVE(readMessage_, StoreStub_ReadMessage)
        VELK_STORE_STUB_RESOLVE(listMessages_, StoreStub_ListMessages)
        VELK_STORE_STUB_RESOLVE(getJournal_, StoreStub_GetJournal)
        VELK_STORE_STUB_RESOLVE(clearJournal_, StoreStub_ClearJournal)
        VELK_STORE_STUB_RESOLVE(enableJournal_, StoreStub_EnableJournal)
        VELK_STORE_STUB_RESOLVE(injectFault_, StoreStub_InjectFault)
        VELK_STORE_STUB_RESOLVE(clearFaults_, StoreStub_ClearFaults)
        VELK_STORE_STUB_RESOLVE(pendingFaults_, StoreStub_PendingFaults)
        VELK_STORE_STUB_RESOLVE(holdCall_, StoreStub_HoldCall)
        VELK_STORE_STUB_RESOLVE(waitUntilHeld_, StoreStub_WaitUntilHeld)
        VELK_STORE_STUB_RESOLVE(releaseHold_, StoreStub_ReleaseHold)
        VELK_STORE_STUB_RESOLVE(liveObjects_, StoreStub_LiveObjects)
        VELK_STORE_STUB_RESOLVE(outstandingRefs_, StoreStub_OutstandingRefs)
        VELK_STORE_STUB_RESOLVE(describeLiveObjects_, StoreStub_DescribeLiveObjects)
        VELK_STORE_STUB_RESOLVE(contractViolations_, StoreStub_ContractViolations)
#undef VELK_STORE_STUB_RESOLVE
        return true;
    }

    HMODULE module_ = nullptr;
    PFN_StoreStub_SetMailboxRoot setMailboxRoot_ = nullptr;
    PFN_StoreStub_UseMemoryStore useMemoryStore_ = nullptr;
    PFN_StoreStub_Reset reset_ = nullptr;
    PFN_StoreStub_CreateFolder createFolder_ = nullptr;
    PFN_StoreStub_PutMessage putMessage_ = nullptr;
    PFN_StoreStub_ReadMessage readMessage_ = nullptr;
    PFN_StoreStub_ListMessages listMessages_ = nullptr;
    PFN_StoreStub_GetJournal getJournal_ = nullptr;
    PFN_StoreStub_ClearJournal clearJournal_ = nullptr;
    PFN_StoreStub_EnableJournal enableJournal_ = nullptr;
    PFN_StoreStub_InjectFault injectFault_ = nullptr;
    PFN_StoreStub_ClearFaults clearFaults_ = nullptr;
    PFN_StoreStub_PendingFaults pendingFaults_ = nullptr;
    PFN_StoreStub_HoldCall holdCall_ = nullptr;
    PFN_StoreStub_WaitUntilHeld waitUntilHeld_ = nullptr;
    PFN_StoreStub_ReleaseHold releaseHold_ = nullptr;
    PFN_StoreStub_LiveObjects liveObjects_ = nullptr;
    PFN_StoreStub_OutstandingRefs outstandingRefs_ = nullptr;
    PFN_StoreStub_DescribeLiveObjects describeLiveObjects_ = nullptr;
    PFN_StoreStub_ContractViolations contractViolations_ = nullptr;
};

}  // namespace velk::tools
