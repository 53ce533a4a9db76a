// The language module as the add-in uses it: loaded from the staged tree,
// its menu cut on the first pop-up, its dialog created as the band, its
// bitmaps loaded the way the band loads them.
#include "resources/resource_ids.h"
#include "resources/resources_test_util.h"

#include "common_src/win32/handles.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cwctype>
#include <set>
#include <string>
#include <vector>

namespace velk::res {
namespace {

using test::DistPath;
using win32::unique_hbitmap;
using win32::unique_hmenu;
using win32::unique_hmodule;

const std::wstring& ModulePath() {
    static const std::wstring path = DistPath(L"Resource\\en-US\\VELK_OEA.dll.mui");
    return path;
}

unique_hmodule LoadModule(DWORD flags = LOAD_LIBRARY_AS_DATAFILE) {
    return unique_hmodule(::LoadLibraryExW(ModulePath().c_str(), nullptr, flags));
}

// ---------------------------------------------------------------- loading

TEST(LanguageModule, LoadsAsDataAndAsImageWithoutRunningCode) {
    EXPECT_TRUE(LoadModule(LOAD_LIBRARY_AS_DATAFILE)) << ::GetLastError();
    // Vista and later load language modules as image resources.
    EXPECT_TRUE(LoadModule(0x20 /* LOAD_LIBRARY_AS_IMAGE_RESOURCE */)) << ::GetLastError();
    // A plain load must work too: with no entry point the loader runs nothing.
    unique_hmodule mapped = LoadModule(0);
    ASSERT_TRUE(mapped) << ::GetLastError();

    const auto* base = reinterpret_cast<const BYTE*>(mapped.get());
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    EXPECT_EQ(IMAGE_FILE_MACHINE_AMD64, nt->FileHeader.Machine);
    EXPECT_TRUE(nt->FileHeader.Characteristics & IMAGE_FILE_DLL);
    EXPECT_EQ(0u, nt->OptionalHeader.AddressOfEntryPoint);
    // Resources only: no DLL imported, so loading it can never pull one in.
    // (The linker may leave an import directory holding just its terminator.)
    const IMAGE_DATA_DIRECTORY& imports =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.Size >= sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
        const auto* first =
            reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
        EXPECT_EQ(0u, first->Name) << reinterpret_cast<const char*>(base + first->Name);
    }
}

// ---------------------------------------------------------------- logo menu

constexpr UINT kSep = 0;  // a separator in the layouts below

// As loaded, which is also what the overflow menu copies.
std::vector<UINT> LoadedLayout(UINT toolbar_switch) {
    return {ID_MENU_FILTERING_SETTINGS,
            ID_MENU_STATISTICS,
            kSep,
            ID_MENU_UPDATES,
            kSep,
            toolbar_switch,
            ID_MENU_HELP,
            kSep,
            ID_MENU_CLOUD_FEEDBACK,
            ID_MENU_ABOUT};
}

// After the band's first pop-up removed positions 7, 4 and 3.
std::vector<UINT> AfterFirstPopup(UINT toolbar_switch) {
    return {ID_MENU_FILTERING_SETTINGS, ID_MENU_STATISTICS, kSep, toolbar_switch, ID_MENU_HELP,
            ID_MENU_CLOUD_FEEDBACK,     ID_MENU_ABOUT};
}

std::vector<UINT> Without(std::vector<UINT> layout, UINT id) {
    std::vector<UINT> out;
    for (UINT entry : layout)
        if (entry != id)
            out.push_back(entry);
    return out;
}

std::vector<UINT> Layout(HMENU menu) {
    std::vector<UINT> layout;
    const int count = ::GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
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

// What the band does on its first pop-up, with the positions it uses.
std::vector<UINT> RemoveFirstPopupEntries(HMENU menu) {
    std::vector<UINT> removed;
    for (int position : kLogoMenuPositionsRemovedOnFirstPopup) {
        removed.push_back(Layout(menu).at(position));
        EXPECT_TRUE(::DeleteMenu(menu, position, MF_BYPOSITION));
    }
    return removed;
}

struct SubMenuCase {
    int index;
    UINT toolbar_switch;
};
const SubMenuCase kSubMenus[] = {{LOGO_SUBMENU_BUTTONS_ENABLED, ID_MENU_DISABLE_TOOLBAR},
                                 {LOGO_SUBMENU_BUTTONS_DISABLED, ID_MENU_ENABLE_TOOLBAR}};

class LogoMenu : public ::testing::Test {
protected:
    void SetUp() override {
        module_ = LoadModule();
        ASSERT_TRUE(module_);
        menu_.reset(::LoadMenuW(module_.get(), MAKEINTRESOURCEW(IDR_LOGO_MENU)));
        ASSERT_TRUE(menu_);
    }
    HMENU Sub(int index) const { return ::GetSubMenu(menu_.get(), index); }

    unique_hmodule module_;
    unique_hmenu menu_;
};

TEST_F(LogoMenu, HasOneSubMenuPerButtonStateWithItsToolbarSwitch) {
    ASSERT_EQ(2, ::GetMenuItemCount(menu_.get()));
    for (const SubMenuCase& c : kSubMenus) {
        SCOPED_TRACE(c.index);
        ASSERT_NE(nullptr, Sub(c.index));
        EXPECT_EQ(LoadedLayout(c.toolbar_switch), Layout(Sub(c.index)));
        ExpectReadsCleanly(Layout(Sub(c.index)));
    }
}

TEST_F(LogoMenu, FirstPopupRemovesTheUpdatesEntriesAndNothingElse) {
    for (const SubMenuCase& c : kSubMenus) {
        SCOPED_TRACE(c.index);
        HMENU sub = Sub(c.index);
        ASSERT_NE(static_cast<UINT>(-1), ::GetMenuState(sub, ID_MENU_UPDATES, MF_BYCOMMAND));
        EXPECT_EQ((std::vector<UINT>{kSep, kSep, ID_MENU_UPDATES}), RemoveFirstPopupEntries(sub));
        EXPECT_EQ(AfterFirstPopup(c.toolbar_switch), Layout(sub));
        ExpectReadsCleanly(Layout(sub));
        // The band cuts only while the updates command is present, so the
        // cut happens once.
        EXPECT_EQ(static_cast<UINT>(-1), ::GetMenuState(sub, ID_MENU_UPDATES, MF_BYCOMMAND));
    }
}

TEST_F(LogoMenu, HiddenCloudFeedbackDoesNotShiftTheRemovedPositions) {
    // The band deletes the cloud-feedback item when the band starts, before
    // any pop-up, whenever the installation hides it.
    for (const SubMenuCase& c : kSubMenus) {
        SCOPED_TRACE(c.index);
        HMENU sub = Sub(c.index);
        ASSERT_TRUE(::DeleteMenu(sub, ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND));
        ExpectReadsCleanly(Layout(sub));  // what the overflow menu shows then
        EXPECT_EQ((std::vector<UINT>{kSep, kSep, ID_MENU_UPDATES}), RemoveFirstPopupEntries(sub));
        EXPECT_EQ(Without(AfterFirstPopup(c.toolbar_switch), ID_MENU_CLOUD_FEEDBACK), Layout(sub));
        ExpectReadsCleanly(Layout(sub));
    }
}

TEST_F(LogoMenu, EveryCommandHasATextWithItsOwnAccessKey) {
    for (const SubMenuCase& c : kSubMenus) {
        SCOPED_TRACE(c.index);
        HMENU sub = Sub(c.index);
        std::set<wchar_t> keys;
        for (int i = 0; i < ::GetMenuItemCount(sub); ++i) {
            if (::GetMenuItemID(sub, i) == kSep)
                continue;
            wchar_t text[128] = {};
            ASSERT_GT(::GetMenuStringW(sub, i, text, 128, MF_BYPOSITION), 0) << i;
            const std::wstring item(text);
            const size_t amp = item.find(L'&');
            ASSERT_NE(std::wstring::npos, amp) << i;
            ASSERT_LT(amp + 1, item.size());
            EXPECT_EQ(std::wstring::npos, item.find(L'&', amp + 1)) << i;
            EXPECT_TRUE(keys.insert(static_cast<wchar_t>(std::towupper(item[amp + 1]))).second)
                << "access key used twice: " << i;
        }
    }
}

// ---------------------------------------------------------------- band dialog

INT_PTR CALLBACK QuietDialogProc(HWND, UINT message, WPARAM, LPARAM) {
    return message == WM_INITDIALOG;
}

TEST(BandDialog, OpensAsABorderlessChildWithoutControls) {
    unique_hmodule module = LoadModule(0);
    ASSERT_TRUE(module);
    win32::unique_hwnd host(::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 600, 40, nullptr,
                                              nullptr, nullptr, nullptr));
    ASSERT_TRUE(host);
    win32::unique_hwnd band(::CreateDialogParamW(module.get(), MAKEINTRESOURCEW(IDD_TOOLBAR_BAND),
                                                 host.get(), QuietDialogProc, 0));
    ASSERT_TRUE(band) << ::GetLastError();
    EXPECT_EQ(host.get(), ::GetParent(band.get()));
    const LONG_PTR style = ::GetWindowLongPtrW(band.get(), GWL_STYLE);
    EXPECT_TRUE(style & WS_CHILD);
    EXPECT_FALSE(style & (WS_POPUP | WS_CAPTION | WS_BORDER | WS_THICKFRAME | WS_SYSMENU));
    EXPECT_FALSE(::GetWindowLongPtrW(band.get(), GWL_EXSTYLE) &
                 (WS_EX_CLIENTEDGE | WS_EX_DLGMODALFRAME | WS_EX_WINDOWEDGE));
    // DS_CONTROL: tabbing and mnemonics pass through into the client window.
    EXPECT_TRUE(::GetWindowLongPtrW(band.get(), GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
    EXPECT_EQ(nullptr, ::GetWindow(band.get(), GW_CHILD));  // buttons come at run time
    RECT client{};
    ASSERT_TRUE(::GetClientRect(band.get(), &client));
    EXPECT_GT(client.right, 0);
    EXPECT_GT(client.bottom, 0);
}

// ---------------------------------------------------------------- bitmaps

constexpr COLORREF kKey = RGB(255, 0, 255);
constexpr COLORREF kWindowsMailBand = RGB(24, 61, 118);

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
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = info.bmWidth;
    bi.bmiHeader.biHeight = -info.bmHeight;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
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

struct BitmapCase {
    int id;
    int min_width, max_width, min_height, max_height;
};
// Icons fill the 16 px icon cell; the logo is about 16-20 px high and wider
// than high; the arrows fit the 9 px a drop-down button reserves for them.
const BitmapCase kBitmaps[] = {
    {IDB_LOGO, 21, 120, 16, 20},
    {IDB_REPORT_FP, 16, 16, 16, 16},
    {IDB_REPORT_SPAM, 16, 16, 16, 16},
    {IDB_DROPDOWN_OE, 4, 9, 4, 16},
    {IDB_REPORT_SPAM_DISABLED, 16, 16, 16, 16},
    {IDB_REPORT_FP_DISABLED, 16, 16, 16, 16},
    {IDB_DROPDOWN_WM, 4, 9, 4, 16},
};

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

TEST_F(Bitmaps, HaveTheirSizesAndACleanMagentaKey) {
    for (const BitmapCase& c : kBitmaps) {
        SCOPED_TRACE(c.id);
        unique_hbitmap bitmap(static_cast<HBITMAP>(::LoadImageW(
            module_.get(), MAKEINTRESOURCEW(c.id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
        ASSERT_TRUE(bitmap);
        DIBSECTION dib{};
        ASSERT_EQ(static_cast<int>(sizeof dib), ::GetObjectW(bitmap.get(), sizeof dib, &dib));
        EXPECT_EQ(24, dib.dsBm.bmBitsPixel);  // true colour: no palette to remap
        const Pixels p = Read(bitmap.get());
        ASSERT_GT(p.width, 0);
        EXPECT_GE(p.width, c.min_width);
        EXPECT_LE(p.width, c.max_width);
        EXPECT_GE(p.height, c.min_height);
        EXPECT_LE(p.height, c.max_height);
        EXPECT_EQ(kKey, p.at(0, 0));
        EXPECT_EQ(kKey, p.at(p.width - 1, 0));
        EXPECT_EQ(kKey, p.at(0, p.height - 1));
        EXPECT_EQ(kKey, p.at(p.width - 1, p.height - 1));
        int drawn = 0;
        for (COLORREF px : p.rgb) {
            if (px == kKey)
                continue;
            ++drawn;
            // An edge anti-aliased against magenta shows as a pink fringe.
            EXPECT_FALSE(GetRValue(px) >= 0xB0 && GetBValue(px) >= 0xB0 && GetGValue(px) <= 0x70)
                << std::hex << px;
        }
        EXPECT_GE(drawn, 7);  // the smallest arrow has more than that
    }
}

TEST_F(Bitmaps, DisabledIconsAreGreyCopiesOfTheirIcons) {
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
            if (disabled.rgb[i] == kKey)
                continue;
            EXPECT_TRUE(IsGrey(disabled.rgb[i])) << i;
            coloured += !IsGrey(normal.rgb[i]);
        }
        EXPECT_GT(coloured, 10);  // the enabled icon is in colour
    }
    // The two report icons must be told apart at a glance.
    EXPECT_NE(Load(IDB_REPORT_SPAM).rgb, Load(IDB_REPORT_FP).rgb);
}

TEST_F(Bitmaps, ArrowsStandOutOnTheirBands) {
    const std::pair<int, COLORREF> cases[] = {{IDB_DROPDOWN_OE, ::GetSysColor(COLOR_BTNFACE)},
                                              {IDB_DROPDOWN_WM, kWindowsMailBand}};
    for (const auto& [id, band] : cases) {
        SCOPED_TRACE(id);
        for (COLORREF px : Load(id).rgb) {
            if (px != kKey) {
                EXPECT_GE(std::abs(Luminance(px) - Luminance(band)), 100) << std::hex << px;
            }
        }
    }
}

TEST_F(Bitmaps, SurviveTheBandsMappedLoadingUnchanged) {
    // The band loads its bitmaps with CreateMappedBitmap and the magenta key;
    // a remapped colour would change the drawing on some colour schemes.
    COLORMAP keep_key = {kKey, kKey};
    for (const BitmapCase& c : kBitmaps) {
        SCOPED_TRACE(c.id);
        unique_hbitmap mapped(::CreateMappedBitmap(module_.get(), c.id, 0, &keep_key, 1));
        ASSERT_TRUE(mapped);
        const Pixels m = Read(mapped.get());
        const Pixels plain = Load(c.id);
        EXPECT_EQ(plain.width, m.width);
        EXPECT_EQ(plain.height, m.height);
        EXPECT_EQ(plain.rgb, m.rgb);
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

std::vector<BYTE> VersionBlock(const std::wstring& file) {
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(file.c_str(), &ignored);
    std::vector<BYTE> block(size);
    if (!size || !::GetFileVersionInfoW(file.c_str(), 0, size, block.data()))
        block.clear();
    return block;
}

std::wstring Widen(const char* ascii) {
    return std::wstring(ascii, ascii + strlen(ascii));
}

void ExpectProductVersion(const std::wstring& file, const wchar_t* original_name) {
    const std::vector<BYTE> block = VersionBlock(file);
    ASSERT_FALSE(block.empty()) << "no version resource";

    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(::VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    unsigned a = 0, b = 0, c = 0, d = 0;
    ASSERT_EQ(4, sscanf(VELK_TEST_FILE_VERSION, "%u.%u.%u.%u", &a, &b, &c, &d));
    EXPECT_EQ(MAKELONG(b, a), fixed->dwFileVersionMS);
    EXPECT_EQ(MAKELONG(d, c), fixed->dwFileVersionLS);
    EXPECT_EQ(fixed->dwFileVersionMS, fixed->dwProductVersionMS);
    EXPECT_EQ(static_cast<DWORD>(VFT_DLL), fixed->dwFileType);

    EXPECT_EQ(Widen(VELK_TEST_PRODUCT_VERSION), VersionString(block, L"ProductVersion"));
    EXPECT_EQ(Widen(VELK_TEST_FILE_VERSION), VersionString(block, L"FileVersion"));
    // The About box shows the private build beside the file version.
    EXPECT_EQ(Widen(VELK_TEST_PRIVATE_BUILD), VersionString(block, L"PrivateBuild"));
    EXPECT_EQ(original_name, VersionString(block, L"OriginalFilename"));
    EXPECT_NE(L"<missing>", VersionString(block, L"ProductName"));
    EXPECT_NE(L"<missing>", VersionString(block, L"CompanyName"));
}

TEST(VersionResource, LanguageModuleCarriesTheProductVersion) {
    ExpectProductVersion(ModulePath(), L"VELK_OEA.dll.mui");
}

TEST(VersionResource, AddinVersionObjectCarriesTheSameVersion) {
    // This test program links the object the add-in DLL links.
    wchar_t self[MAX_PATH] = {};
    ASSERT_GT(::GetModuleFileNameW(nullptr, self, MAX_PATH), 0u);
    ExpectProductVersion(self, L"VELK_OEA.dll");
}

}  // namespace
}  // namespace velk::res
