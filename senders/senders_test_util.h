// Helpers shared by the sender-list tests and the benchmark.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>

#include "senders/sender_record.h"

namespace velk::senders::testing {

// A fresh folder under the system's temporary folder, removed with its
// contents at destruction.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The folder with its trailing separator, as the list folder is given.
    std::u16string Folder() const;
    std::u16string File(std::u16string_view name) const;

private:
    std::filesystem::path dir_;
};

// The diagnostic log lines written while `fn` runs (the log is opened in
// `folder` for the call and closed again).
std::string CaptureLog(const TempFolder& folder, const std::function<void()>& fn);

std::string ReadFileBytes(const std::u16string& path);
void WriteFileBytes(const std::u16string& path, std::string_view bytes);
bool FileExists(const std::u16string& path);

// A sender-ish address of `index`, unique per index, with some upper case.
std::u16string SampleAddress(std::uint32_t index);
// A display name: Latin, accented Latin, CJK or an astral character mixed in.
std::u16string SampleName(std::uint32_t index);

}  // namespace velk::senders::testing

namespace velk::senders {
// Readable failure messages for records (found by GoogleTest through ADL).
void PrintTo(const SenderRecord& record, std::ostream* os);
}  // namespace velk::senders
