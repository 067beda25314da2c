// Resource identifiers of the control panel.
#pragma once

#define IDI_MAIN                 201   // the program and tray icon
#define IDR_TRAYMENU             203   // the tray menu (first popup)
#define IDD_ABOUTBOX             210

#define IDC_ABOUT_VERSION        307
#define IDC_ABOUT_TITLE          308

// Tray menu commands.
#define ID_MN_CONTROL            213   // "OPC Address Space..."
#define ID_MN_DBEXPLORER         32813 // "OPC HDA Database Explorer..."
#define ID_MN_OPTIONS            205   // "Options..."
#define ID_MN_ABOUT              207   // "About..."
#define ID_MN_START_SERVER       32819 // "Start"
#define ID_MN_STOP_SERVER        32821 // "Stop"
#define ID_MN_SHUTDOWN           206   // "Exit"

#include "resource_editor.h"
#include "resource_csv.h"
#include "resource_histwin.h"
#include "resource_options.h"
#include "resource_chart.h"
#include "resource_journal.h"
#include "resource_review.h"
#include "resource_workbook.h"
