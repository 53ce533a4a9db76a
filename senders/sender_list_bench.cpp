// Load and Save of a full list (8000 entries), against the floor any loader
// pays: reading the same file's bytes and decoding them to UTF-16.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "common_src/bench/bench.h"
#include "senders/sender_list.h"
#include "senders/sender_text.h"
#include "senders/senders_test_util.h"

using namespace velk::senders;

namespace {

// The platform's file system without the flush to the disk before the
// replace, to show what a save costs apart from waiting for the disk.
class NoFlushFileSystem final : public ISenderFileSystem {
public:
    FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                       bool& truncated) override {
        return real_.ReadAll(path, maxBytes, bytes, truncated);
    }
    FileResult WriteAll(const std::u16string& path, std::string_view bytes) override {
        std::ofstream out(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        return out ? FileResult::Ok() : FileResult::Failed(0);
    }
    FileResult Replace(const std::u16string& from, const std::u16string& to) override {
        return real_.Replace(from, to);
    }
    FileResult Remove(const std::u16string& path) override { return real_.Remove(path); }
    FileResult Overwrite(const std::u16string& path, std::string_view bytes) override {
        return real_.Overwrite(path, bytes);
    }

private:
    ISenderFileSystem& real_ = PlatformFileSystem();
};

void Fill(SenderList& list) {
    for (std::uint32_t i = 0; i < kMaxApprovedSenders; ++i) {
        const std::u16string address = testing::SampleAddress(i);
        list.Add(address, {testing::SampleName(i), address});
    }
}

}  // namespace

int main() {
    testing::TempFolder dir;
    const std::u16string path = SenderListPath(testing::Folder(dir), SenderListKind::kApproved);

    SenderList list(SenderListKind::kApproved);
    Fill(list);
    NoFlushFileSystem noFlush;
    SenderList unflushed(SenderListKind::kApproved, noFlush);
    Fill(unflushed);
    if (list.Count() != kMaxApprovedSenders || !list.Save(path)) {
        std::fprintf(stderr, "bench setup failed\n");
        return 1;
    }
    const std::string bytes = dir.ReadFile(L"WhiteList.dat");

    constexpr std::size_t kSamples = 61;
    const auto save = velk::bench::Measure(kSamples, [&] { list.Save(path); });
    const auto saveNoFlush = velk::bench::Measure(kSamples, [&] { unflushed.Save(path); });

    SenderList loaded(SenderListKind::kApproved);
    const auto load = velk::bench::Measure(kSamples, [&] { loaded.Load(path); });
    if (loaded.Count() != kMaxApprovedSenders) {
        std::fprintf(stderr, "bench: the list did not load whole\n");
        return 1;
    }

    std::size_t sink = 0;
    const auto raw = velk::bench::Measure(kSamples, [&] {
        std::string data;
        bool truncated = false;
        PlatformFileSystem().ReadAll(path, kMaxListFileBytes, data, truncated);
        sink += Utf8ToUtf16(data).size();
    });

    velk::bench::ReportValue("senders_file_size_8000", static_cast<double>(bytes.size()), "bytes");
    velk::bench::Report("senders_load_8000", load, "median < 10000 us natively");
    velk::bench::Report("senders_save_8000", save, "median < 10000 us natively");
    velk::bench::Report("senders_save_8000_without_disk_flush", saveNoFlush);
    velk::bench::Report("senders_raw_read_decode_8000", raw);
    // Medians on a busy machine carry its preemptions; the minima show the
    // work itself. Both ratios are printed.
    velk::bench::ReportValue("senders_load_vs_raw_median", load.median_us / raw.median_us, "x",
                             "<= 4x");
    velk::bench::ReportValue("senders_load_vs_raw_min", load.min_us / raw.min_us, "x", "<= 4x");
    velk::bench::ReportValue("senders_save_vs_raw_median", save.median_us / raw.median_us, "x",
                             "<= 4x");
    velk::bench::ReportValue("senders_save_without_flush_vs_raw_median",
                             saveNoFlush.median_us / raw.median_us, "x", "<= 4x");
    velk::bench::ReportValue("senders_save_without_flush_vs_raw_min",
                             saveNoFlush.min_us / raw.min_us, "x", "<= 4x");
    return sink == 0 ? 1 : 0;
}
