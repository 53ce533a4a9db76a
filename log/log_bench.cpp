// What logging costs the mail client: one line written and flushed to a real
// file (every line is flushed, so the log survives a crash), and a logging
// call while the log is closed, the state of almost every installation.
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "common_src/bench/bench.h"
#include "log/diag_log.h"

namespace {

namespace fs = std::filesystem;

int RunBench() {
    using velk::bench::Measure;
    using velk::bench::Report;
    using velk::bench::ReportValue;

    // Closed: a batch per sample, since one call is far below the clock's
    // resolution.
    constexpr int kBatch = 10000;
    volatile int sink = 0;
    auto closed = Measure(201, [&sink] {
        for (int i = 0; i < kBatch; ++i)
            VELK_LOG(L"closed %d %ls", sink, L"never formatted");
    });
    ReportValue("log_closed_call", closed.median_us * 1000.0 / kBatch, "ns per call (median)",
                "nothing formatted while closed");

    std::error_code error;
    fs::path folder = fs::temp_directory_path(error) / "velk_log_bench";
    fs::remove_all(folder, error);
    fs::create_directories(folder, error);
    velk::log::Open((folder / "VELKAgent.log").wstring());
    if (!velk::log::IsOpen()) {
        std::printf("log_bench: could not open a log file in %s\n", folder.string().c_str());
        return 1;
    }
    int n = 0;
    const std::wstring detail(120, L'x');
    auto line = Measure(2000, [&n, &detail] {
        VELK_LOG(L"@@@ Move message %d from folder %d : %ls", ++n, 7, detail.c_str());
    });
    Report("log_line_written_and_flushed", line);
    velk::log::Close();
    fs::remove_all(folder, error);
    return 0;
}

}  // namespace

int main() {
    try {
        return RunBench();
    } catch (const std::exception& e) {
        std::printf("log_bench failed: %s\n", e.what());
        return 1;
    }
}
