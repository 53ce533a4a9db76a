#include "common_src/win32/QzResourceStringLoader.h"

#include <cwctype>
#include <utility>

#include "common_src/QzCommon/QzComn_Registry.h"
#include "common_src/QzCommon/QzComn_String.h"
#include "common_src/win32/QzResourceText.h"
#include "common_src/win32/handles.h"
#include "log/diag_log.h"

using QzCommon::Capture;
using QzCommon::Storage::IniFile;
using QzCommon::Storage::Registry;
using QzCommon::Storage::StorageLocation;
using StorageException = QzCommon::Storage::Exception;

namespace {

// Names wider than this are not locale names; the system's own limit.
constexpr int kLocaleNameChars = 85;
const wchar_t kDefaultLanguage[] = L"en-US";
const wchar_t kStringTableFile[] = L"StringTable.ini";
const wchar_t kLanguageMapFile[] = L"LanguageMap.ini";

// "[Enter] X()..." and "[Leave] X()..." around an operation, on every path.
class TraceScope {
public:
    explicit TraceScope(const wchar_t* name) : m_name(name) {
        VELK_LOG(L"[Enter] %s()...", m_name);
    }
    ~TraceScope() { VELK_LOG(L"[Leave] %s()...", m_name); }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    const wchar_t* m_name;
};

void LogStorageException(const StorageException& error) {
    VELK_LOG(L"QzCommon::Storage::Exception - ln(%u), er(0x%08X)", error.m_dwSourceLine,
             error.m_dwErrorCode);
}

using LcidToLocaleNameFn = int(WINAPI*)(LCID, LPWSTR, int, DWORD);

// A locale-name function of a system DLL, looked up at run time; the module
// stays loaded only for the call.
int CallLocaleNameExport(const wchar_t* modulePath, const char* exportName, LCID lcid, LPWSTR name,
                         int chars) {
    velk::win32::unique_hmodule module(::LoadLibraryW(modulePath));
    if (!module)
        return 0;
    auto function =
        reinterpret_cast<LcidToLocaleNameFn>(::GetProcAddress(module.get(), exportName));
    return function ? function(lcid, name, chars, 0) : 0;
}

// nlsdl.dll is a redistributable of the system folder: load it from there,
// never from the mail client's search path.
std::wstring SystemFolderFile(const wchar_t* file) {
    wchar_t folder[MAX_PATH] = {};
    const UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return file;
    std::wstring path = folder;
    QzCommon::String::AddTrailingBackslash(path);
    return path + file;
}

std::wstring DefaultResourceRoot() {
    HMODULE self = nullptr;
    static const int anchor = 0;
    if (!::GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&anchor), &self))
        return std::wstring();
    wchar_t path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(self, path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return std::wstring();
    std::wstring folder(path, length);
    folder.erase(folder.rfind(L'\\') + 1);
    return folder + L"..\\Resource\\";
}

bool FileExists(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool FolderExists(std::wstring path) {
    QzCommon::String::RemoveTrailingBackslash(path);
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

QzResourceStringLoader::QzResourceStringLoader()
    : QzResourceStringLoader(QzLanguageEnvironment()) {}

QzResourceStringLoader::QzResourceStringLoader(QzLanguageEnvironment environment)
    : m_environment(std::move(environment)) {
    m_strResourceRoot =
        m_environment.resourceRoot.empty() ? DefaultResourceRoot() : m_environment.resourceRoot;
    QzCommon::String::AddTrailingBackslash(m_strResourceRoot);
}

LCID QzResourceStringLoader::SystemDefaultLcid() const {
    return m_environment.systemDefaultLcid ? m_environment.systemDefaultLcid()
                                           : ::GetSystemDefaultLCID();
}

std::wstring QzResourceStringLoader::LocaleNameOf(LANGID langId) const {
    const LCID lcid = MAKELCID(langId, SORT_DEFAULT);
    wchar_t name[kLocaleNameChars] = {};
    const int written = m_environment.lcidToLocaleName
                            ? m_environment.lcidToLocaleName(lcid, name, kLocaleNameChars)
                            : CallLocaleNameExport(L"kernel32.dll", "LCIDToLocaleName", lcid, name,
                                                   kLocaleNameChars);
    if (written > 0) {
        name[kLocaleNameChars - 1] = L'\0';
        // Folder lookups ignore case; the upper-case form is what other
        // components of the product log and compare.
        for (wchar_t* c = name; *c; ++c)
            *c = static_cast<wchar_t>(std::towupper(*c));
        return name;
    }
    // The downlevel helper's answer is kept as it comes.
    const int downlevel =
        m_environment.downlevelLcidToLocaleName
            ? m_environment.downlevelLcidToLocaleName(lcid, name, kLocaleNameChars)
            : CallLocaleNameExport(SystemFolderFile(L"nlsdl.dll").c_str(),
                                   "DownlevelLCIDToLocaleName", lcid, name, kLocaleNameChars);
    if (downlevel > 0) {
        name[kLocaleNameChars - 1] = L'\0';
        return name;
    }
    return std::wstring();
}

std::wstring QzResourceStringLoader::GetResourcePath() {
    TraceScope trace(L"QzResourceStringLoader::GetResourcePath");
    VELK_LOG(L"String Table Path: [%s]", m_strResourceRoot.c_str());
    return m_strResourceRoot;
}

std::wstring QzResourceStringLoader::MapPrimaryLangID() {
    TraceScope trace(L"QzResourceStringLoader::MapPrimaryLangID");
    const LANGID primary =
        MAKELANGID(PRIMARYLANGID(LANGIDFROMLCID(SystemDefaultLcid())), SUBLANG_DEFAULT);
    std::wstring name = LocaleNameOf(primary);
    VELK_LOG(L"Primary language mapped result: [%s]", name.c_str());
    return name;
}

std::wstring QzResourceStringLoader::NameFromLanguageMap(const std::wstring& root, LCID lcid) {
    VELK_LOG(L"Using LanguageMap.ini to perform language mapping, path: [%s]",
             (root + kLanguageMapFile).c_str());
    std::wstring name = kDefaultLanguage;
    std::wstring key;
    auto error = Capture<StorageException>([&] {
        QzCommon::String::Format(key, L"%u", static_cast<unsigned>(lcid));
        IniFile map;
        map.Open(StorageLocation(root.c_str(), kLanguageMapFile), L"LCID2NAME");
        name = map.ReadString(key, kDefaultLanguage);
    });
    if (error) {
        LogStorageException(*error);
        name = kDefaultLanguage;
    }
    VELK_LOG(L"<LanguageMap.ini> Matched Locale Name from [%s] to [%s]", key.c_str(), name.c_str());
    return name;
}

// The fallback chain shared by Initialize, the resource-folder lookup and the
// help address; only what is probed and the wording of the log differ.
bool QzResourceStringLoader::ChooseLanguage(Probe probe, std::wstring& name,
                                            std::wstring& probedPath) {
    const std::wstring root = GetResourcePath();
    const LCID lcid = SystemDefaultLcid();
    name = LocaleNameOf(LANGIDFROMLCID(lcid));
    if (name.empty())
        name = NameFromLanguageMap(root, lcid);

    auto target = [&](const std::wstring& language) {
        return probe == Probe::kFolder ? root + language + L"\\"
                                       : root + language + L"\\" + kStringTableFile;
    };
    auto exists = [&](const std::wstring& path) {
        return probe == Probe::kFolder ? FolderExists(path) : FileExists(path);
    };

    probedPath = target(name);
    if (exists(probedPath))
        return true;
    if (probe == Probe::kFolder)
        VELK_LOG(
            L"Start mapping primary language ID due to <%s> resource folder is not existed: [%s]",
            name.c_str(), probedPath.c_str());
    else
        VELK_LOG(L"Start mapping primary language ID due to <%s> StringTable is not existed: [%s]",
                 name.c_str(), probedPath.c_str());

    name = MapPrimaryLangID();
    probedPath = target(name);
    // Without any locale-name source the mapped name is empty, and its
    // "folder" would be the resource root itself, which holds no language.
    if (!name.empty() && exists(probedPath))
        return true;
    switch (probe) {
        case Probe::kStringTable:
            VELK_LOG(
                L"<%s> Language not support!!\n Mapped primary language's StringTable is "
                L"still not existed: [%s]",
                name.c_str(), probedPath.c_str());
            break;
        case Probe::kFolder:
            VELK_LOG(
                L"<%s> Language not support!!\n Mapped primary language, but still not "
                L"existed: [%s]",
                name.c_str(), probedPath.c_str());
            break;
        case Probe::kHelp:
            VELK_LOG(L"<%s> Language not support!!", name.c_str());
            break;
    }

    name = kDefaultLanguage;
    probedPath = target(name);
    if (probe == Probe::kHelp) {
        // The help pages live on the web server: the address stays usable
        // even when the local table is missing.
        VELK_LOG(L"Using default language <%s>", name.c_str());
        return true;
    }
    VELK_LOG(L"Using default language <%s>: [%s]", name.c_str(), probedPath.c_str());
    if (exists(probedPath))
        return true;
    if (probe == Probe::kFolder)
        VELK_LOG(L"*** Error occurred!! Resource folder is not existed: [%s]", probedPath.c_str());
    else
        VELK_LOG(L"*** Error occurred!! <%s> StringTable is not existed: [%s]", name.c_str(),
                 probedPath.c_str());
    return false;
}

bool QzResourceStringLoader::Initialize(const std::wstring& sectionName) {
    TraceScope trace(L"QzResourceStringLoader::Initialize");
    if (sectionName.empty()) {
        VELK_LOG(L"*** Error: Length of _tszSectionName is zero.");
        return false;
    }
    std::wstring name;
    std::wstring file;
    if (!ChooseLanguage(Probe::kStringTable, name, file))
        return false;

    const std::wstring folder = m_strResourceRoot + name;
    bool loaded = false;
    auto error = Capture<StorageException>([&] {
        loaded = m_table.Open(StorageLocation(folder.c_str(), kStringTableFile), sectionName);
    });
    if (error)
        LogStorageException(*error);
    if (!loaded) {
        VELK_LOG(L"*** Error occurred!! Read stringTable failed. Lang.: [%s], File: [%s]",
                 name.c_str(), file.c_str());
        return false;
    }
    m_strLanguage = name;
    m_strSection = sectionName;
    VELK_LOG(L"Successfully loaded MUI stringTable. Lang: [%s], Section: [%s], File: [%s]",
             name.c_str(), sectionName.c_str(), file.c_str());
    return true;
}

void QzResourceStringLoader::UnInitialize() {
    TraceScope trace(L"QzResourceStringLoader::UnInitialize");
    // Closing without a flush cannot fail; the capture keeps it that way.
    Capture<StorageException>([&] { m_table.Close(false); });
    m_strLanguage.clear();
    m_strSection.clear();
}

const wchar_t* QzResourceStringLoader::LoadStringW(const wchar_t* id) {
    TraceScope trace(L"QzResourceStringLoader::LoadStringW");
    if (!id || !*id) {
        VELK_LOG(L"*** Error! Load empty string ID.");
        m_bStringLoaded = false;
        m_strLoadedString.clear();
        return m_strLoadedString.c_str();
    }
    std::wstring value;
    if (auto error = Capture<StorageException>([&] { value = m_table.ReadString(id, L""); }))
        VELK_LOG(L"*** QzCommon::Storage::Exception(): [0x%08x]", error->m_dwErrorCode);
    if (value.empty()) {
        m_bStringLoaded = false;
        VELK_LOG(L"*** Error! Get string failed. ID: [%s]", id);
        // Carries on: callers show the empty text, and the flag is set again.
    }
    m_strLoadedString = velk::ExpandLineEscapes(value);
    m_bStringLoaded = true;
    VELK_LOG(L"<%s> String loaded.", id);
    return m_strLoadedString.c_str();
}

std::wstring QzResourceStringLoader::GetResFolderByAutoDetectLanguage() {
    TraceScope trace(L"QzResourceStringLoader::GetResFolderByAutoDetectLanguage");
    std::wstring name;
    std::wstring folder;
    if (!ChooseLanguage(Probe::kFolder, name, folder))
        return std::wstring();
    VELK_LOG(L"Lang: [%s], Resource Folder: [%s]", name.c_str(), folder.c_str());
    return folder;
}

bool QzResourceStringLoader::GetVELK_OLH_URL(const std::wstring& iniFile,
                                             const std::wstring& funIdKey, std::wstring& result) {
    TraceScope trace(L"QzResourceStringLoader::GetVELK_OLH_URL");
    std::wstring address;
    auto error = Capture<StorageException>([&] {
        IniFile ini;
        ini.Open(StorageLocation(static_cast<const wchar_t*>(nullptr), iniFile.c_str()),
                 L"OnlinHelp");
        auto read = [&](const std::wstring& key, const wchar_t* failure) {
            std::wstring value = ini.ReadString(key, L"");
            if (value.empty())
                VELK_LOG(failure, iniFile.c_str(), value.c_str());
            return value;
        };
        const std::wstring productKey = read(
            L"ProductRootRegKey", L"!!! Get Product Root RegKey failed: from=[%s], result=[%s]");
        const std::wstring urlValue =
            read(L"URLKey", L"!!! Get URL SubKey failed: from=[%s], result=[%s]");
        const std::wstring pidValue =
            read(L"PIDKey", L"!!! Get PID SubKey failed: from=[%s], result=[%s]");
        const std::wstring functionId =
            read(funIdKey, L"!!! Get FunID failed: from=[%s], result=[%s]");

        Registry product;
        product.Open(HKEY_LOCAL_MACHINE, productKey.c_str(),
                     QzCommon::IsNative64BitSystem() ? QzCommon::Storage::kView64
                                                     : QzCommon::Storage::kDefaultView);
        const std::wstring base = product.ReadString(urlValue, L"");
        const std::wstring productId = product.ReadString(pidValue, L"");

        std::wstring language;
        std::wstring probed;
        ChooseLanguage(Probe::kHelp, language, probed);
        address = velk::JoinHelpAddress(base, {productId, language, functionId});
    });
    if (error) {
        VELK_LOG(L"*** QzCommon::Storage::Exception(): [0x%08x]", error->m_dwErrorCode);
        return false;
    }
    result += address;
    return true;
}
