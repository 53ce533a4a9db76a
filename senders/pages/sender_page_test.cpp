// The sender pages and the blocked-languages page inside a bare sheet, driven
// as a user would: buttons, keys, the edit dialog, the message boxes, the
// import tool's stand-in, and the scanning process's stand-in listening.
// Every window shown is checked to fit its texts.
#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include <sstream>

#include "senders/memory_file_system.h"
#include "senders/pages/approve_sender_page.h"
#include "senders/pages/block_encoding_page.h"
#include "senders/pages/block_sender_page.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"
#include "senders/sender_list_wide.h"
#include "senders/sender_text.h"

namespace velk::senders {
namespace {

using testing::DialogDriver;
using testing::ScriptedSheet;
using Steps = std::vector<std::function<void(ScriptedSheet&)>>;

const std::string kBanner = "; Written by VELK v3.5 (c) 2005 Nuvexa\r\n";

// What is wrong with the layout of `window`'s controls, one line each:
// outside the window, over another control, a text cut off.
std::string LayoutProblems(HWND window) {
    std::ostringstream problems;
    RECT client{};
    ::GetClientRect(window, &client);
    std::vector<RECT> placed;
    for (HWND child = ::GetWindow(window, GW_CHILD); child;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (!::IsWindowVisible(child))
            continue;
        RECT r{}, both{};
        ::GetWindowRect(child, &r);
        ::MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&r), 2);
        const int id = ::GetDlgCtrlID(child);
        if (r.left < client.left || r.top < client.top || r.right > client.right ||
            r.bottom > client.bottom)
            problems << "control " << id << " reaches out of its window\n";
        for (const RECT& o : placed) {
            if (::IntersectRect(&both, &r, &o))
                problems << "control " << id << " overlaps another\n";
        }
        placed.push_back(r);

        wchar_t text[1024] = L"", cls[64] = L"";
        ::GetWindowTextW(child, text, 1024);
        ::GetClassNameW(child, cls, 64);
        const bool label = std::wstring(cls) == L"Static";
        if (text[0] == 0 || (!label && std::wstring(cls) != L"Button"))
            continue;
        win32::window_dc dc(child);
        win32::select_object font(dc.get(),
                                  reinterpret_cast<HFONT>(::SendMessageW(child, WM_GETFONT, 0, 0)));
        const LONG_PTR style = ::GetWindowLongPtrW(child, GWL_STYLE);
        // A push button keeps a margin on each side; a check box has its box.
        const bool check = (style & BS_TYPEMASK) == BS_AUTOCHECKBOX;
        const int room = (r.right - r.left) - (label   ? 0
                                               : check ? ::GetSystemMetrics(SM_CXMENUCHECK) + 4
                                                       : 8);
        RECT need{0, 0, room, 0};
        ::DrawTextW(dc.get(), text, -1, &need,
                    DT_CALCRECT | (label ? DT_WORDBREAK : DT_SINGLELINE) |
                        (label && (style & SS_NOPREFIX) ? DT_NOPREFIX : 0));
        if (need.right > room || need.bottom > r.bottom - r.top)
            problems << "the text of " << id << " does not fit\n";
    }
    return problems.str();
}

class SenderPagesTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ("", layout_problems_); }
    void CheckLayout(HWND window) { layout_problems_ += LayoutProblems(window); }

    // The sheet of the approved, blocked (and languages) pages, run with `steps`.
    INT_PTR RunPages(Steps steps, bool languages = false) {
        CApproveSenderPage approve(world_.ui, &world_.approved, &world_.blocked);
        CBlockSenderPage block(world_.ui, &world_.approved, &world_.blocked);
        CBlockEncodingPage encodings(world_.ui);
        ScriptedSheet sheet;
        sheet.AddPage(approve);
        sheet.AddPage(block);
        if (languages)
            sheet.AddPage(encodings);
        sheet.steps = std::move(steps);
        return sheet.Run();
    }
    static HWND List(ScriptedSheet& s, int page) {
        return ::GetDlgItem(s.page(page), IDC_SENDER_LIST);
    }
    static int Rows(ScriptedSheet& s, int page) { return ListView_GetItemCount(List(s, page)); }
    static void Key(ScriptedSheet& s, int row, UINT key) {
        if (row >= 0)
            ListView_SetItemState(List(s, 0), row, LVIS_SELECTED | LVIS_FOCUSED,
                                  LVIS_SELECTED | LVIS_FOCUSED);
        ::SendMessageW(List(s, 0), WM_KEYDOWN, key, 0);
        ::SendMessageW(List(s, 0), WM_KEYUP, key, 0xC0000000);
    }
    static bool OkEnabled(HWND dialog) {
        return ::IsWindowEnabled(::GetDlgItem(dialog, IDOK)) != FALSE;
    }
    // The texts of the message boxes answered, in order, then the caption of
    // each kind of box.
    void ExpectBoxes(const std::vector<const wchar_t*>& texts,
                     const std::vector<std::pair<std::size_t, const wchar_t*>>& captions) {
        ASSERT_EQ(texts.size(), driver_.boxes.size());
        for (std::size_t i = 0; i < texts.size(); ++i)
            EXPECT_EQ(world_.ui.Text(texts[i]), driver_.boxes[i].text) << i;
        for (const auto& [box, caption] : captions)
            EXPECT_EQ(world_.ui.Text(caption), driver_.boxes[box].caption) << box;
        EXPECT_TRUE(driver_.Done());
    }

    testing::PageWorld world_;
    DialogDriver driver_;
    std::string layout_problems_;
};

TEST_F(SenderPagesTest, EditsAskAboutTheOtherListAndRefuseWhatCannotBeKept) {
    AddSender(world_.approved, L"a@x.com", L"Ann");
    AddSender(world_.approved, L"b@x.com", L"Bob");
    AddSender(world_.approved, L"z@x.com", L"");
    AddSender(world_.blocked, L"spam@x.com", L"");
    AddSender(world_.blocked, L"c@x.com", L"");
    driver_.FillSender(L"spam@x.com", L"Sam");  // Add, on the blocked list: not moved
    driver_.Answer(IDNO);
    driver_.FillSender(L"SPAM@x.com", L"Sam");  // moved
    driver_.Answer(IDYES);
    driver_.FillSender(L"A@x.com", L"");  // Add, taken
    driver_.Answer(IDOK);
    driver_.FillSender(L"B@x.com", L"Ann");  // Enter on a@x.com: taken by Bob
    driver_.Answer(IDOK);
    driver_.FillSender(L"c@x.com", L"Ann");  // Enter again: moved over from the blocked list
    driver_.Answer(IDYES);
    driver_.Answer(IDNO);   // Delete, not confirmed
    driver_.Answer(IDYES);  // Delete

    // Insert: the edit dialog refuses texts one after another, each time with
    // OK disabled until a text changes and the focus on the text at fault.
    std::vector<bool> ok_while_blank, ok_when_typed;
    std::vector<std::pair<bool, int>> after_refusal;
    auto type = [&](HWND d, const std::wstring& address, const std::wstring& name) {
        ::SetDlgItemTextW(d, IDC_EDIT_ADDRESS, address.c_str());
        ::SetDlgItemTextW(d, IDC_EDIT_NAME, name.c_str());
        ok_when_typed.push_back(OkEnabled(d));
        ::PostMessageW(d, WM_COMMAND, IDOK, 0);
    };
    driver_.Then([&](HWND d, bool) {
        CheckLayout(d);
        ::SetDlgItemTextW(d, IDC_EDIT_ADDRESS, L" \t\r\n");
        ok_while_blank.push_back(OkEnabled(d));
        type(d, std::wstring(251, L'a') + L"@x.com", L"");  // 257 characters
        return true;
    });
    for (const auto& [address, name] :
         std::vector<std::pair<std::wstring, std::wstring>>{{L"a..b@x.com", L""},
                                                            {L"a.b@x.com", std::wstring(257, L'n')},
                                                            {L"  ***@Ex.com\t", L"\tAnn Lee  "}}) {
        driver_.Answer(IDOK);
        driver_.Then([&, address = address, name = name](HWND d, bool again) {
            DialogDriver::Later([&, d, address, name] {
                testing::WaitFor([d] { return ::IsChild(d, ::GetFocus()) != FALSE; });
                after_refusal.push_back({OkEnabled(d), ::GetDlgCtrlID(::GetFocus())});
                type(d, address, name);
            });
            return again;
        });
    }
    driver_.FillSender(L"c@x.com", L"");  // from the blocked page: moved over
    driver_.Answer(IDYES);
    driver_.FillSender(L"one@x.com", L"");  // the blocked list is full
    driver_.Answer(IDOK);

    std::vector<std::wstring> by_name;
    RunPages({
        [&](ScriptedSheet& s) {
            CheckLayout(s.page(0));
            for (int add = 0; add < 3; ++add)
                s.Click(0, IDC_SENDER_ADD);
            Key(s, 0, VK_RETURN);
            Key(s, -1, VK_RETURN);
            Key(s, -1, VK_DELETE);
            Key(s, 0, VK_DELETE);  // b@x.com, the first row
            Key(s, -1, VK_INSERT);
            // A click on the name column's header sorts by name.
            NMLISTVIEW click{{List(s, 0), IDC_SENDER_LIST, LVN_COLUMNCLICK}, -1, 1};
            ::SendMessageW(s.page(0), WM_NOTIFY, IDC_SENDER_LIST, reinterpret_cast<LPARAM>(&click));
            for (int row = 0; row < Rows(s, 0); ++row) {
                wchar_t text[300] = L"";
                ListView_GetItemText(List(s, 0), row, 0, text, 300);
                by_name.push_back(text);
            }
            s.Show(1);
            CheckLayout(s.page(1));
            s.Click(1, IDC_SENDER_ADD);
            for (int i = 0;
                 AddSender(world_.blocked, (L"s" + std::to_wstring(i) + L"@f.com").c_str(), L"") ==
                 kSenderAdded;
                 ++i) {
            }
            s.Click(1, IDC_SENDER_ADD);
            s.Press(PSBTN_CANCEL);
        },
    });

    // Names ignore the case of A-Z, ties go by address, no name goes last.
    EXPECT_EQ((std::vector<std::wstring>{L"c@x.com", L"*@Ex.com", L"SPAM@x.com", L"z@x.com"}),
              by_name);
    EXPECT_EQ(std::vector<bool>{false}, ok_while_blank);  // blanks are no address
    EXPECT_EQ(std::vector<bool>(4, true), ok_when_typed);
    EXPECT_EQ((std::vector<std::pair<bool, int>>{
                  {false, IDC_EDIT_ADDRESS}, {false, IDC_EDIT_ADDRESS}, {false, IDC_EDIT_NAME}}),
              after_refusal);
    ASSERT_EQ(3u, world_.approved.Count());
    EXPECT_EQ(L"*@Ex.com",
              SenderEntries(world_.approved)[0].address);  // trimmed, "*" runs collapsed
    EXPECT_TRUE(IsSameSender(world_.approved, L"*@ex.com", L"Ann Lee"));
    EXPECT_TRUE(IsSameSender(world_.approved, L"spam@x.com", L"Sam"));
    EXPECT_TRUE(SenderExists(world_.blocked, L"c@x.com"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"spam@x.com"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"one@x.com"));
    ASSERT_EQ(12u, driver_.boxes.size());
    EXPECT_NE(std::wstring::npos, driver_.boxes[11].text.find(L"at most 8000 senders"));
    driver_.boxes.pop_back();
    ExpectBoxes({L"IDS_APPROVELISTCONLICT_MSG", L"IDS_APPROVELISTCONLICT_MSG",
                 L"IDS_LISTEXISTED_MSG", L"IDS_LISTEXISTED_MSG", L"IDS_APPROVELISTCONLICT_MSG",
                 L"IDS_REMOVEADDR_MSG", L"IDS_REMOVEADDR_MSG", L"IDS_TEXT_TOO_LONG_MSG",
                 L"IDS_WRONG_EMAILADDR_MSG", L"IDS_TEXT_TOO_LONG_MSG", L"IDS_BLOCKLISTCONLICT_MSG"},
                {{0, L"IDS_CONFIRMATION_CAPTION"},
                 {2, L"IDS_WARNING_CAPTION"},
                 {5, L"IDS_CONFIRMATION_CAPTION"},
                 {7, L"IDS_CONFIRMATION_CAPTION"},
                 {8, L"IDS_WARNING_CAPTION"}});
}

// The first OK saves both lists (blocked first), whichever changed, the
// languages when they changed, and tells the scanning process once per file
// written; a save that fails keeps the sheet open for the next OK.
TEST_F(SenderPagesTest, OkSavesWhatChangedAndTellsTheScanningProcess) {
    const std::wstring white = world_.ListPath(SenderListKind::kApproved);
    const std::string blocked_bytes =
        kBanner +
        "<BL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>bad@x.com<\\SA_ATTR><\\BL_REC>\r\n"
        "<BL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>moved@x.com<\\SA_ATTR><\\BL_REC>\r\n";
    world_.WriteUserFile(L"BlackList.dat", blocked_bytes);
    // The languages file of another version: the page offers only its own
    // entries, with its own code pages.
    const std::string languages_bytes =
        kBanner + "3\r\nGreek\t1\t1\r\nKlingon\t1\t9\r\nThai\t0\r\n";
    world_.WriteUserFile(L"BlockEncodings.dat", languages_bytes);
    // Longer than the list saved at last, so a write in place must cut it.
    world_.WriteUserFile(
        L"WhiteList.dat",
        kBanner +
            "<WL_REC><SN_ATTR>Already<\\SN_ATTR><SA_ATTR>ann@x.com<\\SA_ATTR><\\WL_REC>"
            "\r\n; " +
            std::string(500, 'x') + "\r\n");
    LoadSenders(world_.approved, white);
    LoadSenders(world_.blocked, world_.ListPath(SenderListKind::kBlocked));
    world_.StartScanner();

    // Nothing changed: nothing written (both lists are saved together),
    // nothing posted.
    std::vector<bool> checked;
    auto languages = [&](ScriptedSheet& s) {
        s.Show(2);
        CheckLayout(s.page(2));
        HWND list = ::GetDlgItem(s.page(2), IDC_ENCODING_LIST);
        checked.clear();
        for (int i = 0; i < ListView_GetItemCount(list); ++i)
            checked.push_back(ListView_GetCheckState(list, i) != 0);
    };
    RunPages({languages, [](ScriptedSheet& s) { s.Press(PSBTN_OK); }}, true);
    std::vector<bool> greek;
    for (const BlockedEncoding& e : DefaultBlockedEncodings())
        greek.push_back(e.key == "Greek");
    EXPECT_EQ(greek, checked);
    EXPECT_EQ(L"1", world_.UserValue(L"AutoApprove"));
    EXPECT_EQ(blocked_bytes, world_.UserFile(L"BlackList.dat"));
    EXPECT_EQ(languages_bytes, world_.UserFile(L"BlockEncodings.dat"));
    EXPECT_NE(std::string::npos, world_.Log().find("entry Klingon is not offered here"));

    // The installer's handed-over senders are approved, up to the malformed entry.
    world_.SetInstallValue(L"ApproveMailList", L"Ann, ann@x.com;moved@x.com;Bad,;later@x.com");
    driver_.Answer(IDOK);
    driver_.FillSender(L"New@x.com", L"Nina");
    driver_.Answer(IDOK);
    bool open_after_failure = false;
    win32::unique_file held;
    RunPages({[&](ScriptedSheet& s) {
                  testing::WaitFor([&] { return !driver_.boxes.empty(); });
                  s.Click(0, IDC_SENDER_ADD);
                  ::CheckDlgButton(s.page(0), IDC_AUTO_APPROVE, BST_UNCHECKED);
                  languages(s);
                  s.Click(2, IDC_ENCODING_ALL);
                  s.Show(1);
                  held.reset(::CreateFileW(white.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                           OPEN_EXISTING, 0, nullptr));
                  s.Press(PSBTN_OK);
              },
              [&](ScriptedSheet& s) {
                  open_after_failure = ::IsWindowVisible(s.hwnd()) != FALSE;
                  // Now held the way the scanning process reads it: written in place.
                  held.reset();
                  held.reset(::CreateFileW(white.c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, 0, nullptr));
                  s.Press(PSBTN_OK);
              }},
             true);
    EXPECT_TRUE(open_after_failure);
    ASSERT_EQ(2u, driver_.boxes.size());
    EXPECT_EQ(L"Format Error!", driver_.boxes[0].caption);
    EXPECT_EQ(
        L"In VELK_OE.INI file,\nThe fomart of AppendMailList is not correct!\n\nPlease Modify",
        driver_.boxes[0].text);
    EXPECT_EQ(world_.ui.Text(L"IDS_SENDERS_NOT_SAVED_MSG"), driver_.boxes[1].text);
    EXPECT_EQ(L"0", world_.UserValue(L"AutoApprove"));
    EXPECT_EQ("\xEF\xBB\xBF" + kBanner +
                  "<BL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>bad@x.com<\\SA_ATTR><\\BL_REC>\r\n",
              world_.UserFile(L"BlackList.dat"));
    char seen[4096];
    DWORD got = 0;
    ASSERT_TRUE(::ReadFile(held.get(), seen, sizeof seen, &got, nullptr));
    EXPECT_EQ(world_.UserFile(L"WhiteList.dat"),
              std::string(seen, got));  // whole, cut to its length
    SenderList saved(SenderListKind::kApproved);
    LoadSenders(saved, white);
    EXPECT_EQ(3u, saved.Count());
    EXPECT_TRUE(IsSameSender(saved, L"ann@x.com", L"Already"));
    EXPECT_TRUE(IsSameSender(saved, L"new@x.com", L"Nina"));
    EXPECT_TRUE(SenderExists(saved, L"moved@x.com"));
    // Support reads in the log what the installer handed over, line by line.
    const std::string log = world_.Log();
    std::size_t at = 0;
    for (const char* line :
         {"[KMB] ApproveMailList = Ann, ann@x.com;moved@x.com;Bad,;later@x.com\r\n",
          "[KMB] ';' found, extract approved mail...\r\n",
          "[KMB] ',' found, extract mail address...\r\n",
          "[KMB] So, addr=(ann@x.com) \t sender=(Ann)\r\n",
          "[KMB] (1)Insert addr (ann@x.com) to list\r\n",
          "[KMB] no ',' found, assign whole string to be the mail address\r\n",
          "[KMB] no sender found\r\n", "[KMB] So, addr=(moved@x.com) \t sender=()\r\n",
          "[KMB] (2)Insert addr (moved@x.com) to list\r\n",
          "[KMB] So, addr=() \t sender=(Bad)\r\n"}) {
        at = log.find(line, at);
        ASSERT_NE(std::string::npos, at) << "missing or out of order: " << line << log;
    }
    // The first OK wrote the blocked list before the approved one failed.
    EXPECT_EQ(
        "posted WM_USER+9 wParam=0x0 lParam=0x0\r\nposted WM_USER+9 wParam=0x0 lParam=0x0\r\n"
        "posted WM_USER+10 wParam=0x0 lParam=0x0\r\n",
        world_.StopScanner());

    // The languages chosen show the next time.
    world_.SetInstallValue(L"ApproveMailList", L"");
    RunPages({languages, [](ScriptedSheet& s) { s.Press(PSBTN_CANCEL); }}, true);
    EXPECT_EQ(std::vector<bool>(DefaultBlockedEncodings().size(), true), checked);
}

// The import tool edits the files while the page stays usable; what the
// user changed meanwhile is kept beside the imported contacts.
TEST_F(SenderPagesTest, ContactImportRunsTheToolAndMergesItsContacts) {
    world_.dir.WriteFile(L"contacts.txt", "Carla\tcarla@x.com\r\nDan\tdan@x.com\r\n");
    ::SetEnvironmentVariableW(L"VELK_IMPORTER_CONTACTS",
                              (world_.dir.path() + L"contacts.txt").c_str());
    ::SetEnvironmentVariableW(L"VELK_IMPORTER_LOG", (world_.dir.path() + L"importer.txt").c_str());
    ::SetEnvironmentVariableW(L"VELK_IMPORTER_HOLD", L"velk_pages_import_hold");
    win32::unique_handle hold(::CreateEventW(nullptr, TRUE, FALSE, L"velk_pages_import_hold"));
    AddSender(world_.blocked, L"dan@x.com", L"");
    AddSender(world_.approved, L"old@x.com", L"");
    SaveSenders(world_.blocked, world_.ListPath(SenderListKind::kBlocked));
    SaveSenders(world_.approved, world_.ListPath(SenderListKind::kApproved));

    driver_.FillSender(L"mine@x.com", L"Me");
    driver_.Answer(IDYES);  // remove old@x.com
    driver_.Answer(IDNO);   // not saved before the tool runs
    driver_.Answer(IDOK);   // OK while the tool runs
    driver_.Answer(IDYES);  // saved before the next run, of a tool that is gone
    auto importing = [](ScriptedSheet& s) {
        return !::IsWindowEnabled(::GetDlgItem(s.page(0), IDC_SENDER_IMPORT));
    };
    bool open_while_importing = false;
    int rows_while_importing = 0, rows_after = 0;
    std::string saved_first;
    RunPages({[&](ScriptedSheet& s) {
        s.Click(0, IDC_SENDER_ADD);  // rows: mine, old
        Key(s, 1, VK_DELETE);
        s.Click(0, IDC_SENDER_IMPORT);
        EXPECT_TRUE(importing(s));
        s.Press(PSBTN_OK);  // refused until the tool is done
        open_while_importing = ::IsWindowVisible(s.hwnd()) != FALSE;
        rows_while_importing = Rows(s, 0);
        ::SetEvent(hold.get());
        EXPECT_TRUE(testing::WaitFor([&] { return !importing(s); }));
        rows_after = Rows(s, 0);
        ::DeleteFileW((world_.ui.where.install_dir + L"VELK_OEImp.exe").c_str());
        s.Click(0, IDC_SENDER_IMPORT);
        EXPECT_TRUE(testing::WaitFor([&] { return !importing(s); }));
        saved_first = world_.UserFile(L"WhiteList.dat");
        s.Press(PSBTN_OK);
    }});
    for (const wchar_t* name :
         {L"VELK_IMPORTER_CONTACTS", L"VELK_IMPORTER_LOG", L"VELK_IMPORTER_HOLD"})
        ::SetEnvironmentVariableW(name, nullptr);

    EXPECT_TRUE(open_while_importing);
    EXPECT_EQ(1, rows_while_importing);
    EXPECT_EQ(3, rows_after);  // carla, dan and mine; old stays removed
    EXPECT_EQ(std::string::npos, saved_first.find("old@x.com"));
    EXPECT_NE(std::string::npos, saved_first.find("carla@x.com"));
    EXPECT_NE(std::string::npos, saved_first.find("mine@x.com"));
    EXPECT_EQ(std::string::npos,
              world_.UserFile(L"BlackList.dat").find("dan@x.com"));  // the tool moved it
    const std::wstring& user = world_.ui.where.user_dir;
    const std::wstring command = L" \"" + user + L"WhiteList.dat\" \"" + user +
                                 L"BlackList.dat\" {0F4A9D63-2E7B-4C58-A1D9-6B3E85C27F14}\n";
    EXPECT_EQ(Utf16ToUtf8(ToU16(command)), world_.dir.ReadFile(L"importer.txt"));
    const std::string log = world_.Log();
    const std::size_t starts = log.find("@@@ Import contact items thread starts");
    EXPECT_NE(std::string::npos, log.find("@@@ Import contact items thread ends", starts)) << log;
    EXPECT_NE(std::string::npos, log.find("xxx Can not launch VELK_OEImp")) << log;
    ExpectBoxes({L"IDS_REMOVEADDR_MSG", L"IDS_MSG_APPLYFIRST", L"IDS_IMPORT_RUNNING_MSG",
                 L"IDS_MSG_APPLYFIRST"},
                {{1, L"IDS_CAP_CONFIMATION"}, {2, L"IDS_WARNING_CAPTION"}});
}

}  // namespace
}  // namespace velk::senders
