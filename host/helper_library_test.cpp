#include "host/helper_library.h"

#include <gtest/gtest.h>

#include <string>

#include "common_src/QzCommon/QzComn_test_util.h"

namespace velk::host {
namespace {

// The build copies the stand-ins beside this executable:
// helper_complete\VelkHlp.dll and helper_without_proxy\VelkHlp.dll. They
// report their calls in environment variables.
std::wstring StubPath(const wchar_t* folder) {
    wchar_t self[MAX_PATH];
    std::wstring path(self, ::GetModuleFileNameW(nullptr, self, MAX_PATH));
    return path.substr(0, path.rfind(L'\\') + 1) + folder + L"\\" + kHelperLibraryName;
}

std::wstring Env(const wchar_t* name) {
    wchar_t buffer[512];
    DWORD n = ::GetEnvironmentVariableW(name, buffer, 512);
    return n > 0 && n < 512 ? std::wstring(buffer, n) : std::wstring();
}

TEST(HelperLibrary, ReadyLibraryEndsItsSessionOnceAndAFailedOneIsFreedAndLogged) {
    const std::wstring complete = StubPath(L"helper_complete");
    {
        CVelkHlpWrapper helper(complete);
        ASSERT_TRUE(helper.IsReady());
        EXPECT_EQ(1, helper.RTscanFolderProtect(L"C:\\Mail", true));
        EXPECT_EQ(L"1|C:\\Mail", Env(L"VELKHLP_STUB_PROTECT"));
        EXPECT_EQ(L"", Env(L"VELKHLP_STUB_EXITS"));
    }
    EXPECT_EQ(L"1", Env(L"VELKHLP_STUB_EXITS"));
    EXPECT_EQ(nullptr, ::GetModuleHandleW(complete.c_str()));

    // Init refused, or an entry missing (init is then never called).
    ::SetEnvironmentVariableW(L"VELKHLP_STUB_INIT", L"0");
    for (const wchar_t* name : {L"VELKHLP_STUB_INITS", L"VELKHLP_STUB_EXITS"})
        ::SetEnvironmentVariableW(name, nullptr);
    QzCommon::testing_util::TempFolder folder;
    const std::string log = QzCommon::testing_util::CaptureLog(folder, [&] {
        for (const wchar_t* stub : {L"helper_complete", L"helper_without_proxy"}) {
            const std::wstring path = StubPath(stub);
            CVelkHlpWrapper helper(path);
            EXPECT_FALSE(helper.IsReady());
            EXPECT_EQ(nullptr, ::GetModuleHandleW(path.c_str()));
            wchar_t proxy[8] = {};
            EXPECT_EQ(0, helper.GetProxy(proxy, 8)) << "no call into a freed library";
        }
    });
    ::SetEnvironmentVariableW(L"VELKHLP_STUB_INIT", nullptr);
    EXPECT_EQ(L"1", Env(L"VELKHLP_STUB_INITS"));
    EXPECT_EQ(L"", Env(L"VELKHLP_STUB_EXITS")) << "no session was opened";
    EXPECT_NE(std::string::npos, log.find("Failed to init HVNWpr")) << log;
    EXPECT_FALSE(CVelkHlpWrapper(StubPath(L"no_such_folder")).IsReady());
}

}  // namespace
}  // namespace velk::host
