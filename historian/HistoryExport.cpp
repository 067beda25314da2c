#include "historian/HistoryExport.h"

#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/LocalTime.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/Variant.h"

namespace CL {

namespace {

void Check(HRESULT hr, const wchar_t* source)
{
    if (FAILED(hr))
        throw CException(hr, source);
}

// A new element in no namespace, not yet in the tree.
XmlElement NewElement(IXMLDOMDocument* document, const CBstr& name, const CBstr& noNamespace)
{
    const CVariant type = CVariant::I4(NODE_ELEMENT);
    XmlNode node;
    Check(document->createNode(type, name.Get(), noNamespace.Get(), node.ReleaseAndGetAddressOf()),
          L"pIXMLDOM->createNode (NODE_ELEMENT)");
    XmlElement element;
    Check(node.QueryInterface(__uuidof(IXMLDOMElement), element), L"QueryInterface (IXMLDOMElement)");
    return element;
}

void Append(IXMLDOMNode* parent, IXMLDOMNode* child)
{
    XmlNode appended;
    Check(parent->appendChild(child, appended.ReleaseAndGetAddressOf()), L"appendChild");
}

// A new element in no namespace, appended to parent.
XmlElement AppendElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const CBstr& name,
                         const CBstr& noNamespace)
{
    XmlElement element = NewElement(document, name, noNamespace);
    Append(parent, element.Get());
    return element;
}

void SetAttribute(IXMLDOMElement* element, const CBstr& name, const std::wstring& value)
{
    Check(element->setAttribute(name.Get(), CVariant(value)), L"setAttribute");
}

std::wstring ValueText(const VARIANT& value)
{
    std::wstring text = VariantToString(value, kLocaleSystemDefault, kArraySeparator);
    if (text.size() > kExportValueTextLimit)
        text.resize(kExportValueTextLimit);
    return text;
}

} // namespace

XmlDocument BuildHistoryDocument(const std::wstring& itemId, const CHistorianValues& values)
{
    XmlDocument document = CreateDomDocument30(L"pIXMLDOM.CreateInstance (__uuidof (MSXML2::DOMDocument30))");
    const CBstr noNamespace(L"");
    XmlNode documentNode;
    Check(document.QueryInterface(__uuidof(IXMLDOMNode), documentNode), L"QueryInterface (IXMLDOMNode)");
    const XmlElement root = AppendElement(document.Get(), documentNode.Get(), CBstr(L"HistorianData"), noNamespace);
    const XmlElement item = AppendElement(document.Get(), root.Get(), CBstr(L"Item"), noNamespace);
    SetAttribute(item.Get(), CBstr(L"OPCItemID"), itemId);

    const CBstr valueName(L"Value");
    const CBstr timeName(L"Time");
    const CBstr qualityName(L"Quality");
    for (size_t i = 0; i < values.Size(); ++i) {
        // Filled before it joins the tree (cheaper for the DOM).
        const XmlElement value = NewElement(document.Get(), valueName, noNamespace);
        SetAttribute(value.Get(), timeName, UtcExportText(values.times[i]));
        SetAttribute(value.Get(), qualityName, Format(L"%u", static_cast<unsigned>(values.qualities[i])));
        const CBstr text(ValueText(values.values[i]));
        Check(value->put_text(text.Get()), L"put_text");
        Append(item.Get(), value.Get());
    }
    return document;
}

void ExportHistory(const std::wstring& itemId, const CHistorianValues& values, const std::wstring& path)
{
    const XmlDocument document = BuildHistoryDocument(itemId, values);
    SaveDocumentReplacing(document.Get(), path, L"pIXMLDOM->save (szFile)");
}

} // namespace CL
