#include "common_src/QzCommon/QzComn_IniFile.h"

#include <memory>
#include <new>

#include "common_src/QzCommon/QzComn_String.h"

namespace QzCommon {
namespace Storage {
namespace {

// Reported in every Storage::Exception raised here; other modules print it.
const char kSourceFile[] = "..\\..\\common_src\\QzCommon\\QzComn_IniFile";

// A profile write that failed: the system's reason, as the exception's code.
[[noreturn]] void ThrowLastError(unsigned line) {
    throw new Exception(::GetLastError(), kSourceFile, line);
}

bool LooksNumeric(const wchar_t* text) {
    if (*text == L'-' || *text == L'+')
        ++text;
    return *text >= L'0' && *text <= L'9';
}

}  // namespace

IniFile::~IniFile() = default;

bool IniFile::Open(const StorageLocation& location, const std::wstring& section) {
    std::wstring path = location.m_pszRootPath ? location.m_pszRootPath : L"";
    String::AddTrailingBackslash(path);
    if (location.m_pszSubPath)
        path += location.m_pszSubPath;
    if (path.empty() || section.empty())
        QZ_THROW(Exception, ERROR_BAD_ARGUMENTS);
    m_strFilePath.swap(path);
    m_strSection = section;
    return true;
}

// The profile functions create the file at the first write.
bool IniFile::Create(const StorageLocation& location, const std::wstring& section) {
    return Open(location, section);
}

bool IniFile::OpenForWrite(const StorageLocation&, const std::wstring&) {
    return false;
}

bool IniFile::OpenForEnumeration(const StorageLocation&, const std::wstring&) {
    return false;
}

bool IniFile::Close(const bool& flushFirst) {
    bool result = true;
    if (flushFirst)
        result = Flush();
    m_strFilePath.clear();
    m_strSection.clear();
    return result;
}

bool IniFile::Flush() {
    if (m_strFilePath.empty())
        QZ_THROW(Exception, ERROR_BAD_ARGUMENTS);
    // The all-null form flushes the profile cache for the file and reports
    // FALSE whether or not the flush worked, so its result says nothing.
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, m_strFilePath.c_str());
    return true;
}

bool IniFile::ReadBinaryNoThrow(const std::wstring&, ByteBuffer&, DWORD*) {
    return false;
}

bool IniFile::ReadBinary(const std::wstring&, ByteBuffer&) {
    return false;
}

void IniFile::CheckValueAccess(const std::wstring& name) const {
    if (m_strFilePath.empty() || m_strSection.empty() || name.empty())
        QZ_THROW(Exception, ERROR_BAD_ARGUMENTS);
}

std::wstring IniFile::ReadString(const std::wstring& name, const std::wstring& def) {
    CheckValueAccess(name);
    const std::size_t step = String::BufferGrowthStep();
    for (std::size_t chars = String::InitialBufferSize();; chars += step) {
        // The profile API reports a cut value as exactly n - 1 characters, so
        // a value of that length could have been cut: read again, larger.
        if (chars > String::kMaxBufferChars)
            QZ_THROW(Exception, ERROR_INVALID_HANDLE);
        std::unique_ptr<wchar_t[]> buffer(new (std::nothrow) wchar_t[chars]());
        if (!buffer)
            QZ_THROW(Exception, ERROR_INVALID_HANDLE);
        const DWORD copied = ::GetPrivateProfileStringW(
            m_strSection.c_str(), name.c_str(), def.c_str(), buffer.get(),
            static_cast<DWORD>(chars), m_strFilePath.c_str());
        if (copied != chars - 1)
            return std::wstring(buffer.get(), copied);
    }
}

DWORD IniFile::ReadDword(const std::wstring& name, const DWORD& def) {
    CheckValueAccess(name);
    // The system parses "12abc" as 12 but "abc" as 0; a value that does not
    // start with a number must give the caller's default instead.
    wchar_t head[16] = {};
    ::GetPrivateProfileStringW(m_strSection.c_str(), name.c_str(), L"", head, 16,
                               m_strFilePath.c_str());
    if (!LooksNumeric(head))
        return def;
    return static_cast<DWORD>(::GetPrivateProfileIntW(
        m_strSection.c_str(), name.c_str(), static_cast<INT>(def), m_strFilePath.c_str()));
}

bool IniFile::WriteBinary(const std::wstring&, const ByteBuffer&) {
    return false;
}

bool IniFile::WriteString(const std::wstring& name, const std::wstring& value) {
    CheckValueAccess(name);
    if (!::WritePrivateProfileStringW(m_strSection.c_str(), name.c_str(), value.c_str(),
                                      m_strFilePath.c_str()))
        ThrowLastError(__LINE__);
    return true;
}

bool IniFile::WriteQword(const std::wstring&, const ULONGLONG&) {
    return false;
}

bool IniFile::WriteDword(const std::wstring& name, const DWORD& value) {
    CheckValueAccess(name);
    std::wstring text;
    if (auto error = Capture<String::Exception>([&] { String::Format(text, L"%u", value); }))
        QZ_THROW(Exception, error->m_dwErrorCode);
    if (!::WritePrivateProfileStringW(m_strSection.c_str(), name.c_str(), text.c_str(),
                                      m_strFilePath.c_str()))
        ThrowLastError(__LINE__);
    return true;
}

bool IniFile::DeleteNode() {
    if (m_strFilePath.empty() || m_strSection.empty())
        QZ_THROW(Exception, ERROR_BAD_ARGUMENTS);
    if (!::WritePrivateProfileStringW(m_strSection.c_str(), nullptr, nullptr,
                                      m_strFilePath.c_str()))
        ThrowLastError(__LINE__);
    return true;
}

bool IniFile::DeleteValue(const wchar_t* name) {
    return DeleteValue(std::wstring(name ? name : L""));
}

bool IniFile::DeleteValue(const std::wstring& name) {
    CheckValueAccess(name);
    if (!::WritePrivateProfileStringW(m_strSection.c_str(), name.c_str(), nullptr,
                                      m_strFilePath.c_str()))
        ThrowLastError(__LINE__);
    return true;
}

bool IniFile::EnumerateNodes(StringList&) {
    return false;
}

bool IniFile::EnumerateValues(StringList&) {
    return false;
}

}  // namespace Storage
}  // namespace QzCommon
