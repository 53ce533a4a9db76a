#include "common_src/win32/QzResourceStringLoader.h"

#include <gtest/gtest.h>

#include <map>
#include <functional>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/ResourceHandle.h"
#include "log/diag_log.h"

namespace {

using QzCommon::testing_util::TempFolder;

constexpr LCID kGerman = 0x0407, kSwissGerman = 0x0807, kJapanese = 0x0411;

std::string Narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

using Names = std::map<LCID, std::wstring>;

// A locale-name source of the system that knows the given names.
std::function<int(LCID, LPWSTR, int)> SourceOf(const Names& names) {
    return [&names](LCID lcid, LPWSTR out, int chars) {
        auto it = names.find(lcid);
        if (it == names.end())
            return 0;
        wcscpy_s(out, chars, it->second.c_str());
        return static_cast<int>(it->second.size()) + 1;
    };
}

// Pretends a system language over a resource tree of the test's own, with
// the process log opened into the test's folder: support staff follow the
// language choice in the log.
class LoaderTest : public ::testing::Test {
protected:
    LoaderTest() {
        kernel = {{kSwissGerman, L"de-CH"}, {kGerman, L"de-DE"}, {kJapanese, L"ja-JP"}};
        velk::log::Open(logs.path() + L"loader.log");
    }
    ~LoaderTest() override { velk::log::Close(); }

    QzLanguageEnvironment Pretend(LCID system, const std::wstring& root = L"") {
        QzLanguageEnvironment env;
        env.systemDefaultLcid = [system] { return system; };
        env.lcidToLocaleName = SourceOf(kernel);
        env.downlevelLcidToLocaleName = SourceOf(downlevel);
        env.resourceRoot = root.empty() ? res.path() : root;
        return env;
    }
    // UTF-16LE with a byte-order mark, as the shipped tables are stored.
    void AddTable(const std::wstring& language, const std::wstring& body) {
        std::string bytes = "\xFF\xFE";
        for (wchar_t c : body)
            bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
        res.WriteFile(language + L"\\StringTable.ini", bytes);
    }
    void ExpectLogged(std::initializer_list<std::wstring> lines) {
        velk::log::Close();
        const std::string log = logs.ReadFile(velk::log::CurrentPath().substr(logs.path().size()));
        for (const std::wstring& line : lines)
            EXPECT_NE(std::string::npos, log.find(Narrow(line))) << "not logged: " << Narrow(line);
    }

    TempFolder logs, res, empty;
    Names kernel, downlevel;
};

TEST_F(LoaderTest, FallsBackFromSwissGermanToGermanAndToEnglishAndLoadsTexts) {
    AddTable(L"de-DE", L"[Main]\r\nIDS_SIZE=Gr\u00f6\u00dfe\r\n");
    AddTable(L"en-US", L"[Main]\r\nIDS_TWO=one\\ntwo\\r\\nthree\r\n[Other]\r\nIDS_TWO=other\r\n");
    QzResourceStringLoader swiss(Pretend(kSwissGerman));
    ASSERT_TRUE(swiss.Initialize(L"Main"));
    EXPECT_EQ(L"DE-DE", swiss.GetLanguage());  // primary language, upper-cased by the system
    EXPECT_STREQ(L"Gr\u00f6\u00dfe", swiss.LoadStringW(L"IDS_SIZE"));

    QzResourceStringLoader japanese(Pretend(kJapanese));
    EXPECT_FALSE(japanese.Initialize(L""));
    ASSERT_TRUE(japanese.Initialize(L"Main"));
    EXPECT_EQ(L"en-US", japanese.GetLanguage());
    // Line escapes expand; a missing id is an empty text, logged, flagged as loaded.
    EXPECT_STREQ(L"one\ntwo\r\nthree", japanese.LoadStringW(L"IDS_TWO"));
    EXPECT_STREQ(L"", japanese.LoadStringW(L"IDS_NOPE"));
    EXPECT_TRUE(japanese.IsStringLoaded());
    EXPECT_STREQ(L"", japanese.LoadStringW(nullptr));
    EXPECT_FALSE(japanese.IsStringLoaded());
    ASSERT_TRUE(japanese.Initialize(L"Other"));
    EXPECT_STREQ(L"other", japanese.LoadStringW(L"IDS_TWO"));
    japanese.UnInitialize();
    EXPECT_STREQ(L"", japanese.LoadStringW(L"IDS_TWO"));
    EXPECT_FALSE(QzResourceStringLoader(Pretend(kSwissGerman, empty.path())).Initialize(L"Main"));
    // The resource folder falls back the same way.
    EXPECT_EQ(res.path() + L"DE-DE\\", swiss.GetResFolderByAutoDetectLanguage());
    EXPECT_EQ(L"", QzResourceStringLoader(Pretend(kSwissGerman, empty.path()))
                       .GetResFolderByAutoDetectLanguage());
    // The installation puts Resource beside bin.
    wchar_t exe[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, exe, MAX_PATH);
    std::wstring folder = exe;
    EXPECT_EQ(folder.erase(folder.rfind(L'\\') + 1) + L"..\\Resource\\",
              QzResourceStringLoader().GetResourcePath());

    const std::wstring root = res.path();
    ExpectLogged({
        L"Start mapping primary language ID due to <DE-CH> StringTable is not existed: [" + root +
            L"DE-CH\\StringTable.ini]",
        L"Successfully loaded MUI stringTable. Lang: [DE-DE], Section: [Main], File: [" + root +
            L"DE-DE\\StringTable.ini]",
        L"Using default language <en-US>: [" + root + L"en-US\\StringTable.ini]",
        L"*** Error occurred!! <en-US> StringTable is not existed: [" + empty.path() +
            L"en-US\\StringTable.ini]",
        L"*** Error occurred!! Resource folder is not existed: [" + empty.path() + L"en-US\\]",
        L"*** Error! Get string failed. ID: [IDS_NOPE]",
        L"*** QzCommon::Storage::Exception(): [0x000000a0]",  // the closed table's 160
    });
}

// The oldest systems lack one or both locale-name calls: the downlevel
// helper's name is kept as it is, the language map is the last source, and
// with no source left no primary language can be mapped: English.
TEST_F(LoaderTest, DownlevelNamesAreKeptAsTheyAreAndLanguageMapIsTheLastSource) {
    kernel.clear();
    downlevel = {{kGerman, L"de-DE"}};
    for (const wchar_t* language : {L"de-DE", L"fr-FR", L"en-US"})
        AddTable(language, L"[Main]\r\n");
    res.WriteFile(L"LanguageMap.ini", "[LCID2NAME]\r\n1036=fr-FR\r\n1041=ja-JP\r\n");
    const std::pair<LCID, const wchar_t*> cases[] = {
        {kGerman, L"de-DE"}, {0x040C, L"fr-FR"}, {kJapanese, L"en-US"}};
    for (const auto& [lcid, language] : cases) {
        QzResourceStringLoader loader(Pretend(lcid));
        ASSERT_TRUE(loader.Initialize(L"Main"));
        EXPECT_EQ(language, loader.GetLanguage());
    }
    EXPECT_EQ(res.path() + L"en-US\\",
              QzResourceStringLoader(Pretend(kJapanese)).GetResFolderByAutoDetectLanguage());
    ExpectLogged({L"<LanguageMap.ini> Matched Locale Name from [1036] to [fr-FR]"});
}

TEST_F(LoaderTest, HelpAddressJoinsBaseProductLanguageAndFunctionFromThe64BitView) {
    QzCommon::testing_util::TempKey product(HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY);
    product.SetRaw(L"HelpUrl", REG_SZ, L"http://help.example/oe", 46);
    product.SetRaw(L"Pid", REG_SZ, L"P100", 10);
    QzCommon::testing_util::TempKey only32(HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY);
    only32.SetRaw(L"HelpUrl", REG_SZ, L"http://h", 18);
    only32.SetRaw(L"Pid", REG_SZ, L"P", 4);
    auto writeIni = [&](const wchar_t* file, const auto& key) {
        res.WriteFile(file, Narrow(L"[OnlinHelp]\r\nProductRootRegKey=" + key.path() +
                                   L"\r\nURLKey=HelpUrl\r\nPIDKey=Pid\r\nSettings=F7\r\n"));
        return res.path() + file;
    };
    AddTable(L"de-DE", L"[Main]\r\n");

    std::wstring url = L"prefix:";
    QzResourceStringLoader swiss(Pretend(kSwissGerman));
    ASSERT_TRUE(swiss.GetVELK_OLH_URL(writeIni(L"help.ini", product), L"Settings", url));
    EXPECT_EQ(L"prefix:http://help.example/oe/P100/DE-DE/F7/", url);

    // Without any table the address still names a language.
    url.clear();
    QzResourceStringLoader japanese(Pretend(kJapanese, empty.path()));
    ASSERT_TRUE(japanese.GetVELK_OLH_URL(res.path() + L"help.ini", L"Missing", url));
    EXPECT_EQ(L"http://help.example/oe/P100/en-US/", url);

    // A key only a 32-bit program would see: no address.
    url = L"unchanged";
    EXPECT_FALSE(swiss.GetVELK_OLH_URL(writeIni(L"help32.ini", only32), L"Settings", url));
    EXPECT_EQ(L"unchanged", url);
    ExpectLogged({L"!!! Get FunID failed: from=[" + res.path() + L"help.ini], result=[]",
                  L"*** QzCommon::Storage::Exception(): [0x00000002]"});
}

// Where a data-file module was mapped (its handle with the low bits cleared):
// committed while loaded, free once let go.
DWORD MappedState(HMODULE module) {
    MEMORY_BASIC_INFORMATION info = {};
    ::VirtualQuery(reinterpret_cast<const void*>(reinterpret_cast<ULONG_PTR>(module) & ~3), &info,
                   sizeof(info));
    return info.State;
}

TEST_F(LoaderTest, ResourceModuleOfTheDetectedLanguageLoadsAndEveryOneLoadedIsLetGo) {
    wchar_t built[MAX_PATH] = {};  // the one-string module built beside this test
    ::GetModuleFileNameW(nullptr, built, MAX_PATH);
    std::wstring source = built;
    source.erase(source.rfind(L'\\') + 1) += L"test_language_module.dll";
    res.MakeFolder(L"de-DE");
    ASSERT_TRUE(
        ::CopyFileW(source.c_str(), (res.path() + L"de-DE\\VELK_OEA.dll.mui").c_str(), FALSE));
    HMODULE first = nullptr, second = nullptr;
    {
        ResourceHandle mui(Pretend(kSwissGerman));
        EXPECT_FALSE(mui.Load(res.path()));  // no module there
        const std::wstring folder = mui.GetResourceFolder();
        ASSERT_TRUE(mui.Load(folder));
        first = mui.Get();
        wchar_t text[64] = {};
        EXPECT_GT(::LoadStringW(mui.Get(), 101, text, 64), 0) << "the German module";
        ASSERT_TRUE(mui.Load(folder));  // loading again replaces the module
        second = mui.Get();
        EXPECT_EQ(static_cast<DWORD>(MEM_COMMIT), MappedState(second));
    }
    EXPECT_EQ(static_cast<DWORD>(MEM_FREE), MappedState(first));
    EXPECT_EQ(static_cast<DWORD>(MEM_FREE), MappedState(second));
}

}  // namespace
