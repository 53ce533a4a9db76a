// Arbitrary header text through the line cutter; every line it returns must
// keep the shape the store is given: a name without ':' or line ends, a value
// without line ends that does not start with a blank.
#include "actions/header_lines.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::size_t total = 0;
    for (const auto& line : velk::actions::CutHeaderLines(text)) {
        if (line.name.find_first_of(":\r\n") != std::string::npos)
            std::abort();
        if (line.value.find_first_of("\r\n") != std::string::npos)
            std::abort();
        if (!line.value.empty() && line.value[0] == ' ')
            std::abort();
        total += line.name.size() + line.value.size() + 1;
    }
    if (total > size)
        std::abort();
    (void)velk::actions::IsQuarantinedHeaderBlock(text);
    return 0;
}
