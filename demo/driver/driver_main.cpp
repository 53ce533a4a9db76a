// demo_driver.exe: runs the demo under Wine (scripts/demo.sh starts it in a
// Wine session of its own).
//
//   demo_driver.exe --out DIR [--mode auto|oe|wmail] [--identity {GUID}]
//                   [--dist DIR]
//
// DIR must be empty or absent; the run leaves its files there. --dist names
// another staged installation than the build tree's. Exit codes:
// 0 the run did what the scenario says, 1 it did not (the summary says
// why), 2 bad command line, 3 the add-in is not in the staged installation.
#include <windows.h>
#include <shellapi.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "demo/driver/demo_run.h"

namespace {

// The build tree's paths, as Wine sees them.
velk::demo::DemoConfig Defaults() {
    velk::demo::DemoConfig c;
    c.source = VELK_DEMO_SOURCE_DIR_W;
    c.dist = VELK_DEMO_DIST_DIR_W;
    c.client_exe = VELK_MAIL_CLIENT_STUB_EXE;
    c.scanner_exe = VELK_SCANNER_STUB_EXE;
    c.store_dll = VELK_STORE_STUB_DLL;
    c.probe_dll = VELK_DEMO_PROBE_DLL;
    for (std::wstring* path :
         {&c.source, &c.dist, &c.client_exe, &c.scanner_exe, &c.store_dll, &c.probe_dll}) {
        *path = std::filesystem::path(*path).make_preferred().wstring();
    }
    return c;
}

int Usage(const char* why) {
    std::fprintf(stderr,
                 "error: %s\nusage: demo_driver --out DIR [--mode auto|oe|wmail] "
                 "[--identity {GUID}] [--dist DIR]\n",
                 why);
    return velk::demo::kDemoBadUsage;
}

}  // namespace

int main() {
    try {
        int argc = 0;
        wchar_t** argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
        velk::demo::DemoConfig config = Defaults();
        for (int i = 1; argv && i < argc; ++i) {
            const std::wstring option = argv[i];
            if (i + 1 >= argc)
                return Usage("an option needs a value");
            const std::wstring value = argv[++i];
            if (option == L"--out")
                config.out = value;
            else if (option == L"--mode" &&
                     (value == L"auto" || value == L"oe" || value == L"wmail"))
                config.mode = value;
            else if (option == L"--identity" && value.size() == 38 && value.front() == L'{')
                config.identity = value;
            else if (option == L"--dist")
                config.dist = std::filesystem::path(value).make_preferred().wstring();
            else
                return Usage("unknown option or bad value");
        }
        ::LocalFree(argv);
        if (config.out.empty())
            return Usage("--out is required");
        std::error_code ec;
        if (std::filesystem::exists(config.out, ec) && !std::filesystem::is_empty(config.out, ec))
            return Usage("--out must be empty or absent");
        return velk::demo::RunDemo(config);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "demo: unexpected error: %s\n", e.what());
        return velk::demo::kDemoFailed;
    } catch (...) {
        std::fprintf(stderr, "demo: unexpected error\n");
        return velk::demo::kDemoFailed;
    }
}
