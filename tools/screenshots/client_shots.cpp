#include "tools/screenshots/client_shots.h"

#include <windows.h>
#include <shlobj.h>

#include <algorithm>

#include "common_src/win32/handles.h"
#include "demo/driver/child_process.h"
#include "demo/driver/remote_window.h"
#include "resources/resource_ids.h"
#include "tools/screenshots/sample_world.h"

namespace velk::screens {
namespace {

constexpr wchar_t kBrowserClass[] = L"Outlook Express Browser Class";
constexpr wchar_t kMenuClass[] = L"#32768";
constexpr UINT kBandId = 3339;
// Wine's per-program settings are keyed by the file name: this name keeps
// them off every other program of the prefix.
constexpr wchar_t kClientName[] = L"velk_screens_client.exe";
constexpr wchar_t kIdentity[] = L"{E4B09D26-71C3-4A58-8F0E-2D6A93C1B747}";
constexpr DWORD kOpenTimeoutMs = 20000;

bool SetWineString(const std::wstring& key, const wchar_t* name, const wchar_t* value) {
    win32::unique_hkey k;
    if (::RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          k.put(), nullptr) != ERROR_SUCCESS) {
        return false;
    }
    if (value == nullptr) {
        const LONG rc = ::RegDeleteValueW(k.get(), name);
        return rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND;
    }
    return ::RegSetValueExW(k.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                            static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
}

HWND FindProcessWindow(DWORD process, const wchar_t* class_name) {
    for (HWND w = ::FindWindowExW(nullptr, nullptr, class_name, nullptr); w;
         w = ::FindWindowExW(nullptr, w, class_name, nullptr)) {
        DWORD owner = 0;
        ::GetWindowThreadProcessId(w, &owner);
        if (owner == process && ::IsWindowVisible(w))
            return w;
    }
    return nullptr;
}

RECT ScreenRect(HWND window) {
    RECT r{};
    ::GetWindowRect(window, &r);
    return r;
}

void Settle(HWND window) {
    ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    ::Sleep(250);
}

void SaveArea(Album& album, const std::wstring& name, const RECT& area) {
    demo::Picture picture;
    if (!CaptureArea(area, picture))
        album.Fail(name + L": the screen could not be captured");
    else
        album.Save(name, picture);
}

class ClientRun {
public:
    ClientRun(const ClientSetup& setup, Album& album, bool outlook_express)
        : setup_(setup),
          album_(album),
          oe_(outlook_express),
          name_(outlook_express ? L"band_oe" : L"band_wmail") {}

    ~ClientRun() {
        Close();
        SetWineString(AppKey(), L"Version", nullptr);
    }

    void Go(bool with_menu) {
        if (!Start())
            return;
        // The title and the rebars down to the band's lower edge; below is
        // only the empty message list.
        Settle(browser_);
        RECT area = ScreenRect(browser_);
        area.bottom =
            ScreenRect(::FindWindowExW(browser_, nullptr, L"SizableRebar", nullptr)).bottom;
        SaveArea(album_, name_, area);
        if (with_menu)
            ShootLogoMenu();
        Close();
    }

private:
    std::wstring AppKey() const {
        return std::wstring(L"Software\\Wine\\AppDefaults\\") + kClientName;
    }

    bool Start() {
        const std::wstring exe = setup_.scratch + L"\\" + kClientName;
        if (!::CopyFileW(setup_.client_exe.c_str(), exe.c_str(), FALSE))
            return Fail(L"cannot copy the client stand-in");
        if (!SetWineString(AppKey() + L"\\X11 Driver", L"Managed", L"N") ||
            !SetWineString(AppKey(), L"Version", oe_ ? L"winxp64" : nullptr)) {
            return Fail(L"cannot write Wine's settings for the client");
        }
        const std::wstring command = demo::QuoteArgument(exe) + L" --addin " +
                                     demo::QuoteArgument(setup_.dist + L"\\bin\\VELK_OEA.dll") +
                                     L" --mode auto --identity " + kIdentity +
                                     L" --run set-browser --exit-after 120000";
        DWORD error = 0;
        if (!client_.Start(command, error))
            return Fail(L"cannot start the client stand-in, error " + std::to_wstring(error));
        HWND report_spam = nullptr;
        demo::WaitUntil(
            [&] {
                if (!client_.Running())
                    return true;
                browser_ = FindProcessWindow(client_.id(), kBrowserClass);
                band_ = nullptr;
                if (browser_ && demo::ClientHasBand(browser_, kBandId) &&
                    (report_spam = demo::FindDescendantById(browser_, ID_TB_REPORT_SPAM)) &&
                    ::IsWindowVisible(report_spam)) {
                    band_ = ::GetParent(report_spam);
                }
                return band_ != nullptr;
            },
            kOpenTimeoutMs);
        if (band_ == nullptr)
            return Fail(client_.Running() ? L"no band in the client within 20 s"
                                          : L"the client ended during its start");
        ::SetForegroundWindow(browser_);
        return true;
    }

    void ShootLogoMenu() {
        ::PostMessageW(band_, WM_COMMAND, MAKEWPARAM(ID_TB_MENU_BUTTON, BN_CLICKED), 0);
        HWND menu = demo::WaitForWindow([&] { return FindProcessWindow(client_.id(), kMenuClass); },
                                        kOpenTimeoutMs);
        if (menu == nullptr) {
            album_.Fail(L"logo_menu: the menu did not pop up");
            return;
        }
        Settle(menu);
        // The menu under its button, in the client window it belongs to.
        const RECT window = ScreenRect(browser_), popup = ScreenRect(menu);
        const RECT area{std::min(window.left, popup.left), window.top,
                        std::max(window.right, popup.right), popup.bottom + 8};
        SaveArea(album_, L"logo_menu", area);
        ::PostMessageW(menu, WM_KEYDOWN, VK_ESCAPE, 0);
        if (!demo::WaitUntil([&] { return !::IsWindowVisible(menu); }, 5000))
            album_.Fail(L"logo_menu: the menu did not close on Escape");
    }

    void Close() {
        if (browser_ && client_.Running()) {
            ::PostMessageW(browser_, WM_CLOSE, 0, 0);
            DWORD code = 0;
            if (!client_.Wait(15000, code))
                album_.Fail(name_ + L": the client did not close within 15 s");
        }
        browser_ = nullptr;
        client_.Kill();
    }

    bool Fail(const std::wstring& why) {
        album_.Fail(name_ + L": " + why);
        return false;
    }

    const ClientSetup& setup_;
    Album& album_;
    bool oe_;
    std::wstring name_;
    demo::ChildProcess client_;
    HWND browser_ = nullptr;
    HWND band_ = nullptr;
};

}  // namespace

void ShootClientWindows(const ClientSetup& setup, Album& album) {
    // The client's user folder, as a first start of a new identity leaves
    // it; gone again afterwards.
    wchar_t common[MAX_PATH] = L"";
    ::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, common);
    const std::wstring user = std::wstring(common) + L"\\Nuvexa\\OE\\Users\\" + kIdentity;
    DeleteTree(user);
    ::SHCreateDirectoryExW(nullptr, user.c_str(), nullptr);
    ClientRun(setup, album, true).Go(false);
    ClientRun(setup, album, false).Go(true);
    DeleteTree(user);
}

}  // namespace velk::screens
