// Helpers shared by the sender-list tests and the benchmark: the shared
// temporary folder in the lists' terms, sample senders, readable records.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "senders/sender_record.h"

namespace velk::senders::testing {

using QzCommon::testing_util::CaptureLog;
using QzCommon::testing_util::TempFolder;

// The folder with its trailing separator, as the list folder is given.
std::u16string Folder(const TempFolder& dir);

// A sender-ish address of `index`, unique per index, with some upper case.
std::u16string SampleAddress(std::uint32_t index);
// A display name: Latin, accented Latin, CJK or an astral character mixed in.
std::u16string SampleName(std::uint32_t index);

}  // namespace velk::senders::testing

namespace velk::senders {
// Readable failure messages for records (found by GoogleTest through ADL).
void PrintTo(const SenderRecord& record, std::ostream* os);
}  // namespace velk::senders
