// Resource identifiers of the change history and the version retention.
#pragma once

#define IDD_CHANGE_HISTORY          3200
#define IDC_HISTORY_FILTER_LABEL    3201
#define IDC_HISTORY_FILTER          3202
#define IDC_HISTORY_COUNT           3203
#define IDC_HISTORY_LIST            3204
#define IDC_HISTORY_DETAILS_LABEL   3205
#define IDC_HISTORY_DETAILS         3206
#define IDC_HISTORY_COMPARE_PREV    3207
#define IDC_HISTORY_COMPARE_EDITOR  3208
#define IDC_HISTORY_COMPARE_SERVER  3209
#define IDC_HISTORY_RESTORE         3210
#define IDC_HISTORY_RETENTION       3211

#define IDD_VERSION_RETENTION       3220
#define IDC_RETENTION_LABEL         3221
#define IDC_RETENTION_COUNT         3222
#define IDC_RETENTION_SPIN          3223
#define IDC_RETENTION_HINT          3224

// "Change History..." in the editor's View menu and the explorer's menu.
#define ID_AS_VIEW_CHANGE_HISTORY   34200
#define ID_DBEXPLORER_CHANGE_HISTORY 34201
