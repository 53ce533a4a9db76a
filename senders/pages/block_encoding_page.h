// The blocked-languages page: the scripts and languages whose mail the
// scanning process refuses, one check box each, kept in "BlockEncodings.dat"
// in the user's folder. Saved when the sheet's OK is pressed after a change,
// then the scanning process is told (1034).
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "senders/block_encodings.h"

namespace velk::senders {

class CBlockEncodingPage : public win32::PropertyPage {
public:
    explicit CBlockEncodingPage(const win32::UiContext& ui);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    bool OnApply() override;

private:
    void OnInitDialog();
    void CheckAll(bool blocked);
    std::u16string FilePath() const;

    const win32::UiContext& ui_;
    std::wstring tab_text_;
    std::vector<BlockedEncoding> entries_;
    bool filling_ = false;  // the list's own changes while it is filled
    bool changed_ = false;
    win32::unique_hfont title_font_;
};

}  // namespace velk::senders
