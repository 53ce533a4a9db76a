// Localised user-interface texts by string id, from the StringTable.ini of
// the system's language, and the online-help address.
//
// The resource root (by default the Resource folder beside the add-in's own
// folder) holds LanguageMap.ini and one folder per locale name ("en-US\")
// with a StringTable.ini. The language falls back from the system's language
// to its primary language (default sub-language) to "en-US".
//
// One object is shared by all user-interface code; it is not locked, so use
// it from the user-interface thread only.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "common_src/QzCommon/QzComn_IniFile.h"

// Where the loader learns the system's language. Every member may be left
// empty for the real system; tests fill them to pretend another system.
struct QzLanguageEnvironment {
    // The system default LCID (default: GetSystemDefaultLCID).
    std::function<LCID()> systemDefaultLcid;
    // Locale-name sources with the contract of LCIDToLocaleName (flags 0):
    // characters written including the terminator, 0 on failure. Default:
    // LCIDToLocaleName of kernel32.dll, then DownlevelLCIDToLocaleName of
    // nlsdl.dll, both looked up at run time (the first is missing before
    // Windows Vista, the second unless its redistributable is installed).
    std::function<int(LCID, LPWSTR, int)> lcidToLocaleName;
    std::function<int(LCID, LPWSTR, int)> downlevelLcidToLocaleName;
    // The resource root with a trailing backslash (default: the folder of the
    // module holding this code + "..\Resource\").
    std::wstring resourceRoot;
};

class QzResourceStringLoader {
public:
    QzResourceStringLoader();
    explicit QzResourceStringLoader(QzLanguageEnvironment environment);
    QzResourceStringLoader(const QzResourceStringLoader&) = delete;
    QzResourceStringLoader& operator=(const QzResourceStringLoader&) = delete;

    // Chooses the language and opens `sectionName` of its StringTable.ini.
    // False when the section name is empty or not even "en-US" has a table.
    bool Initialize(const std::wstring& sectionName);
    // Drops the loaded table; LoadStringW then finds nothing.
    void UnInitialize();

    // Looks one text up. The result (backslash-n and backslash-r turned into
    // line breaks) stays in the loader until the next call, as does the
    // success flag. An id missing from the table is logged and yields an
    // empty text with the flag set: callers show an empty text rather than
    // an error. An empty id clears the flag (and the text).
    const wchar_t* LoadStringW(const wchar_t* id);
    bool IsStringLoaded() const noexcept { return m_bStringLoaded; }
    const std::wstring& GetLoadedString() const noexcept { return m_strLoadedString; }

    // The resource root, with a trailing backslash.
    std::wstring GetResourcePath();
    // The locale name of the system's primary language with the default
    // sub-language (de-CH -> de-DE); empty when no source can name it.
    std::wstring MapPrimaryLangID();
    // The folder of the detected language with a trailing backslash, after
    // the same fallbacks as Initialize; empty when even "en-US" is missing.
    std::wstring GetResFolderByAutoDetectLanguage();

    // Appends the online-help address for the function id named by
    // `funIdKey` to `result`: section "OnlinHelp" of `iniFile` names the
    // product key under HKEY_LOCAL_MACHINE (read in the 64-bit view on a
    // 64-bit system), the value there holding the base address and the one
    // holding the product id. The address is
    //     <base>/<product id>/<language>/<function id>/
    // (broad to narrow, so that one help tree per product and language
    // serves every function). False, with `result` untouched, when the key or
    // a value cannot be read.
    bool GetVELK_OLH_URL(const std::wstring& iniFile, const std::wstring& funIdKey,
                         std::wstring& result);

    // The language of the loaded table; empty before Initialize.
    const std::wstring& GetLanguage() const noexcept { return m_strLanguage; }
    const std::wstring& GetSection() const noexcept { return m_strSection; }

private:
    enum class Probe { kStringTable, kFolder, kHelp };

    LCID SystemDefaultLcid() const;
    std::wstring LocaleNameOf(LANGID langId) const;
    std::wstring NameFromLanguageMap(const std::wstring& root, LCID lcid);
    bool ChooseLanguage(Probe probe, std::wstring& name, std::wstring& probedPath);

    QzLanguageEnvironment m_environment;
    std::wstring m_strResourceRoot;
    std::wstring m_strLanguage;
    std::wstring m_strSection;
    QzCommon::Storage::IniFile m_table;
    std::wstring m_strLoadedString;
    bool m_bStringLoaded = false;
};
