// The sender pages with 8000 senders in each list: switching to the approved
// page until it is painted, adding one sender through the edit dialog, and
// OK with both lists changed (both files written, the scanning process told).
#include <windows.h>

#include <chrono>
#include <string>
#include <vector>

#include "common_src/bench/bench.h"
#include "log/diag_log.h"
#include "senders/pages/approve_sender_page.h"
#include "senders/pages/block_sender_page.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"
#include "senders/sender_list_wide.h"

using namespace velk;
using namespace velk::senders;
using testing::DialogDriver;
using testing::PageWorld;
using testing::ScriptedSheet;

namespace {

double Since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

void Fill(SenderList& list, const wchar_t* domain, std::size_t count) {
    for (std::size_t i = 0; list.Count() < count; ++i) {
        const std::wstring address = L"sender" + std::to_wstring(i) + domain;
        AddSender(list, address.c_str(), (L"Sender Number " + std::to_wstring(i)).c_str());
    }
}

// The blocked page first, so the approved page is created by the switch.
void RunSheet(PageWorld& world, std::vector<std::function<void(ScriptedSheet&)>> steps) {
    CBlockSenderPage block(world.ui, &world.approved, &world.blocked);
    CApproveSenderPage approve(world.ui, &world.approved, &world.blocked);
    ScriptedSheet sheet;
    sheet.AddPage(block);
    sheet.AddPage(approve);
    sheet.steps = std::move(steps);
    sheet.Run();
}

}  // namespace

int main() {
    PageWorld world;
    log::Close();  // as in the field: the log is written only when support asks for it
    DialogDriver driver;
    Fill(world.approved, L"@approved.example", 7980);
    Fill(world.blocked, L"@blocked.example", 8000);

    std::vector<double> switching;
    for (int i = 0; i < 23; ++i) {
        RunSheet(world, {[&](ScriptedSheet& s) {
            const auto start = std::chrono::steady_clock::now();
            s.Show(1);
            ::RedrawWindow(s.hwnd(), nullptr, nullptr, RDW_ALLCHILDREN | RDW_UPDATENOW);
            if (i >= 3)
                switching.push_back(Since(start));
            s.Press(PSBTN_CANCEL);
        }});
    }

    std::vector<double> adding;
    RunSheet(world, {[&](ScriptedSheet& s) {
        s.Show(1);
        for (int i = 0; i < 20; ++i) {
            driver.FillSender(L"added" + std::to_wstring(i) + L"@new.example", L"Added");
            const auto start = std::chrono::steady_clock::now();
            s.Click(1, IDC_SENDER_ADD);
            ::UpdateWindow(::GetDlgItem(s.page(1), IDC_SENDER_LIST));
            adding.push_back(Since(start));
        }
        s.Press(PSBTN_CANCEL);
    }});

    std::vector<double> saving;
    for (int i = 0; i < 10; ++i) {
        RunSheet(world, {[&](ScriptedSheet& s) {
            s.Show(1);
            AddSender(world.approved, (L"a" + std::to_wstring(i) + L"@x.example").c_str(), L"");
            AddSender(world.blocked, (L"b" + std::to_wstring(i) + L"@x.example").c_str(), L"");
            RemoveSender(world.blocked, (L"sender" + std::to_wstring(i) + L"@blocked.example").c_str());
            const auto start = std::chrono::steady_clock::now();
            s.Press(PSBTN_OK);
            saving.push_back(Since(start));
        }});
    }

    velk::bench::Report("sender_pages_switch_to_approved_8000", velk::bench::Summarise(switching),
                        "at most 30 ms under Wine");
    velk::bench::Report("sender_pages_add_one_sender", velk::bench::Summarise(adding));
    velk::bench::Report("sender_pages_ok_both_lists_changed", velk::bench::Summarise(saving),
                        "at most 30 ms under Wine");
    return 0;
}
