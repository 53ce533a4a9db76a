#include "common_src/QzCommon/QzComn_String.h"

#include <atomic>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <new>

namespace QzCommon {
namespace String {
namespace {

// Reported in every String::Exception; other modules print it as is.
const char kSourceFile[] = "..\\..\\common_src\\QzCommon\\QzComn_String";

std::atomic<std::size_t> g_initialChars{0};
std::atomic<std::size_t> g_growthChars{0};

// Negative when the text did not fit into `count` characters (terminator
// included), like the Windows runtime's truncating mode.
int FormatInto(wchar_t* buffer, std::size_t count, const wchar_t* format, va_list args) {
#ifdef _WIN32
    return _vsnwprintf_s(buffer, count, _TRUNCATE, format, args);
#else
    return std::vswprintf(buffer, count, format, args);
#endif
}

}  // namespace

void SetInitialBufferSize(std::size_t chars) noexcept {
    g_initialChars = chars;
}
void SetBufferGrowthStep(std::size_t chars) noexcept {
    g_growthChars = chars;
}

std::size_t InitialBufferSize() noexcept {
    std::size_t n = g_initialChars;
    return n ? n : kDefaultBufferChars;
}

std::size_t BufferGrowthStep() noexcept {
    std::size_t n = g_growthChars;
    return n ? n : kDefaultBufferChars;
}

void Format(std::wstring& out, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    // va_end must run even when FormatV throws.
    struct VaEnd {
        va_list& list;
        ~VaEnd() { va_end(list); }
    } end{args};
    FormatV(out, format, args);
}

void FormatV(std::wstring& out, const wchar_t* format, va_list args) {
    const std::size_t step = BufferGrowthStep();
    for (std::size_t chars = InitialBufferSize();; chars += step) {
        if (chars > kMaxBufferChars)
            QZ_THROW(Exception, 6);
        std::unique_ptr<wchar_t[]> buffer(new (std::nothrow) wchar_t[chars]);
        if (!buffer)
            QZ_THROW(Exception, 6);
        va_list attempt;
        va_copy(attempt, args);
        const int written = FormatInto(buffer.get(), chars, format ? format : L"", attempt);
        va_end(attempt);
        if (written >= 0) {
            out.assign(buffer.get(), static_cast<std::size_t>(written));
            return;
        }
    }
}

void AddTrailingBackslash(std::wstring& path) {
    if (!path.empty() && path.back() != L'\\')
        path.push_back(L'\\');
}

void RemoveTrailingBackslash(std::wstring& path) {
    if (!path.empty() && path.back() == L'\\')
        path.pop_back();
}

}  // namespace String
}  // namespace QzCommon
