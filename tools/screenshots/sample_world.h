// The settings windows' world for the pictures: the staged installation as
// it is, a user folder of its own under %TEMP% filled with what a user of
// some months has (levels, senders, blocked languages, counters, proxy),
// and the language chosen from the system's as the add-in chooses it.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/ResourceHandle.h"
#include "common_src/win32/ui_context.h"

namespace velk::screens {

class SampleWorld {
public:
    explicit SampleWorld(const std::wstring& dist);
    // Removes the user folder.
    ~SampleWorld();
    SampleWorld(const SampleWorld&) = delete;
    SampleWorld& operator=(const SampleWorld&) = delete;

    // False, with a line on stderr, when the language's texts or module
    // cannot be loaded or the user folder cannot be written.
    bool Open();

    const win32::UiContext& ui() const { return ui_; }
    // The language folder the texts and the module came from ("en-US").
    const std::wstring& language() const { return language_; }

private:
    bool WriteUserFiles();

    std::wstring dist_;
    std::wstring root_;
    QzLanguageEnvironment environment_;
    QzResourceStringLoader strings_;
    ResourceHandle module_;
    std::wstring language_;
    win32::UiContext ui_;
};

// Deletes a folder and everything in it (no error when it is missing).
void DeleteTree(const std::wstring& folder);

}  // namespace velk::screens
