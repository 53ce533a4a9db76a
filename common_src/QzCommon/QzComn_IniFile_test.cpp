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

TEST_F(IniFileTest, OpenJoinsFolderAndFileAndRejectsEmptyPartsWith160) {
    EXPECT_EQ(dir.path() + L"t.ini", ini.GetFilePath());  // no doubled backslash
    IniFile other;
    const std::wstring noSlash = dir.path().substr(0, dir.path().size() - 1);
    EXPECT_TRUE(other.Create(StorageLocation(noSlash.c_str(), L"u.ini"), L"S"));
    EXPECT_EQ(dir.path() + L"u.ini", other.GetFilePath());

    auto error = Capture<Exception>([&] { IniFile().ReadString(L"k", L"d"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(160u, error->m_dwErrorCode);
    // Other components print this string; it must not change.
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_IniFile", error->m_strSourceFile);
    EXPECT_GT(error->m_dwSourceLine, 0u);
    EXPECT_EQ(160u, ErrorOf([&] { IniFile().Flush(); }));
    EXPECT_EQ(160u, ErrorOf([&] { IniFile().DeleteNode(); }));
    EXPECT_EQ(160u, ErrorOf([&] { other.Open(StorageLocation(), L"S"); }));
    // A failed open leaves the store as it was.
    EXPECT_EQ(160u, ErrorOf([&] { other.Open(StorageLocation(L"C:", L"x.ini"), L""); }));
    EXPECT_EQ(dir.path() + L"u.ini", other.GetFilePath());
    EXPECT_EQ(160u, ErrorOf([&] { ini.WriteDword(L"", 1); }));
    EXPECT_EQ(160u, ErrorOf([&] { ini.DeleteValue(static_cast<const wchar_t*>(nullptr)); }));
    EXPECT_EQ(160u, ErrorOf([&] { ini.ReadString(static_cast<const wchar_t*>(nullptr), L""); }));
}

TEST_F(IniFileTest, ReadStringReturnsValuesWholeAcrossBufferBoundaries) {
    // 255 and 511 characters are n - 1 for the 256- and 512-character buffers,
    // where a value that fitted and one that was cut look the same.
    for (size_t length : {254u, 255u, 256u, 511u, 512u, 2000u}) {
        const std::wstring value(length, L'v');
        WriteRaw(L"Long", value);
        EXPECT_EQ(value, ini.ReadString(L"Long", L"")) << "length " << length;
    }
    const std::wstring longDefault(700, L'd');
    EXPECT_EQ(longDefault, ini.ReadString(L"Absent", longDefault));
    EXPECT_EQ(L"", ini.ReadString(L"Absent", nullptr));  // null default: empty
}

// The INI store's deliberate gaps: no-throw reads never read, and binary,
// 64-bit and enumeration operations answer false without touching the file.
TEST_F(IniFileTest, NoThrowReadsGiveTheDefaultAndUnsupportedOperationsAnswerFalse) {
    WriteRaw(L"Name", L"stored");
    DWORD error = 1234;
    EXPECT_EQ(L"fallback", ini.ReadStringNoThrow(L"Name", L"fallback", &error));
    EXPECT_EQ(77u, ini.ReadDwordNoThrow(L"Name", 77, &error));
    EXPECT_EQ(1234u, error);

    IniFile fresh;
    fresh.Open(StorageLocation(dir.path().c_str(), L"none.ini"), L"S");
    ByteBuffer bytes{1};
    StringList names;
    EXPECT_FALSE(fresh.WriteBinary(L"b", bytes) || fresh.ReadBinary(L"b", bytes) ||
                 fresh.ReadBinaryNoThrow(L"b", bytes, &error) || fresh.WriteQword(L"q", 5) ||
                 fresh.EnumerateNodes(names) || fresh.EnumerateValues(names) ||
                 fresh.OpenForWrite(StorageLocation(L"C:", L"x"), L"S") ||
                 fresh.OpenForEnumeration(StorageLocation(L"C:", L"x"), L"S"));
    EXPECT_TRUE(fresh.Close(true));
    EXPECT_EQ("", dir.ReadFile(L"none.ini"));
}

TEST_F(IniFileTest, DwordsAreWrittenInDecimalAndReadFromTheLeadingDigits) {
    EXPECT_TRUE(ini.WriteDword(L"Max", 4294967295u));
    EXPECT_TRUE(ini.Flush());
    EXPECT_NE(std::string::npos, dir.ReadFile(L"t.ini").find("Max=4294967295\r\n"));
    EXPECT_EQ(4294967295u, ini.ReadDword(L"Max", 1));
    const struct {
        const wchar_t* text;
        DWORD expected;
    } cases[] = {{L"12abc", 12}, {L"abc", 99}, {L"", 99}, {L"0", 0}, {L"-1", 4294967295u}};
    for (const auto& c : cases) {
        WriteRaw(L"N", c.text);
        EXPECT_EQ(c.expected, ini.ReadDword(L"N", 99)) << testing::PrintToString(c.text);
    }
    EXPECT_EQ(99u, ini.ReadDword(L"Missing", 99));
}

TEST_F(IniFileTest, DeletesCloseAndReopenWorkOnTheFile) {
    ini.WriteString(L"A", L"first");
    ini.WriteString(L"B", L"second");
    IniFile other;
    other.Open(StorageLocation(dir.path().c_str(), L"t.ini"), L"Other");
    other.WriteString(L"C", L"third");

    EXPECT_TRUE(ini.DeleteValue(L"A"));
    EXPECT_EQ(L"-", ini.ReadString(L"A", L"-"));
    EXPECT_EQ(L"second", ini.ReadString(L"B", L"-"));
    EXPECT_TRUE(ini.DeleteNode());
    EXPECT_EQ(L"-", ini.ReadString(L"B", L"-"));

    // Close with a flush puts everything on disk and leaves the store closed.
    EXPECT_TRUE(ini.Close(true));
    EXPECT_EQ(L"", ini.GetFilePath() + ini.GetSection());
    EXPECT_EQ(160u, ErrorOf([&] { ini.ReadString(L"B", L""); }));
    const std::string text = dir.ReadFile(L"t.ini");
    EXPECT_EQ(std::string::npos, text.find("[Main]"));
    EXPECT_NE(std::string::npos, text.find("C=third"));
    EXPECT_TRUE(ini.Open(StorageLocation(dir.path().c_str(), L"t.ini"), L"Other"));
    EXPECT_EQ(L"third", ini.ReadString(L"C", L""));
}

TEST_F(IniFileTest, WriteFailuresCarryTheSystemError) {
    IniFile nowhere;
    nowhere.Open(StorageLocation((dir.path() + L"no\\such").c_str(), L"x.ini"), L"S");
    const DWORD error = ErrorOf([&] { nowhere.WriteString(L"k", L"v"); });
    EXPECT_TRUE(error != 0 && error != 160) << error;
    EXPECT_EQ(error, ErrorOf([&] { nowhere.WriteDword(L"k", 1); }));
    EXPECT_EQ(L"d", nowhere.ReadString(L"k", L"d"));  // a missing file reads as defaults
}

}  // namespace
}  // namespace Storage
}  // namespace QzCommon
