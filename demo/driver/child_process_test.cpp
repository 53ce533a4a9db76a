#include "demo/driver/child_process.h"

#include <gtest/gtest.h>
#include <shellapi.h>

#include <vector>

namespace velk::demo {
namespace {

// The child reads its arguments back with CommandLineToArgvW: every path and
// header text the demo passes must arrive as it was.
TEST(DemoChildProcess, QuotedArgumentsSurviveTheCommandLineParser) {
    const std::vector<std::wstring> arguments = {
        L"plain",         L"Z:\\with space\\file.txt",       L"",         L"ends in backslash\\",
        L"quote\"inside", L"back\\\\slashes \\\" and quote", L"tab\there"};
    std::wstring line = L"program.exe";
    for (const std::wstring& a : arguments)
        line += L" " + QuoteArgument(a);
    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(line.c_str(), &argc);
    ASSERT_NE(nullptr, argv);
    ASSERT_EQ(static_cast<int>(arguments.size()) + 1, argc);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        EXPECT_EQ(arguments[i], argv[i + 1]) << i;
    ::LocalFree(argv);
}

TEST(DemoChildProcess, ExitCodesArriveAndALeftoverChildIsEnded) {
    wchar_t cmd[MAX_PATH];
    ASSERT_GT(::GetSystemDirectoryW(cmd, MAX_PATH), 0u);
    const std::wstring shell = std::wstring(cmd) + L"\\cmd.exe";
    DWORD error = 0, code = 0;
    {
        ChildProcess child;
        ASSERT_TRUE(child.Start(QuoteArgument(shell) + L" /c exit 7", error)) << error;
        ASSERT_TRUE(child.Wait(30000, code));
        EXPECT_EQ(7u, code);
        EXPECT_FALSE(child.Running());
    }
    HANDLE leftover = nullptr;
    {
        ChildProcess child;
        // A program that runs until it is ended.
        const std::wstring notepad = std::wstring(cmd) + L"\\notepad.exe";
        ASSERT_TRUE(child.Start(QuoteArgument(notepad), error)) << error;
        ASSERT_TRUE(::DuplicateHandle(::GetCurrentProcess(), child.handle(), ::GetCurrentProcess(),
                                      &leftover, SYNCHRONIZE, FALSE, 0));
        EXPECT_TRUE(child.Running());
    }
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(leftover, 0));
    ::CloseHandle(leftover);
}

}  // namespace
}  // namespace velk::demo
