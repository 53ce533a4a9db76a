// The settings-store interface of the QzCommon library.
//
// A store opens one node (an INI section or a registry key), reads and writes
// named values in it and closes it. Failures are thrown as
// QzCommon::Storage::Exception* (see QzComn_Exception.h); every read has a
// no-throw twin that hands back a fallback and an error code instead.
//
// The virtual operations are declared in a fixed order (the slot order other
// modules of the product were built against): do not reorder or insert.
#pragma once

#include <windows.h>

#include <list>
#include <string>
#include <vector>

#include "common_src/QzCommon/QzComn_Exception.h"

namespace QzCommon {
namespace Storage {

using ByteBuffer = std::vector<BYTE>;
using StringList = std::list<std::wstring>;

// Where a node lives. INI store: a directory and a file name. Registry store:
// a predefined root key and a key path. Any part may be null.
struct StorageLocation {
    StorageLocation() noexcept = default;
    StorageLocation(const wchar_t* directory, const wchar_t* fileName) noexcept
        : m_pszRootPath(directory), m_pszSubPath(fileName) {}
    StorageLocation(HKEY rootKey, const wchar_t* keyPath) noexcept
        : m_hRootKey(rootKey), m_pszSubPath(keyPath) {}

    HKEY m_hRootKey = nullptr;
    const wchar_t* m_pszRootPath = nullptr;
    const wchar_t* m_pszSubPath = nullptr;
};

class Base {
public:
    Base() = default;
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;

    virtual ~Base();  // 0

    virtual bool Open(const StorageLocation& location, const std::wstring& node) = 0;      // 1
    virtual bool Create(const StorageLocation& location, const std::wstring& node) = 0;    // 2
    virtual bool OpenForWrite(const StorageLocation& location, const std::wstring& node);  // 3
    virtual bool OpenForEnumeration(const StorageLocation& location,
                                    const std::wstring& node);  // 4
    virtual bool Close(const bool& flushFirst) = 0;             // 5
    virtual bool Flush() = 0;                                   // 6

    virtual bool ReadBinaryNoThrow(const std::wstring& name, ByteBuffer& out,
                                   DWORD* errorCode = nullptr);          // 7
    virtual bool ReadBinary(const std::wstring& name, ByteBuffer& out);  // 8
    virtual std::wstring ReadStringNoThrow(const std::wstring& name, const std::wstring& def,
                                           DWORD* errorCode = nullptr);  // 9
    virtual std::wstring ReadString(const std::wstring& name,
                                    const std::wstring& def) = 0;  // 10
    virtual DWORD ReadDwordNoThrow(const std::wstring& name, const DWORD& def,
                                   DWORD* errorCode = nullptr);               // 11
    virtual DWORD ReadDword(const std::wstring& name, const DWORD& def) = 0;  // 12

    virtual bool WriteBinary(const std::wstring& name, const ByteBuffer& data);         // 13
    virtual bool WriteString(const std::wstring& name, const std::wstring& value) = 0;  // 14
    virtual bool WriteQword(const std::wstring& name, const ULONGLONG& value);          // 15
    virtual bool WriteDword(const std::wstring& name, const DWORD& value) = 0;          // 16

    virtual bool DeleteNode() = 0;                           // 17
    virtual bool DeleteValue(const wchar_t* name) = 0;       // 18, null means empty
    virtual bool DeleteValue(const std::wstring& name) = 0;  // 19

    virtual bool EnumerateNodes(StringList& out);   // 20
    virtual bool EnumerateValues(StringList& out);  // 21

    // For callers holding plain pointers: null becomes empty, then slot 10.
    std::wstring ReadString(const wchar_t* name, const wchar_t* def);
};

}  // namespace Storage
}  // namespace QzCommon
