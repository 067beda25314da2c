#include "common/MsXml.h"

#include <initguid.h>

#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/ReplacingFile.h"
#include "common/Variant.h"

// Identifiers that MinGW declares but does not define.
DEFINE_GUID(CLSID_DOMDocument30, 0xf5078f32, 0xc551, 0x11d3, 0x89, 0xb9, 0x00, 0x00, 0xf8, 0x1f, 0xe2, 0x21);
DEFINE_GUID(IID_IXMLDOMNode, 0x2933bf80, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMDocument, 0x2933bf81, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMNodeList, 0x2933bf82, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMNamedNodeMap, 0x2933bf83, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMAttribute, 0x2933bf85, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMElement, 0x2933bf86, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMText, 0x2933bf87, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMDocument2, 0x2933bf95, 0x7b36, 0x11d2, 0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60);
DEFINE_GUID(IID_IXMLDOMParseError, 0x3efaa426, 0x272f, 0x11d2, 0x83, 0x6f, 0x00, 0x00, 0xf8, 0x7a, 0x77, 0x82);

namespace CL {

XmlDocument CreateDomDocument30(const wchar_t* failureSource)
{
    XmlDocument document;
    const HRESULT hr = ::CoCreateInstance(CLSID_DOMDocument30, nullptr, CLSCTX_INPROC_SERVER,
                                          IID_IXMLDOMDocument,
                                          reinterpret_cast<void**>(document.ReleaseAndGetAddressOf()));
    if (FAILED(hr))
        throw CException(hr, failureSource);
    document->put_async(VARIANT_FALSE);
    return document;
}

void SaveDocumentReplacing(IXMLDOMDocument* document, const std::wstring& path,
                           const wchar_t* failureSource)
{
    // A read-only target is refused, as a direct write to it would be (the
    // replacing move below is not refused everywhere).
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        throw CException(HResultFromWin32(ERROR_ACCESS_DENIED), failureSource);
    // The document is saved over an empty file reserved beside the target
    // under a name no file had, so no file of the user's is replaced.
    std::wstring temporary;
    if (!CReplacingFile::CreateTemporaryBeside(path, temporary))
        throw CException(LastErrorAsHResult(), failureSource);
    CVariant target(temporary);
    HRESULT hr = document->save(target);
    if (FAILED(hr)) {
        ::DeleteFileW(temporary.c_str());
        throw CException(hr, failureSource);
    }
    if (!::MoveFileExW(temporary.c_str(), path.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        hr = LastErrorAsHResult();
        ::DeleteFileW(temporary.c_str());
        throw CException(hr, failureSource);
    }
}

HRESULT GetAttribute(IXMLDOMElement* element, const wchar_t* name, VARIANT* value)
{
    if (!element)
        return E_POINTER;
    CBstr attribute(name);
    return element->getAttribute(attribute.Get(), value);
}

} // namespace CL
