#include "senders/safe_file.h"

#include <chrono>
#include <thread>

#include "log/diag_log.h"
#include "senders/sender_list.h"
#include "senders/sender_text.h"

namespace velk::senders {

namespace {

// The scanning process rereads a list in well under this; a user waits this
// long at most before the fallback.
constexpr int kReplaceAttempts = 3;
constexpr auto kReplacePause = std::chrono::milliseconds(40);

}  // namespace

bool SaveFileSafely(ISenderFileSystem& fs, const std::u16string& path, std::string_view bytes,
                    const wchar_t* what) {
    const std::wstring target = ToWide(path);
    // A fixed name beside the target: same folder, so the replace is a rename
    // on one volume, and a file left by a crash is found again and removed here.
    const std::u16string temp = path + u".tmp";
    const FileResult stale = fs.Remove(temp);
    if (!stale.ok()) {
        VELK_LOG(L"!!! leftover %ls cannot be removed (error %lu)", ToWide(temp).c_str(),
                 stale.error);
    }

    const FileResult written = fs.WriteAll(temp, bytes);
    if (!written.ok()) {
        VELK_LOG(L"@@@ Error : %ls %ls not saved, writing %ls failed (error %lu); the old file is "
                 L"kept",
                 what, target.c_str(), ToWide(temp).c_str(), written.error);
        fs.Remove(temp);
        return false;
    }

    FileResult replaced;
    for (int attempt = 1; attempt <= kReplaceAttempts; ++attempt) {
        replaced = fs.Replace(temp, path);
        if (replaced.ok())
            return true;
        if (attempt < kReplaceAttempts)
            std::this_thread::sleep_for(kReplacePause);
    }
    fs.Remove(temp);

    // Held open by a reader that shares it for writing but not for deletion:
    // the old content is kept aside so a write that fails part-way can be
    // undone.
    std::string old;
    bool truncated = false;
    const bool haveOld = fs.ReadAll(path, kMaxListFileBytes, old, truncated).ok() && !truncated;
    const FileResult inPlace = fs.Overwrite(path, bytes);
    if (inPlace.ok()) {
        VELK_LOG(L"!!! %ls %ls cannot be replaced (error %lu); written in place", what,
                 target.c_str(), replaced.error);
        return true;
    }
    if (haveOld && !fs.Overwrite(path, old).ok()) {
        VELK_LOG(L"@@@ Error : %ls %ls could not be put back after a failed write", what,
                 target.c_str());
    }
    VELK_LOG(L"@@@ Error : %ls %ls not saved, it cannot be replaced (error %lu) nor written in "
             L"place (error %lu); the old file is kept",
             what, target.c_str(), replaced.error, inPlace.error);
    return false;
}

}  // namespace velk::senders
