#include "tools/control_gallery/control_gallery.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/paint_buffer.h"
#include "common_src/win32/reflection.h"
#include "controls/bitmap_slider.h"
#include "controls/digit_edit.h"
#include "controls/ext_static.h"
#include "controls/list_rows.h"
#include "controls/pie_chart.h"
#include "controls/tab_strip.h"
#include "controls/virtual_list_view.h"

namespace velk::tools {
namespace {

constexpr int kSliderThumbs = 6450;  // the thumb bitmap in the language module
constexpr int kWidth = 640;
constexpr int kHeight = 470;

class SampleRows : public controls::ListRows {
public:
    std::size_t RowCount() const override { return rows_.size(); }
    std::wstring CellText(std::size_t row, int column) const override {
        if (row >= rows_.size())
            return std::wstring();
        return column == 0 ? rows_[row].first : rows_[row].second;
    }
    void SortBy(int column, bool ascending) override {
        std::sort(rows_.begin(), rows_.end(), [&](const auto& a, const auto& b) {
            const std::wstring& x = column == 0 ? a.first : a.second;
            const std::wstring& y = column == 0 ? b.first : b.second;
            return ascending ? x < y : y < x;
        });
    }

private:
    std::vector<std::pair<std::wstring, std::wstring>> rows_ = {
        {L"anna.berg@example.com", L"Anna Berg"},   {L"*@newsletter.example.org", L""},
        {L"jorg@example.net", L"J\u00F6rg M\u00FCller"}, {L"team@example.co.uk", L"Project Team"},
        {L"soren@example.dk", L"S\u00F8ren Kj\u00E6r"}, {L"zoe@example.com", L"Zo\u00EB Lee"},
    };
};

// An empty popup template; the controls are made in WM_INITDIALOG, so the
// gallery needs no resource script of its own.
std::vector<WORD> EmptyTemplate() {
    DLGTEMPLATE dt{};
    dt.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_SETFONT | DS_MODALFRAME;
    const WORD* head = reinterpret_cast<const WORD*>(&dt);
    std::vector<WORD> w(head, head + sizeof(dt) / sizeof(WORD));
    w.insert(w.end(), {0, 0});  // no menu, standard class
    for (const wchar_t* s = L"Control gallery"; *s; ++s)
        w.push_back(*s);
    w.push_back(0);
    w.push_back(8);
    for (const wchar_t* s = L"MS Shell Dlg"; *s; ++s)
        w.push_back(*s);
    w.push_back(0);
    return w;
}

}  // namespace

class ControlGallery : public win32::Dialog {
public:
    explicit ControlGallery(HINSTANCE resources) : resources_(resources) {}
    ~ControlGallery() override { Destroy(); }

    void Destroy() {
        if (hwnd() != nullptr)
            ::DestroyWindow(hwnd());
    }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        switch (msg) {
            case WM_INITDIALOG:
                Build();
                result = TRUE;
                return true;
            case WM_PAINT:
                Paint();
                return true;
            case WM_CTLCOLORDLG:
                result = reinterpret_cast<LRESULT>(::GetStockObject(WHITE_BRUSH));
                return true;
            case WM_CTLCOLORSTATIC:
                // Controls that colour themselves answer first.
                if (win32::ReflectToOwner(hwnd(), msg, wp, lp, result))
                    return true;
                ::SetBkMode(reinterpret_cast<HDC>(wp), TRANSPARENT);
                result = reinterpret_cast<LRESULT>(::GetStockObject(WHITE_BRUSH));
                return true;
            case WM_CLOSE:
                ::DestroyWindow(hwnd());
                return true;
            default:
                return false;
        }
    }

private:
    HWND Child(const wchar_t* cls, const wchar_t* text, DWORD style, int id, int x, int y, int w,
               int h) {
        HWND child = ::CreateWindowExW(0, cls, text, WS_CHILD | WS_VISIBLE | style, x, y, w, h,
                                       hwnd(), reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                       ::GetModuleHandleW(nullptr), nullptr);
        ::SendMessageW(child, WM_SETFONT, ::SendMessageW(hwnd(), WM_GETFONT, 0, 0), FALSE);
        return child;
    }

    void Caption(const wchar_t* text, int x, int y) {
        Child(L"STATIC", text, SS_LEFT, -1, x, y, 280, 16);
    }

    void Build() {
        ::SetWindowPos(hwnd(), nullptr, 40, 40, kWidth, kHeight, SWP_NOZORDER);
        thumbs_ = controls::LoadSliderBitmap(resources_, kSliderThumbs, std::wstring());

        // The level slider at each stop, and disabled.
        Caption(L"Level slider at each stop, and disabled", 12, 8);
        const std::array<std::wstring, 3> names = {L"High", L"Medium", L"Low"};
        for (int i = 0; i < 4; ++i) {
            Child(L"STATIC", L"", WS_TABSTOP | (i == 3 ? WS_DISABLED : 0), 100 + i, 12 + i * 70,
                  28, 68, 96);
            sliders_[i].TakeOver(hwnd(), 100 + i);
            sliders_[i].SetStops(names, names, true);
            sliders_[i].SetBitmap(thumbs_.get());
            sliders_[i].SetPosition(i < 3 ? i : 1);
        }

        // The tab strip, second tab selected, third under the mouse.
        Caption(L"Tab strip: selected and hot", 300, 8);
        HWND tab = Child(WC_TABCONTROLW, L"", WS_CLIPSIBLINGS, 200, 300, 28, 320, 90);
        const wchar_t* tabs[] = {L"Spam Detection", L"Link Filter", L"Approved Senders"};
        for (int i = 0; i < 3; ++i) {
            TCITEMW item{};
            item.mask = TCIF_TEXT;
            item.pszText = const_cast<wchar_t*>(tabs[i]);
            ::SendMessageW(tab, TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&item));
        }
        ::SendMessageW(tab, TCM_SETCURSEL, 1, 0);
        tab_strip_.TakeOver(tab);
        RECT third{};
        ::SendMessageW(tab, TCM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&third));
        ::SendMessageW(tab, WM_MOUSEMOVE, 0, MAKELPARAM(third.left + 5, third.top + 5));

        // The virtual list with its header, one row selected.
        Caption(L"Virtual list with header", 12, 140);
        HWND list = controls::VirtualListView::CreateListView(hwnd(), 300,
                                                              RECT{12, 160, 292, 300});
        list_.Attach(list, rows_, L"Sender address", L"Sender name");
        list_.Select(2);

        // The digits-only edit and the extended statics.
        Caption(L"Digits-only edit", 12, 312);
        Child(L"EDIT", L"180", WS_BORDER | ES_AUTOHSCROLL, 400, 12, 330, 60, 20);
        digits_.Attach(::GetDlgItem(hwnd(), 400));
        Caption(L"Extended statics: heading, colour, link", 12, 362);
        Child(L"STATIC", L"Anti-Spam Statistics", SS_LEFT, 500, 12, 380, 280, 20);
        heading_.Attach(::GetDlgItem(hwnd(), 500));
        heading_.SetFont(L"Tahoma", 11, FW_BOLD);
        Child(L"STATIC", L"Protection is up to date.", SS_LEFT, 501, 12, 402, 280, 16);
        coloured_.Attach(::GetDlgItem(hwnd(), 501));
        coloured_.SetTextColor(RGB(0, 128, 0));
        coloured_.SetTransparent();
        Child(L"STATIC", L"https://www.example.com/privacy", SS_LEFT | SS_NOTIFY | WS_TABSTOP,
              502, 12, 422, 280, 16);
        link_.Attach(::GetDlgItem(hwnd(), 502));
        link_.SetLink(std::wstring(), [](HWND, const std::wstring&) { return true; });
        link_.SetTransparent();

        // The pie chart, strict and with its legend.
        Caption(L"Pie chart with title and legend", 300, 140);
        chart_.SetTitle(L"Mail received");
        chart_.AddSlice(60, RGB(0x99, 0x99, 0xFF), L"Normal mail");
        chart_.AddSlice(30, RGB(0x99, 0x33, 0x66), L"Detected spam");
        chart_.AddSlice(10, RGB(0xFF, 0xFF, 0xCC), L"Reported spam");
        chart_.SetFont(reinterpret_cast<HFONT>(::SendMessageW(hwnd(), WM_GETFONT, 0, 0)));
        ::ShowWindow(hwnd(), SW_SHOW);
    }

    void Paint() {
        win32::BufferedPaint paint(hwnd());
        ::FillRect(paint.dc(), &paint.client(), static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
        const POINT centre{370, 260};
        chart_.Draw(paint.dc(), centre, 50,
                    controls::CPieChart::kShowTitle | controls::CPieChart::kLegendRight |
                        controls::CPieChart::kStrict);
    }

    HINSTANCE resources_;
    win32::unique_hbitmap thumbs_;
    std::array<controls::BitmapSlider, 4> sliders_;
    controls::TabStrip tab_strip_;
    SampleRows rows_;
    controls::VirtualListView list_;
    controls::DigitEdit digits_;
    controls::ExtStatic heading_, coloured_, link_;
    controls::CPieChart chart_;
};

void GalleryDeleter::operator()(ControlGallery* gallery) const {
    delete gallery;
}

GalleryPtr ShowControlGallery(HINSTANCE resources) {
    static const std::vector<WORD> kTemplate = EmptyTemplate();
    GalleryPtr gallery(new ControlGallery(resources));
    if (gallery->CreateModelessIndirect(reinterpret_cast<const DLGTEMPLATE*>(kTemplate.data()),
                                        nullptr) == nullptr) {
        return nullptr;
    }
    return gallery;
}

HWND GalleryWindow(const ControlGallery& gallery) {
    return gallery.hwnd();
}

}  // namespace velk::tools
