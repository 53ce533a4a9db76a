#include "common_src/QzCommon/QzComn_IniFile.h"

#include <gtest/gtest.h>

#include "common_src/QzCommon/QzComn_test_util.h"

namespace QzCommon {
namespace Storage {
namespace {

template <class F>
DWORD ErrorOf(F&& body) {
    auto error = Capture<Exception>(std::forward<F>(body));
    return error ? error->m_dwErrorCode : 0;
}

class IniFileTest : public ::testing::Test {
protected:
    IniFileTest() { ini.Open(StorageLocation(dir.path().c_str(), L"t.ini"), L"Main"); }
    void WriteRaw(const wchar_t* key, const std::wstring& value) {
        ::WritePrivateProfileStringW(L"Main", key, value.c_str(), (dir.path() + L"t.ini").c_str());
    }

    testing_util::TempFolder dir;
    IniFile ini;
};

// Callers log the error code and the source file of the module.
TEST_F(IniFileTest, AStoreWithoutFileSectionOrNameAnswersError160FromThisModule) {
    auto error = Capture<Exception>([&] { IniFile().ReadString(L"k", L"d"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(160u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_IniFile", error->m_strSourceFile);
    EXPECT_EQ(160u, ErrorOf([&] { ini.WriteDword(L"", 1); }));
    // A failed open leaves the store as it was.
    EXPECT_EQ(160u, ErrorOf([&] { ini.Open(StorageLocation(L"C:", L"x.ini"), L""); }));
    EXPECT_EQ(dir.path() + L"t.ini", ini.GetFilePath());  // no doubled backslash
}

TEST_F(IniFileTest, ReadStringReturnsValuesWholeAcrossBufferBoundaries) {
    // 255 and 511 characters are n - 1 for the 256- and 512-character buffers,
    // where a value that fitted and one that was cut look the same.
    for (size_t length : {255u, 256u, 511u, 2000u}) {
        const std::wstring value(length, L'v');
        WriteRaw(L"Long", value);
        EXPECT_EQ(value, ini.ReadString(L"Long", L"")) << "length " << length;
    }
    const std::wstring longDefault(700, L'd');
    EXPECT_EQ(longDefault, ini.ReadString(L"Absent", longDefault));
}

TEST_F(IniFileTest, DwordsAreWrittenInDecimalAndReadFromTheLeadingDigits) {
    EXPECT_TRUE(ini.WriteDword(L"Max", 4294967295u));
    EXPECT_TRUE(ini.Flush());
    EXPECT_NE(std::string::npos, dir.ReadFile(L"t.ini").find("Max=4294967295\r\n"));
    const std::pair<const wchar_t*, DWORD> cases[] = {
        {L"12abc", 12}, {L"abc", 99}, {L"", 99}, {L"-1", 4294967295u}};
    for (const auto& [text, expected] : cases) {
        WriteRaw(L"N", text);
        EXPECT_EQ(expected, ini.ReadDword(L"N", 99)) << testing::PrintToString(text);
    }
}

TEST_F(IniFileTest, DeletesAndCloseWorkOnTheFileAndFailedWritesCarryTheSystemError) {
    ini.WriteString(L"A", L"first");
    ini.WriteString(L"B", L"second");
    EXPECT_TRUE(ini.DeleteValue(L"A"));
    EXPECT_EQ(L"-|second", ini.ReadString(L"A", L"-") + L"|" + ini.ReadString(L"B", L"-"));
    EXPECT_TRUE(ini.DeleteNode());
    EXPECT_TRUE(ini.Close(true));
    EXPECT_EQ(std::string::npos, dir.ReadFile(L"t.ini").find("[Main]"));
    EXPECT_EQ(160u, ErrorOf([&] { ini.ReadString(L"B", L""); }));  // closed

    IniFile nowhere;
    nowhere.Open(StorageLocation((dir.path() + L"no\\such").c_str(), L"x.ini"), L"S");
    const DWORD error = ErrorOf([&] { nowhere.WriteString(L"k", L"v"); });
    EXPECT_TRUE(error != 0 && error != 160) << error;
    EXPECT_EQ(L"d", nowhere.ReadString(L"k", L"d"));  // a missing file reads as defaults
}

}  // namespace
}  // namespace Storage
}  // namespace QzCommon
