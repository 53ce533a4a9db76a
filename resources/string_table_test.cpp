// The shipped string tables and language map, read from the staged tree,
// against the texts the code asks for and against the English table, with
// the file-level rules the profile API would silently get wrong; and the
// staged tree against what was built.
#include "resources/resources_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace velk::res {
namespace {

using test::DistPath;

// The section the toolbar initialises the loader with.
constexpr wchar_t kSection[] = L"VELK_OE_AGENT";

bool EndsWith(const std::wstring& s, const std::wstring& suffix) {
    return s.size() >= suffix.size() &&
           s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool IsDecimal(const std::wstring& s) {
    return !s.empty() &&
           std::all_of(s.begin(), s.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

// The table as key -> text. Fails unless the file is UTF-16LE with its
// byte-order mark, every line ends in CR LF (a bare line break inside a text
// cuts it), there is the one section, and no key is there twice (the first
// would win) or ends in a blank.
::testing::AssertionResult ReadTable(const std::wstring& language,
                                     std::map<std::wstring, std::wstring>& table) {
    std::vector<unsigned char> bytes;
    test::ReadAll(DistPath(L"Resource\\" + language + L"\\StringTable.ini"), bytes);
    if (bytes.size() < 2 || bytes[0] != 0xFF || bytes[1] != 0xFE || bytes.size() % 2)
        return ::testing::AssertionFailure() << "missing or not UTF-16LE with a byte-order mark";
    std::wstring text;
    for (size_t i = 2; i < bytes.size(); i += 2)
        text += static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8));
    for (size_t begin = 0, end; begin < text.size(); begin = end + 2) {
        end = std::min(text.find(L"\r\n", begin), text.size());
        const std::wstring line = text.substr(begin, end - begin);
        const size_t eq = line.find(L'=');
        if (line.find_first_of(L"\r\n") != std::wstring::npos)
            return ::testing::AssertionFailure() << "bare line break in: " << line;
        if (line.empty() || line[0] == L';' || line == std::wstring(L"[") + kSection + L"]")
            continue;
        if (eq == std::wstring::npos || EndsWith(line, L" ") || EndsWith(line, L"\t"))
            return ::testing::AssertionFailure() << "not a text or a trailing blank: " << line;
        if (!table.emplace(line.substr(0, eq), line.substr(eq + 1)).second)
            return ::testing::AssertionFailure() << "twice (the first wins): " << line;
    }
    return ::testing::AssertionSuccess();
}

// Every text id the product's code names as a literal (L"IDS_...",
// L"IDC_...", L"IDD_..."), tests left out.
std::map<std::string, std::string> IdsNamedByTheCode() {
    namespace fs = std::filesystem;
    std::map<std::string, std::string> ids;  // id -> the first file naming it
    const std::regex literal("L\"((IDS|IDC|IDD)_[A-Za-z0-9_]+)\"");
    const fs::path root = test::WindowsPathOf(VELK_TEST_SOURCE_DIR);
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator();
         ++it) {
        const std::string name = it->path().filename().string();
        if (it->is_directory() && (name == "build" || name[0] == '.')) {
            it.disable_recursion_pending();
            continue;
        }
        const std::string ext = it->path().extension().string();
        if ((ext != ".cpp" && ext != ".h") || name.find("test") != std::string::npos)
            continue;
        std::ifstream in(it->path(), std::ios::binary);
        const std::string source((std::istreambuf_iterator<char>(in)), {});
        for (std::sregex_iterator m(source.begin(), source.end(), literal), end; m != end; ++m)
            ids.emplace((*m)[1].str(), it->path().string().substr(root.string().size()));
    }
    return ids;
}

// What a translation must keep: the placeholders and printf fields, in order.
std::vector<std::wstring> Tokens(const std::wstring& text) {
    static const std::wregex token(L"<\\$[^>]*>|%.");
    std::vector<std::wstring> tokens;
    for (std::wsregex_iterator m(text.begin(), text.end(), token), end; m != end; ++m)
        tokens.push_back(m->str());
    return tokens;
}

// English holds every text the code asks for; every language holds every
// English text with its placeholders, and its texts fit where they are shown.
TEST(StringTable, EveryLanguageHoldsTheTextsTheCodeAsksForAndTheyFit) {
    std::map<std::wstring, std::wstring> english;
    ASSERT_TRUE(ReadTable(L"en-US", english));
    const std::map<std::string, std::string> asked = IdsNamedByTheCode();
    EXPECT_GT(asked.size(), 5u);
    for (const auto& [id, file] : asked)
        EXPECT_TRUE(english.count(std::wstring(id.begin(), id.end())))
            << file << " asks for " << id;
    const std::set<std::wstring> known = {L"<$CORP_NAME>", L"<$PRODUCT NAME>", L"<$SPAM_NAME>"};
    for (const std::wstring& language : test::Languages()) {
        SCOPED_TRACE(language);
        std::map<std::wstring, std::wstring> table;
        ASSERT_TRUE(ReadTable(language, table));
        EXPECT_EQ(english.size(), table.size());
        for (const auto& [key, text] : english)
            EXPECT_EQ(Tokens(text), Tokens(table[key])) << key;
        for (const auto& [key, text] : table) {
            // Only the list-full message goes through printf, with one number.
            for (const std::wstring& token : Tokens(text))
                EXPECT_TRUE(known.count(token) || (token == L"%d" && key == L"IDS_LISTFULL_MSG"))
                    << key;
            const bool caption =
                EndsWith(key, L"_CAPTION") || key.find(L"_HEADER_") != std::wstring::npos;
            if (caption || key.find(L"TOOLTIP") != std::wstring::npos) {
                EXPECT_LE(text.size(), caption ? 32u : 100u) << key;
                EXPECT_EQ(std::wstring::npos, text.find(L"\\n")) << key;
            }
            // The dialogs parse font sizes as plain decimal point sizes.
            EXPECT_TRUE(!EndsWith(key, L"_FONT_SIZE") ||
                        (IsDecimal(text) && std::stol(text) >= 7 && std::stol(text) <= 14));
        }
        EXPECT_EQ(std::vector<std::wstring>{L"%d"}, Tokens(table[L"IDS_LISTFULL_MSG"]));
        // The names put in for the placeholders contain none themselves.
        for (const wchar_t* id : {L"IDS_CORP_NAME", L"IDS_PRODUCT_NAME", L"IDS_SPAM_NAME"})
            EXPECT_EQ(std::wstring::npos, table[id].find(L"<$")) << id;
        // The band's buttons are narrow.
        for (const wchar_t* id :
             {L"IDS_RPTSPAM_CAPTION", L"IDS_RPTFP_CAPTION", L"IDS_POPUP_CAPTION"})
            EXPECT_LE(table[id].size(), 14u) << id;
        EXPECT_EQ(0u, table[L"IDS_FLENMARROW_NUVEXA_HOMEWEB"].find(L"http"));
    }
}

// Every entry against the name the system itself gives that language: the
// name is the folder the loader looks in.
TEST(LanguageMap, MapsEachLanguageToTheSystemsOwnName) {
    std::vector<wchar_t> section(32768);
    const DWORD length = ::GetPrivateProfileSectionW(
        L"LCID2NAME", section.data(), static_cast<DWORD>(section.size()),
        DistPath(L"Resource\\LanguageMap.ini").c_str());
    std::set<std::wstring> named;
    for (const wchar_t* p = section.data(); p < section.data() + length && *p; p += wcslen(p) + 1) {
        const std::wstring entry(p);
        const size_t eq = entry.find(L'=');
        ASSERT_TRUE(eq != std::wstring::npos && IsDecimal(entry.substr(0, eq))) << entry;
        wchar_t expected[86] = {};
        ASSERT_GT(::GetLocaleInfoW(wcstoul(p, nullptr, 10), 0x5c /* LOCALE_SNAME */, expected, 86),
                  0)
            << entry;
        EXPECT_EQ(0, ::lstrcmpiW(expected, entry.substr(eq + 1).c_str())) << entry;
        named.insert(entry.substr(eq + 1));
    }
    EXPECT_GE(named.size(), 10u);
    for (const std::wstring& language : test::Languages())
        EXPECT_TRUE(named.count(language)) << "no system language maps to the folder";
}

// The files other tools and the tests read from the staged tree are checked
// above and by the add-in in the client, run from its bin folder (it finds
// Resource as a sibling); here, that they are what was built.
TEST(StagedTree, EveryStagedItemIsAnExactCopyOfWhatWasBuilt) {
    std::ifstream manifest(test::WindowsPathOf(VELK_TEST_DIST_MANIFEST).c_str());
    int items = 0;
    for (std::string destination, source;
         std::getline(manifest, destination, '\t') && std::getline(manifest, source); ++items) {
        std::vector<unsigned char> staged, built;
        ASSERT_TRUE(
            test::ReadAll(test::WindowsPathOf(VELK_TEST_DIST_DIR "/" + destination), staged))
            << destination;
        ASSERT_TRUE(test::ReadAll(test::WindowsPathOf(source), built)) << source;
        EXPECT_TRUE(staged == built) << "stale copy: " << destination;
    }
    EXPECT_GE(items, 7);
}

}  // namespace
}  // namespace velk::res
