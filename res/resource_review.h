// Resource identifiers of the review of changes to the address space.
#pragma once

#define IDD_REVIEW_CHANGES        3100
#define IDC_REVIEW_SOURCE_LABEL   3101
#define IDC_REVIEW_SOURCE         3102
#define IDC_REVIEW_FILE           3103
#define IDC_REVIEW_FILTER_LABEL   3104
#define IDC_REVIEW_FILTER         3105
#define IDC_REVIEW_SUMMARY        3106
#define IDC_REVIEW_LIST_LABEL     3107
#define IDC_REVIEW_LIST           3108
#define IDC_REVIEW_IMPACT         3109
#define IDC_REVIEW_REVERT         3110
#define IDC_REVIEW_COPY           3111
#define IDC_REVIEW_EXPORT         3112
#define IDC_REVIEW_SAVE           3113

#define ID_AS_FILE_REVIEW         34100
