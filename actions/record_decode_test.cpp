#include "actions/record_decode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace velk::actions {
namespace {

// Reads `size` bytes of a non-zero pattern into each record type and checks
// the record holds exactly the kept prefix of them, then zeros.
template <class Record>
void ExpectPrefixThenZeros(std::size_t size) {
    std::vector<std::uint8_t> bytes(size + 1);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = std::uint8_t(i % 251 + 1);
    const Record r = DecodeRecord<Record>(bytes.data(), size);
    const auto* raw = reinterpret_cast<const std::uint8_t*>(&r);
    const std::size_t kept = std::min(size, KeptBytes<Record>());
    for (std::size_t i = 0; i < sizeof(Record); ++i)
        ASSERT_EQ(i < kept ? bytes[i] : 0, raw[i]) << "byte " << i << " of " << size;
}

TEST(RecordDecoding, ReadsOnlyUpToTheSizeGivenAndKeepsOnlyTheFirst512TextUnits) {
    for (std::size_t size : {0, 1, 8, 9, 12, 13, 24, 1035, 1036, 1048, 1049, 2060, 2072, 4096}) {
        ExpectPrefixThenZeros<CloneMsgRequest>(size);
        ExpectPrefixThenZeros<MoveMsgRequest>(size);
        ExpectPrefixThenZeros<DeleteMsgRequest>(size);
    }
    EXPECT_EQ(0u, DecodeRecord<MoveMsgRequest>(nullptr, 4096).nMsgID);
}

}  // namespace
}  // namespace velk::actions
