// Saving a file that the scanning process reads while the add-in runs (the
// sender lists, the blocked encodings): the old file stays whole whatever
// fails, and a save that did not happen is never reported as done.
#pragma once

#include <string>
#include <string_view>

#include "senders/sender_file_system.h"

namespace velk::senders {

// Writes `bytes` to a temporary file beside `path` and puts it in the place
// of the old file. A reader may hold the old file open for a moment without
// letting it be replaced, so the replace is retried; when it still fails the
// bytes are written over the old file in place (put back as they were when
// that fails part-way). True once `path` holds `bytes`; every failure is
// logged under `what` ("sender list", ...). No temporary file is left behind.
bool SaveFileSafely(ISenderFileSystem& fs, const std::u16string& path, std::string_view bytes,
                    const wchar_t* what);

}  // namespace velk::senders
