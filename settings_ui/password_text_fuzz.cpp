// Any stored text: the decoder never reads out of bounds, and what it
// accepts frames back to the very same text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "settings_ui/password_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::wstring text;
    for (size_t i = 0; i + 1 < size; i += 2)
        text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
    // An odd last byte with its low bit set puts the prefix in front, so
    // the fuzzer spends its time on the base64 body.
    if (size % 2 == 1 && (data[size - 1] & 1) != 0)
        text.insert(0, velk::settings_ui::kPasswordSchemePrefix);
    std::vector<unsigned char> bytes;
    if (velk::settings_ui::UnframePasswordBytes(text, bytes) &&
        velk::settings_ui::FramePasswordBytes(bytes) != text) {
        std::abort();
    }
    return 0;
}
