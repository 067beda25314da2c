// Resource identifiers of the options dialog and the database maintenance
// options dialog.
#pragma once

#define IDD_OPTIONS                  2200   // "Options"
#define IDD_DBOPTIONS                2201   // "Database Maintenance Options"

// "Options": group "OPC HDA Server Database".
#define IDC_OPT_GRP_DATABASE         2210
#define IDC_RBT_INTERNALDB           2211   // "Internal database (Ms Access)"
#define IDC_RBT_SQLSERVER            2212   // "Ms SQL Server. OLEDB connection string:"
#define IDC_ED_ADOCONNECTION         2213
#define IDC_BT_DBOPTIONS             2214   // "Database Maintenance Options ..."
// Group "OPC Server Customisation".
#define IDC_OPT_GRP_CUSTOMISATION    2220
#define IDC_ST_TITLE                 2221
#define IDC_ED_TITLE                 2222
#define IDC_ST_TITLE_NOTE            2223
#define IDC_ST_SERVICENAME           2224
#define IDC_ED_SERVICENAME           2225
#define IDC_CH_ENABLE_DA             2226
#define IDC_ED_DA_CLSID              2227
#define IDC_BT_NEW_DA_CLSID          2228
#define IDC_CH_ENABLE_HDA            2229
#define IDC_ED_HDA_CLSID             2230
#define IDC_BT_NEW_HDA_CLSID         2231
#define IDC_CH_ENABLE_AE             2232
#define IDC_ED_AE_CLSID              2233
#define IDC_BT_NEW_AE_CLSID          2234
#define IDC_ST_CCM_CLSID             2235
#define IDC_ED_CCM_CLSID             2236
#define IDC_BT_NEW_CCM_CLSID         2237
// Group "Miscellaneous".
#define IDC_OPT_GRP_MISC             2240
#define IDC_CH_START_CCM             2241
#define IDC_ED_CCM                   2242
#define IDC_ST_CCM_NOTE              2243
#define IDC_CH_START_EMPTY           2244
#define IDC_CH_MAP_ITEMS             2245
#define IDC_CH_ENABLE_XMLDA          2246
#define IDC_ED_XMLDA_PORT            2247
#define IDC_ST_XMLDA_PATH            2248
#define IDC_CH_ENABLE_UA             2249
#define IDC_ED_UA_PORT               2250
#define IDC_ST_UA_PATH               2251
#define IDC_ST_LOGGING_LEVEL         2252
#define IDC_CB_LOGGING_LEVEL         2253
#define IDC_BT_DEFAULTS              2254   // "Defaults"

// "Database Maintenance Options".
#define IDC_DB_GRP_VALUES            2270   // "OPC item values"
#define IDC_CH_KEEP_ALL              2271
#define IDC_CH_KEEP_NUMBER           2272
#define IDC_ED_KEEP_NUMBER           2273
#define IDC_ST_KEEP_NUMBER_UNIT      2274
#define IDC_CH_KEEP_MINUTES          2275
#define IDC_ED_KEEP_MINUTES          2276
#define IDC_ST_KEEP_MINUTES_UNIT     2277
#define IDC_ST_DB_NOTE               2278
#define IDC_DB_GRP_LIMIT             2279   // "Action upon the database reaches its limit ..."
#define IDC_ST_DELETE_PERCENT        2280
#define IDC_ED_DELETE_PERCENT        2281
#define IDC_ST_DELETE_PERCENT_UNIT   2282
