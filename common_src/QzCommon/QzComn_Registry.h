// A registry key as a settings store: the only store with binary, 64-bit and
// enumeration operations.
#pragma once

#include "common_src/QzCommon/QzComn_Storage.h"
#include "common_src/win32/handles.h"

namespace QzCommon {
namespace Storage {

// Registry views, turned into an extra access flag on every open.
enum RegistryView : DWORD {
    kDefaultView = 0,
    kView32 = 1,  // KEY_WOW64_32KEY
    kView64 = 2,  // KEY_WOW64_64KEY
};

// Access rights per open operation; the product's other components open the
// same keys with the same rights, so these stay as they are.
constexpr REGSAM kOpenAccess = KEY_QUERY_VALUE;                                         // 0x1
constexpr REGSAM kCreateAccess = KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;  // 0x7
constexpr REGSAM kOpenForWriteAccess = KEY_SET_VALUE | DELETE;                          // 0x10002
constexpr REGSAM kOpenForEnumerationAccess = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS;  // 0x9

// The access flag a view adds: 0x200, 0x100 or nothing.
REGSAM ViewAccessFlag(DWORD view) noexcept;

class Registry : public Base {
public:
    explicit Registry(DWORD view = kDefaultView) noexcept : m_dwView(view) {}
    // Closes an open key without flushing; a failure there is ignored.
    ~Registry() override;

    using Base::ReadString;

    // The key path is the location's path, a backslash, then the node name.
    bool Open(const StorageLocation& location, const std::wstring& node) override;
    // Creates the key with the registry-key security attributes.
    bool Create(const StorageLocation& location, const std::wstring& node) override;
    bool OpenForWrite(const StorageLocation& location, const std::wstring& node) override;
    bool OpenForEnumeration(const StorageLocation& location, const std::wstring& node) override;
    // Remembers `view` for this and later opens, then opens `keyPath` for reading.
    bool Open(HKEY root, const wchar_t* keyPath, DWORD view);
    bool Close(const bool& flushFirst) override;
    bool Flush() override;

    bool ReadBinaryNoThrow(const std::wstring& name, ByteBuffer& out,
                           DWORD* errorCode = nullptr) override;
    bool ReadBinary(const std::wstring& name, ByteBuffer& out) override;
    std::wstring ReadStringNoThrow(const std::wstring& name, const std::wstring& def,
                                   DWORD* errorCode = nullptr) override;
    // REG_SZ, REG_EXPAND_SZ (not expanded) or REG_MULTI_SZ (its first string).
    // Unlike the INI store, an empty value name is allowed: the key's default
    // value.
    std::wstring ReadString(const std::wstring& name, const std::wstring& def) override;
    DWORD ReadDwordNoThrow(const std::wstring& name, const DWORD& def,
                           DWORD* errorCode = nullptr) override;
    DWORD ReadDword(const std::wstring& name, const DWORD& def) override;

    bool WriteBinary(const std::wstring& name, const ByteBuffer& data) override;
    bool WriteString(const std::wstring& name, const std::wstring& value) override;
    bool WriteQword(const std::wstring& name, const ULONGLONG& value) override;
    bool WriteDword(const std::wstring& name, const DWORD& value) override;

    // Deletes the open key itself; fails on a key that has sub-keys.
    bool DeleteNode() override;
    bool DeleteValue(const wchar_t* name) override;
    bool DeleteValue(const std::wstring& name) override;

    // Appends the names in the order the system reports them; a name of 255
    // characters or more fails with the system's code.
    bool EnumerateNodes(StringList& out) override;
    bool EnumerateValues(StringList& out) override;

    DWORD GetView() const noexcept { return m_dwView; }
    const std::wstring& GetKeyPath() const noexcept { return m_strKeyPath; }
    bool IsOpen() const noexcept { return m_hRootKey != nullptr && m_hKey; }

private:
    void OpenKey(HKEY root, std::wstring path, REGSAM access, bool create);
    void CheckOpen() const;
    DWORD QueryValue(const std::wstring& name, DWORD* type, BYTE* data, DWORD* bytes) const;
    void SetValue(const std::wstring& name, DWORD type, const void* data, DWORD bytes);

    HKEY m_hRootKey = nullptr;
    velk::win32::unique_hkey m_hKey;
    std::wstring m_strKeyPath;
    DWORD m_dwView;
};

namespace detail {
// The two calls that open keys, replaceable so that tests can see the exact
// rights and security attributes asked for.
struct RegistryOpenCalls {
    LONG(WINAPI* openKey)(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY);
    LONG(WINAPI* createKey)
    (HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM, LPSECURITY_ATTRIBUTES, PHKEY, LPDWORD);
};
RegistryOpenCalls& ActiveRegistryOpenCalls() noexcept;
}  // namespace detail

}  // namespace Storage

// Whether the processor architecture of the machine (not of this process) is
// AMD64; computed once. Callers read the product key through the 64-bit view
// when it is.
bool IsNative64BitSystem() noexcept;

}  // namespace QzCommon
