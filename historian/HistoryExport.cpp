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

CHistoryXmlBuilder::CHistoryXmlBuilder()
    : m_document(CreateDomDocument30(L"pIXMLDOM.CreateInstance (__uuidof (MSXML2::DOMDocument30))"))
{
    XmlNode documentNode;
    Check(m_document.QueryInterface(__uuidof(IXMLDOMNode), documentNode), L"QueryInterface (IXMLDOMNode)");
    m_root = AppendElement(m_document.Get(), documentNode.Get(), CBstr(L"HistorianData"), CBstr(L""));
}

void CHistoryXmlBuilder::AddItem(const std::wstring& itemId, const CHistorianValues& values,
                                 const std::function<void(size_t)>& step)
{
    constexpr size_t kValuesPerStep = 4096;
    const CBstr noNamespace(L"");
    const XmlElement item = AppendElement(m_document.Get(), m_root.Get(), CBstr(L"Item"), noNamespace);
    SetAttribute(item.Get(), CBstr(L"OPCItemID"), itemId);

    const CBstr valueName(L"Value");
    const CBstr timeName(L"Time");
    const CBstr qualityName(L"Quality");
    for (size_t i = 0; i < values.Size(); ++i) {
        // Filled before it joins the tree (cheaper for the DOM).
        const XmlElement value = NewElement(m_document.Get(), valueName, noNamespace);
        SetAttribute(value.Get(), timeName, UtcExportText(values.times[i]));
        SetAttribute(value.Get(), qualityName, Format(L"%u", static_cast<unsigned>(values.qualities[i])));
        const CBstr text(ValueText(values.values[i]));
        Check(value->put_text(text.Get()), L"put_text");
        Append(item.Get(), value.Get());
        if (step && (i + 1) % kValuesPerStep == 0)
            step(i + 1);
    }
}

void CHistoryXmlBuilder::Save(const std::wstring& path)
{
    SaveDocumentReplacing(m_document.Get(), path, L"pIXMLDOM->save (szFile)");
}

XmlDocument BuildHistoryDocument(const std::wstring& itemId, const CHistorianValues& values)
{
    CHistoryXmlBuilder builder;
    builder.AddItem(itemId, values);
    return std::move(builder.Document());
}

void ExportHistory(const std::wstring& itemId, const CHistorianValues& values, const std::wstring& path)
{
    CHistoryXmlBuilder builder;
    builder.AddItem(itemId, values);
    builder.Save(path);
}

} // namespace CL
