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

TEST(ResourceHandle, LoadsTheModuleOfTheDetectedLanguageAndFreesIt) {
    QzCommon::testing_util::TempFolder res;
    res.MakeFolder(L"de-DE");
    res.MakeFolder(L"en-US");
    wchar_t built[MAX_PATH] = {};  // the one-string module built beside this test
    ::GetModuleFileNameW(nullptr, built, MAX_PATH);
    std::wstring source = built;
    source.erase(source.rfind(L'\\') + 1) += L"test_language_module.dll";
    const std::wstring installed = res.path() + L"de-DE\\VELK_OEA.dll.mui";
    ASSERT_TRUE(::CopyFileW(source.c_str(), installed.c_str(), FALSE));
    // Where the module was mapped: freed memory once its owner is gone.
    auto mappedState = [](const void* at) {
        MEMORY_BASIC_INFORMATION info = {};
        ::VirtualQuery(at, &info, sizeof(info));
        return info.State;
    };
    const void* mapped = nullptr;
    {
        ResourceHandle mui(SwissGermanSystem(res.path()));
        EXPECT_FALSE(mui.Load(res.path() + L"en-US\\"));  // no module there
        EXPECT_EQ(nullptr, mui.Get());
        const std::wstring folder = mui.GetResourceFolder();
        EXPECT_EQ(res.path() + L"DE-DE\\", folder);
        ASSERT_TRUE(mui.Load(folder));
        wchar_t text[64] = {};
        EXPECT_GT(::LoadStringW(mui.Get(), 101, text, 64), 0);
        EXPECT_STREQ(L"text from the language module", text);
        // A data-file module's handle is its mapping address with low bits set.
        mapped = reinterpret_cast<const void*>(reinterpret_cast<ULONG_PTR>(mui.Get()) & ~3);
        EXPECT_EQ(static_cast<DWORD>(MEM_COMMIT), mappedState(mapped));
    }
    EXPECT_EQ(static_cast<DWORD>(MEM_FREE), mappedState(mapped));

    QzCommon::testing_util::TempFolder empty;
    EXPECT_EQ(L"", ResourceHandle(SwissGermanSystem(empty.path())).GetResourceFolder());
}

}  // namespace
