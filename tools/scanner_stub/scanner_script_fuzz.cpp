// Any bytes as a script: the parser either names a bad line or gives
// commands whose records have the size the command asked for.
#include "tools/scanner_stub/scanner_command.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velk::tools::scanner;
    std::vector<Command> commands;
    std::string error;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    if (!ParseScript(text, commands, error)) {
        if (error.rfind("line ", 0) != 0)
            std::abort();
        return 0;
    }
    for (const Command& c : commands) {
        if (c.cb && *c.cb > 0x100000)
            continue;  // a huge --cb is legal, just slow to build
        Payload p = BuildPayload(c);
        if (c.cb && p.bytes.size() != *c.cb)
            std::abort();
        std::size_t fixed = c.verb == Verb::kClone ? 2060 : c.verb == Verb::kMove ? 2072 : 12;
        if (!c.cb &&
            (c.verb == Verb::kClone || c.verb == Verb::kMove || c.verb == Verb::kDelete ||
             c.verb == Verb::kPurge) &&
            p.bytes.size() != fixed)
            std::abort();
    }
    return 0;
}
