#include "tools/screenshots/shot_steps.h"

#include <commctrl.h>
#include <prsht.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace velk::screens {
namespace {

// Long enough for the slowest window under a loaded machine; a window that
// takes longer is broken for its user too.
constexpr DWORD kStepTimeoutMs = 15000;
// What a window needs after its first paint: owner-drawn parts and fonts
// settle within a few frames of the display.
constexpr DWORD kPaintSettleMs = 150;

bool IsDialog(HWND window) {
    wchar_t name[16] = L"";
    ::GetClassNameW(window, name, 16);
    return std::wstring(name) == L"#32770";
}

struct Search {
    std::function<bool(HWND)> matches;
    HWND found = nullptr;
};

HWND FindThreadDialog(const std::function<bool(HWND)>& matches) {
    Search search{matches};
    ::EnumThreadWindows(
        ::GetCurrentThreadId(),
        [](HWND window, LPARAM lp) -> BOOL {
            auto* s = reinterpret_cast<Search*>(lp);
            if (!IsDialog(window) || !::IsWindowVisible(window) || !s->matches(window))
                return TRUE;
            s->found = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

}  // namespace

void Album::Save(const std::wstring& name, const demo::Picture& picture) {
    if (!demo::SaveBmp(picture, folder_ + L"\\" + name + L".bmp")) {
        Fail(name + L": the picture could not be written");
        return;
    }
    std::printf("screens: %ls %dx%d\n", name.c_str(), picture.width, picture.height);
    ++saved_;
}

void Album::SaveWindow(const std::wstring& name, HWND window) {
    demo::Picture picture;
    if (window == nullptr || !demo::CaptureWindow(window, picture)) {
        Fail(name + L": the window could not be captured");
        return;
    }
    Save(name, picture);
}

void Album::Fail(const std::wstring& what) {
    std::fprintf(stderr, "screens: FAILED %ls\n", what.c_str());
    failures_.push_back(what);
}

bool CaptureArea(const RECT& area, demo::Picture& out) {
    demo::Picture screen;
    if (!demo::CaptureWindow(::GetDesktopWindow(), screen))
        return false;
    const int left = std::max<int>(area.left, 0), top = std::max<int>(area.top, 0);
    const int right = std::min<int>(area.right, screen.width);
    const int bottom = std::min<int>(area.bottom, screen.height);
    if (right <= left || bottom <= top)
        return false;
    out.width = right - left;
    out.height = bottom - top;
    out.pixels.clear();
    out.pixels.reserve(static_cast<std::size_t>(out.width) * out.height);
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x)
            out.pixels.push_back(screen.At(x, y));
    return true;
}

Steps::Steps(Album& album) : album_(album), script_(kStepTimeoutMs) {}

Steps& Steps::Until(std::wstring what, std::function<bool()> done) {
    script_.Then(std::move(what), std::move(done));
    return *this;
}

Steps& Steps::Do(std::function<void()> action) {
    script_.Do(std::move(action));
    return *this;
}

Steps& Steps::Wait(DWORD ms) {
    script_.Wait(ms);
    return *this;
}

Steps& Steps::Shoot(const std::wstring& name, std::function<HWND()> find) {
    auto window = std::make_shared<HWND>(nullptr);
    Until(name + L": the window did not open", [find, window] {
        *window = find();
        if (*window == nullptr || !::IsWindowVisible(*window))
            return false;
        ::RedrawWindow(*window, nullptr, nullptr,
                       RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        return true;
    });
    Wait(kPaintSettleMs);
    return Do([this, name, window] { album_.SaveWindow(name, *window); });
}

Steps& Steps::Click(std::function<HWND()> find, int id) {
    return Until(L"no button " + std::to_wstring(id) + L" to click", [find, id] {
        HWND button = FindControl(find(), id);
        return button != nullptr && ::PostMessageW(button, BM_CLICK, 0, 0);
    });
}

Steps& Steps::Command(std::function<HWND()> find, int id) {
    return Until(L"no window for command " + std::to_wstring(id), [find, id] {
        HWND window = find();
        return window != nullptr &&
               ::PostMessageW(window, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
    });
}

bool Steps::Run(const std::wstring& what, const std::function<void()>& modal) {
    if (script_.Run(modal))
        return true;
    const std::wstring step = script_.stopped_what();
    if (script_.timed_out())
        album_.Fail(step.empty() ? L"a step timed out" : step);
    else  // the window closed (or never opened) before its script was done
        album_.Fail(what + L" closed early" + (step.empty() ? L"" : L" (" + step + L")"));
    return false;
}

HWND FindControl(HWND root, int control_id) {
    struct Hit {
        int id;
        HWND found;
    } hit{control_id, nullptr};
    if (root == nullptr)
        return nullptr;
    ::EnumChildWindows(
        root,
        [](HWND child, LPARAM lp) -> BOOL {
            auto* h = reinterpret_cast<Hit*>(lp);
            if (::GetDlgCtrlID(child) != h->id)
                return TRUE;
            h->found = child;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&hit));
    return hit.found;
}

HWND FindOwnDialog(int control_id) {
    return FindThreadDialog([control_id](HWND window) {
        return ::IsWindowEnabled(window) && FindControl(window, control_id) != nullptr;
    });
}

HWND FindOwnSheet() {
    return FindThreadDialog(
        [](HWND window) { return ::SendMessageW(window, PSM_GETTABCONTROL, 0, 0) != 0; });
}

}  // namespace velk::screens
