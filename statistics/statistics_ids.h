// Resource ids of the statistics dialog (6300-6349 belong to it). Included
// by statistics.rc and by the code; the language modules of every language
// carry the same ids.
#pragma once

#define IDD_STATISTICS 6300

#define IDC_STAT_HEADING 6301  // "<$SPAM_NAME> Statistics", bold
#define IDC_STAT_SINCE_LABEL 6302
#define IDC_STAT_SINCE 6303  // start of counting
#define IDC_STAT_MESSAGES_HEADING 6304
#define IDC_STAT_PROCESSED_LABEL 6305
#define IDC_STAT_PROCESSED 6306  // A
#define IDC_STAT_DETECTED_LABEL 6307
#define IDC_STAT_DETECTED 6308  // B
#define IDC_STAT_REPORTED_SPAM_LABEL 6309
#define IDC_STAT_REPORTED_SPAM 6310  // C
#define IDC_STAT_REPORTED_FP_LABEL 6311
#define IDC_STAT_REPORTED_FP 6312  // D
#define IDC_STAT_RATES_HEADING 6313
#define IDC_STAT_DETECT_RATE_LABEL 6314
#define IDC_STAT_DETECT_RATE 6315  // G
#define IDC_STAT_FP_RATE_LABEL 6316
#define IDC_STAT_FP_RATE 6317  // H
#define IDC_STAT_CHART 6318    // hidden: its centre is the chart's
#define IDC_STAT_RESET 6319
