#include "common_src/win32/handles.h"

#include <gtest/gtest.h>

namespace velk::win32 {
namespace {

bool IsValidHandle(HANDLE h) {
    DWORD flags = 0;
    return ::GetHandleInformation(h, &flags) != FALSE;
}

TEST(UniqueHandle, ClosesExactlyOnceWhateverOwnedItLast) {
    HANDLE raw = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ASSERT_NE(nullptr, raw);
    {
        unique_event a(raw);
        unique_event b(std::move(a));
        EXPECT_FALSE(a);
        unique_event c;
        c = std::move(b);
        EXPECT_TRUE(IsValidHandle(raw));
        HANDLE released = c.release();
        c.reset(released);
    }
    EXPECT_FALSE(IsValidHandle(raw));
    EXPECT_FALSE(unique_file(INVALID_HANDLE_VALUE));
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

}  // namespace
}  // namespace velk::win32
