#include "common_src/win32/handles.h"

#include <gtest/gtest.h>

namespace velk::win32 {
namespace {

// Handles and COM references close exactly once, whichever owner had them last.
struct Counted : IUnknown {
    ULONG refs = 1;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }
};

TEST(Owners, CloseExactlyOnceWhateverOwnedTheHandleOrReferenceLast) {
    HANDLE raw = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD flags = 0;
    {
        unique_event a(raw);
        unique_event b(std::move(a));
        EXPECT_FALSE(a);
        unique_event c;
        c = std::move(b);
        c.reset(c.release());
        EXPECT_TRUE(::GetHandleInformation(raw, &flags));
    }
    EXPECT_FALSE(::GetHandleInformation(raw, &flags));
    EXPECT_FALSE(unique_file(INVALID_HANDLE_VALUE));

    Counted obj;
    {
        com_ptr<IUnknown> a;
        *a.put() = &obj;  // takes over the initial reference
        com_ptr<IUnknown> b = a;
        com_ptr<IUnknown> c = std::move(b);
        EXPECT_EQ(2u, obj.refs);
        a.put();  // releases before handing out the slot
        EXPECT_EQ(1u, obj.refs);
    }
    EXPECT_EQ(0u, obj.refs);
}

}  // namespace
}  // namespace velk::win32
