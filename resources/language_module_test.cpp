// The language modules as the add-in uses them: loaded from the staged tree,
// their menus cut on the first pop-up, the band's dialog created, the
// bitmaps loaded the way the band loads them; every translation against the
// English module.
#include "resources/resource_ids.h"
#include "resources/resources_test_util.h"

#include "common_src/win32/handles.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velk::res {
namespace {

using win32::unique_hbitmap;
using win32::unique_hmodule;

unique_hmodule LoadModule(DWORD flags, const std::wstring& language = L"en-US") {
    const std::wstring path = test::DistPath(L"Resource\\" + language + L"\\VELK_OEA.dll.mui");
    return unique_hmodule(::LoadLibraryExW(path.c_str(), nullptr, flags));
}

// Mapped plainly (the band's bitmaps are loaded from the mapped module) no
// code of it runs and it imports nothing.
TEST(LanguageModule, LoadsWithoutRunningOrImportingCode) {
    for (const std::wstring& language : test::Languages()) {
        unique_hmodule mapped = LoadModule(0, language);
        ASSERT_TRUE(mapped) << ::GetLastError();
        const auto* base = reinterpret_cast<const BYTE*>(mapped.get());
        const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
            base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
        EXPECT_EQ(0u, nt->OptionalHeader.AddressOfEntryPoint);
        // The linker may leave an import directory holding just its terminator.
        const IMAGE_DATA_DIRECTORY& imports =
            nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        EXPECT_TRUE(
            imports.Size < sizeof(IMAGE_IMPORT_DESCRIPTOR) ||
            reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress)->Name ==
                0);
    }
}

// The upper-cased access key of a text ("&Help": H), 0 without one.
wchar_t AccessKey(const std::wstring& text) {
    const size_t amp = text.find(L'&');
    return amp < text.size() - 1 ? static_cast<wchar_t>(std::towupper(text[amp + 1])) : 0;
}

// ---------------------------------------------------------------- logo menu

constexpr UINT kSep = 0;

// The item ids (kSep for a separator); every command has an access key of
// its own.
std::vector<UINT> Layout(HMENU menu) {
    std::vector<UINT> layout;
    std::set<wchar_t> keys;
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
        MENUITEMINFOW info{};
        wchar_t text[128] = {};
        info.cbSize = sizeof info;
        info.fMask = MIIM_FTYPE | MIIM_ID | MIIM_SUBMENU | MIIM_STRING;
        info.dwTypeData = text;
        info.cch = 128;
        EXPECT_TRUE(::GetMenuItemInfoW(menu, i, TRUE, &info));
        EXPECT_EQ(nullptr, info.hSubMenu) << "no nested pop-ups expected at " << i;
        layout.push_back((info.fType & MFT_SEPARATOR) ? kSep : info.wID);
        const wchar_t key = AccessKey(text);
        EXPECT_TRUE(layout.back() == kSep || (key != 0 && keys.insert(key).second)) << text;
    }
    return layout;
}

// No separator at either end and never two in a row.
void ExpectReadsCleanly(const std::vector<UINT>& layout) {
    ASSERT_FALSE(layout.empty());
    EXPECT_NE(kSep, layout.front());
    EXPECT_NE(kSep, layout.back());
    for (size_t i = 1; i < layout.size(); ++i)
        EXPECT_FALSE(layout[i] == kSep && layout[i - 1] == kSep) << "two separators at " << i;
}

// One sub-menu per state of the band's buttons, with the switch for that
// state, in every language the English layout. Before the first pop-up,
// after it, and with the cloud-feedback item deleted first (the band does
// that at start when the installation hides it), the band's fixed positions
// take out exactly the updates entries and the menu still reads cleanly.
TEST(LogoMenu, FirstPopupRemovesTheUpdatesEntriesAndEveryVariantReadsCleanly) {
    std::vector<UINT> english[2];
    for (const std::wstring& language : test::Languages()) {
        unique_hmodule module = LoadModule(LOAD_LIBRARY_AS_DATAFILE, language);
        win32::unique_hmenu menu(::LoadMenuW(module.get(), MAKEINTRESOURCEW(IDR_LOGO_MENU)));
        ASSERT_TRUE(menu) << language;
        for (const auto& [index, toolbar_switch] :
             {std::pair{LOGO_SUBMENU_BUTTONS_ENABLED, ID_MENU_DISABLE_TOOLBAR},
              std::pair{LOGO_SUBMENU_BUTTONS_DISABLED, ID_MENU_ENABLE_TOOLBAR}}) {
            SCOPED_TRACE(language + L" " + std::to_wstring(index));
            const std::vector<UINT> layout = Layout(::GetSubMenu(menu.get(), index));
            english[index] = english[index].empty() ? layout : english[index];
            EXPECT_EQ(english[index], layout);
            const UINT other = toolbar_switch ^ ID_MENU_ENABLE_TOOLBAR ^ ID_MENU_DISABLE_TOOLBAR;
            EXPECT_EQ(1, std::count(layout.begin(), layout.end(), toolbar_switch));
            EXPECT_EQ(0, std::count(layout.begin(), layout.end(), other));
            for (bool without_cloud_feedback : {false, true}) {
                std::vector<UINT> items = layout;
                if (without_cloud_feedback)
                    items.erase(std::find(items.begin(), items.end(), ID_MENU_CLOUD_FEEDBACK));
                ExpectReadsCleanly(items);  // what the overflow menu shows
                std::vector<UINT> removed;
                for (int position : kLogoMenuPositionsRemovedOnFirstPopup) {
                    removed.push_back(items.at(position));
                    items.erase(items.begin() + position);
                }
                EXPECT_EQ((std::vector<UINT>{kSep, kSep, ID_MENU_UPDATES}), removed);
                ExpectReadsCleanly(items);
            }
        }
    }
}

// ---------------------------------------------------------------- dialogs

std::set<int> Names(HMODULE module, LPCWSTR type) {
    std::set<int> names;
    ::EnumResourceNamesW(
        module, type,
        [](HMODULE, LPCWSTR, LPWSTR name, LONG_PTR out) {
            reinterpret_cast<std::set<int>*>(out)->insert(LOWORD(name));
            return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&names));
    return names;
}

// A dialog's controls from its DLGTEMPLATEEX (what the resource compiler
// writes for DIALOGEX): id and the access key of its text, in order.
std::vector<std::pair<DWORD, wchar_t>> Controls(HMODULE module, int id) {
    std::vector<std::pair<DWORD, wchar_t>> controls;
    HRSRC found = ::FindResourceW(module, MAKEINTRESOURCEW(id), RT_DIALOG);
    const auto* p = static_cast<const WORD*>(::LockResource(::LoadResource(module, found)));
    if (p == nullptr || p[1] != 0xFFFF)
        return controls;
    const bool font = *reinterpret_cast<const DWORD*>(p + 6) & DS_SETFONT;
    const WORD count = p[8];
    auto skip = [](const WORD* q) {  // past a string or 0xFFFF and an ordinal
        return *q == 0xFFFF ? q + 2 : q + wcslen(reinterpret_cast<const wchar_t*>(q)) + 1;
    };
    p = skip(skip(skip(p + 13)));  // menu, class, title
    if (font)
        p = skip(p + 3);
    for (WORD i = 0; i < count; ++i) {
        p = reinterpret_cast<const WORD*>((reinterpret_cast<UINT_PTR>(p) + 3) & ~UINT_PTR{3});
        const WORD* title = skip(p + 12);
        controls.emplace_back(
            *reinterpret_cast<const DWORD*>(p + 10),
            *title == 0xFFFF ? 0 : AccessKey(reinterpret_cast<const wchar_t*>(title)));
        p = skip(title);
        p = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(p + 1) + *p);
    }
    return controls;
}

// A translation has the English dialogs, menus and bitmaps under the same
// ids and in each dialog the same controls (the code finds them by id); no
// dialog of any language has an access key twice.
TEST(Translations, HaveTheEnglishResourcesAndControlsAndTheirOwnAccessKeys) {
    unique_hmodule english = LoadModule(LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_TRUE(english);
    EXPECT_GE(Names(english.get(), RT_DIALOG).size(), 15u);
    for (const std::wstring& language : test::Languages()) {
        SCOPED_TRACE(language);
        unique_hmodule module = LoadModule(LOAD_LIBRARY_AS_DATAFILE, language);
        for (LPCWSTR type : {RT_DIALOG, RT_MENU, RT_BITMAP})
            EXPECT_EQ(Names(english.get(), type), Names(module.get(), type));
        for (int dialog : Names(english.get(), RT_DIALOG)) {
            std::multiset<DWORD> ids, english_ids;
            std::set<wchar_t> keys;
            for (const auto& [id, key] : Controls(module.get(), dialog)) {
                ids.insert(id);
                EXPECT_TRUE(key == 0 || keys.insert(key).second) << dialog << ": &" << char(key);
            }
            for (const auto& control : Controls(english.get(), dialog))
                english_ids.insert(control.first);
            EXPECT_EQ(english_ids, ids) << dialog;
        }
    }
}

// ---------------------------------------------------------------- bitmaps

constexpr COLORREF kKey = RGB(255, 0, 255);

struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<COLORREF> rgb;  // top-down rows
};

Pixels Read(HBITMAP bitmap) {
    Pixels p;
    BITMAP info{};
    if (bitmap == nullptr || !::GetObjectW(bitmap, sizeof info, &info))
        return p;
    HDC dc = ::CreateCompatibleDC(nullptr);
    HGDIOBJ old = ::SelectObject(dc, bitmap);
    for (int y = 0; y < info.bmHeight; ++y) {
        for (int x = 0; x < info.bmWidth; ++x)
            p.rgb.push_back(::GetPixel(dc, x, y));
    }
    p.width = info.bmWidth;
    p.height = info.bmHeight;
    ::SelectObject(dc, old);
    ::DeleteDC(dc);
    return p;
}

class Bitmaps : public ::testing::Test {
protected:
    Pixels Load(int id) const {
        return Read(unique_hbitmap(
                        static_cast<HBITMAP>(::LoadImageW(module_.get(), MAKEINTRESOURCEW(id),
                                                          IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)))
                        .get());
    }
    unique_hmodule module_ = LoadModule(0);
};

// Icons fill the 16 px icon cell; the logo is 16-20 px high and wider than
// high; the arrows fit the 9 px a drop-down button reserves. Magenta is the
// transparent key: every corner is key, and the band's mapped loading
// changes no colour. A
// disabled icon is a grey copy of its icon, which is in colour.
TEST_F(Bitmaps, FitTheirCellsWithACleanMagentaKeyAndDisabledOnesAreGreyCopies) {
    const struct {
        int id, min_width, max_width, min_height, max_height, enabled;
    } cases[] = {{IDB_LOGO, 21, 120, 16, 20, 0},
                 {IDB_REPORT_FP, 16, 16, 16, 16, 0},
                 {IDB_REPORT_SPAM, 16, 16, 16, 16, 0},
                 {IDB_DROPDOWN_OE, 4, 9, 4, 16, 0},
                 {IDB_REPORT_SPAM_DISABLED, 16, 16, 16, 16, IDB_REPORT_SPAM},
                 {IDB_REPORT_FP_DISABLED, 16, 16, 16, 16, IDB_REPORT_FP},
                 {IDB_DROPDOWN_WM, 4, 9, 4, 16, 0}};
    COLORMAP keep_key = {kKey, kKey};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const Pixels p = Load(c.id);
        ASSERT_GT(p.width, 0);
        EXPECT_TRUE(p.width >= c.min_width && p.width <= c.max_width) << p.width;
        EXPECT_TRUE(p.height >= c.min_height && p.height <= c.max_height) << p.height;
        for (int corner : {0, p.width - 1, (p.height - 1) * p.width, p.height * p.width - 1})
            EXPECT_EQ(kKey, p.rgb[corner]);
        EXPECT_GE(p.rgb.size() - std::count(p.rgb.begin(), p.rgb.end(), kKey), 7u);
        unique_hbitmap mapped(::CreateMappedBitmap(module_.get(), c.id, 0, &keep_key, 1));
        EXPECT_EQ(p.rgb, Read(mapped.get()).rgb);
        if (c.enabled == 0)
            continue;
        const Pixels enabled = Load(c.enabled);
        auto grey = [](COLORREF x) {
            return GetRValue(x) == GetGValue(x) && GetGValue(x) == GetBValue(x);
        };
        ASSERT_EQ(enabled.rgb.size(), p.rgb.size());
        int coloured = 0;
        for (size_t i = 0; i < p.rgb.size(); ++i) {
            const COLORREF e = enabled.rgb[i], d = p.rgb[i];
            EXPECT_EQ(e == kKey, d == kKey) << "shape differs at " << i;
            EXPECT_TRUE(d == kKey || grey(d)) << i;
            coloured += e != kKey && !grey(e);
        }
        EXPECT_GT(coloured, 10);
    }
    // The two report icons must be told apart at a glance.
    EXPECT_NE(Load(IDB_REPORT_SPAM).rgb, Load(IDB_REPORT_FP).rgb);
}

}  // namespace
}  // namespace velk::res
