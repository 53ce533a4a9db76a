// The approved-senders and blocked-senders pages inside a bare sheet, driven
// as a user would: buttons, keys, the edit dialog and the message boxes.
#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include "senders/pages/approve_sender_page.h"
#include "senders/pages/block_sender_page.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"
#include "senders/sender_list_wide.h"

namespace velk::senders {
namespace {

using testing::DialogDriver;
using testing::PageWorld;
using testing::ScriptedSheet;

constexpr char kBom[] = "\xEF\xBB\xBF";
constexpr char kBanner[] = "; Written by VELK v3.5 (c) 2005 Nuvexa\r\n";

class SenderPagesTest : public ::testing::Test {
protected:
    // The sheet of the two sender pages, run with `steps`.
    INT_PTR RunPages(std::vector<std::function<void(ScriptedSheet&)>> steps) {
        CApproveSenderPage approve(world_.ui, &world_.approved, &world_.blocked);
        CBlockSenderPage block(world_.ui, &world_.approved, &world_.blocked);
        ScriptedSheet sheet;
        sheet.AddPage(approve);
        sheet.AddPage(block);
        sheet.steps = std::move(steps);
        return sheet.Run();
    }

    static HWND List(ScriptedSheet& sheet, int page) {
        return ::GetDlgItem(sheet.page(page), IDC_SENDER_LIST);
    }
    static int Rows(ScriptedSheet& sheet, int page) {
        return static_cast<int>(::SendMessageW(List(sheet, page), LVM_GETITEMCOUNT, 0, 0));
    }
    static std::wstring SelectedAddress(ScriptedSheet& sheet, int page) {
        HWND list = List(sheet, page);
        const int row = ListView_GetNextItem(list, -1, LVNI_SELECTED);
        wchar_t text[300] = L"";
        if (row >= 0)
            ListView_GetItemText(list, row, 0, text, 300);
        return text;
    }
    static void Key(ScriptedSheet& sheet, int page, UINT key) {
        ::SendMessageW(List(sheet, page), WM_KEYDOWN, key, 0);
        ::SendMessageW(List(sheet, page), WM_KEYUP, key, 0xC0000000);
    }
    static void SelectRow(ScriptedSheet& sheet, int page, int row) {
        ListView_SetItemState(List(sheet, page), row, LVIS_SELECTED | LVIS_FOCUSED,
                              LVIS_SELECTED | LVIS_FOCUSED);
    }
    std::wstring Text(const wchar_t* key) { return world_.ui.Text(key); }

    PageWorld world_;
    DialogDriver driver_;
};

TEST_F(SenderPagesTest, AddAsksAboutTheOtherListAndWarnsWhenTakenOrFull) {
    AddSender(world_.blocked, L"spam@x.com", L"");
    AddSender(world_.approved, L"friend@x.com", L"");
    driver_.FillSender(L"spam@x.com", L"Sam");
    driver_.Answer(IDNO);
    driver_.FillSender(L"SPAM@x.com", L"Sam");
    driver_.Answer(IDYES);
    driver_.FillSender(L"Friend@X.com", L"");
    driver_.Answer(IDOK);
    driver_.FillSender(L"friend@x.com", L"");  // from the blocked page
    driver_.Answer(IDYES);
    driver_.FillSender(L"one@x.com", L"");
    driver_.Answer(IDOK);

    int rows_after_add = 0;
    std::wstring selected_after_add;
    RunPages({
        [](ScriptedSheet& s) { s.Click(0, IDC_SENDER_ADD); },  // No: nothing changes
        [&](ScriptedSheet& s) {
            EXPECT_EQ(1, Rows(s, 0));
            s.Click(0, IDC_SENDER_ADD);  // Yes: moved over
            rows_after_add = Rows(s, 0);
            selected_after_add = SelectedAddress(s, 0);
        },
        [](ScriptedSheet& s) { s.Click(0, IDC_SENDER_ADD); },  // taken
        [](ScriptedSheet& s) {
            s.Show(1);
            s.Click(1, IDC_SENDER_ADD);
        },
        [&](ScriptedSheet& s) {
            // The blocked list is full: the 8001st is refused.
            for (int i = 0; AddSender(world_.blocked, (L"s" + std::to_wstring(i) + L"@f.com").c_str(),
                                      L"") == kSenderAdded;
                 ++i) {
            }
            s.Click(1, IDC_SENDER_ADD);
            s.Press(PSBTN_CANCEL);
        },
    });

    EXPECT_EQ(2, rows_after_add);
    EXPECT_EQ(L"SPAM@x.com", selected_after_add);
    EXPECT_TRUE(IsSameSender(world_.approved, L"spam@x.com", L"Sam"));
    EXPECT_FALSE(SenderExists(world_.approved, L"friend@x.com"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"spam@x.com"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"one@x.com"));
    ASSERT_EQ(5u, driver_.boxes.size());
    EXPECT_EQ(Text(L"IDS_APPROVELISTCONLICT_MSG"), driver_.boxes[0].text);
    EXPECT_EQ(Text(L"IDS_CONFIRMATION_CAPTION"), driver_.boxes[0].caption);
    EXPECT_EQ(Text(L"IDS_LISTEXISTED_MSG"), driver_.boxes[2].text);
    EXPECT_EQ(Text(L"IDS_WARNING_CAPTION"), driver_.boxes[2].caption);
    EXPECT_EQ(Text(L"IDS_BLOCKLISTCONLICT_MSG"), driver_.boxes[3].text);
    EXPECT_NE(std::wstring::npos, driver_.boxes[4].text.find(L"at most 8000 senders"))
        << driver_.boxes[4].text;
    EXPECT_TRUE(driver_.Done());
}

TEST_F(SenderPagesTest, KeysEditAndRemoveWithTheirQuestions) {
    AddSender(world_.approved, L"a@x.com", L"Ann");
    AddSender(world_.approved, L"b@x.com", L"Bob");
    AddSender(world_.blocked, L"c@x.com", L"");
    driver_.FillSender(L"B@x.com", L"Ann");  // Enter: taken by Bob
    driver_.Answer(IDOK);
    driver_.FillSender(L"c@x.com", L"Ann");  // on the blocked list: moved over
    driver_.Answer(IDYES);
    driver_.Answer(IDNO);   // Delete, not confirmed
    driver_.Answer(IDYES);  // Delete
    driver_.FillSender(L"d@x.com", L"", IDCANCEL);  // Insert, cancelled

    std::wstring edited;
    RunPages({
        [](ScriptedSheet& s) {
            SelectRow(s, 0, 0);
            Key(s, 0, VK_RETURN);
        },
        [&](ScriptedSheet& s) {
            Key(s, 0, VK_RETURN);
            edited = SelectedAddress(s, 0);
        },
        [](ScriptedSheet& s) { Key(s, 0, VK_DELETE); },
        [](ScriptedSheet& s) {
            EXPECT_EQ(2, Rows(s, 0));
            SelectRow(s, 0, 0);
            Key(s, 0, VK_DELETE);
            EXPECT_EQ(1, Rows(s, 0));
        },
        [](ScriptedSheet& s) {
            Key(s, 0, VK_INSERT);
            s.Press(PSBTN_CANCEL);
        },
    });

    EXPECT_EQ(L"c@x.com", edited);
    EXPECT_TRUE(IsSameSender(world_.approved, L"c@x.com", L"Ann"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"c@x.com"));
    EXPECT_FALSE(SenderExists(world_.approved, L"a@x.com"));
    EXPECT_FALSE(SenderExists(world_.approved, L"b@x.com"));  // the first row, removed
    EXPECT_EQ(1u, world_.approved.Count());
    ASSERT_EQ(4u, driver_.boxes.size());
    EXPECT_EQ(Text(L"IDS_LISTEXISTED_MSG"), driver_.boxes[0].text);
    EXPECT_EQ(Text(L"IDS_REMOVEADDR_MSG"), driver_.boxes[2].text);
    EXPECT_EQ(Text(L"IDS_CONFIRMATION_CAPTION"), driver_.boxes[2].caption);
    EXPECT_TRUE(driver_.Done());
}

TEST_F(SenderPagesTest, OkSavesBothFilesOnceWhenChangedAndTellsTheScanningProcess) {
    testing::WriteBytes(world_.ListPath(SenderListKind::kBlocked),
                        std::string(kBanner) + "<BL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>bad@x.com<\\SA_ATTR><\\BL_REC>\r\n");
    world_.LoadLists();
    world_.StartScanner();
    // Both pages shown, nothing changed: no list written, nothing posted.
    RunPages({[](ScriptedSheet& s) { s.Show(1); },
              [](ScriptedSheet& s) { s.Press(PSBTN_OK); }});
    EXPECT_EQ(L"1", world_.UserValue(L"AutoApprove"));
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES,
              ::GetFileAttributesW(world_.ListPath(SenderListKind::kApproved).c_str()));

    driver_.FillSender(L"New@x.com", L"Nina");
    RunPages({[](ScriptedSheet& s) {
        s.Click(0, IDC_SENDER_ADD);
        ::CheckDlgButton(s.page(0), IDC_AUTO_APPROVE, BST_UNCHECKED);
        s.Show(1);
        s.Press(PSBTN_OK);
    }});
    const std::string heard = world_.StopScanner();

    EXPECT_EQ(std::string(kBom) + kBanner +
                  "<WL_REC><SN_ATTR>Nina<\\SN_ATTR><SA_ATTR>New@x.com<\\SA_ATTR><\\WL_REC>\r\n",
              testing::ReadBytes(world_.ListPath(SenderListKind::kApproved)));
    EXPECT_EQ(std::string(kBom) + kBanner +
                  "<BL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>bad@x.com<\\SA_ATTR><\\BL_REC>\r\n",
              testing::ReadBytes(world_.ListPath(SenderListKind::kBlocked)));
    EXPECT_EQ("posted WM_USER+9 wParam=0x0 lParam=0x0\r\n", heard);  // once, for both pages
    EXPECT_EQ(L"0", world_.UserValue(L"AutoApprove"));
    EXPECT_FALSE(world_.approved.Modified());
}

TEST_F(SenderPagesTest, ASaveThatFailsKeepsTheSheetOpenAndTheNextOkSaves) {
    const std::wstring white = world_.ListPath(SenderListKind::kApproved);
    testing::WriteBytes(white, kBanner);
    win32::unique_file held(::CreateFileW(white.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    driver_.FillSender(L"kept@x.com", L"");
    driver_.Answer(IDOK);
    bool open_after_failure = false;
    const INT_PTR answer = RunPages({
        [](ScriptedSheet& s) {
            s.Click(0, IDC_SENDER_ADD);
            s.Press(PSBTN_OK);
        },
        [&](ScriptedSheet& s) {
            open_after_failure = ::IsWindowVisible(s.hwnd()) != FALSE;
            held.reset();  // the other program lets go
            s.Press(PSBTN_OK);
        },
    });
    EXPECT_TRUE(open_after_failure);
    EXPECT_GT(answer, 0);
    ASSERT_EQ(1u, driver_.boxes.size());
    EXPECT_EQ(Text(L"IDS_SENDERS_NOT_SAVED_MSG"), driver_.boxes[0].text);
    EXPECT_NE(std::string::npos, testing::ReadBytes(white).find("kept@x.com"));
}

TEST_F(SenderPagesTest, HandedOverSendersAreApprovedAndAMalformedListIsReported) {
    world_.SetInstallValue(L"ApproveMailList", L"Ann, ann@x.com;moved@x.com;Bad,;later@x.com");
    AddSender(world_.blocked, L"moved@x.com", L"");
    AddSender(world_.approved, L"ann@x.com", L"Already");  // kept as it was
    SaveSenders(world_.approved, world_.ListPath(SenderListKind::kApproved));
    SaveSenders(world_.blocked, world_.ListPath(SenderListKind::kBlocked));
    driver_.Answer(IDOK);
    int rows = 0;
    RunPages({[&](ScriptedSheet& s) {
        testing::WaitFor([&] { return !driver_.boxes.empty(); });
        rows = Rows(s, 0);
        s.Press(PSBTN_OK);
    }});

    ASSERT_EQ(1u, driver_.boxes.size());
    EXPECT_EQ(L"Format Error!", driver_.boxes[0].caption);
    EXPECT_EQ(L"In VELK_OE.INI file,\nThe fomart of AppendMailList is not correct!\n\nPlease Modify",
              driver_.boxes[0].text);
    EXPECT_EQ(2, rows);
    EXPECT_TRUE(IsSameSender(world_.approved, L"ann@x.com", L"Already"));
    EXPECT_TRUE(SenderExists(world_.approved, L"moved@x.com"));
    EXPECT_FALSE(SenderExists(world_.approved, L"later@x.com"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"moved@x.com"));
    // The move is saved with OK like any change of the user's.
    EXPECT_EQ(std::string::npos,
              testing::ReadBytes(world_.ListPath(SenderListKind::kBlocked)).find("moved@x.com"));
    EXPECT_NE(std::string::npos, world_.Log().find("[KMB] ApproveMailList = Ann, ann@x.com;"));
}

}  // namespace
}  // namespace velk::senders
