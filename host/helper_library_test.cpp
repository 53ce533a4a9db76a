#include "host/helper_library.h"

#include <gtest/gtest.h>

#include <string>

#include "host/log_capture_for_test.h"

namespace velk::host {
namespace {

// The build copies the stand-ins beside this executable:
// helper_complete\VelkHlp.dll and helper_without_proxy\VelkHlp.dll.
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

class HelperLibraryTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const wchar_t* name : {L"VELKHLP_STUB_INIT", L"VELKHLP_STUB_INITS",
                                    L"VELKHLP_STUB_EXITS", L"VELKHLP_STUB_PROTECT"}) {
            ::SetEnvironmentVariableW(name, nullptr);
        }
    }
    velk::testing::LogCapture log_;
};

TEST_F(HelperLibraryTest, CompleteLibraryIsReadyAndEndsItsSessionOnce) {
    const std::wstring path = StubPath(L"helper_complete");
    {
        CVelkHlpWrapper helper(path);
        ASSERT_TRUE(helper.IsReady());
        EXPECT_EQ(L"1", Env(L"VELKHLP_STUB_INITS"));
        EXPECT_EQ(1, helper.RTscanFolderProtect(L"C:\\Mail", true));
        EXPECT_EQ(L"1|C:\\Mail", Env(L"VELKHLP_STUB_PROTECT"));
        wchar_t proxy[64] = {};
        EXPECT_EQ(1, helper.GetProxy(proxy, 64));
        EXPECT_STREQ(L"proxy.test:8080", proxy);
        EXPECT_EQ(L"", Env(L"VELKHLP_STUB_EXITS"));
    }
    EXPECT_EQ(L"1", Env(L"VELKHLP_STUB_EXITS"));
    EXPECT_EQ(nullptr, ::GetModuleHandleW(path.c_str()));
    EXPECT_FALSE(log_.Contains("Failed to init HVNWpr"));
}

TEST_F(HelperLibraryTest, FailedInitOrMissingEntryLogsAndFreesTheLibrary) {
    ::SetEnvironmentVariableW(L"VELKHLP_STUB_INIT", L"0");
    for (const wchar_t* folder : {L"helper_complete", L"helper_without_proxy"}) {
        const std::wstring path = StubPath(folder);
        {
            CVelkHlpWrapper helper(path);
            EXPECT_FALSE(helper.IsReady());
            EXPECT_EQ(nullptr, ::GetModuleHandleW(path.c_str()));
            wchar_t proxy[8] = {};
            EXPECT_EQ(0, helper.GetProxy(proxy, 8)) << "no call into a freed library";
        }
        EXPECT_EQ(L"", Env(L"VELKHLP_STUB_EXITS")) << "no session was opened";
    }
    // Init ran once: for the complete library, not for the one missing an entry.
    EXPECT_EQ(L"1", Env(L"VELKHLP_STUB_INITS"));
    EXPECT_TRUE(log_.Contains("Failed to init HVNWpr"));

    CVelkHlpWrapper absent(StubPath(L"no_such_folder"));
    EXPECT_FALSE(absent.IsReady());
}

}  // namespace
}  // namespace velk::host
