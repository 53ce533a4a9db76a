#include "common_src/win32/handles.h"

#include <gtest/gtest.h>

namespace velk::win32 {
namespace {

bool IsValidHandle(HANDLE h) {
    DWORD flags = 0;
    return ::GetHandleInformation(h, &flags) != FALSE;
}

TEST(UniqueHandle, ClosesOnceAndTransfersOwnershipOnMove) {
    HANDLE raw = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ASSERT_NE(nullptr, raw);
    {
        unique_event a(raw);
        unique_event b(std::move(a));
        EXPECT_FALSE(a);
        EXPECT_EQ(raw, b.get());
        EXPECT_TRUE(IsValidHandle(raw));
        unique_event c;
        c = std::move(b);
        EXPECT_TRUE(IsValidHandle(raw));
    }
    EXPECT_FALSE(IsValidHandle(raw));
}

TEST(UniqueHandle, ReleaseGivesUpOwnershipAndResetCloses) {
    unique_event e(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    HANDLE raw = e.release();
    EXPECT_FALSE(e);
    EXPECT_TRUE(IsValidHandle(raw));
    e.reset(raw);
    e.reset();
    EXPECT_FALSE(IsValidHandle(raw));
}

TEST(UniqueFile, InvalidHandleValueIsEmpty) {
    unique_file f(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(f);
}

// A minimal COM object that counts its references.
struct Counted : IUnknown {
    ULONG refs = 1;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }
};

TEST(ComPtr, CopyAddsAReferenceAndEveryOwnerReleasesItsOwn) {
    Counted obj;
    {
        com_ptr<IUnknown> a;
        *a.put() = &obj;  // takes over the initial reference
        com_ptr<IUnknown> b = a;
        EXPECT_EQ(2u, obj.refs);
        com_ptr<IUnknown> c = std::move(b);
        EXPECT_EQ(2u, obj.refs);
        a.put();  // releases before handing out the slot
        EXPECT_EQ(1u, obj.refs);
    }
    EXPECT_EQ(0u, obj.refs);
}

TEST(CsGuard, LeavesTheSectionOnScopeExit) {
    critical_section cs;
    { cs_guard g(cs); }
    // Another thread can enter only if the guard left.
    HANDLE t = ::CreateThread(
        nullptr, 0,
        [](void* p) -> DWORD {
            auto* section = static_cast<critical_section*>(p);
            return ::TryEnterCriticalSection(section->native()) ? 1 : 0;
        },
        &cs, 0, nullptr);
    ASSERT_NE(nullptr, t);
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(t, 5000));
    DWORD code = 0;
    ::GetExitCodeThread(t, &code);
    ::CloseHandle(t);
    EXPECT_EQ(1u, code);
}

}  // namespace
}  // namespace velk::win32
