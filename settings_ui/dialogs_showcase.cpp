#include "settings_ui/dialogs_showcase.h"

#include <shlobj.h>

#include <cstdio>
#include <ctime>

#include "common_src/win32/property_sheet.h"
#include "settings_ui/advanced_page.h"
#include "settings_ui/password_codec.h"

namespace velk::settings_ui::showcase {
namespace {

constexpr UINT kPainted = WM_APP + 9;

class ShowcaseSheet : public win32::PropertySheet {
public:
    explicit ShowcaseSheet(std::function<void(HWND)> shown) : shown_(std::move(shown)) {}

protected:
    void OnInitialized() override { ::PostMessageW(hwnd(), kPainted, 0, 0); }
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        if (msg != kPainted)
            return false;
        ::RedrawWindow(hwnd(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        if (shown_)
            shown_(hwnd());
        ::PostMessageW(hwnd(), PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
        result = 0;
        return true;
    }

private:
    std::function<void(HWND)> shown_;
};

void Put(const std::wstring& file, const wchar_t* section, const wchar_t* key, const std::wstring& value) {
    ::WritePrivateProfileStringW(section, key, value.c_str(), file.c_str());
}

}  // namespace

bool World::Open(const std::wstring& language_module, const std::wstring& resource_root) {
    module_ = ::LoadLibraryExW(language_module.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    QzLanguageEnvironment environment;
    environment.resourceRoot = resource_root;
    environment.systemDefaultLcid = [] { return static_cast<LCID>(0x0409); };
    strings_ = std::make_unique<QzResourceStringLoader>(environment);
    if (module_ == nullptr || !strings_->Initialize(L"VELK_OE_AGENT")) {
        std::fprintf(stderr, "cannot load the language module or the string table\n");
        return false;
    }
    wchar_t temp[MAX_PATH] = L"";
    ::GetTempPathW(MAX_PATH, temp);
    const std::wstring root = std::wstring(temp) + L"velk_dialogs_showcase\\";
    ::SHCreateDirectoryExW(nullptr, (root + L"bin").c_str(), nullptr);
    ::SHCreateDirectoryExW(nullptr, (root + L"data\\Users\\{showcase}").c_str(), nullptr);
    ui_.where = settings::SettingsLocations(root + L"bin\\", root + L"data\\");
    ui_.where.SetUser(L"{showcase}");
    ui_.strings = strings_.get();
    ui_.resources = module_;
    ::DeleteFileW(ui_.where.user_ini.c_str());

    const std::wstring& user = ui_.where.user_ini;
    Put(user, L"General", L"PurgeDays", L"30");
    Put(user, L"General", L"AutoMoved", L"1");
    Put(user, L"General", L"NotifyIcon", L"1");
    Put(user, L"Antispam", L"VELKOEVer", L"3.5.0.1204");
    Put(user, L"Antispam", L"EngineVer", L"8.2.1017");
    Put(user, L"Antispam", L"PatchVer", L"2024117");
    Put(user, L"RuleFile-Update", L"LastUpdateTime", std::to_wstring(std::time(nullptr) - 3 * 3600));
    Put(user, L"RuleFile-Update", L"UpToDate", L"1");
    Put(user, L"RuleFile-Update", L"EnableProxy", L"yes");
    Put(user, L"RuleFile-Update", L"HTTPProxy", L"proxy.example.com");
    Put(user, L"RuleFile-Update", L"HTTPPort", L"8080");
    Put(user, L"RuleFile-Update", L"ProxyUserName", L"jsmith");
    std::wstring password;
    EncodePassword(L"correct horse", password);
    Put(user, L"RuleFile-Update", L"ProxyPassword", password);
    Put(user, L"Statistics", L"EnableCRX", L"1");
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, user.c_str());
    return true;
}

World::~World() {
    strings_.reset();
    if (module_ != nullptr)
        ::FreeLibrary(module_);
}

void RunAdvancedPageSheet(const win32::UiContext& ui, const std::wstring& caption,
                          const std::function<void(HWND sheet)>& shown) {
    CAdvancedPage page(ui);
    ShowcaseSheet sheet(shown);
    sheet.AddPage(page);
    sheet.DoModal(nullptr, caption, PSH_NOAPPLYNOW);
}

}  // namespace velk::settings_ui::showcase
