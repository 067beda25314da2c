#pragma once
// The file types an address space can be read from for a compare: the XML
// file of the server's format and the CSV of the spreadsheet exchange. One
// table names each type's extension, its text in the open-file dialog and
// its loader, so that another type is one line of that table.
#include <string>
#include <vector>

#include "addressspace/OPCServerAddressSpace.h"
#include "common/SmartPtr.h"

namespace CL {

using AddressSpaceLoader = CSmartPtr<COPCServerAddressSpace> (*)(const std::wstring& path);

struct AddressSpaceFileType {
    const wchar_t* extension;     // with the dot, ".xml"
    const wchar_t* description;   // "XML files"
    AddressSpaceLoader load;
};

// Every type that can be read, the XML file first.
const std::vector<AddressSpaceFileType>& AddressSpaceFileTypes();

// The open-file dialog's filter list (double-NUL ended, as a string that
// holds the NULs): all readable types together, each type, all files.
std::wstring AddressSpaceFileFilter();

// A new address space read from the file, by its extension (ignoring case);
// a file of any other extension is read as XML. A CSV's lines that cannot
// be taken are left out. Throws CException when the file cannot be read.
CSmartPtr<COPCServerAddressSpace> LoadAddressSpaceFile(const std::wstring& path);

} // namespace CL
