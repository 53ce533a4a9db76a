#include "common_src/QzCommon/QzComn_String.h"

#include <gtest/gtest.h>

namespace QzCommon {
namespace String {
namespace {

TEST(StringFormat, KeepsTextWholeAroundEveryBufferBoundary) {
    // 255 characters fill the first 256-character buffer exactly; 256 needs
    // the second pass, 511/512 the boundary after that.
    std::wstring out = L"old";
    for (size_t length : {0u, 255u, 256u, 511u, 512u, 3000u}) {
        Format(out, L"%ls", std::wstring(length, L'x').c_str());
        EXPECT_EQ(std::wstring(length, L'x'), out) << "length " << length;
    }
    Format(out, L"%u|%ls|%d", 4294967295u, L"mid", -7);
    EXPECT_EQ(L"4294967295|mid|-7", out);
}

#ifndef _WIN32
// A conversion the runtime refuses at every size ends as error 6 instead of
// growing forever. (The C locale cannot convert a byte above 0x7F.)
TEST(StringFormat, AFormatThatNeverFitsEndsAsError6AndLeavesTheOutput) {
    SetInitialBufferSize(kMaxBufferChars / 2);  // reach the cap in a few passes
    SetBufferGrowthStep(kMaxBufferChars / 4);
    std::wstring out = L"kept";
    auto error = Capture<Exception>([&] { Format(out, L"%s", "\xff\xfe"); });
    SetInitialBufferSize(0);
    SetBufferGrowthStep(0);
    ASSERT_TRUE(error);
    EXPECT_EQ(6u, error->m_dwErrorCode);
    EXPECT_EQ("..\\..\\common_src\\QzCommon\\QzComn_String", error->m_strSourceFile);
    EXPECT_EQ(L"kept", out);
}
#endif

// A thrown pointer is owned once; other types pass through untouched (the
// sanitizer's leak check sees any exception left behind).
TEST(ExceptionOwnership, CaptureOwnsItsTypeAndLetsOthersThrough) {
    auto base =
        Capture<QzCommon::Exception::Base>([] { throw new Storage::Exception(13, "f", 42); });
    ASSERT_TRUE(base);
    EXPECT_EQ(42u, dynamic_cast<Storage::Exception&>(*base).m_dwSourceLine);
    try {
        Capture<Storage::Exception>([] { throw new Exception(6, "f", 1); });
        ADD_FAILURE() << "a String::Exception must pass through";
    } catch (Exception* raw) {
        EXPECT_EQ(6u, Own(raw)->m_dwErrorCode);
    }
}

}  // namespace
}  // namespace String
}  // namespace QzCommon
