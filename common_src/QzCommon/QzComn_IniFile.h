// A section of a private profile (INI) file as a settings store.
//
// Deliberately smaller than the registry store: no binary, 64-bit or
// enumeration operations (they answer false), and the no-throw reads are the
// base class's, which return the default without touching the file.
#pragma once

#include "common_src/QzCommon/QzComn_Storage.h"

namespace QzCommon {
namespace Storage {

class IniFile : public Base {
public:
    IniFile() = default;
    ~IniFile() override;

    using Base::ReadString;

    // Sets file path (directory + "\" + file name) and section; nothing is
    // created on disk. Error 160 when either comes out empty.
    bool Open(const StorageLocation& location, const std::wstring& section) override;
    bool Create(const StorageLocation& location, const std::wstring& section) override;
    bool OpenForWrite(const StorageLocation& location, const std::wstring& section) override;
    bool OpenForEnumeration(const StorageLocation& location, const std::wstring& section) override;
    bool Close(const bool& flushFirst) override;
    bool Flush() override;

    bool ReadBinaryNoThrow(const std::wstring& name, ByteBuffer& out,
                           DWORD* errorCode = nullptr) override;
    bool ReadBinary(const std::wstring& name, ByteBuffer& out) override;
    std::wstring ReadString(const std::wstring& name, const std::wstring& def) override;
    // A missing or non-numeric value gives the default; "12abc" gives 12.
    DWORD ReadDword(const std::wstring& name, const DWORD& def) override;

    bool WriteBinary(const std::wstring& name, const ByteBuffer& data) override;
    bool WriteString(const std::wstring& name, const std::wstring& value) override;
    bool WriteQword(const std::wstring& name, const ULONGLONG& value) override;
    bool WriteDword(const std::wstring& name, const DWORD& value) override;  // decimal text

    bool DeleteNode() override;
    bool DeleteValue(const wchar_t* name) override;
    bool DeleteValue(const std::wstring& name) override;

    bool EnumerateNodes(StringList& out) override;
    bool EnumerateValues(StringList& out) override;

    const std::wstring& GetFilePath() const noexcept { return m_strFilePath; }
    const std::wstring& GetSection() const noexcept { return m_strSection; }

private:
    void CheckValueAccess(const std::wstring& name) const;

    std::wstring m_strFilePath;
    std::wstring m_strSection;
};

}  // namespace Storage
}  // namespace QzCommon
