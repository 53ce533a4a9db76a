// The staged installation: the layout other tools rely on, and copies that
// match what was built.
#include "resources/resources_test_util.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace velk::res {
namespace {

TEST(StagedTree, HoldsTheInstallationFilesWhereTheAddinLooks) {
    std::vector<std::wstring> files = {L"bin\\VELK_OEA.dll", L"bin\\VELK_OE.ini",
                                       L"Resource\\LanguageMap.ini"};
    for (const std::wstring& language : test::Languages()) {
        files.push_back(L"Resource\\" + language + L"\\StringTable.ini");
        files.push_back(L"Resource\\" + language + L"\\VELK_OEA.dll.mui");
    }
    std::vector<unsigned char> bytes;
    for (const std::wstring& file : files)
        EXPECT_TRUE(test::ReadAll(test::DistPath(file), bytes)) << "not staged: " << file;

    // The string loader finds the tables from the module folder through
    // "..\Resource\": bin and Resource must be siblings.
    wchar_t text[64] = {};
    EXPECT_GT(::GetPrivateProfileStringW(
                  L"VELK_OE_AGENT", L"IDS_RPTSPAM_CAPTION", L"", text, 64,
                  test::DistPath(L"bin\\..\\Resource\\en-US\\StringTable.ini").c_str()),
              0u);
}

TEST(StagedTree, EveryStagedItemIsAnExactCopyOfWhatWasBuilt) {
    std::vector<unsigned char> bytes;
    ASSERT_TRUE(test::ReadAll(test::WindowsPathOf(VELK_TEST_DIST_MANIFEST), bytes));
    std::istringstream manifest(std::string(bytes.begin(), bytes.end()));
    std::string line;
    int items = 0;
    while (std::getline(manifest, line)) {
        const size_t tab = line.find('\t');
        if (line.empty() || tab == std::string::npos)
            continue;
        std::vector<unsigned char> staged, source;
        ASSERT_TRUE(test::ReadAll(test::WindowsPathOf(VELK_TEST_DIST_DIR "/" + line.substr(0, tab)),
                                  staged))
            << line;
        ASSERT_TRUE(test::ReadAll(test::WindowsPathOf(line.substr(tab + 1)), source)) << line;
        EXPECT_TRUE(staged == source) << "stale copy: " << line;
        ++items;
    }
    EXPECT_GE(items, 5);
}

}  // namespace
}  // namespace velk::res
