// Resource and control ids of the sender pages, the sender edit dialog and
// the blocked-languages page, in the language module. Included by
// sender_pages.rc (under RC_INVOKED only the #defines count) and by the code.
// The edit dialog's template id is fixed; the rest come from 6550-6649.
#pragma once

#define IDD_SENDER_EDIT 6047

#define IDD_APPROVE_SENDER_PAGE 6550
#define IDD_BLOCK_SENDER_PAGE 6551
#define IDD_BLOCK_ENCODING_PAGE 6552

// Both sender pages.
#define IDC_SENDER_TITLE 6560
#define IDC_SENDER_NOTE 6561
#define IDC_SENDER_LIST 6562
#define IDC_SENDER_ADD 6563
#define IDC_SENDER_EDIT 6564
#define IDC_SENDER_REMOVE 6565
// The approved-senders page only.
#define IDC_SENDER_IMPORT 6566
#define IDC_AUTO_APPROVE 6567

// The sender edit dialog.
#define IDC_EDIT_ADDRESS_LABEL 6570
#define IDC_EDIT_ADDRESS 6571
#define IDC_EDIT_NAME_LABEL 6572
#define IDC_EDIT_NAME 6573
#define IDC_EDIT_HINT 6574

// The blocked-languages page.
#define IDC_ENCODING_TITLE 6580
#define IDC_ENCODING_NOTE 6581
#define IDC_ENCODING_LIST 6582
#define IDC_ENCODING_ALL 6583
#define IDC_ENCODING_NONE 6584
