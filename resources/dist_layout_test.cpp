// The staged installation: the layout other tools rely on, and copies that
// match what was built.
#include "resources/resources_test_util.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace velk::res {
namespace {

using test::DistPath;

bool IsFile(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

TEST(StagedTree, HoldsTheInstallationFilesWhereTheAddinLooks) {
    for (const wchar_t* file :
         {L"bin\\VELK_OEA.dll", L"bin\\VELK_OE.ini", L"Resource\\LanguageMap.ini",
          L"Resource\\en-US\\StringTable.ini", L"Resource\\en-US\\VELK_OEA.dll.mui"})
        EXPECT_TRUE(IsFile(DistPath(file))) << "not staged: " << file;

    // The string loader finds the tables from the module folder through
    // "..\Resource\": bin and Resource must be siblings.
    const std::wstring through_bin = DistPath(L"bin\\..\\Resource\\en-US\\StringTable.ini");
    wchar_t text[64] = {};
    EXPECT_GT(::GetPrivateProfileStringW(L"VELK_OE_AGENT", L"IDS_RPTSPAM_CAPTION", L"", text, 64,
                                         through_bin.c_str()),
              0u);
}

TEST(StagedTree, EveryStagedItemIsAnExactCopyOfWhatWasBuilt) {
    std::vector<unsigned char> bytes;
    ASSERT_TRUE(test::ReadAll(test::WindowsPathOf(VELK_TEST_DIST_MANIFEST), bytes))
        << "no manifest: " << VELK_TEST_DIST_MANIFEST;
    std::istringstream manifest(std::string(bytes.begin(), bytes.end()));
    std::string line;
    int items = 0;
    while (std::getline(manifest, line)) {
        if (line.empty())
            continue;
        const size_t tab = line.find('\t');
        ASSERT_NE(std::string::npos, tab) << line;
        std::wstring destination;
        for (char c : line.substr(0, tab))
            destination += c == '/' ? L'\\' : static_cast<wchar_t>(c);
        std::vector<unsigned char> staged, source;
        ASSERT_TRUE(test::ReadAll(DistPath(destination), staged)) << line;
        ASSERT_TRUE(test::ReadAll(test::WindowsPathOf(line.substr(tab + 1)), source)) << line;
        EXPECT_TRUE(staged == source) << "stale copy: " << line;
        ++items;
    }
    EXPECT_GE(items, 4);
}

}  // namespace
}  // namespace velk::res
