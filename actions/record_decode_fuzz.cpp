// Feeds arbitrary payloads of arbitrary length to the record decoding: the
// first byte picks the record, the rest is the payload in a heap block of
// exactly its size, so a read past it is caught by AddressSanitizer.
#include "actions/record_decode.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using namespace velk::actions;

template <class Record>
void Check(const std::uint8_t* data, std::size_t size) {
    std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[size ? size : 1]);
    if (size)
        std::memcpy(exact.get(), data, size);
    const Record r = DecodeRecord<Record>(size ? exact.get() : nullptr, size);
    const auto* raw = reinterpret_cast<const std::uint8_t*>(&r);
    const std::size_t kept = std::min(size, KeptBytes<Record>());
    if (std::memcmp(raw, data, kept) != 0)
        std::abort();
    for (std::size_t i = kept; i < sizeof(Record); ++i) {
        if (raw[i] != 0)
            std::abort();
    }
    if constexpr (!std::is_same_v<Record, DeleteMsgRequest>) {
        if (r.szHeaders[kQueuedHeaderBytes / 2] != 0)
            std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::uint8_t which = data[0] % 3;
    ++data;
    --size;
    if (which == 0)
        Check<CloneMsgRequest>(data, size);
    if (which == 1)
        Check<MoveMsgRequest>(data, size);
    if (which == 2)
        Check<DeleteMsgRequest>(data, size);
    return 0;
}
