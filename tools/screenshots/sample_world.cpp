#include "tools/screenshots/sample_world.h"

#include <shellapi.h>
#include <shlobj.h>

#include <cstdio>
#include <ctime>
#include <fstream>

#include "senders/block_encodings.h"
#include "senders/sender_list_wide.h"
#include "settings_ui/about_dlg.h"
#include "settings_ui/password_codec.h"

namespace velk::screens {
namespace {

void Put(const std::wstring& file, const wchar_t* section, const wchar_t* key,
         const std::wstring& value) {
    ::WritePrivateProfileStringW(section, key, value.c_str(), file.c_str());
}

QzLanguageEnvironment StagedLanguages(const std::wstring& dist) {
    // Everything else as on the real system: its language picks the folder.
    QzLanguageEnvironment environment;
    environment.resourceRoot = dist + L"\\Resource\\";
    return environment;
}

// Senders a home user collects: a bank, shops, family, a mailing list.
const wchar_t* const kApproved[][2] = {
    {L"anna.berger@example.org", L"Anna Berger"},
    {L"statements@bank.example", L"Example Bank"},
    {L"*@family-schmidt.example.net", L"Schmidt family"},
    {L"newsletter@outdoor-store.example", L"Outdoor Store"},
    {L"orders@books.example.com", L"Book Corner orders"},
    {L"j.meyer@office.example", L"Jonas Meyer"},
    {L"club-list@lists.example.org", L""},
};
const wchar_t* const kBlocked[][2] = {
    {L"*@cheap-pills.example", L""},
    {L"winner@prize-draw.example", L"Prize Draw Team"},
    {L"offers@deals-daily.example", L"Daily Deals"},
    {L"*@casino-bonus.example", L""},
};

}  // namespace

void DeleteTree(const std::wstring& folder) {
    std::wstring from = folder + L'\0';
    SHFILEOPSTRUCTW op{};
    op.wFunc = FO_DELETE;
    op.pFrom = from.c_str();
    op.fFlags = FOF_NO_UI;
    ::SHFileOperationW(&op);
}

SampleWorld::SampleWorld(const std::wstring& dist)
    : dist_(dist),
      environment_(StagedLanguages(dist)),
      strings_(environment_),
      module_(environment_) {
    wchar_t temp[MAX_PATH] = L"";
    ::GetTempPathW(MAX_PATH, temp);
    root_ = std::wstring(temp) + L"velk_screens_" + std::to_wstring(::GetCurrentProcessId());
}

SampleWorld::~SampleWorld() {
    DeleteTree(root_);
}

bool SampleWorld::Open() {
    const std::wstring folder = module_.GetResourceFolder();
    if (!strings_.Initialize(L"VELK_OE_AGENT") || !module_.Load(folder)) {
        std::fprintf(stderr, "screens: no texts or language module under %ls\\Resource\n",
                     dist_.c_str());
        return false;
    }
    language_ = strings_.GetLanguage();
    // The installation as staged, read only; the user's side is ours.
    ui_.where = settings::SettingsLocations(dist_ + L"\\bin\\", root_ + L"\\data\\");
    ui_.where.SetUser(L"{5C1A7E02-8B3D-4F6A-9E21-D40B7C38A915}");
    ui_.strings = &strings_;
    ui_.resources = module_.Get();
    DeleteTree(root_);
    if (::SHCreateDirectoryExW(nullptr, ui_.where.user_dir.c_str(), nullptr) != ERROR_SUCCESS ||
        !WriteUserFiles()) {
        std::fprintf(stderr, "screens: cannot write the sample user folder %ls\n",
                     ui_.where.user_dir.c_str());
        return false;
    }
    return true;
}

bool SampleWorld::WriteUserFiles() {
    const std::wstring& user = ui_.where.user_ini;
    // Whole hours: a run within the same hour draws the same pictures.
    const long long now = std::time(nullptr) / 3600 * 3600;
    Put(user, L"General", L"GlobalLevel", L"1");
    Put(user, L"General", L"ProtectLevel", L"2");
    Put(user, L"General", L"FinancialLevel", L"3");
    Put(user, L"General", L"HealthLevel", L"1");
    Put(user, L"General", L"EnableInTheCloud", L"1");
    Put(user, L"General", L"PurgeDays", L"30");
    Put(user, L"General", L"AutoMoved", L"1");
    Put(user, L"General", L"NotifyIcon", L"1");
    Put(user, L"General", L"AutoApprove", L"1");
    Put(user, L"Qzufe", L"EnableQzufe", L"1");
    Put(user, L"Qzufe", L"SecurityLevel", L"2");
    Put(user, L"LinkFilter", L"TrustedDomains",
        L"bank.example;example.com;mail.example.org;intranet.example.net");
    // The scanning process writes the add-in's own version here; this
    // program carries the add-in's version resource.
    std::wstring version, build;
    if (!settings_ui::CAboutDlg::ReadModuleVersion(::GetModuleHandleW(nullptr), version, build))
        version = L"3.5.0.0";
    Put(user, L"Antispam", L"VELKOEVer", version);
    Put(user, L"Antispam", L"EngineVer", L"8.2.1017");
    Put(user, L"Antispam", L"PatchVer", L"2024117");
    Put(user, L"Statistics", L"RunningSince", std::to_wstring(now - 127 * 86400));
    Put(user, L"Statistics", L"ProcessedMsg", L"12486");
    Put(user, L"Statistics", L"DetectedSpam", L"3107");
    Put(user, L"Statistics", L"ReportedSpam", L"42");
    Put(user, L"Statistics", L"ReportedFP", L"6");
    Put(user, L"Statistics", L"EnableCRX", L"1");
    Put(user, L"RuleFile-Update", L"LastUpdateTime", std::to_wstring(now - 2 * 3600));
    Put(user, L"RuleFile-Update", L"UpToDate", L"1");
    Put(user, L"RuleFile-Update", L"EnableSchedule", L"1");
    Put(user, L"RuleFile-Update", L"Interval", L"180");
    Put(user, L"RuleFile-Update", L"EnableProxy", L"yes");
    Put(user, L"RuleFile-Update", L"HTTPProxy", L"proxy.example.com");
    Put(user, L"RuleFile-Update", L"HTTPPort", L"8080");
    Put(user, L"RuleFile-Update", L"ProxyUserName", L"jsmith");
    std::wstring password;
    settings_ui::EncodePassword(L"correct horse", password);
    Put(user, L"RuleFile-Update", L"ProxyPassword", password);
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, user.c_str());

    senders::SenderList approved(senders::SenderListKind::kApproved);
    senders::SenderList blocked(senders::SenderListKind::kBlocked);
    for (const auto& sender : kApproved)
        senders::AddSender(approved, sender[0], sender[1]);
    for (const auto& sender : kBlocked)
        senders::AddSender(blocked, sender[0], sender[1]);
    const std::wstring& folder = ui_.where.user_dir;
    if (!senders::SaveSenders(
            approved, senders::SenderListPathW(folder, senders::SenderListKind::kApproved)) ||
        !senders::SaveSenders(
            blocked, senders::SenderListPathW(folder, senders::SenderListKind::kBlocked))) {
        return false;
    }

    std::vector<senders::BlockedEncoding> encodings = senders::DefaultBlockedEncodings();
    for (senders::BlockedEncoding& e : encodings)
        e.blocked = e.key == "ChineseSimplified" || e.key == "Korean" || e.key == "Cyrillic";
    return senders::SaveBlockedEncodings(
        senders::PlatformFileSystem(),
        senders::BlockedEncodingsPath(std::u16string(folder.begin(), folder.end())), encodings);
}

}  // namespace velk::screens
