// Numeric ids of the add-in's resources and commands.
//
// Included by the resource scripts (under RC_INVOKED only the #defines count)
// and by the code. The numbers are fixed: the language modules of every
// language carry the same ids, the scanning process and the installation
// file override resources by them, and the band's buttons use the command ids
// as their control ids.
#pragma once

// ---- Resources of the language module VELK_OEA.dll.mui ----

// The band: a borderless child dialog; its buttons are created at run time.
#define IDD_TOOLBAR_BAND 6006

// The logo menu: two pop-up sub-menus with the same layout (see below).
#define IDR_LOGO_MENU 6001
#define LOGO_SUBMENU_BUTTONS_ENABLED 0
#define LOGO_SUBMENU_BUTTONS_DISABLED 1

// Bitmaps, magenta (#FF00FF) is the transparent key in all of them.
#define IDB_LOGO 6002                  // logo button, about 18 px high
#define IDB_REPORT_FP 6004             // Report false-positive, 16x16
#define IDB_REPORT_SPAM 6006           // Report Spam, 16x16
#define IDB_DROPDOWN_OE 6008           // drop-down arrow on the Outlook Express band
#define IDB_REPORT_SPAM_DISABLED 6113  // Report Spam, greyed
#define IDB_REPORT_FP_DISABLED 6114    // Report false-positive, greyed
#define IDB_DROPDOWN_WM 6200           // drop-down arrow on the dark blue Windows Mail band

// ---- Commands of the logo menu ----
#define ID_MENU_FILTERING_SETTINGS 32771
#define ID_MENU_STATISTICS 32773
#define ID_MENU_UPDATES 32774
#define ID_MENU_DISABLE_TOOLBAR 32776  // only in the "buttons enabled" sub-menu
#define ID_MENU_CLOUD_FEEDBACK 32778
#define ID_MENU_HELP 32780
#define ID_MENU_ABOUT 32781
#define ID_MENU_ENABLE_TOOLBAR 32785  // only in the "buttons disabled" sub-menu

// ---- Commands (and control ids) of the band's buttons ----
#define ID_TB_MENU_BUTTON 6007
#define ID_TB_LOGO 6008
#define ID_TB_POST_USER14 6009  // forwarded to the scanning process as WM_USER+14
#define ID_TB_POST_USER15 6010  // forwarded as WM_USER+15
#define ID_TB_REPORT_SPAM 6011
#define ID_TB_REPORT_FP 6012
#define ID_TB_POST_USER19 6013  // forwarded as WM_USER+19
#define ID_TB_OVERFLOW 39946

#ifndef RC_INVOKED
namespace velk::res {

// On its first pop-up the band removes from the logo sub-menu the entries
// this build does not offer from the menu: "Check for Updates...", its
// separator, and the separator that splits the short lower part once the
// updates group is gone. Deleted in this order, each position counted in the
// menu as it is before that deletion. The layout in language_module.rc puts
// exactly those entries there (before/after drawn there), and the
// cloud-feedback item, which the band may have deleted by command before,
// sits behind them so that cannot shift them.
inline constexpr int kLogoMenuPositionsRemovedOnFirstPopup[] = {7, 4, 3};

}  // namespace velk::res
#endif
