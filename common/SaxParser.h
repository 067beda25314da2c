#pragma once
// XML read as a stream of events with MSXML's SAX reader (SAXXMLReader30),
// so that a part of a hundred megabytes never becomes a DOM. The handler
// gets elements by their local names (namespaces stripped, as workbook
// writers differ in the prefixes they use) and text as it comes, possibly in
// several pieces per element.
#include <windows.h>
#include <msxml2.h>
#include <objidl.h>

#include <string>
#include <string_view>

namespace CL {

class ISaxHandler {
public:
    virtual ~ISaxHandler() = default;
    virtual void StartElement(std::wstring_view name, ISAXAttributes* attributes) = 0;
    virtual void EndElement(std::wstring_view name) = 0;
    virtual void Characters(std::wstring_view text) = 0;
};

// The value of the attribute of that local name ("" when missing; found
// tells which).
std::wstring_view SaxAttribute(ISAXAttributes* attributes, std::wstring_view name, bool* found = nullptr);

// Parses the stream, calling the handler. An exception thrown by the
// handler stops the parse and is thrown on; a parse failure throws
// CException naming the part and the line.
void ParseXml(IStream* stream, ISaxHandler& handler, const std::wstring& partName);

} // namespace CL
