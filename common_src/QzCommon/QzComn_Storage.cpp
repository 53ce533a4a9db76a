#include "common_src/QzCommon/QzComn_Storage.h"

namespace QzCommon {
namespace Storage {

// What a store that does not override an operation answers: false, or the
// default without reading. The INI store relies on these on purpose.

Base::~Base() = default;

bool Base::OpenForWrite(const StorageLocation&, const std::wstring&) {
    return false;
}

bool Base::OpenForEnumeration(const StorageLocation&, const std::wstring&) {
    return false;
}

bool Base::ReadBinaryNoThrow(const std::wstring&, ByteBuffer&, DWORD*) {
    return false;
}

bool Base::ReadBinary(const std::wstring&, ByteBuffer&) {
    return false;
}

std::wstring Base::ReadStringNoThrow(const std::wstring&, const std::wstring& def, DWORD*) {
    return def;
}

DWORD Base::ReadDwordNoThrow(const std::wstring&, const DWORD& def, DWORD*) {
    return def;
}

bool Base::WriteBinary(const std::wstring&, const ByteBuffer&) {
    return false;
}

bool Base::WriteQword(const std::wstring&, const ULONGLONG&) {
    return false;
}

bool Base::EnumerateNodes(StringList&) {
    return false;
}

bool Base::EnumerateValues(StringList&) {
    return false;
}

std::wstring Base::ReadString(const wchar_t* name, const wchar_t* def) {
    return ReadString(std::wstring(name ? name : L""), std::wstring(def ? def : L""));
}

}  // namespace Storage
}  // namespace QzCommon
