#pragma once
// MSXML DOM access shared by the settings file, the address space file and
// the historian export. MinGW's msxml2.h declares the class and interface
// identifiers without defining them; MsXml.cpp defines them and the
// __CRT_UUID_DECL lines below make __uuidof work for these interfaces.
#include <windows.h>
#include <msxml2.h>

#include <string>

#include "common/ComPtr.h"

__CRT_UUID_DECL(IXMLDOMNode, 0x2933bf80, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMDocument, 0x2933bf81, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMNodeList, 0x2933bf82, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMNamedNodeMap, 0x2933bf83, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMAttribute, 0x2933bf85, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMElement, 0x2933bf86, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMText, 0x2933bf87, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMDocument2, 0x2933bf95, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60)
__CRT_UUID_DECL(IXMLDOMParseError, 0x3efaa426, 0x272f, 0x11d2, 0x83, 0x6f, 0x00, 0x00, 0xf8, 0x7a, 0x77, 0x82)

namespace CL {

using XmlDocument = ComPtr<IXMLDOMDocument>;
using XmlElement = ComPtr<IXMLDOMElement>;
using XmlNode = ComPtr<IXMLDOMNode>;

// A new, empty MSXML DOMDocument30 (synchronous loading). Failure throws
// CException with the given source text and the COM status.
XmlDocument CreateDomDocument30(const wchar_t* failureSource);

// Saves a document to the full path without ever leaving a truncated file:
// the text goes to a temporary file beside the target, which then replaces
// the target in one move. A read-only target is refused with access denied.
// Failure throws CException(status, failureSource).
void SaveDocumentReplacing(IXMLDOMDocument* document, const std::wstring& path,
                           const wchar_t* failureSource);

// The element's attribute as a variant (VT_NULL when it is missing).
HRESULT GetAttribute(IXMLDOMElement* element, const wchar_t* name, VARIANT* value);

} // namespace CL
