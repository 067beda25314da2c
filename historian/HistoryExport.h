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

#include <functional>
#include <string>

#include "common/MsXml.h"
#include "common/historian/HistorianValues.h"

namespace CL {

// The longest value text written into the export.
inline constexpr size_t kExportValueTextLimit = 2048;

// The document of several items: one Item element per item, in the order
// they are added.
class CHistoryXmlBuilder {
public:
    CHistoryXmlBuilder();
    // Appends the item's element with its values; step is called every few
    // thousand values with the number added of these values.
    void AddItem(const std::wstring& itemId, const CHistorianValues& values,
                 const std::function<void(size_t)>& step = {});
    XmlDocument& Document() { return m_document; }
    // Saves the document over the file (beside it first, then moved).
    void Save(const std::wstring& path);

private:
    XmlDocument m_document;
    XmlElement m_root;
};

// Builds the document of the values.
XmlDocument BuildHistoryDocument(const std::wstring& itemId, const CHistorianValues& values);

// Builds the document and saves it to the file (replacing it whole).
// Throws CException ("pIXMLDOM->save (szFile)" when saving fails).
void ExportHistory(const std::wstring& itemId, const CHistorianValues& values, const std::wstring& path);

} // namespace CL
