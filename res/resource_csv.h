// Resource identifiers of the address space's CSV import and export.
#pragma once

#define IDD_CSV_IMPORT           1300
#define IDC_CSV_SUMMARY          1301
#define IDC_CSV_REJECTED         1302
#define IDC_CSV_UPDATE           1303
#define IDC_CSV_REJECTED_LABEL   1304

#define ID_AS_FILE_EXPORT_CSV    33105
#define ID_AS_FILE_IMPORT_CSV    33106
