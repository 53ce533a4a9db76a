#include "common_src/QzCommon/QzComn_Registry.h"

#include <memory>
#include <new>
#include <utility>

#include "common_src/QzCommon/QzComn_SecurityAttributes.h"
#include "common_src/QzCommon/QzComn_String.h"

namespace QzCommon {
namespace Storage {
namespace {

// Reported in every Storage::Exception raised here; other modules print it.
const char kSourceFile[] = "..\\..\\common_src\\QzCommon\\QzComn_Registry";

bool IsStringType(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

std::wstring JoinKeyPath(const wchar_t* keyPath, const std::wstring& node) {
    std::wstring path = keyPath ? keyPath : L"";
    String::AddTrailingBackslash(path);
    return path + node;
}

}  // namespace

namespace detail {
RegistryOpenCalls& ActiveRegistryOpenCalls() noexcept {
    static RegistryOpenCalls calls = {&::RegOpenKeyExW, &::RegCreateKeyExW};
    return calls;
}
}  // namespace detail

REGSAM ViewAccessFlag(DWORD view) noexcept {
    switch (view) {
        case kView32:
            return KEY_WOW64_32KEY;
        case kView64:
            return KEY_WOW64_64KEY;
        default:
            return 0;
    }
}

Registry::~Registry() {
    if (IsOpen())
        Capture<Exception>([&] { Close(false); });
}

void Registry::OpenKey(HKEY root, std::wstring path, REGSAM access, bool create) {
    if (!root)
        QZ_THROW(Exception, ERROR_BAD_ARGUMENTS);
    // Opening again lets go of the previous key; a failed open leaves the
    // store closed.
    m_hKey.reset();
    m_hRootKey = nullptr;
    m_strKeyPath.clear();

    const REGSAM sam = access | ViewAccessFlag(m_dwView);
    const detail::RegistryOpenCalls& calls = detail::ActiveRegistryOpenCalls();
    HKEY key = nullptr;
    LONG rc;
    if (create) {
        AccessControl::SecurityAttributes security(AccessControl::kRegistryKey, false);
        DWORD disposition = 0;
        rc = calls.createKey(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, sam,
                             security.Get(), &key, &disposition);
    } else {
        rc = calls.openKey(root, path.c_str(), 0, sam, &key);
    }
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    m_hRootKey = root;
    m_hKey.reset(key);
    m_strKeyPath = std::move(path);
}

bool Registry::Open(const StorageLocation& location, const std::wstring& node) {
    OpenKey(location.m_hRootKey, JoinKeyPath(location.m_pszSubPath, node), kOpenAccess, false);
    return true;
}

bool Registry::Create(const StorageLocation& location, const std::wstring& node) {
    OpenKey(location.m_hRootKey, JoinKeyPath(location.m_pszSubPath, node), kCreateAccess, true);
    return true;
}

bool Registry::OpenForWrite(const StorageLocation& location, const std::wstring& node) {
    OpenKey(location.m_hRootKey, JoinKeyPath(location.m_pszSubPath, node), kOpenForWriteAccess,
            false);
    return true;
}

bool Registry::OpenForEnumeration(const StorageLocation& location, const std::wstring& node) {
    OpenKey(location.m_hRootKey, JoinKeyPath(location.m_pszSubPath, node),
            kOpenForEnumerationAccess, false);
    return true;
}

bool Registry::Open(HKEY root, const wchar_t* keyPath, DWORD view) {
    m_dwView = view;
    OpenKey(root, keyPath ? keyPath : L"", kOpenAccess, false);
    return true;
}

void Registry::CheckOpen() const {
    if (!IsOpen())
        QZ_THROW(Exception, ERROR_INVALID_HANDLE);
}

bool Registry::Close(const bool& flushFirst) {
    CheckOpen();
    bool result = true;
    if (flushFirst)
        result = Flush();
    const LONG rc = ::RegCloseKey(m_hKey.release());
    m_hRootKey = nullptr;
    m_strKeyPath.clear();
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    return result;
}

bool Registry::Flush() {
    CheckOpen();
    const LONG rc = ::RegFlushKey(m_hKey.get());
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    return true;
}

DWORD Registry::QueryValue(const std::wstring& name, DWORD* type, BYTE* data, DWORD* bytes) const {
    return static_cast<DWORD>(
        ::RegQueryValueExW(m_hKey.get(), name.c_str(), nullptr, type, data, bytes));
}

bool Registry::ReadBinaryNoThrow(const std::wstring& name, ByteBuffer& out, DWORD* errorCode) {
    bool result = false;
    if (auto error = Capture<Exception>([&] { result = ReadBinary(name, out); })) {
        if (errorCode)
            *errorCode = error->m_dwErrorCode;
        return false;
    }
    return result;
}

bool Registry::ReadBinary(const std::wstring& name, ByteBuffer& out) {
    CheckOpen();
    DWORD type = 0;
    DWORD bytes = 0;
    DWORD rc = QueryValue(name, &type, nullptr, &bytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    if (type != REG_BINARY)
        QZ_THROW(Exception, ERROR_INVALID_DATA);

    std::unique_ptr<BYTE[]> buffer(new (std::nothrow) BYTE[bytes ? bytes : 1]());
    if (!buffer)
        QZ_THROW(Exception, ERROR_INVALID_HANDLE);
    DWORD readType = 0;
    DWORD readBytes = bytes;
    rc = QueryValue(name, &readType, buffer.get(), &readBytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    if (readType != REG_BINARY || readBytes != bytes)
        QZ_THROW(Exception, ERROR_INVALID_DATA);
    out.assign(buffer.get(), buffer.get() + bytes);
    return true;
}

std::wstring Registry::ReadStringNoThrow(const std::wstring& name, const std::wstring& def,
                                         DWORD* errorCode) {
    std::wstring result;
    if (auto error = Capture<Exception>([&] { result = ReadString(name, def); })) {
        if (errorCode)
            *errorCode = error->m_dwErrorCode;
        return def;
    }
    return result;
}

std::wstring Registry::ReadString(const std::wstring& name, const std::wstring& def) {
    CheckOpen();
    DWORD type = 0;
    DWORD bytes = 0;
    DWORD rc = QueryValue(name, &type, nullptr, &bytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    if (!IsStringType(type))
        QZ_THROW(Exception, ERROR_INVALID_DATA);

    // Room for every byte read (an odd count ends in half a character) and
    // one spare zero character, so that a value stored without its
    // terminator still ends inside the buffer.
    const std::size_t chars = (bytes + sizeof(wchar_t) - 1) / sizeof(wchar_t) + 1;
    std::unique_ptr<wchar_t[]> buffer(new (std::nothrow) wchar_t[chars]());
    if (!buffer)
        QZ_THROW(Exception, ERROR_INVALID_HANDLE);
    DWORD readType = 0;
    DWORD readBytes = bytes;
    rc = QueryValue(name, &readType, reinterpret_cast<BYTE*>(buffer.get()), &readBytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    if (!IsStringType(readType) || readBytes != bytes)
        QZ_THROW(Exception, ERROR_INVALID_DATA);
    // Up to the first zero: a multi-string gives its first string.
    return std::wstring(buffer.get());
}

DWORD Registry::ReadDwordNoThrow(const std::wstring& name, const DWORD& def, DWORD* errorCode) {
    DWORD result = def;
    if (auto error = Capture<Exception>([&] { result = ReadDword(name, def); })) {
        if (errorCode)
            *errorCode = error->m_dwErrorCode;
        return def;
    }
    return result;
}

DWORD Registry::ReadDword(const std::wstring& name, const DWORD&) {
    CheckOpen();
    DWORD type = 0;
    DWORD bytes = 0;
    DWORD rc = QueryValue(name, &type, nullptr, &bytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    if (type != REG_DWORD || bytes != sizeof(DWORD))
        QZ_THROW(Exception, ERROR_INVALID_DATA);
    DWORD value = 0;
    bytes = sizeof(value);
    rc = QueryValue(name, &type, reinterpret_cast<BYTE*>(&value), &bytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    if (type != REG_DWORD || bytes != sizeof(DWORD))
        QZ_THROW(Exception, ERROR_INVALID_DATA);
    return value;
}

void Registry::SetValue(const std::wstring& name, DWORD type, const void* data, DWORD bytes) {
    CheckOpen();
    const LONG rc = ::RegSetValueExW(m_hKey.get(), name.c_str(), 0, type,
                                     static_cast<const BYTE*>(data), bytes);
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
}

bool Registry::WriteBinary(const std::wstring& name, const ByteBuffer& data) {
    SetValue(name, REG_BINARY, data.data(), static_cast<DWORD>(data.size()));
    return true;
}

bool Registry::WriteString(const std::wstring& name, const std::wstring& value) {
    // The whole string and its terminator.
    SetValue(name, REG_SZ, value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    return true;
}

bool Registry::WriteQword(const std::wstring& name, const ULONGLONG& value) {
    SetValue(name, REG_QWORD, &value, sizeof(value));
    return true;
}

bool Registry::WriteDword(const std::wstring& name, const DWORD& value) {
    SetValue(name, REG_DWORD, &value, sizeof(value));
    return true;
}

bool Registry::DeleteNode() {
    CheckOpen();
    // An empty sub-key name deletes the key the handle refers to.
    const LONG rc = ::RegDeleteKeyW(m_hKey.get(), L"");
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    return true;
}

bool Registry::DeleteValue(const wchar_t* name) {
    return DeleteValue(std::wstring(name ? name : L""));
}

bool Registry::DeleteValue(const std::wstring& name) {
    CheckOpen();
    const LONG rc = ::RegDeleteValueW(m_hKey.get(), name.c_str());
    if (rc != ERROR_SUCCESS)
        QZ_THROW(Exception, rc);
    return true;
}

bool Registry::EnumerateNodes(StringList& out) {
    CheckOpen();
    for (DWORD index = 0;; ++index) {
        wchar_t name[255] = {};
        DWORD chars = 255;
        const LONG rc =
            ::RegEnumKeyExW(m_hKey.get(), index, name, &chars, nullptr, nullptr, nullptr, nullptr);
        if (rc == ERROR_NO_MORE_ITEMS)
            return true;
        if (rc != ERROR_SUCCESS)
            QZ_THROW(Exception, rc);
        out.emplace_back(name, chars);
    }
}

bool Registry::EnumerateValues(StringList& out) {
    CheckOpen();
    for (DWORD index = 0;; ++index) {
        wchar_t name[255] = {};
        DWORD chars = 255;
        const LONG rc =
            ::RegEnumValueW(m_hKey.get(), index, name, &chars, nullptr, nullptr, nullptr, nullptr);
        if (rc == ERROR_NO_MORE_ITEMS)
            return true;
        if (rc != ERROR_SUCCESS)
            QZ_THROW(Exception, rc);
        out.emplace_back(name, chars);
    }
}

}  // namespace Storage

bool IsNative64BitSystem() noexcept {
    // Looked up at run time: the oldest systems served lack the call.
    static const bool native64 = [] {
        using GetNativeSystemInfoFn = void(WINAPI*)(LPSYSTEM_INFO);
        HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
        auto getNativeSystemInfo = kernel ? reinterpret_cast<GetNativeSystemInfoFn>(
                                                ::GetProcAddress(kernel, "GetNativeSystemInfo"))
                                          : nullptr;
        if (!getNativeSystemInfo)
            return false;
        SYSTEM_INFO info = {};
        getNativeSystemInfo(&info);
        return info.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64;
    }();
    return native64;
}

}  // namespace QzCommon
