#include "tools/store_stub/store_objects.h"

#include "common_src/win32/handles.h"
#include "tools/store_stub/eml_header.h"
#include "tools/store_stub/store_control.h"
#include "tools/store_stub/store_stub_control.h"

#include <atomic>
#include <initializer_list>
#include <new>
#include <string>

namespace velk::tools::store {

using velk::win32::cs_guard;

namespace {

constexpr ULONG kSubjectProperty = 5;

std::wstring FromBstr(BSTR text) {
    return text ? std::wstring(text, ::SysStringLen(text)) : std::wstring();
}

std::string ToUtf8(BSTR text) {
    int units = text ? static_cast<int>(::SysStringLen(text)) : 0;
    if (units == 0)
        return std::string();
    int size = ::WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, units, &out[0], size, nullptr, nullptr);
    return out;
}

// Stored headers are UTF-8; a file written by someone else may be in the
// ANSI code page, which then is what it means.
HRESULT ToBstr(std::string_view bytes, BSTR* out) {
    *out = nullptr;
    int units = 0;
    UINT page = CP_UTF8;
    if (!bytes.empty()) {
        units = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                      static_cast<int>(bytes.size()), nullptr, 0);
        if (units == 0) {
            page = CP_ACP;
            units = ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()),
                                          nullptr, 0);
        }
    }
    BSTR text = ::SysAllocStringLen(nullptr, static_cast<UINT>(units));
    if (!text)
        return E_OUTOFMEMORY;
    if (units)
        ::MultiByteToWideChar(page, page == CP_UTF8 ? MB_ERR_INVALID_CHARS : 0, bytes.data(),
                              static_cast<int>(bytes.size()), text, units);
    *out = text;
    return S_OK;
}

std::wstring CallText(const wchar_t* method, std::initializer_list<std::wstring> args) {
    std::wstring text = method;
    text += L'(';
    bool first = true;
    for (const std::wstring& arg : args) {
        if (!first)
            text += L", ";
        text += arg;
        first = false;
    }
    text += L')';
    return text;
}

std::wstring Num(ULONG value) {
    return std::to_wstring(value);
}

// Header calls name the body handle only when it is not the one handed out.
std::wstring WithHandle(std::wstring call, ULONG handle) {
    if (handle != STORE_STUB_BODY_HANDLE)
        call += L" with body handle " + Num(handle);
    return call;
}

template <class T>
void Zero(T* out) {
    if (out)
        *out = T();
}

// Every store call: journal, hold, fault, then the work. An exception never
// leaves a COM method.
template <class Describe, class ZeroOuts, class Body>
HRESULT StoreCall(const wchar_t* method, const std::wstring& target, Describe describe,
                  ZeroOuts zero_outs, Body body) noexcept {
    Control& control = Control::Instance();
    JournalTicket ticket;
    HRESULT hr;
    try {
        if (control.journaling())
            ticket = control.Record(describe(), target);
        control.HoldIfArmed(method);
        zero_outs();
        Fault fault{};
        if (control.TakeFault(method, fault))
            hr = fault.kind == FaultKind::kFail ? fault.hr : S_OK;
        else
            hr = body();
    } catch (const std::bad_alloc&) {
        hr = E_OUTOFMEMORY;
    } catch (...) {
        hr = E_UNEXPECTED;
    }
    control.Complete(ticket, hr);  // a ticket never issued is ignored
    return hr;
}

// IUnknown and the leak check, shared by the three kinds.
template <class I>
class StoreObject : public I {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !(iid_ && IsEqualIID(riid, *iid_)))
            return E_NOINTERFACE;
        *out = static_cast<I*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        Control::Instance().RefAdded();
        return static_cast<ULONG>(++refs_);
    }
    ULONG STDMETHODCALLTYPE Release() override {
        Control::Instance().RefReleased();
        LONG left = --refs_;
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

protected:
    StoreObject(const wchar_t* kind, std::wstring target, const IID* iid)
        : target_(std::move(target)), iid_(iid) {
        Control::Instance().RefAdded();
        Control::Instance().ObjectCreated(this, kind, target_, &refs_);
    }
    virtual ~StoreObject() { Control::Instance().ObjectDestroyed(this); }

    HRESULT Reserved(const wchar_t* name) noexcept {
        return StoreCall(
            name, target_, [&] { return std::wstring(name) + L"()"; }, [] {},
            [] {
                Control::Instance().CountViolation();
                return E_NOTIMPL;
            });
    }

    std::atomic<LONG> refs_{1};
    const std::wstring target_;

private:
    const IID* iid_;
};

#define STORE_STUB_RESERVED(iface, n)                  \
    HRESULT STDMETHODCALLTYPE Reserved##n() override { \
        return Reserved(L"" #iface "::Reserved" #n);   \
    }

// ---- IQzMessage ----

class Message final : public StoreObject<IQzMessage> {
public:
    Message(ULONG folder, ULONG id, std::string bytes)
        : StoreObject(L"IQzMessage", Num(folder) + L"/" + Num(id), nullptr),
          folder_(folder),
          id_(id),
          bytes_(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE PostProcess(ULONG* ignored) override {
        return StoreCall(
            L"PostProcess", target_, [] { return std::wstring(L"PostProcess()"); },
            [&] { Zero(ignored); }, [] { return S_OK; });
    }

    HRESULT STDMETHODCALLTYPE Delete(ULONG mode) override {
        return StoreCall(
            L"Delete", target_, [&] { return CallText(L"Delete", {Num(mode)}); }, [] {},
            [&] {
                if (mode != 1)
                    return E_INVALIDARG;
                cs_guard guard(Control::Instance().lock());
                return Control::Instance().backend().Remove(folder_, id_);
            });
    }

    HRESULT STDMETHODCALLTYPE GetHeaderText(BSTR* header_block) override {
        return StoreCall(
            L"GetHeaderText", target_, [] { return std::wstring(L"GetHeaderText()"); },
            [&] { Zero(header_block); },
            [&] {
                if (!header_block)
                    return E_POINTER;
                return ToBstr(eml::HeaderBlock(bytes_), header_block);
            });
    }

    HRESULT STDMETHODCALLTYPE GetBodyHandle(ULONG zero1, ULONG zero2, ULONG* handle) override {
        return StoreCall(
            L"GetBodyHandle", target_,
            [&] {
                return CallText(L"GetBodyHandle", {Num(zero1), Num(zero2)});
            },
            [&] { Zero(handle); },
            [&] {
                if (!handle)
                    return E_POINTER;
                if (zero1 || zero2)
                    return E_INVALIDARG;
                *handle = STORE_STUB_BODY_HANDLE;
                return S_OK;
            });
    }

    HRESULT STDMETHODCALLTYPE SetPropById(ULONG handle, ULONG prop, BSTR value,
                                          ULONG* ignored) override {
        return StoreCall(
            L"SetPropById", target_,
            [&] {
                return WithHandle(CallText(L"SetPropById", {Num(prop), FromBstr(value)}), handle);
            },
            [&] { Zero(ignored); },
            [&] {
                if (!CheckHandle(handle))
                    return E_INVALIDARG;
                if (prop != kSubjectProperty)
                    return E_INVALIDARG;
                return WriteField("Subject", ToUtf8(value));
            });
    }

    HRESULT STDMETHODCALLTYPE SetHeader(ULONG handle, BSTR name, BSTR value,
                                        ULONG* ignored) override {
        return StoreCall(
            L"SetHeader", target_,
            [&] {
                return WithHandle(CallText(L"SetHeader", {FromBstr(name), FromBstr(value)}),
                                  handle);
            },
            [&] { Zero(ignored); },
            [&] {
                if (!CheckHandle(handle))
                    return E_INVALIDARG;
                return WriteField(ToUtf8(name), ToUtf8(value));
            });
    }

    HRESULT STDMETHODCALLTYPE QueryHeader(ULONG handle, BSTR name, BYTE* found,
                                          BSTR* value) override {
        return StoreCall(
            L"QueryHeader", target_,
            [&] { return WithHandle(CallText(L"QueryHeader", {FromBstr(name)}), handle); },
            [&] {
                Zero(found);
                Zero(value);
            },
            [&] {
                if (!found || !value)
                    return E_POINTER;
                if (!CheckHandle(handle))
                    return E_INVALIDARG;
                std::optional<std::string> text = eml::FindHeader(bytes_, ToUtf8(name));
                if (!text)
                    return S_OK;
                HRESULT hr = ToBstr(*text, value);
                if (SUCCEEDED(hr))
                    *found = 1;
                return hr;
            });
    }

    HRESULT STDMETHODCALLTYPE Commit(ULONG* ignored) override {
        return StoreCall(
            L"Commit", target_, [] { return std::wstring(L"Commit()"); }, [&] { Zero(ignored); },
            [&] {
                cs_guard guard(Control::Instance().lock());
                return Control::Instance().backend().Rewrite(folder_, id_, bytes_);
            });
    }

    STORE_STUB_RESERVED(IQzMessage, 3)
    STORE_STUB_RESERVED(IQzMessage, 4)
    STORE_STUB_RESERVED(IQzMessage, 5)
    STORE_STUB_RESERVED(IQzMessage, 6)
    STORE_STUB_RESERVED(IQzMessage, 7)
    STORE_STUB_RESERVED(IQzMessage, 8)
    STORE_STUB_RESERVED(IQzMessage, 9)
    STORE_STUB_RESERVED(IQzMessage, 10)
    STORE_STUB_RESERVED(IQzMessage, 11)
    STORE_STUB_RESERVED(IQzMessage, 12)
    STORE_STUB_RESERVED(IQzMessage, 13)
    STORE_STUB_RESERVED(IQzMessage, 14)
    STORE_STUB_RESERVED(IQzMessage, 15)
    STORE_STUB_RESERVED(IQzMessage, 18)
    STORE_STUB_RESERVED(IQzMessage, 19)
    STORE_STUB_RESERVED(IQzMessage, 20)
    STORE_STUB_RESERVED(IQzMessage, 22)
    STORE_STUB_RESERVED(IQzMessage, 23)
    STORE_STUB_RESERVED(IQzMessage, 24)
    STORE_STUB_RESERVED(IQzMessage, 25)
    STORE_STUB_RESERVED(IQzMessage, 26)
    STORE_STUB_RESERVED(IQzMessage, 27)
    STORE_STUB_RESERVED(IQzMessage, 28)
    STORE_STUB_RESERVED(IQzMessage, 29)
    STORE_STUB_RESERVED(IQzMessage, 30)
    STORE_STUB_RESERVED(IQzMessage, 31)
    STORE_STUB_RESERVED(IQzMessage, 33)
    STORE_STUB_RESERVED(IQzMessage, 34)
    STORE_STUB_RESERVED(IQzMessage, 35)
    STORE_STUB_RESERVED(IQzMessage, 36)
    STORE_STUB_RESERVED(IQzMessage, 37)
    STORE_STUB_RESERVED(IQzMessage, 38)
    STORE_STUB_RESERVED(IQzMessage, 39)
    STORE_STUB_RESERVED(IQzMessage, 40)
    STORE_STUB_RESERVED(IQzMessage, 41)
    STORE_STUB_RESERVED(IQzMessage, 42)
    STORE_STUB_RESERVED(IQzMessage, 43)
    STORE_STUB_RESERVED(IQzMessage, 44)
    STORE_STUB_RESERVED(IQzMessage, 45)
    STORE_STUB_RESERVED(IQzMessage, 46)
    STORE_STUB_RESERVED(IQzMessage, 50)
    STORE_STUB_RESERVED(IQzMessage, 51)
    STORE_STUB_RESERVED(IQzMessage, 52)

private:
    static bool CheckHandle(ULONG handle) {
        if (handle == STORE_STUB_BODY_HANDLE)
            return true;
        Control::Instance().CountViolation();
        return false;
    }

    HRESULT WriteField(const std::string& name, const std::string& value) {
        std::optional<std::string> changed = eml::SetHeader(bytes_, name, value);
        if (!changed)
            return E_INVALIDARG;
        bytes_ = std::move(*changed);
        return S_OK;
    }

    const ULONG folder_;
    const ULONG id_;
    std::string bytes_;  // the message with the changes not yet committed
};

// Loads a message for a new message object.
HRESULT OpenMessage(ULONG folder, ULONG id, IQzMessage** out) {
    std::string bytes;
    {
        cs_guard guard(Control::Instance().lock());
        HRESULT hr = Control::Instance().backend().Read(folder, id, bytes);
        if (FAILED(hr))
            return hr;
    }
    *out = new Message(folder, id, std::move(bytes));
    return S_OK;
}

// ---- IQzFolder ----

class Folder final : public StoreObject<IQzFolder> {
public:
    explicit Folder(ULONG id) : StoreObject(L"IQzFolder", Num(id), nullptr), id_(id) {}

    HRESULT STDMETHODCALLTYPE GetFirstMessage(IQzMessage** msg) override {
        return StoreCall(
            L"GetFirstMessage", target_, [] { return std::wstring(L"GetFirstMessage()"); },
            [&] { Zero(msg); },
            [&] {
                if (!msg)
                    return E_POINTER;
                enumerating_ = true;
                return OpenAfter(0, true, msg);
            });
    }

    HRESULT STDMETHODCALLTYPE GetNextMessage(IQzMessage** msg) override {
        return StoreCall(
            L"GetNextMessage", target_, [] { return std::wstring(L"GetNextMessage()"); },
            [&] { Zero(msg); },
            [&] {
                if (!msg)
                    return E_POINTER;
                if (!enumerating_)
                    return E_UNEXPECTED;
                return OpenAfter(last_, false, msg);
            });
    }

    HRESULT STDMETHODCALLTYPE GetMessage(ULONG id, IQzMessage** msg) override {
        return StoreCall(
            L"GetMessage", target_, [&] { return CallText(L"GetMessage", {Num(id)}); },
            [&] { Zero(msg); },
            [&] {
                if (!msg)
                    return E_POINTER;
                return OpenMessage(id_, id, msg);
            });
    }

    HRESULT STDMETHODCALLTYPE DeleteMessage(ULONG id, ULONG mode, ULONG* result) override {
        return StoreCall(
            L"DeleteMessage", target_,
            [&] {
                return CallText(L"DeleteMessage", {Num(id), Num(mode)});
            },
            [&] { Zero(result); },
            [&] {
                if (mode != 1)
                    return E_INVALIDARG;
                HRESULT hr;
                {
                    cs_guard guard(Control::Instance().lock());
                    hr = Control::Instance().backend().Remove(id_, id);
                }
                if (SUCCEEDED(hr) && result)
                    *result = 1;
                return hr;
            });
    }

    STORE_STUB_RESERVED(IQzFolder, 3)
    STORE_STUB_RESERVED(IQzFolder, 4)
    STORE_STUB_RESERVED(IQzFolder, 5)
    STORE_STUB_RESERVED(IQzFolder, 6)
    STORE_STUB_RESERVED(IQzFolder, 7)
    STORE_STUB_RESERVED(IQzFolder, 8)
    STORE_STUB_RESERVED(IQzFolder, 9)
    STORE_STUB_RESERVED(IQzFolder, 13)

private:
    // The first message with an id above `after` (or any, for the first).
    // Going by id rather than by position lets the caller delete the
    // message it holds without making the walk skip one.
    HRESULT OpenAfter(ULONG after, bool from_start, IQzMessage** msg) {
        std::vector<ULONG> ids;
        {
            cs_guard guard(Control::Instance().lock());
            ids = Control::Instance().backend().List(id_);
        }
        for (ULONG id : ids) {
            if (!from_start && id <= after)
                continue;
            HRESULT hr = OpenMessage(id_, id, msg);
            if (hr == kNoMessage)
                continue;  // deleted since the listing
            if (SUCCEEDED(hr))
                last_ = id;
            return hr;
        }
        return S_OK;  // the end: a null message
    }

    const ULONG id_;
    bool enumerating_ = false;
    ULONG last_ = 0;
};

// ---- IQzFolderMgr ----

class FolderMgr final : public StoreObject<IQzFolderMgr> {
public:
    FolderMgr() : StoreObject(L"IQzFolderMgr", L"-", &IID_IQzFolderMgr) {}

    HRESULT STDMETHODCALLTYPE GetFolder(ULONG id, IQzFolder** folder) override {
        return StoreCall(
            L"GetFolder", target_, [&] { return CallText(L"GetFolder", {Num(id)}); },
            [&] { Zero(folder); },
            [&] {
                if (!folder)
                    return E_POINTER;
                {
                    cs_guard guard(Control::Instance().lock());
                    if (!Control::Instance().backend().FolderExists(id))
                        return kNoFolder;
                }
                *folder = new Folder(id);
                return S_OK;
            });
    }

    HRESULT STDMETHODCALLTYPE MoveMessage(ULONG src, ULONG dst, ULONG msg, ULONG* new_id) override {
        return StoreCall(
            L"MoveMessage", target_,
            [&] {
                return CallText(L"MoveMessage", {Num(src), Num(dst), Num(msg)});
            },
            [&] { Zero(new_id); },
            [&] {
                if (!new_id)
                    return E_POINTER;
                cs_guard guard(Control::Instance().lock());
                return Control::Instance().backend().Move(src, dst, msg, *new_id);
            });
    }

    STORE_STUB_RESERVED(IQzFolderMgr, 3)
    STORE_STUB_RESERVED(IQzFolderMgr, 4)
    STORE_STUB_RESERVED(IQzFolderMgr, 5)
    STORE_STUB_RESERVED(IQzFolderMgr, 6)
    STORE_STUB_RESERVED(IQzFolderMgr, 7)
    STORE_STUB_RESERVED(IQzFolderMgr, 8)
    STORE_STUB_RESERVED(IQzFolderMgr, 9)
    STORE_STUB_RESERVED(IQzFolderMgr, 10)
    STORE_STUB_RESERVED(IQzFolderMgr, 11)
    STORE_STUB_RESERVED(IQzFolderMgr, 12)
    STORE_STUB_RESERVED(IQzFolderMgr, 14)
    STORE_STUB_RESERVED(IQzFolderMgr, 15)
    STORE_STUB_RESERVED(IQzFolderMgr, 16)
    STORE_STUB_RESERVED(IQzFolderMgr, 17)
    STORE_STUB_RESERVED(IQzFolderMgr, 18)
    STORE_STUB_RESERVED(IQzFolderMgr, 19)
    STORE_STUB_RESERVED(IQzFolderMgr, 20)
    STORE_STUB_RESERVED(IQzFolderMgr, 21)
};

#undef STORE_STUB_RESERVED

std::wstring InterfaceName(REFIID riid) {
    if (IsEqualIID(riid, IID_IQzFolderMgr))
        return L"IQzFolderMgr";
    if (IsEqualIID(riid, IID_IUnknown))
        return L"IUnknown";
    wchar_t text[40] = {};
    ::StringFromGUID2(riid, text, 40);
    return text;
}

}  // namespace

HRESULT CreateFolderMgr(REFIID riid, void** out) noexcept {
    return StoreCall(
        L"CreateInstance", L"-", [&] { return CallText(L"CreateInstance", {InterfaceName(riid)}); },
        [&] { Zero(out); },
        [&] {
            if (!out)
                return E_POINTER;
            FolderMgr* mgr = new FolderMgr();
            HRESULT hr = mgr->QueryInterface(riid, out);
            mgr->Release();
            return hr;
        });
}

}  // namespace velk::tools::store
