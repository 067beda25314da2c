// Resource identifiers of the address space editor and its dialogs.
#pragma once

#define IDR_EDITOR_MENU          1100  // the editor's menu bar (and its accelerators)
#define IDR_EDITOR_TREE_MENU     1101  // right click on the tree
#define IDR_EDITOR_LIST_MENU     1102  // right click on the list
#define IDD_ADDITEM              1110
#define IDD_ADDBRANCH            1111
#define IDD_FIND                 1112
#define IDD_DUPLICATE            1113

// Child windows of the editor.
#define IDC_EDITOR_SPLITTER      1120
#define IDC_EDITOR_TREE          1121
#define IDC_EDITOR_LIST          1122

// Item dialog controls.
#define IDC_ITEM_NAME            1130
#define IDC_ITEM_BRANCH          1131
#define IDC_ITEM_TYPE            1132
#define IDC_ITEM_VALUE           1133
#define IDC_ITEM_READABLE        1134
#define IDC_ITEM_WRITABLE        1135
#define IDC_ITEM_SCANRATE        1136
#define IDC_ITEM_ARCHIVE         1137
#define IDC_ITEM_HINT            1138
#define IDC_ITEM_SCANRATE_LABEL  1139
#define IDC_ITEM_SCANRATE_UNIT   1143
// Branch dialog controls.
#define IDC_BRANCH_NAME          1140
#define IDC_BRANCH_PARENT        1141
// Find dialog controls.
#define IDC_FIND_TEXT            1160
#define IDC_FIND_COUNT           1161
#define IDC_FIND_RESULTS         1162
#define IDC_FIND_LABEL           1163
// Duplicate dialog controls.
#define IDC_DUPLICATE_ITEM       1170
#define IDC_DUPLICATE_COUNT      1171
#define IDC_DUPLICATE_SPIN       1172
#define IDC_DUPLICATE_PREVIEW    1173
// "Save && Create &New" in both dialogs.
#define IDC_SAVE_AND_NEW         1150

// Editor commands (menu, toolbar, context menus, accelerators).
#define ID_AS_FILE_NEW           33100
#define ID_AS_FILE_OPEN          33101
#define ID_AS_FILE_SAVE          33102
#define ID_AS_FILE_SAVE_COPY     33103
#define ID_AS_FILE_RELOAD        33104
#define ID_AS_EDIT_NEW_BRANCH    33110
#define ID_AS_EDIT_NEW_ITEM      33111
#define ID_AS_EDIT_DELETE        33112
#define ID_AS_EDIT_HISTORY       33113
#define ID_AS_EDIT_PROPERTIES    33114
#define ID_AS_EDIT_UNDO          33115
#define ID_AS_EDIT_REDO          33116
#define ID_AS_EDIT_FIND          33117
#define ID_AS_EDIT_FIND_NEXT     33118
#define ID_AS_EDIT_FIND_PREVIOUS 33119
#define ID_AS_EDIT_CUT           33122
#define ID_AS_EDIT_COPY          33123
#define ID_AS_EDIT_PASTE         33124
#define ID_AS_EDIT_DUPLICATE     33125
#define ID_AS_EDIT_RENAME        33126
#define ID_AS_VIEW_TOOLBAR       33120
#define ID_AS_VIEW_STATUS_BAR    33121
#define ID_AS_HELP_ONLINE        33130
#define ID_AS_HELP_ABOUT         33131
