#pragma once
// The XML export of an item's archived values ("Save data..." of the
// historical data window), built with an MSXML DOMDocument30:
//
//   <HistorianData>
//     <Item OPCItemID="<item ID>">
//       <Value Time="dd:mm:yyyy hh:mm:ss:mmm" Quality="<quality word>">value text</Value>
//       ...
//
// one Value per value in the order read; Time is the UTC time stamp; the
// text is the value as text (array elements one per line, CR LF between
// them), at most 2048 characters.
#include <windows.h>

#include <string>

#include "common/MsXml.h"
#include "common/historian/HistorianValues.h"

namespace CL {

// The longest value text written into the export.
inline constexpr size_t kExportValueTextLimit = 2048;

// Builds the document of the values.
XmlDocument BuildHistoryDocument(const std::wstring& itemId, const CHistorianValues& values);

// Builds the document and saves it to the file (replacing it whole).
// Throws CException ("pIXMLDOM->save (szFile)" when saving fails).
void ExportHistory(const std::wstring& itemId, const CHistorianValues& values, const std::wstring& path);

} // namespace CL
