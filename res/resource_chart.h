// Resource identifiers of the trend chart of the historical data window.
#pragma once

#define IDC_HISTDATA_CHART           1500  // the chart window
#define IDC_HISTDATA_CHART_SHOW      1501  // check box "Chart"
#define IDR_TREND_CONTEXT            1510  // the chart's right-click menu

// Chart commands (right-click menu, keyboard).
#define ID_TREND_SHOW_ALL            33500 // "Show all"
#define ID_TREND_COPY                33501 // "Copy"
#define ID_TREND_SAVE_PNG            33502 // "Save as PNG..."
#define IDC_HISTDATA_CHART_BAR       1502  // the bar between the list and the chart
