// Any bytes as a message: finding and setting a header must keep the body
// and the other fields, and a header set must be found again.
#include "tools/store_stub/eml_header.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velk::tools::eml;
    if (size < 2)
        return 0;
    // The first byte picks a name length, the next bytes are the name.
    std::size_t name_length = data[0] % 16;
    if (size < 1 + name_length)
        return 0;
    std::string name(reinterpret_cast<const char*>(data + 1), name_length);
    std::string message(reinterpret_cast<const char*>(data + 1 + name_length),
                        size - 1 - name_length);

    (void)FindHeader(message, name);
    std::string_view block = HeaderBlock(message);
    if (message.compare(0, block.size(), block) != 0)
        std::abort();

    auto changed = SetHeader(message, name, "value");
    if (!changed) {
        if (IsWritableField(name, "value"))
            std::abort();
        return 0;
    }
    // The body stays byte for byte.
    std::string_view body = std::string_view(message).substr(block.size());
    if (changed->size() < body.size() ||
        changed->compare(changed->size() - body.size(), body.size(), body) != 0)
        std::abort();
    auto found = FindHeader(*changed, name);
    if (!found || *found != "value")
        std::abort();
    return 0;
}
