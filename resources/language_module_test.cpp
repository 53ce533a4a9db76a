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
#include <map>
#include <set>
#include <string>
#include <vector>

namespace velk::res {
namespace {

using win32::unique_hbitmap;
using win32::unique_hmodule;

unique_hmodule LoadModule(DWORD flags, const std::wstring& language = L"en-US") {
    const std::wstring path = test::DistPath(L"Resource\\" + language + L"\\VELK_OEA.dll.mui");
    return unique_hmodule(::LoadLibraryExW(path.c_str(), nullptr, flags));
}

TEST(LanguageModule, LoadsAsDataAsImageAndPlainlyWithoutRunningOrImportingCode) {
    EXPECT_TRUE(LoadModule(LOAD_LIBRARY_AS_DATAFILE)) << ::GetLastError();
    EXPECT_TRUE(LoadModule(0x20 /* LOAD_LIBRARY_AS_IMAGE_RESOURCE */)) << ::GetLastError();
    unique_hmodule mapped = LoadModule(0);
    ASSERT_TRUE(mapped) << ::GetLastError();
    const auto* base = reinterpret_cast<const BYTE*>(mapped.get());
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    EXPECT_EQ(IMAGE_FILE_MACHINE_AMD64, nt->FileHeader.Machine);
    EXPECT_EQ(0u, nt->OptionalHeader.AddressOfEntryPoint);
    // The linker may leave an import directory holding just its terminator.
    const IMAGE_DATA_DIRECTORY& imports =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.Size >= sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
        EXPECT_EQ(
            0u,
            reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress)->Name);
    }
}

// ---------------------------------------------------------------- logo menu

constexpr UINT kSep = 0;

std::vector<UINT> Layout(HMENU menu) {
    std::vector<UINT> layout;
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
        MENUITEMINFOW info{};
        info.cbSize = sizeof info;
        info.fMask = MIIM_FTYPE | MIIM_ID | MIIM_SUBMENU;
        EXPECT_TRUE(::GetMenuItemInfoW(menu, i, TRUE, &info));
        EXPECT_EQ(nullptr, info.hSubMenu) << "no nested pop-ups expected at " << i;
        layout.push_back((info.fType & MFT_SEPARATOR) ? kSep : info.wID);
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

// Every command has a text with an access key of its own.
void ExpectOwnAccessKeys(HMENU sub) {
    std::set<wchar_t> keys;
    for (int i = 0; i < ::GetMenuItemCount(sub); ++i) {
        wchar_t text[128] = {};
        if (::GetMenuItemID(sub, i) == kSep)
            continue;
        ::GetMenuStringW(sub, i, text, 128, MF_BYPOSITION);
        const std::wstring item(text);
        const size_t amp = item.find(L'&');
        EXPECT_TRUE(amp != std::wstring::npos && amp + 1 < item.size() &&
                    item.find(L'&', amp + 1) == std::wstring::npos &&
                    keys.insert(static_cast<wchar_t>(std::towupper(item[amp + 1]))).second)
            << "no access key of its own: " << i;
    }
}

// One sub-menu per state of the band's buttons, with the switch for that
// state. Before the first pop-up, after it, and with the cloud-feedback item
// deleted first (the band does that at start when the installation hides
// it), the band's fixed positions take out exactly the updates entries and
// the menu still reads cleanly.
// Every language has the English layout.
TEST(LogoMenu, FirstPopupRemovesTheUpdatesEntriesAndEveryVariantReadsCleanly) {
    const std::pair<int, UINT> sub_menus[] = {
        {LOGO_SUBMENU_BUTTONS_ENABLED, ID_MENU_DISABLE_TOOLBAR},
        {LOGO_SUBMENU_BUTTONS_DISABLED, ID_MENU_ENABLE_TOOLBAR}};
    std::vector<UINT> english[2];
    for (const std::wstring& language : test::Languages()) {
    SCOPED_TRACE(language);
    unique_hmodule module = LoadModule(LOAD_LIBRARY_AS_DATAFILE, language);
    ASSERT_TRUE(module);
    for (bool without_cloud_feedback : {false, true}) {
        win32::unique_hmenu menu(::LoadMenuW(module.get(), MAKEINTRESOURCEW(IDR_LOGO_MENU)));
        ASSERT_TRUE(menu);
        for (const auto& [index, toolbar_switch] : sub_menus) {
            SCOPED_TRACE(index);
            HMENU sub = ::GetSubMenu(menu.get(), index);
            ASSERT_NE(nullptr, sub);
            const UINT other = toolbar_switch == ID_MENU_ENABLE_TOOLBAR ? ID_MENU_DISABLE_TOOLBAR
                                                                        : ID_MENU_ENABLE_TOOLBAR;
            std::vector<UINT> before = Layout(sub);
            if (english[index].empty())
                english[index] = before;
            EXPECT_EQ(english[index], before);
            ExpectOwnAccessKeys(sub);
            EXPECT_EQ(1, std::count(before.begin(), before.end(), toolbar_switch));
            EXPECT_EQ(0, std::count(before.begin(), before.end(), other));
            ExpectReadsCleanly(before);
            if (without_cloud_feedback) {
                ASSERT_TRUE(::DeleteMenu(sub, ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND));
                ExpectReadsCleanly(before = Layout(sub));  // what the overflow menu shows
            }
            std::vector<UINT> removed;
            for (int position : kLogoMenuPositionsRemovedOnFirstPopup) {
                removed.push_back(Layout(sub).at(position));
                EXPECT_TRUE(::DeleteMenu(sub, position, MF_BYPOSITION));
            }
            EXPECT_EQ((std::vector<UINT>{kSep, kSep, ID_MENU_UPDATES}), removed);
            const std::vector<UINT> after = Layout(sub);
            EXPECT_EQ(before.size() - 3, after.size());
            ExpectReadsCleanly(after);
        }
    }
    }
}

// ---------------------------------------------------------------- translations

std::set<int> Names(HMODULE module, LPCWSTR type) {
    std::set<int> names;
    ::EnumResourceNamesW(
        module, type,
        [](HMODULE, LPCWSTR, LPWSTR name, LONG_PTR out) {
            reinterpret_cast<std::set<int>*>(out)->insert(static_cast<int>(LOWORD(name)));
            return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&names));
    return names;
}

// A DLGTEMPLATEEX (what the resource compiler writes for DIALOGEX) read as
// its controls' ids, each with the access key of its text, if any.
std::multimap<DWORD, wchar_t> Controls(HMODULE module, int id) {
    std::multimap<DWORD, wchar_t> controls;
    HRSRC found = ::FindResourceW(module, MAKEINTRESOURCEW(id), RT_DIALOG);
    const auto* p = static_cast<const WORD*>(::LockResource(::LoadResource(module, found)));
    if (p == nullptr || p[1] != 0xFFFF)
        return controls;
    const DWORD style = *reinterpret_cast<const DWORD*>(p + 6);
    const WORD count = p[8];
    auto skip = [](const WORD* q) { return *q == 0xFFFF ? q + 2 : q + wcslen(reinterpret_cast<const wchar_t*>(q)) + 1; };
    p = skip(skip(skip(p + 13)));  // menu, class, title
    if (style & DS_SETFONT)
        p = skip(p + 3);
    for (WORD i = 0; i < count; ++i) {
        p = reinterpret_cast<const WORD*>((reinterpret_cast<UINT_PTR>(p) + 3) & ~UINT_PTR{3});
        const DWORD control = *reinterpret_cast<const DWORD*>(p + 10);
        const WORD* title = skip(p + 12);
        const std::wstring text = *title == 0xFFFF ? L"" : reinterpret_cast<const wchar_t*>(title);
        const size_t amp = text.find(L'&');
        controls.emplace(control, amp < text.size() - 1 ? std::towupper(text[amp + 1]) : 0);
        p = skip(title);
        p = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(p + 1) + *p);
    }
    return controls;
}

// A translation has the English dialogs, menus and bitmaps under the same
// ids, the same controls in each dialog (the code finds them by id) and
// within a dialog no access key twice.
TEST(Translations, HaveTheEnglishResourcesControlsAndOwnAccessKeys) {
    unique_hmodule english = LoadModule(LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_TRUE(english);
    EXPECT_GE(Names(english.get(), RT_DIALOG).size(), 15u);
    for (const std::wstring& language : test::Languages()) {
        SCOPED_TRACE(language);
        unique_hmodule module = LoadModule(LOAD_LIBRARY_AS_DATAFILE, language);
        ASSERT_TRUE(module);
        for (LPCWSTR type : {RT_DIALOG, RT_MENU, RT_BITMAP})
            EXPECT_EQ(Names(english.get(), type), Names(module.get(), type));
        for (int dialog : Names(english.get(), RT_DIALOG)) {
            const auto controls = Controls(module.get(), dialog);
            std::multiset<DWORD> ids, english_ids;
            std::set<wchar_t> keys;
            for (const auto& [id, key] : controls) {
                ids.insert(id);
                EXPECT_TRUE(key == 0 || keys.insert(key).second) << dialog << ": &" << char(key);
            }
            for (const auto& control : Controls(english.get(), dialog))
                english_ids.insert(control.first);
            EXPECT_EQ(english_ids, ids) << dialog;
        }
    }
}

// ---------------------------------------------------------------- band dialog

INT_PTR CALLBACK QuietDialogProc(HWND, UINT message, WPARAM, LPARAM) {
    return message == WM_INITDIALOG;
}

TEST(BandDialog, OpensAsABorderlessChildWithoutControlsThatTabbingPassesThrough) {
    unique_hmodule module = LoadModule(0);
    ASSERT_TRUE(module);
    win32::unique_hwnd host(::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 600, 40, nullptr,
                                              nullptr, nullptr, nullptr));
    win32::unique_hwnd band(::CreateDialogParamW(module.get(), MAKEINTRESOURCEW(IDD_TOOLBAR_BAND),
                                                 host.get(), QuietDialogProc, 0));
    ASSERT_TRUE(band) << ::GetLastError();
    const LONG_PTR style = ::GetWindowLongPtrW(band.get(), GWL_STYLE);
    const LONG_PTR ex_style = ::GetWindowLongPtrW(band.get(), GWL_EXSTYLE);
    EXPECT_TRUE(style & WS_CHILD);
    EXPECT_FALSE(style & (WS_POPUP | WS_CAPTION | WS_BORDER | WS_THICKFRAME | WS_SYSMENU));
    EXPECT_FALSE(ex_style & (WS_EX_CLIENTEDGE | WS_EX_DLGMODALFRAME | WS_EX_WINDOWEDGE));
    EXPECT_TRUE(ex_style & WS_EX_CONTROLPARENT);            // DS_CONTROL
    EXPECT_EQ(nullptr, ::GetWindow(band.get(), GW_CHILD));  // buttons come at run time
}

// ---------------------------------------------------------------- bitmaps

constexpr COLORREF kKey = RGB(255, 0, 255);

struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<COLORREF> rgb;  // top-down rows
    COLORREF at(int x, int y) const { return rgb[static_cast<size_t>(y) * width + x]; }
};

Pixels Read(HBITMAP bitmap) {
    Pixels p;
    BITMAP info{};
    if (!::GetObjectW(bitmap, sizeof info, &info))
        return p;
    BITMAPINFO bi{};
    bi.bmiHeader = {
        static_cast<DWORD>(sizeof bi.bmiHeader), info.bmWidth, -info.bmHeight, 1, 32, BI_RGB};
    std::vector<DWORD> raw(static_cast<size_t>(info.bmWidth) * info.bmHeight);
    win32::window_dc screen(nullptr);
    if (::GetDIBits(screen.get(), bitmap, 0, info.bmHeight, raw.data(), &bi, DIB_RGB_COLORS) !=
        info.bmHeight)
        return p;
    p.width = info.bmWidth;
    p.height = info.bmHeight;
    for (DWORD bgra : raw)
        p.rgb.push_back(RGB((bgra >> 16) & 0xFF, (bgra >> 8) & 0xFF, bgra & 0xFF));
    return p;
}

int Luminance(COLORREF c) {
    return (299 * GetRValue(c) + 587 * GetGValue(c) + 114 * GetBValue(c)) / 1000;
}

bool IsGrey(COLORREF c) {
    return GetRValue(c) == GetGValue(c) && GetGValue(c) == GetBValue(c);
}

class Bitmaps : public ::testing::Test {
protected:
    void SetUp() override {
        module_ = LoadModule(0);
        ASSERT_TRUE(module_);
    }
    Pixels Load(int id) const {
        unique_hbitmap bitmap(static_cast<HBITMAP>(::LoadImageW(
            module_.get(), MAKEINTRESOURCEW(id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
        EXPECT_TRUE(bitmap) << id;
        return bitmap ? Read(bitmap.get()) : Pixels{};
    }
    unique_hmodule module_;
};

// Icons fill the 16 px icon cell; the logo is 16-20 px high and wider than
// high; the arrows fit the 9 px a drop-down button reserves. Magenta is the
// transparent key: every corner is key, no edge is anti-aliased against it
// (a pink fringe), and the band's mapped loading changes no colour.
TEST_F(Bitmaps, FitTheirCellsWithACleanMagentaKeyAndSurviveTheBandsMappedLoading) {
    const struct {
        int id, min_width, max_width, min_height, max_height;
    } cases[] = {{IDB_LOGO, 21, 120, 16, 20},
                 {IDB_REPORT_FP, 16, 16, 16, 16},
                 {IDB_REPORT_SPAM, 16, 16, 16, 16},
                 {IDB_REPORT_SPAM_DISABLED, 16, 16, 16, 16},
                 {IDB_REPORT_FP_DISABLED, 16, 16, 16, 16},
                 {IDB_DROPDOWN_OE, 4, 9, 4, 16},
                 {IDB_DROPDOWN_WM, 4, 9, 4, 16}};
    COLORMAP keep_key = {kKey, kKey};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const Pixels p = Load(c.id);
        ASSERT_GT(p.width, 0);
        EXPECT_TRUE(p.width >= c.min_width && p.width <= c.max_width) << p.width;
        EXPECT_TRUE(p.height >= c.min_height && p.height <= c.max_height) << p.height;
        for (int corner : {0, p.width - 1, (p.height - 1) * p.width, p.height * p.width - 1})
            EXPECT_EQ(kKey, p.rgb[corner]);
        int drawn = 0;
        for (COLORREF px : p.rgb) {
            drawn += px != kKey;
            EXPECT_FALSE(px != kKey && GetRValue(px) >= 0xB0 && GetBValue(px) >= 0xB0 &&
                         GetGValue(px) <= 0x70)
                << std::hex << px;
        }
        EXPECT_GE(drawn, 7);
        unique_hbitmap mapped(::CreateMappedBitmap(module_.get(), c.id, 0, &keep_key, 1));
        ASSERT_TRUE(mapped);
        EXPECT_EQ(p.rgb, Read(mapped.get()).rgb);
    }
}

TEST_F(Bitmaps, DisabledIconsAreGreyCopiesOfTheirIconsAndArrowsStandOutOnTheirBands) {
    const std::pair<int, int> pairs[] = {{IDB_REPORT_SPAM, IDB_REPORT_SPAM_DISABLED},
                                         {IDB_REPORT_FP, IDB_REPORT_FP_DISABLED}};
    for (const auto& [normal_id, disabled_id] : pairs) {
        SCOPED_TRACE(normal_id);
        const Pixels normal = Load(normal_id);
        const Pixels disabled = Load(disabled_id);
        ASSERT_EQ(normal.rgb.size(), disabled.rgb.size());
        int coloured = 0;
        for (size_t i = 0; i < normal.rgb.size(); ++i) {
            ASSERT_EQ(normal.rgb[i] == kKey, disabled.rgb[i] == kKey) << "shape differs at " << i;
            EXPECT_TRUE(disabled.rgb[i] == kKey || IsGrey(disabled.rgb[i])) << i;
            coloured += normal.rgb[i] != kKey && !IsGrey(normal.rgb[i]);
        }
        EXPECT_GT(coloured, 10);  // the enabled icon is in colour
    }
    // The two report icons must be told apart at a glance.
    EXPECT_NE(Load(IDB_REPORT_SPAM).rgb, Load(IDB_REPORT_FP).rgb);

    const std::pair<int, COLORREF> arrows[] = {{IDB_DROPDOWN_OE, ::GetSysColor(COLOR_BTNFACE)},
                                               {IDB_DROPDOWN_WM, RGB(24, 61, 118)}};
    for (const auto& [id, band] : arrows) {
        for (COLORREF px : Load(id).rgb)
            EXPECT_TRUE(px == kKey || std::abs(Luminance(px) - Luminance(band)) >= 100) << id;
    }
}

// ---------------------------------------------------------------- version

std::wstring VersionString(const std::vector<BYTE>& block, const wchar_t* name) {
    void* value = nullptr;
    UINT length = 0;
    const std::wstring query = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
    if (!::VerQueryValueW(block.data(), query.c_str(), &value, &length) || !value)
        return L"<missing>";
    return static_cast<const wchar_t*>(value);
}

std::wstring Widen(const char* ascii) {
    return std::wstring(ascii, ascii + strlen(ascii));
}

// The About box shows the file version and the private build.
void ExpectProductVersion(const std::wstring& file, const wchar_t* original_name) {
    DWORD ignored = 0;
    std::vector<BYTE> block(::GetFileVersionInfoSizeW(file.c_str(), &ignored));
    ASSERT_FALSE(block.empty()) << "no version resource";
    ASSERT_TRUE(
        ::GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(::VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    unsigned a = 0, b = 0, c = 0, d = 0;
    ASSERT_EQ(4, sscanf(VELK_TEST_FILE_VERSION, "%u.%u.%u.%u", &a, &b, &c, &d));
    EXPECT_EQ(MAKELONG(b, a), fixed->dwFileVersionMS);
    EXPECT_EQ(MAKELONG(d, c), fixed->dwFileVersionLS);
    EXPECT_EQ(fixed->dwFileVersionMS, fixed->dwProductVersionMS);
    EXPECT_EQ(Widen(VELK_TEST_PRODUCT_VERSION), VersionString(block, L"ProductVersion"));
    EXPECT_EQ(Widen(VELK_TEST_FILE_VERSION), VersionString(block, L"FileVersion"));
    EXPECT_EQ(Widen(VELK_TEST_PRIVATE_BUILD), VersionString(block, L"PrivateBuild"));
    EXPECT_EQ(original_name, VersionString(block, L"OriginalFilename"));
    EXPECT_NE(L"<missing>", VersionString(block, L"CompanyName"));
}

TEST(VersionResource, LanguageModuleAndAddinCarryTheProductVersion) {
    ExpectProductVersion(test::DistPath(L"Resource\\en-US\\VELK_OEA.dll.mui"), L"VELK_OEA.dll.mui");
    // This test program links the object the add-in DLL links.
    wchar_t self[MAX_PATH] = {};
    ASSERT_GT(::GetModuleFileNameW(nullptr, self, MAX_PATH), 0u);
    ExpectProductVersion(self, L"VELK_OEA.dll");
}

}  // namespace
}  // namespace velk::res
