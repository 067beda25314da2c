// Resource identifiers of the workbook (.xlsx) export and import.
#pragma once

#define ID_AS_FILE_EXPORT_WORKBOOK   34000
#define ID_AS_FILE_IMPORT_WORKBOOK   34001
