// The shipped string table and language map, read from the staged tree the
// way the string loader reads them (the profile API), plus the file-level
// rules the profile API would silently get wrong.
#include "resources/resources_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace velk::res {
namespace {

using test::DistPath;

// The section the toolbar initialises the loader with.
constexpr wchar_t kSection[] = L"VELK_OE_AGENT";

// Every text id the add-in asks the loader for. A text added to the table
// is added here too, so a misspelt key fails one way or the other.
const wchar_t* const kRequiredIds[] = {
    // band
    L"IDS_QZ_TOOLTIP", L"IDS_POPUP_CAPTION", L"IDS_RPTSPAM_CAPTION", L"IDS_RPTSPAM_TOOLTIP",
    L"IDS_RPTFP_CAPTION", L"IDS_RPTFP_TOOLTIP", L"IDS_CORP_NAME", L"IDS_PRODUCT_NAME",
    L"IDS_SPAM_NAME", L"IDS_FLENMARROW_NUVEXA_HOMEWEB",
    // message box captions
    L"IDS_WARNING_CAPTION", L"IDS_CONFIRMATION_CAPTION", L"IDS_CAP_CONFIMATION",
    // filtering settings
    L"IDS_STRING_FILTERING_SHEET", L"IDS_TOOLTIP_LEVELLOW", L"IDS_TOOLTIP_LEVELMEDIUM",
    L"IDS_TOOLTIP_LEVELHIGH", L"IDC_CHECK_ENABLE_IN_THE_CLOUD", L"IDS_TOOLTIP_DELETENOW",
    L"IDS_VELK_SYSTEM_FONT", L"IDS_INTERMEDIATE_FONT_SIZE",
    // sender lists
    L"IDS_HEADER_ADDR", L"IDS_HEADER_SENDERNAME", L"IDS_ADDAPPROVESENDER_CAPTION",
    L"IDS_EDITAPPROVESENDER_CAPTION", L"IDS_ADDBLOCKSENDER_CAPTION", L"IDS_EDITBLOCKSENDER_CAPTION",
    L"IDS_APPROVELISTCONLICT_MSG", L"IDS_BLOCKLISTCONLICT_MSG", L"IDS_LISTFULL_MSG",
    L"IDS_LISTEXISTED_MSG", L"IDS_REMOVEADDR_MSG", L"IDS_MSG_APPLYFIRST", L"IDS_TEXT_TOO_LONG_MSG",
    L"IDS_WRONG_EMAILADDR_MSG",
    // statistics
    L"IDS_CRX_YES_FONT", L"IDS_STATISTIC_DLG_FONT_SIZE", L"IDS_DLG_STAT_GENERAL_MESSAGE",
    L"IDS_DLG_STAT_GENERAL_DETECT", L"IDS_DLG_STAT_GENERAL_REPORT_SPAM", L"IDS_DLG_STAT_CHART_ERR",
    L"IDS_WARN_RESET_STATISTICS",
    // updates
    L"IDS_STR_NOT_UPDATE_YET", L"IDS_UP_TO_DATE", L"IDS_OUT_OF_DATE",
    // cloud feedback and About
    L"IDC_STATIC_YES_DESC", L"IDD_ABOUT_IDC_STATIC_TITLE", L"IDC_STATIC_COPYRIGHT",
    L"IDS_ABOUT_WARNING",
    // advanced page, updates, proxy, cloud feedback and About (settings_ui)
    L"IDS_DLG_OK", L"IDS_DLG_CANCEL", L"IDS_ADV_PAGE_TITLE", L"IDS_ADV_QUARANTINE_HEADING",
    L"IDS_ADV_AUTO_MOVED", L"IDS_ADV_PURGE_BEFORE", L"IDS_ADV_PURGE_AFTER",
    L"IDS_ADV_DELETE_DELETED", L"IDS_ADV_DELETE_NOW", L"IDS_ADV_DELETE_NOW_NOTE",
    L"IDS_ADV_NOTIFY_HEADING", L"IDS_ADV_NOTIFY_ICON", L"IDS_UPD_CAPTION", L"IDS_UPD_GROUP",
    L"IDS_UPD_ADDIN_LABEL", L"IDS_UPD_ENGINE_LABEL", L"IDS_UPD_PATTERN_LABEL",
    L"IDS_UPD_LAST_LABEL", L"IDS_UPD_NEVER", L"IDS_UPD_INVALID_DATE", L"IDS_UPD_UPDATE_NOW",
    L"IDS_UPD_SCHEDULE_GROUP", L"IDS_UPD_ENABLE_SCHEDULE", L"IDS_UPD_INTERVAL_BEFORE",
    L"IDS_UPD_INTERVAL_AFTER", L"IDS_UPD_SHOW_PROGRESS", L"IDS_UPD_INTERVAL_RANGE",
    L"IDS_UPD_PROXY", L"IDS_UPD_HELP", L"IDS_PROXY_CAPTION", L"IDS_PROXY_ENABLE",
    L"IDS_PROXY_HOST_LABEL", L"IDS_PROXY_PORT_LABEL", L"IDS_PROXY_USER_LABEL",
    L"IDS_PROXY_PASSWORD_LABEL", L"IDS_CRX_CAPTION", L"IDS_CRX_INTRO", L"IDS_CRX_YES",
    L"IDS_CRX_NO", L"IDS_CRX_NO_DESC", L"IDS_CRX_LINK_NOTE", L"IDS_CRX_LINK",
    L"IDS_ABOUT_VERSION_LABEL", L"IDS_ABOUT_BUILD", L"IDS_ABOUT_ENGINE_LABEL",
    L"IDS_ABOUT_PATTERN_LABEL",
    // statistics dialog
    L"IDS_DLG_STAT_CAPTION", L"IDS_DLG_STAT_HEADING", L"IDS_DLG_STAT_SINCE",
    L"IDS_DLG_STAT_DATE_UNKNOWN", L"IDS_DLG_STAT_MESSAGES", L"IDS_DLG_STAT_PROCESSED",
    L"IDS_DLG_STAT_DETECTED", L"IDS_DLG_STAT_REPORTED_SPAM", L"IDS_DLG_STAT_REPORTED_FP",
    L"IDS_DLG_STAT_RATES", L"IDS_DLG_STAT_DETECT_RATE", L"IDS_DLG_STAT_FP_RATE",
    L"IDS_DLG_STAT_CHART_TITLE", L"IDS_DLG_STAT_RESET", L"IDS_DLG_STAT_CLOSE",
    // filtering sheet: tabs, spam detection, Serenel, link filter
    L"IDS_SHEET_TAB_DETECTION", L"IDS_SHEET_TAB_LINK_FILTER",
    L"IDS_LEVEL_HIGH", L"IDS_LEVEL_MEDIUM", L"IDS_LEVEL_LOW", L"IDS_DETECTION_GROUP",
    L"IDS_DETECTION_HIGH_DESC", L"IDS_DETECTION_MEDIUM_DESC", L"IDS_DETECTION_LOW_DESC",
    L"IDS_DETECTION_CORP_NOTE", L"IDS_DETECTION_CUSTOM_NOTE", L"IDS_DETECTION_CUSTOM_BUTTON",
    L"IDS_DETECTION_SERENEL_NOTE", L"IDS_DETECTION_SERENEL_BUTTON", L"IDS_CUSTOM_GROUP",
    L"IDS_CUSTOM_INTRO", L"IDS_CUSTOM_CHANGE_BUTTON", L"IDS_CUSTOM_DEFAULT_NOTE",
    L"IDS_CUSTOM_DEFAULT_BUTTON", L"IDS_CATEGORY_CAPTION", L"IDS_CATEGORY_INTRO",
    L"IDS_CATEGORY_DEFAULTS", L"IDS_CATEGORY_SEXUAL", L"IDS_CATEGORY_COMMERCIAL",
    L"IDS_CATEGORY_FINANCIAL", L"IDS_CATEGORY_HEALTH", L"IDS_CATEGORY_RACIAL",
    L"IDS_CATEGORY_SPIRITUAL", L"IDS_CATEGORY_OTHER", L"IDS_SERENEL_CAPTION",
    L"IDS_SERENEL_INTRO", L"IDS_SERENEL_ENABLE", L"IDS_SERENEL_GROUP", L"IDS_SERENEL_HIGH_DESC",
    L"IDS_SERENEL_MEDIUM_DESC", L"IDS_SERENEL_LOW_DESC", L"IDS_LINK_GROUP", L"IDS_LINK_ENABLE",
    L"IDS_LINK_WARN_MISMATCH", L"IDS_LINK_FLAG_NUMERIC", L"IDS_LINK_TRUSTED_GROUP",
    L"IDS_LINK_TRUSTED_INTRO", L"IDS_LINK_DOMAIN_LABEL", L"IDS_LINK_ADD", L"IDS_LINK_REMOVE",
    L"IDS_LINK_BAD_DOMAIN", L"IDS_LINK_LIST_FULL",
    // sender pages and blocked languages
    L"IDS_APPROVESENDER_TAB", L"IDS_BLOCKSENDER_TAB", L"IDS_BLOCKENCODING_TAB",
    L"IDS_APPROVESENDER_TITLE", L"IDS_APPROVESENDER_NOTE", L"IDS_BLOCKSENDER_TITLE",
    L"IDS_BLOCKSENDER_NOTE", L"IDC_SENDER_ADD", L"IDC_SENDER_EDIT", L"IDC_SENDER_REMOVE",
    L"IDC_SENDER_IMPORT", L"IDC_AUTO_APPROVE", L"IDS_SENDER_EDIT_ADDRESS", L"IDS_SENDER_EDIT_NAME",
    L"IDS_SENDER_EDIT_HINT", L"IDS_SENDERS_NOT_SAVED_MSG", L"IDS_IMPORT_RUNNING_MSG",
    L"IDS_BLOCKENCODING_TITLE", L"IDS_BLOCKENCODING_NOTE", L"IDS_HEADER_ENCODING",
    L"IDS_HEADER_CODEPAGES", L"IDC_ENCODING_ALL", L"IDC_ENCODING_NONE",
    L"IDS_BLOCKENCODING_NOT_SAVED_MSG", L"IDS_ENCODING_ARABIC", L"IDS_ENCODING_BALTIC",
    L"IDS_ENCODING_CENTRAL_EUROPEAN", L"IDS_ENCODING_CHINESE_SIMPLIFIED",
    L"IDS_ENCODING_CHINESE_TRADITIONAL", L"IDS_ENCODING_CYRILLIC", L"IDS_ENCODING_GREEK",
    L"IDS_ENCODING_HEBREW", L"IDS_ENCODING_INDIC", L"IDS_ENCODING_JAPANESE", L"IDS_ENCODING_KOREAN",
    L"IDS_ENCODING_THAI", L"IDS_ENCODING_TURKISH", L"IDS_ENCODING_VIETNAMESE"};

std::wstring Profile(const wchar_t* file, const wchar_t* section, const wchar_t* key) {
    std::vector<wchar_t> buffer(4096);
    ::GetPrivateProfileStringW(section, key, L"", buffer.data(), static_cast<DWORD>(buffer.size()),
                               DistPath(file).c_str());
    return buffer.data();
}

std::wstring Text(const wchar_t* id) {
    return Profile(L"Resource\\en-US\\StringTable.ini", kSection, id);
}

bool EndsWith(const std::wstring& s, const std::wstring& suffix) {
    return s.size() >= suffix.size() &&
           s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool IsDecimal(const std::wstring& s) {
    return !s.empty() &&
           std::all_of(s.begin(), s.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

// The table's lines. Fails unless the file is UTF-16LE with its byte-order
// mark and every line ends in CR LF: any other encoding is misread by the
// profile API on some system, and a bare line break inside a text cuts it.
::testing::AssertionResult ReadLines(std::vector<std::wstring>& lines) {
    std::vector<unsigned char> bytes;
    if (!test::ReadAll(DistPath(L"Resource\\en-US\\StringTable.ini"), bytes))
        return ::testing::AssertionFailure() << "cannot read the table";
    if (bytes.size() < 2 || bytes[0] != 0xFF || bytes[1] != 0xFE || bytes.size() % 2)
        return ::testing::AssertionFailure() << "not UTF-16LE with a byte-order mark";
    std::wstring text;
    for (size_t i = 2; i < bytes.size(); i += 2)
        text += static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8));
    size_t begin = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool crlf = text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n';
        if (!crlf && (text[i] == L'\r' || text[i] == L'\n'))
            return ::testing::AssertionFailure()
                   << "bare line break in: " << text.substr(begin, i - begin);
        if (crlf) {
            lines.push_back(text.substr(begin, i - begin));
            ++i;
            begin = i + 1;
        }
    }
    if (begin < text.size())
        lines.push_back(text.substr(begin));
    return ::testing::AssertionSuccess();
}

TEST(StringTable, HoldsEveryRequiredIdOnceAndNothingElse) {
    std::vector<std::wstring> lines;
    ASSERT_TRUE(ReadLines(lines));
    const std::set<std::wstring> required(std::begin(kRequiredIds), std::end(kRequiredIds));
    std::set<std::wstring> keys;
    for (const std::wstring& line : lines) {
        if (line.empty() || line[0] == L';')
            continue;
        if (line[0] == L'[') {
            EXPECT_EQ(std::wstring(L"[") + kSection + L"]", line);
            continue;
        }
        const size_t eq = line.find(L'=');
        ASSERT_NE(std::wstring::npos, eq) << "not a text: " << line;
        const std::wstring key = line.substr(0, eq);
        EXPECT_TRUE(keys.insert(key).second) << "twice (the first wins): " << line;
        EXPECT_TRUE(required.count(key)) << "no code asks for: " << line;
        EXPECT_FALSE(EndsWith(line, L" ") || EndsWith(line, L"\t")) << "trailing blank: " << line;
    }
    // And through the profile API, as the loader reads them.
    for (const wchar_t* id : kRequiredIds)
        EXPECT_FALSE(Text(id).empty()) << "missing: " << id;
}

TEST(StringTable, PlaceholdersAndFormatsAreTheOnesTheCodeFillsIn) {
    const std::set<std::wstring> known = {L"<$CORP_NAME>", L"<$PRODUCT NAME>", L"<$SPAM_NAME>"};
    int placeholders = 0;
    for (const wchar_t* id : kRequiredIds) {
        const std::wstring text = Text(id);
        for (size_t at = text.find(L"<$"); at != std::wstring::npos;
             at = text.find(L"<$", at + 1)) {
            const size_t end = text.find(L'>', at);
            ASSERT_NE(std::wstring::npos, end) << id;
            EXPECT_TRUE(known.count(text.substr(at, end - at + 1))) << id;
            ++placeholders;
        }
        // Only the list-full message goes through printf.
        if (std::wstring(id) != L"IDS_LISTFULL_MSG") {
            EXPECT_EQ(std::wstring::npos, text.find(L'%')) << id;
        }
    }
    EXPECT_GT(placeholders, 0);
    // The names put in for the placeholders contain none themselves.
    for (const wchar_t* id : {L"IDS_CORP_NAME", L"IDS_PRODUCT_NAME", L"IDS_SPAM_NAME"})
        EXPECT_EQ(std::wstring::npos, Text(id).find(L"<$")) << id;

    const std::wstring full = Text(L"IDS_LISTFULL_MSG");
    const size_t at = full.find(L"%d");
    ASSERT_NE(std::wstring::npos, at);
    EXPECT_EQ(std::wstring::npos, full.find(L'%', at + 1));
    wchar_t formatted[512];
    ASSERT_GT(swprintf(formatted, 512, full.c_str(), 8000), 0);
    EXPECT_NE(nullptr, wcsstr(formatted, L"8000"));
}

TEST(StringTable, TextsFitWhereTheyAreShown) {
    for (const wchar_t* id : kRequiredIds) {
        const std::wstring key(id);
        const std::wstring text = Text(id);
        const bool caption = EndsWith(key, L"_CAPTION") || key == L"IDS_CAP_CONFIMATION" ||
                             key == L"IDS_STRING_FILTERING_SHEET" ||
                             key.find(L"_HEADER_") != std::wstring::npos;
        if (caption || key.find(L"TOOLTIP") != std::wstring::npos) {
            EXPECT_LE(text.size(), caption ? 32u : 100u) << key;
            EXPECT_EQ(std::wstring::npos, text.find(L"\\n")) << key;
        }
    }
    // The band's buttons are narrow.
    for (const wchar_t* id : {L"IDS_RPTSPAM_CAPTION", L"IDS_RPTFP_CAPTION", L"IDS_POPUP_CAPTION"})
        EXPECT_LE(Text(id).size(), 14u) << id;
    // Asked in Yes/No message boxes.
    for (const wchar_t* id :
         {L"IDS_APPROVELISTCONLICT_MSG", L"IDS_BLOCKLISTCONLICT_MSG", L"IDS_REMOVEADDR_MSG",
          L"IDS_MSG_APPLYFIRST", L"IDS_WARN_RESET_STATISTICS"})
        EXPECT_TRUE(EndsWith(Text(id), L"?")) << id;
    // The dialogs parse the font sizes as plain decimal point sizes.
    for (const wchar_t* id : {L"IDS_INTERMEDIATE_FONT_SIZE", L"IDS_STATISTIC_DLG_FONT_SIZE"}) {
        EXPECT_TRUE(IsDecimal(Text(id))) << id;
        const long points = wcstol(Text(id).c_str(), nullptr, 10);
        EXPECT_TRUE(points >= 7 && points <= 14) << id;
    }
    const std::wstring web = Text(L"IDS_FLENMARROW_NUVEXA_HOMEWEB");
    EXPECT_TRUE(web.rfind(L"https://", 0) == 0 || web.rfind(L"http://", 0) == 0) << web;
}

TEST(LanguageMap, MapsEachLanguageToTheSystemsOwnName) {
    const wchar_t* const kMap = L"Resource\\LanguageMap.ini";
    const std::pair<const wchar_t*, const wchar_t*> required[] = {
        {L"1033", L"en-US"}, {L"2057", L"en-GB"}, {L"1031", L"de-DE"}, {L"2055", L"de-CH"},
        {L"3079", L"de-AT"}, {L"1036", L"fr-FR"}, {L"3084", L"fr-CA"}, {L"1040", L"it-IT"},
        {L"3082", L"es-ES"}, {L"1043", L"nl-NL"}, {L"1046", L"pt-BR"}, {L"1041", L"ja-JP"},
        {L"1042", L"ko-KR"}, {L"2052", L"zh-CN"}, {L"1028", L"zh-TW"}, {L"1049", L"ru-RU"},
        {L"1045", L"pl-PL"}};
    for (const auto& [lcid, name] : required)
        EXPECT_EQ(std::wstring(name), Profile(kMap, L"LCID2NAME", lcid)) << lcid;

    // Every entry, against the name the system itself gives that language.
    using LcidToName = int(WINAPI*)(LCID, LPWSTR, int, DWORD);
    const auto to_name = reinterpret_cast<LcidToName>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "LCIDToLocaleName")));
    ASSERT_NE(nullptr, to_name);
    std::vector<wchar_t> section(32768);
    const DWORD length = ::GetPrivateProfileSectionW(
        L"LCID2NAME", section.data(), static_cast<DWORD>(section.size()), DistPath(kMap).c_str());
    int entries = 0;
    for (const wchar_t* p = section.data(); p < section.data() + length && *p; p += wcslen(p) + 1) {
        const std::wstring entry(p);
        const size_t eq = entry.find(L'=');
        ASSERT_NE(std::wstring::npos, eq) << entry;
        ASSERT_TRUE(IsDecimal(entry.substr(0, eq))) << "keys are decimal LCIDs: " << entry;
        wchar_t expected[86] = {};
        ASSERT_GT(to_name(wcstoul(p, nullptr, 10), expected, 86, 0), 0) << entry;
        // Folder names are compared without regard to case.
        EXPECT_EQ(0, ::lstrcmpiW(expected, entry.substr(eq + 1).c_str())) << entry;
        ++entries;
    }
    EXPECT_GE(entries, 17);
}

}  // namespace
}  // namespace velk::res
