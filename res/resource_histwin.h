// Resource identifiers of the historian windows: the database explorer, the
// historical data dialog and the time period dialog.
#pragma once

#define IDD_HISTDATA                 610   // "Historical data"
#define IDD_TIMEPERIOD               611   // "Delete selected items values from database"
#define IDR_DBEXPLORER_CONTEXT       612   // the explorer list's right-click menu

// Database explorer commands (toolbar, right-click menu, string table).
#define ID_DBEXPLORER_DELETE_ALL     32804
#define ID_DBEXPLORER_ABOUT          32808
#define ID_DBEXPLORER_DELETE         32809
#define ID_DBEXPLORER_REFRESH        32810
#define ID_DBEXPLORER_SHOW_DATA      32811
#define IDC_DBEXPLORER_LIST          1001

// Time period controls (the historical data dialog uses the same ids for
// its check boxes and pickers).
#define IDC_TIMEPERIOD_CHK_TO        1011
#define IDC_TIMEPERIOD_FROM          1028
#define IDC_TIMEPERIOD_TO            1029
#define IDC_TIMEPERIOD_CHK_FROM      1033

// Historical data controls.
#define IDC_HISTDATA_MAX_COUNT       1020
#define IDC_HISTDATA_ITEM            1034
#define IDC_HISTDATA_STATUS          1038
#define IDC_HISTDATA_BTN_REFRESH     1039  // "Show data"
#define IDC_HISTDATA_OPEN_FILE       1040  // "Save data..."
#define IDC_HISTDATA_LIST            1041
#define IDC_HISTDATA_GROUP           1042
#define IDC_HISTDATA_NOTE            1043
#define IDC_HISTDATA_MAX_LABEL       1044
#define IDC_HISTDATA_MAX_NOTE        1045
#define IDC_HISTDATA_ITEM_LABEL      1046

// The explorer's filter bar (a child dialog above the list).
#define IDD_DBEXPLORER_FILTER        1600
#define IDC_DBEXPLORER_FILTER_LABEL  1601
#define IDC_DBEXPLORER_FILTER        1602  // the filter text box

// Historical data: what lies beyond a read that stopped at the maximum, the
// progress of long work and its Cancel button.
#define IDC_HISTDATA_MORE            1605  // "More values follow after <time>"
#define IDC_HISTDATA_NEXT            1606  // "&Next"
#define IDC_HISTDATA_CANCEL          1607  // "Cancel" of long work
#define IDR_HISTDATA_CONTEXT         1610  // the value list's right-click menu

// Explorer commands added to the toolbar, the right-click menu and the keys.
#define ID_DBEXPLORER_EXPORT         32830  // "Export values..."
#define ID_DBEXPLORER_COPY           32831  // Ctrl+C: the selected rows as text
#define ID_DBEXPLORER_SELECT_ALL     32832  // Ctrl+A
#define ID_DBEXPLORER_FIND           32833  // Ctrl+F: to the filter box
#define ID_DBEXPLORER_CANCEL         32834  // Esc / "Cancel" of long work
// Historical data list commands (right-click menu, keys).
#define ID_HISTDATA_COPY             32840
#define ID_HISTDATA_SELECT_ALL       32841
