// Any text may sit in the scanning process's version resource.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/version_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::wstring text;
    for (size_t i = 0; i + 1 < size; i += 2) {
        text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
    }
    std::wstring reduced = velk::host::ReduceFileVersion(text);
    // At most three integers of 11 characters and two dots.
    if (reduced.size() > 3 * 11 + 2)
        std::abort();
    return 0;
}
