// Contact import from the approved-senders page with the import tool's
// stand-in in the program folder.
#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include "senders/pages/approve_sender_page.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"
#include "senders/sender_list_wide.h"

namespace velk::senders {
namespace {

using testing::DialogDriver;
using testing::PageWorld;
using testing::ScriptedSheet;

class ContactImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        contacts_ = world_.root + L"contacts.txt";
        imports_ = world_.root + L"importer.txt";
        ::SetEnvironmentVariableW(L"VELK_IMPORTER_CONTACTS", contacts_.c_str());
        ::SetEnvironmentVariableW(L"VELK_IMPORTER_LOG", imports_.c_str());
    }
    void TearDown() override {
        for (const wchar_t* name :
             {L"VELK_IMPORTER_CONTACTS", L"VELK_IMPORTER_LOG", L"VELK_IMPORTER_HOLD"})
            ::SetEnvironmentVariableW(name, nullptr);
    }

    INT_PTR RunPage(std::vector<std::function<void(ScriptedSheet&)>> steps) {
        CApproveSenderPage page(world_.ui, &world_.approved, &world_.blocked);
        ScriptedSheet sheet;
        sheet.AddPage(page);
        sheet.steps = std::move(steps);
        return sheet.Run();
    }
    static int Rows(ScriptedSheet& s) {
        return static_cast<int>(
            ::SendDlgItemMessageW(s.page(0), IDC_SENDER_LIST, LVM_GETITEMCOUNT, 0, 0));
    }
    static bool Importing(ScriptedSheet& s) {
        return !::IsWindowEnabled(::GetDlgItem(s.page(0), IDC_SENDER_IMPORT));
    }
    std::wstring Text(const wchar_t* key) { return world_.ui.Text(key); }

    PageWorld world_;
    DialogDriver driver_;
    std::wstring contacts_;
    std::wstring imports_;
};

TEST_F(ContactImportTest, TheToolRunsWhileThePageStaysUsableAndItsContactsShowAfterwards) {
    testing::WriteBytes(contacts_, "Carla\tcarla@x.com\r\nDan\tdan@x.com\r\n");
    AddSender(world_.blocked, L"dan@x.com", L"");
    SaveSenders(world_.blocked, world_.ListPath(SenderListKind::kBlocked));
    win32::unique_handle hold(::CreateEventW(nullptr, TRUE, FALSE, L"velk_pages_import_hold"));
    ::SetEnvironmentVariableW(L"VELK_IMPORTER_HOLD", L"velk_pages_import_hold");

    driver_.FillSender(L"mine@x.com", L"Me");
    driver_.Answer(IDYES);  // save first
    driver_.Answer(IDOK);   // OK while the tool runs
    bool importing = false, open_while_importing = false;
    int rows_while_importing = 0, rows_after = 0;
    RunPage({
        [](ScriptedSheet& s) {
            s.Click(0, IDC_SENDER_ADD);
            s.Click(0, IDC_SENDER_IMPORT);
        },
        [&](ScriptedSheet& s) {
            importing = Importing(s);
            s.Press(PSBTN_OK);  // refused until the tool is done
            open_while_importing = ::IsWindow(s.hwnd()) != FALSE;
            rows_while_importing = Rows(s);
            ::SetEvent(hold.get());
            EXPECT_TRUE(testing::WaitFor([&] { return !Importing(s); }));
            rows_after = Rows(s);
            s.Press(PSBTN_OK);
        },
    });

    EXPECT_TRUE(importing);
    EXPECT_TRUE(open_while_importing);
    EXPECT_EQ(1, rows_while_importing);
    EXPECT_EQ(3, rows_after);
    ASSERT_EQ(2u, driver_.boxes.size());
    EXPECT_EQ(Text(L"IDS_MSG_APPLYFIRST"), driver_.boxes[0].text);
    EXPECT_EQ(Text(L"IDS_CAP_CONFIMATION"), driver_.boxes[0].caption);
    EXPECT_EQ(Text(L"IDS_IMPORT_RUNNING_MSG"), driver_.boxes[1].text);

    const std::wstring& user = world_.ui.where.user_dir;
    const std::wstring expected = L" \"" + user + L"WhiteList.dat\" \"" + user +
                                  L"BlackList.dat\" {0F4A9D63-2E7B-4C58-A1D9-6B3E85C27F14}\n";
    EXPECT_EQ(std::string(expected.begin(), expected.end()), testing::ReadBytes(imports_));
    const std::string log = world_.Log();
    const std::size_t starts = log.find("@@@ Import contact items thread starts");
    EXPECT_NE(std::string::npos, starts) << log;
    EXPECT_NE(std::string::npos, log.find("@@@ Import contact items thread ends", starts)) << log;

    EXPECT_TRUE(IsSameSender(world_.approved, L"carla@x.com", L"Carla"));
    EXPECT_TRUE(SenderExists(world_.approved, L"dan@x.com"));
    EXPECT_TRUE(SenderExists(world_.approved, L"mine@x.com"));
    EXPECT_FALSE(SenderExists(world_.blocked, L"dan@x.com"));  // the tool moved it
}

TEST_F(ContactImportTest, EditsNotSavedFirstAreKeptBesideTheContactsAndAMissingToolIsLogged) {
    testing::WriteBytes(contacts_, "Carla\tcarla@x.com\r\n");
    AddSender(world_.approved, L"old@x.com", L"");
    SaveSenders(world_.approved, world_.ListPath(SenderListKind::kApproved));

    driver_.FillSender(L"mine@x.com", L"");
    driver_.Answer(IDYES);  // remove old@x.com
    driver_.Answer(IDNO);   // not saved first
    driver_.Answer(IDNO);   // again, for the tool that is gone
    int rows = 0;
    RunPage({
        [](ScriptedSheet& s) {
            s.Click(0, IDC_SENDER_ADD);  // rows: mine, old
            ListView_SetItemState(::GetDlgItem(s.page(0), IDC_SENDER_LIST), 1, LVIS_SELECTED,
                                  LVIS_SELECTED);
            s.Click(0, IDC_SENDER_REMOVE);
            s.Click(0, IDC_SENDER_IMPORT);
        },
        [&](ScriptedSheet& s) {
            EXPECT_TRUE(testing::WaitFor([&] { return !Importing(s); }));
            rows = Rows(s);
            ::DeleteFileW((world_.ui.where.install_dir + L"VELK_OEImp.exe").c_str());
            s.Click(0, IDC_SENDER_IMPORT);
            EXPECT_TRUE(testing::WaitFor([&] { return !Importing(s); }));
            s.Press(PSBTN_OK);
        },
    });

    EXPECT_EQ(2, rows);  // carla and mine; old stays removed
    const std::string saved = testing::ReadBytes(world_.ListPath(SenderListKind::kApproved));
    EXPECT_NE(std::string::npos, saved.find("carla@x.com"));
    EXPECT_NE(std::string::npos, saved.find("mine@x.com"));
    EXPECT_EQ(std::string::npos, saved.find("old@x.com"));
    EXPECT_NE(std::string::npos, world_.Log().find("xxx Can not launch VELK_OEImp"));
    EXPECT_TRUE(driver_.Done());
}

}  // namespace
}  // namespace velk::senders
