// Resource ids of the filtering settings sheet's pages, panels and level
// dialogs, in the language module. Included by sheet.rc and the code. The
// templates and control 6097 keep the numbers the product has always used
// (a translated language module carries the same ids); the others are ours,
// from 6450 to 6549.
#pragma once

// ---- Templates the product has always had ----
#define IDD_SPAM_DETECTION_PAGE 6038  // tab 1; hosts the two level panels
#define IDD_DEFAULT_LEVEL 6039        // panel: one level for all spam
#define IDD_CUSTOM_LEVEL 6040         // panel: a level per kind of spam
#define IDC_DEFAULT_CORP_NOTE 6097    // its text may hold <$CORP_NAME>
#define IDD_LINK_FILTER_PAGE 6108     // tab 2; hosts the link filter panel
#define IDD_LINK_FILTER_PANEL 6109

// ---- Ours ----
#define IDB_SLIDER_THUMBS 6450  // the level slider's thumb: four 15x15 frames
#define IDD_CATEGORY_LEVEL 6452
#define IDD_SERENEL_LEVEL 6453

// The default-level panel.
#define IDC_DEFAULT_GROUP 6460
#define IDC_DEFAULT_SLIDER 6461
#define IDC_DEFAULT_LEVEL_TITLE 6462
#define IDC_DEFAULT_LEVEL_DESC 6463
#define IDC_DEFAULT_CUSTOM_NOTE 6464
#define IDC_DEFAULT_CUSTOMIZE 6465
#define IDC_DEFAULT_SERENEL_NOTE 6466
#define IDC_DEFAULT_SERENEL 6467
#define IDC_DEFAULT_CLOUD 6468

// The custom-level panel; a category's name and level are the first ids
// plus the category's index.
#define IDC_CUSTOM_GROUP 6470
#define IDC_CUSTOM_INTRO 6471
#define IDC_CUSTOM_NAME_FIRST 6472   // to 6478
#define IDC_CUSTOM_LEVEL_FIRST 6479  // to 6485
#define IDC_CUSTOM_CHANGE 6486
#define IDC_CUSTOM_DEFAULT_NOTE 6487
#define IDC_CUSTOM_USE_DEFAULT 6488
#define IDC_CUSTOM_SERENEL_NOTE 6489
#define IDC_CUSTOM_SERENEL 6490
#define IDC_CUSTOM_CLOUD 6491

// The category level dialog: seven labelled sliders.
#define IDC_CATEGORY_INTRO 6495
#define IDC_CATEGORY_HIGH 6496
#define IDC_CATEGORY_MEDIUM 6497
#define IDC_CATEGORY_LOW 6498
#define IDC_CATEGORY_LABEL_FIRST 6499   // to 6505
#define IDC_CATEGORY_SLIDER_FIRST 6506  // to 6512
#define IDC_CATEGORY_DEFAULTS 6513

// The Serenel level dialog.
#define IDC_SERENEL_INTRO 6515
#define IDC_SERENEL_ENABLE 6516
#define IDC_SERENEL_GROUP 6517
#define IDC_SERENEL_SLIDER 6518
#define IDC_SERENEL_LEVEL_TITLE 6519
#define IDC_SERENEL_LEVEL_DESC 6520

// The link filter panel.
#define IDC_LINK_GROUP 6525
#define IDC_LINK_ENABLE 6526
#define IDC_LINK_WARN_MISMATCH 6527
#define IDC_LINK_FLAG_NUMERIC 6528
#define IDC_LINK_TRUSTED_GROUP 6529
#define IDC_LINK_TRUSTED_INTRO 6530
#define IDC_LINK_DOMAIN_LABEL 6531
#define IDC_LINK_DOMAIN_EDIT 6532
#define IDC_LINK_ADD 6533
#define IDC_LINK_LIST 6534
#define IDC_LINK_REMOVE 6535
