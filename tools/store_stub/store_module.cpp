// The DLL's exports: the four a COM server has, and the test control of
// store_stub_control.h. Every export is an exception firewall.
#include <windows.h>

#include "actions/QzStoreInterfaces.h"
#include "common_src/win32/handles.h"
#include "tools/store_stub/store_backend.h"
#include "tools/store_stub/store_control.h"
#include "tools/store_stub/store_objects.h"
#include "tools/store_stub/store_stub_control.h"

#include <new>
#include <string>

using velk::tools::store::Control;
using velk::tools::store::Fault;
using velk::tools::store::FaultKind;
using velk::win32::cs_guard;
using velk::win32::unique_hkey;

namespace {

HMODULE g_module = nullptr;

// What COM looks up; Wine 8 reads only the machine-wide classes.
constexpr wchar_t kClsidKey[] = L"Software\\Classes\\CLSID\\{6E3B9A14-0C57-4D2E-B8F1-93A2C5D7E048}";

template <class F>
HRESULT Firewall(F f) noexcept {
    try {
        return f();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

// Copies `text` with its NUL into the caller's buffer as far as it fits;
// returns the units needed.
ULONG CopyOut(const std::wstring& text, wchar_t* buffer, ULONG capacity) {
    ULONG needed = static_cast<ULONG>(text.size() + 1);
    if (buffer && capacity) {
        ULONG n = needed <= capacity ? needed - 1 : capacity - 1;
        text.copy(buffer, n);
        buffer[n] = L'\0';
    }
    return needed;
}

class ClassFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IClassFactory))
            return E_NOINTERFACE;
        *out = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    // Static object: not counted, never freed.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        return velk::tools::store::CreateFolderMgr(riid, out);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock)
            ++Control::Instance().server_locks();
        else
            --Control::Instance().server_locks();
        return S_OK;
    }
};

ClassFactory g_factory;

HRESULT SetString(HKEY key, const wchar_t* name, const std::wstring& value) {
    LONG rc = ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                               static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    return HRESULT_FROM_WIN32(rc);
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_module = instance;
        ::DisableThreadLibraryCalls(instance);
        // Made here, so no later call has to allocate it where an exception
        // could not be reported.
        try {
            Control::Instance();
        } catch (...) {
            return FALSE;
        }
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, LPVOID* out) {
    return Firewall([&] {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (!IsEqualCLSID(clsid, CLSID_QzStoreAccess))
            return CLASS_E_CLASSNOTAVAILABLE;
        return g_factory.QueryInterface(riid, out);
    });
}

STDAPI DllCanUnloadNow() {
    Control& control = Control::Instance();
    return (control.LiveObjects() == 0 && control.server_locks().load() == 0) ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    return Firewall([] {
        wchar_t path[MAX_PATH];
        DWORD length = ::GetModuleFileNameW(g_module, path, MAX_PATH);
        if (length == 0 || length >= MAX_PATH)
            return E_FAIL;
        unique_hkey clsid;
        LONG rc = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kClsidKey, 0, nullptr, 0, KEY_WRITE,
                                    nullptr, clsid.put(), nullptr);
        if (rc != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(rc);
        HRESULT hr = SetString(clsid.get(), nullptr, L"Message store stand-in");
        if (FAILED(hr))
            return hr;
        unique_hkey server;
        rc = ::RegCreateKeyExW(clsid.get(), L"InprocServer32", 0, nullptr, 0, KEY_WRITE, nullptr,
                               server.put(), nullptr);
        if (rc != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(rc);
        hr = SetString(server.get(), nullptr, std::wstring(path, length));
        if (FAILED(hr))
            return hr;
        return SetString(server.get(), L"ThreadingModel", L"Apartment");
    });
}

STDAPI DllUnregisterServer() {
    return Firewall([] {
        unique_hkey clsid;
        LONG rc = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kClsidKey, 0, KEY_WRITE, clsid.put());
        if (rc == ERROR_FILE_NOT_FOUND)
            return S_OK;
        if (rc != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(rc);
        rc = ::RegDeleteKeyW(clsid.get(), L"InprocServer32");
        if (rc != ERROR_SUCCESS && rc != ERROR_FILE_NOT_FOUND)
            return HRESULT_FROM_WIN32(rc);
        clsid.reset();
        rc = ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, kClsidKey);
        return rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(rc);
    });
}

// ---- test control ----

extern "C" {

HRESULT WINAPI StoreStub_SetMailboxRoot(LPCWSTR root) {
    return Firewall([&] {
        if (!root || !*root)
            return E_INVALIDARG;
        wchar_t full[MAX_PATH];
        DWORD length = ::GetFullPathNameW(root, MAX_PATH, full, nullptr);
        if (length == 0 || length >= MAX_PATH)
            return E_INVALIDARG;
        std::wstring path(full, length);
        while (path.size() > 3 && (path.back() == L'\\' || path.back() == L'/'))
            path.pop_back();
        HRESULT hr = velk::tools::store::CreateDirectories(path);
        if (FAILED(hr))
            return hr;
        Control::Instance().SetBackend(std::make_unique<velk::tools::store::DiskBackend>(path));
        return S_OK;
    });
}

HRESULT WINAPI StoreStub_UseMemoryStore() {
    return Firewall([] {
        Control::Instance().SetBackend(std::make_unique<velk::tools::store::MemoryBackend>());
        return S_OK;
    });
}

void WINAPI StoreStub_Reset() {
    Firewall([] {
        Control::Instance().Reset();
        return S_OK;
    });
}

HRESULT WINAPI StoreStub_CreateFolder(ULONG folder) {
    return Firewall([&] {
        cs_guard guard(Control::Instance().lock());
        return Control::Instance().backend().CreateFolder(folder);
    });
}

HRESULT WINAPI StoreStub_PutMessage(ULONG folder, ULONG msg, const char* bytes, ULONG size) {
    return Firewall([&] {
        if (!bytes && size)
            return E_POINTER;
        cs_guard guard(Control::Instance().lock());
        return Control::Instance().backend().Put(folder, msg,
                                                 std::string_view(bytes ? bytes : "", size));
    });
}

HRESULT WINAPI StoreStub_ReadMessage(ULONG folder, ULONG msg, char* buffer, ULONG capacity,
                                     ULONG* size) {
    return Firewall([&] {
        if (size)
            *size = 0;
        std::string bytes;
        {
            cs_guard guard(Control::Instance().lock());
            HRESULT hr = Control::Instance().backend().Read(folder, msg, bytes);
            if (FAILED(hr))
                return hr;
        }
        if (size)
            *size = static_cast<ULONG>(bytes.size());
        if (bytes.size() > capacity || (!buffer && !bytes.empty()))
            return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
        bytes.copy(buffer, bytes.size());
        return S_OK;
    });
}

ULONG WINAPI StoreStub_ListMessages(ULONG folder, ULONG* ids, ULONG capacity) {
    try {
        std::vector<ULONG> all;
        {
            cs_guard guard(Control::Instance().lock());
            all = Control::Instance().backend().List(folder);
        }
        for (ULONG i = 0; ids && i < capacity && i < all.size(); ++i)
            ids[i] = all[i];
        return static_cast<ULONG>(all.size());
    } catch (...) {
        return 0;
    }
}

ULONG WINAPI StoreStub_GetJournal(ULONG flags, wchar_t* buffer, ULONG capacity) {
    try {
        return CopyOut(Control::Instance().Journal(flags), buffer, capacity);
    } catch (...) {
        return CopyOut(std::wstring(), buffer, capacity);
    }
}

void WINAPI StoreStub_ClearJournal() {
    Control::Instance().ClearJournal();
}

void WINAPI StoreStub_EnableJournal(BOOL on) {
    Control::Instance().EnableJournal(on != FALSE);
}

HRESULT WINAPI StoreStub_InjectFault(LPCWSTR method, ULONG nth, HRESULT hr, ULONG kind) {
    return Firewall([&] {
        if (!method || !*method || nth == 0)
            return E_INVALIDARG;
        if (kind != STORE_STUB_FAULT_FAIL && kind != STORE_STUB_FAULT_NULL_OUT)
            return E_INVALIDARG;
        if (kind == STORE_STUB_FAULT_FAIL && SUCCEEDED(hr))
            return E_INVALIDARG;
        Control::Instance().ArmFault(method, nth, Fault{static_cast<FaultKind>(kind), hr});
        return S_OK;
    });
}

void WINAPI StoreStub_ClearFaults() {
    Control::Instance().ClearFaults();
}

ULONG WINAPI StoreStub_PendingFaults() {
    return Control::Instance().PendingFaults();
}

HRESULT WINAPI StoreStub_HoldCall(LPCWSTR method) {
    return Firewall([&] {
        if (!method || !*method)
            return E_INVALIDARG;
        Control::Instance().ArmHold(method);
        return S_OK;
    });
}

BOOL WINAPI StoreStub_WaitUntilHeld(DWORD timeout_ms) {
    try {
        return Control::Instance().WaitUntilHeld(timeout_ms) ? TRUE : FALSE;
    } catch (...) {
        return FALSE;
    }
}

void WINAPI StoreStub_ReleaseHold() {
    Control::Instance().ReleaseHold();
}

LONG WINAPI StoreStub_LiveObjects() {
    return Control::Instance().LiveObjects();
}

LONG WINAPI StoreStub_OutstandingRefs() {
    return Control::Instance().OutstandingRefs();
}

ULONG WINAPI StoreStub_DescribeLiveObjects(wchar_t* buffer, ULONG capacity) {
    try {
        return CopyOut(Control::Instance().DescribeLiveObjects(), buffer, capacity);
    } catch (...) {
        return CopyOut(std::wstring(), buffer, capacity);
    }
}

ULONG WINAPI StoreStub_ContractViolations() {
    return Control::Instance().violations();
}

}  // extern "C"
