// The stand-in's windows: the main window of class "Outlook Express Browser
// Class" with its "SizableRebar" child holding one "ReBarWindow32" (two in
// Windows Mail mode), and a message list below.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

#include "common_src/win32/window.h"

namespace velk::tools {

// Class names the add-in searches for; fixed by the real client.
constexpr wchar_t kBrowserClass[] = L"Outlook Express Browser Class";
constexpr wchar_t kSizableRebarClass[] = L"SizableRebar";
// The add-in's band id: its presence in a rebar means the band is shown.
constexpr UINT kAddinBandId = 3339;

// Commands another process may send to the main window (SendMessage returns
// 1 when the command ran).
constexpr UINT kCmdSetBrowser = WM_APP + 1;
constexpr UINT kCmdRebuild = WM_APP + 2;
constexpr UINT kCmdDestroy = WM_APP + 3;
constexpr UINT kCmdUnload = WM_APP + 4;
// 1 while any add-in the stand-in loaded is still mapped in the process.
constexpr UINT kCmdMapped = WM_APP + 5;

class CSizableRebar : public win32::Window {
public:
    // Creates the window with `rebars` rebars, each holding a band of its own.
    bool Create(HWND parent, int rebars);
    const std::vector<HWND>& rebars() const noexcept { return rebars_; }
    // Stacks the rebars at the given width; returns the total height.
    int Layout(int width);
    bool HasBand(UINT id) const;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    std::vector<HWND> rebars_;
    int width_ = 0;
};

class CClientWindow : public win32::Window {
public:
    // What the window asks of the client around it.
    struct Host {
        std::function<void(const wchar_t*)> event;
        std::function<bool(UINT command)> command;  // kCmd* from another process
        std::function<void()> timer_step;           // the script's wait ended
    };

    explicit CClientWindow(Host host) : host_(std::move(host)) {}
    ~CClientWindow() override { Destroy(); }

    static bool RegisterClasses();
    bool Create(bool windows_mail);

    const CSizableRebar& rebar() const noexcept { return rebar_; }
    static constexpr UINT_PTR kStepTimer = 1;
    static constexpr UINT_PTR kExitTimer = 2;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void Layout();
    // Whether our own class procedure is no longer the window's procedure:
    // the add-in's hook is still in place.
    bool Hooked() const;
    void Event(const wchar_t* format, int value1, int value2 = 0);

    Host host_;
    CSizableRebar rebar_;
    HWND list_ = nullptr;
    bool band_seen_ = false;
};

}  // namespace velk::tools
