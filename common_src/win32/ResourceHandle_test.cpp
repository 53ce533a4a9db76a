#include "common_src/win32/ResourceHandle.h"

#include <gtest/gtest.h>

#include "common_src/QzCommon/QzComn_test_util.h"

namespace {

QzLanguageEnvironment SwissGermanSystem(const std::wstring& root) {
    QzLanguageEnvironment env;
    env.systemDefaultLcid = [] { return LCID(0x0807); };
    env.lcidToLocaleName = [](LCID lcid, LPWSTR out, int chars) {
        const wchar_t* name = lcid == 0x0807 ? L"de-CH" : lcid == 0x0407 ? L"de-DE" : L"";
        wcscpy_s(out, chars, name);
        return *name ? static_cast<int>(wcslen(name)) + 1 : 0;
    };
    env.downlevelLcidToLocaleName = [](LCID, LPWSTR, int) { return 0; };
    env.resourceRoot = root;
    return env;
}

// Where a data-file module was mapped (its handle with the low bits cleared):
// committed while loaded, free once let go.
DWORD MappedState(HMODULE module) {
    MEMORY_BASIC_INFORMATION info = {};
    ::VirtualQuery(reinterpret_cast<const void*>(reinterpret_cast<ULONG_PTR>(module) & ~3), &info,
                   sizeof(info));
    return info.State;
}

TEST(ResourceHandle, LoadsTheModuleOfTheDetectedLanguageAndLetsGoOfEveryOneItLoaded) {
    QzCommon::testing_util::TempFolder res;
    res.MakeFolder(L"en-US");
    wchar_t built[MAX_PATH] = {};  // the one-string module built beside this test
    ::GetModuleFileNameW(nullptr, built, MAX_PATH);
    std::wstring source = built;
    source.erase(source.rfind(L'\\') + 1) += L"test_language_module.dll";
    res.MakeFolder(L"de-DE");
    ASSERT_TRUE(
        ::CopyFileW(source.c_str(), (res.path() + L"de-DE\\VELK_OEA.dll.mui").c_str(), FALSE));
    HMODULE first = nullptr, second = nullptr;
    {
        ResourceHandle mui(SwissGermanSystem(res.path()));
        EXPECT_FALSE(mui.Load(res.path() + L"en-US\\"));  // no module there
        const std::wstring folder = mui.GetResourceFolder();
        EXPECT_EQ(res.path() + L"DE-DE\\", folder);
        ASSERT_TRUE(mui.Load(folder));
        first = mui.Get();
        wchar_t text[64] = {};
        EXPECT_GT(::LoadStringW(mui.Get(), 101, text, 64), 0);
        EXPECT_STREQ(L"text from the language module", text);
        ASSERT_TRUE(mui.Load(folder));  // loading again replaces the module
        second = mui.Get();
        EXPECT_EQ(static_cast<DWORD>(MEM_COMMIT), MappedState(second));
    }
    EXPECT_EQ(static_cast<DWORD>(MEM_FREE), MappedState(first));
    EXPECT_EQ(static_cast<DWORD>(MEM_FREE), MappedState(second));

    QzCommon::testing_util::TempFolder empty;
    EXPECT_EQ(L"", ResourceHandle(SwissGermanSystem(empty.path())).GetResourceFolder());
}

}  // namespace
