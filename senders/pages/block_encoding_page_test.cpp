#include "senders/pages/block_encoding_page.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include "senders/memory_file_system.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"
#include "senders/sender_text.h"

namespace velk::senders {
namespace {

using testing::DialogDriver;
using testing::PageWorld;
using testing::ScriptedSheet;

class BlockEncodingPageTest : public ::testing::Test {
protected:
    std::wstring File() const { return world_.ui.where.user_dir + L"BlockEncodings.dat"; }

    // The check boxes as the page shows them, by row.
    std::vector<bool> RunPage(std::function<void(HWND list)> change, int button = PSBTN_OK) {
        CBlockEncodingPage page(world_.ui);
        ScriptedSheet sheet;
        sheet.AddPage(page);
        std::vector<bool> shown;
        sheet.steps = {[&](ScriptedSheet& s) {
            HWND list = ::GetDlgItem(s.page(0), IDC_ENCODING_LIST);
            for (int i = 0; i < ListView_GetItemCount(list); ++i)
                shown.push_back(ListView_GetCheckState(list, i) != 0);
            if (change)
                change(list);
            s.Press(button);
        }};
        sheet.Run();
        return shown;
    }

    std::vector<BlockedEncoding> Saved() const {
        MemoryFileSystem fs;
        fs.files[u"f"] = testing::ReadBytes(File());
        return LoadBlockedEncodings(fs, u"f");
    }

    PageWorld world_;
    DialogDriver driver_;
};

TEST_F(BlockEncodingPageTest, ChoicesAreSavedOnOkAndShownNextTimeAndTheScanningProcessIsTold) {
    const std::vector<BlockedEncoding> defaults = DefaultBlockedEncodings();
    world_.StartScanner();
    const std::vector<bool> first = RunPage([](HWND list) {
        ListView_SetCheckState(list, 1, TRUE);
        ListView_SetCheckState(list, 5, TRUE);
    });
    EXPECT_EQ(std::vector<bool>(defaults.size(), false), first);
    std::vector<BlockedEncoding> expected = defaults;
    expected[1].blocked = expected[5].blocked = true;
    EXPECT_EQ(expected, Saved());

    // Unchanged: nothing written, nothing posted.
    const std::string bytes = testing::ReadBytes(File());
    const std::vector<bool> second = RunPage(nullptr);
    EXPECT_TRUE(second[1] && second[5] && !second[0]);
    EXPECT_EQ(bytes, testing::ReadBytes(File()));
    // Select All, then Cancel: the file keeps the earlier choice.
    RunPage([](HWND list) {
        ::SendMessageW(::GetParent(list), WM_COMMAND, MAKEWPARAM(IDC_ENCODING_ALL, BN_CLICKED), 0);
    }, PSBTN_CANCEL);
    EXPECT_EQ(bytes, testing::ReadBytes(File()));
    EXPECT_EQ("posted WM_USER+10 wParam=0x0 lParam=0x0\r\n", world_.StopScanner());
}

TEST_F(BlockEncodingPageTest, ABrokenFileShowsTheDefaultsAndIsLogged) {
    testing::WriteBytes(File(), "; Written by VELK v3.5 (c) 2005 Nuvexa\r\n3\r\nGreek\t1\r\n");
    const std::vector<bool> shown = RunPage([](HWND list) {
        ::SendMessageW(::GetParent(list), WM_COMMAND, MAKEWPARAM(IDC_ENCODING_ALL, BN_CLICKED), 0);
    });
    EXPECT_EQ(std::vector<bool>(DefaultBlockedEncodings().size(), false), shown);
    EXPECT_NE(std::string::npos,
              world_.Log().find("the count does not match the entries; nothing is blocked"));
    for (const BlockedEncoding& e : Saved())
        EXPECT_TRUE(e.blocked) << e.key;  // Select All, saved over the broken file
}

}  // namespace
}  // namespace velk::senders
