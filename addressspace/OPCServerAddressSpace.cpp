#include "addressspace/OPCServerAddressSpace.h"

#include <cwchar>

#include "common/DiagnosticLog.h"
#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/MsXml.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/Variant.h"

namespace {

using Branch = COPCServerAddressSpaceBranch;
using NodeList = CL::ComPtr<IXMLDOMNodeList>;

// Element and attribute names of the address space file.
constexpr wchar_t kRootElement[] = L"Morvane_OPCDAAddressSpace";
constexpr wchar_t kBranchElement[] = L"Branch";
constexpr wchar_t kItemElement[] = L"Item";
constexpr wchar_t kValueElement[] = L"Value";
constexpr wchar_t kConditionElement[] = L"OPCAECondition";
constexpr wchar_t kName[] = L"Name";

constexpr wchar_t kCreateDocumentSource[] = L"pxmlDoc.CreateInstance (__uuidof (MSXML2::DOMDocument30))";

// Values are written and read as text in the system's default locale, the
// locale of every other place where the program shows or takes values.
constexpr LCID kValueLocale = CL::kLocaleSystemDefault;

void Check(HRESULT hr, const wchar_t* source)
{
    if (FAILED(hr))
        throw CL::CException(hr, source);
}

void LogCaught(const CL::CException& e, const std::string& position)
{
    if (LogEnabled(1))
        Log(1, "CException: " + CL::Narrow(e.Text()) + position);
}

// --- Writing ---------------------------------------------------------------

CL::XmlElement AppendElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const wchar_t* name)
{
    const CL::CVariant type = CL::CVariant::I4(NODE_ELEMENT);
    CL::CBstr elementName(name);
    CL::CBstr noNamespace(L"");
    CL::XmlNode node;
    Check(document->createNode(type, elementName.Get(), noNamespace.Get(), node.ReleaseAndGetAddressOf()),
          L"pxmlDoc->createNode");
    CL::XmlNode appended;
    Check(parent->appendChild(node.Get(), appended.ReleaseAndGetAddressOf()), L"appendChild");
    CL::XmlElement element;
    Check(node.QueryInterface(__uuidof(IXMLDOMElement), element), L"QueryInterface (IXMLDOMElement)");
    return element;
}

void SetAttribute(IXMLDOMElement* element, const wchar_t* name, const VARIANT& value)
{
    CL::CBstr attribute(name);
    Check(element->setAttribute(attribute.Get(), value), name);
}

// XML 1.0 cannot hold control characters other than tab, line feed and
// carriage return, nor U+FFFE, U+FFFF or half of a surrogate pair. The DOM
// would write them anyway and the file would no longer load (here nor in
// the server), so a save refuses them before the file is touched.
// The first character of the text that XML cannot hold, or 0 when none.
wchar_t FirstNonXmlCharacter(const std::wstring& text)
{
    for (size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if ((c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE) || c == L'\t' || c == L'\n' || c == L'\r')
            continue;
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            ++i;   // a whole surrogate pair
            continue;
        }
        return c;
    }
    return 0;
}

// Throws for such a character: "Character 0x0001 in <what> "<whose>" ...".
void CheckXmlText(const std::wstring& text, const wchar_t* what, const std::wstring& whose)
{
    if (const wchar_t c = FirstNonXmlCharacter(text))
        throw CL::CException(E_INVALIDARG, CL::Format(L"Character 0x%04X in %ls \"%ls\" cannot be stored in an XML file.",
                                                      static_cast<unsigned>(c), what, whose.c_str()));
}

void SetText(IXMLDOMElement* element, const wchar_t* name, const std::wstring& text)
{
    CheckXmlText(text, name, text);
    SetAttribute(element, name, CL::CVariant(text));
}

LONGLONG FileTimeToInt64(const FILETIME& time)
{
    ULARGE_INTEGER u;
    u.LowPart = time.dwLowDateTime;
    u.HighPart = time.dwHighDateTime;
    return static_cast<LONGLONG>(u.QuadPart);
}

FILETIME Int64ToFileTime(LONGLONG value)
{
    ULARGE_INTEGER u;
    u.QuadPart = static_cast<ULONGLONG>(value);
    FILETIME time;
    time.dwLowDateTime = u.LowPart;
    time.dwHighDateTime = u.HighPart;
    return time;
}

// The Value child comes first, and only for a value that is not empty; a
// value that cannot be shown as text is left out (and logged).
void WriteValue(IXMLDOMDocument* document, IXMLDOMElement* element, const COPCItem& item)
{
    const CL::CVariant value = item.Value();
    if (value.vt == VT_EMPTY)
        return;
    std::wstring text;
    try {
        text = CL::VariantToString(value, kValueLocale, CL::kArraySeparator);
    } catch (const CL::CException&) {
        if (LogEnabled(2))
            Log(2, "Failed to convert VARIANT to VT_BSTR [OPCServerAddressSpace, 161]");
        return;
    }
    CheckXmlText(text, L"the value of item", item.Name());
    const CL::XmlElement valueElement = AppendElement(document, element, kValueElement);
    CL::CBstr bstr(text);
    Check(valueElement->put_text(bstr.Get()), L"put_text");
}

void WriteItem(IXMLDOMDocument* document, IXMLDOMElement* element, const COPCItem& item)
{
    WriteValue(document, element, item);
    SetText(element, kName, item.Name());
    SetAttribute(element, L"CanonicalDataType", CL::CVariant::UI2(item.CanonicalDataType()));
    SetAttribute(element, L"Quality", CL::CVariant::UI2(item.Quality()));
    SetAttribute(element, L"Writable", CL::CVariant::Bool(item.Writable()));
    SetAttribute(element, L"Readable", CL::CVariant::Bool(item.Readable()));
    SetAttribute(element, L"ScanRate", CL::CVariant::UI4(item.ScanRate()));
    SetAttribute(element, L"Archive", CL::CVariant::Bool(item.Archive()));
    SetAttribute(element, L"ValueTime", CL::CVariant::I8(FileTimeToInt64(item.ValueTime())));
}

void WriteBranch(IXMLDOMDocument* document, IXMLDOMElement* element, const Branch& branch)
{
    try {
        for (const auto& child : branch.Branches())
            WriteBranch(document, AppendElement(document, element, kBranchElement).Get(), *child);
    } catch (...) {
        if (LogEnabled(0))
            Log(0, "Error saving branches" + MV_POS());
        throw;
    }
    try {
        for (const auto& item : branch.Items())
            WriteItem(document, AppendElement(document, element, kItemElement).Get(), *item);
    } catch (...) {
        if (LogEnabled(0))
            Log(0, "Error saving items" + MV_POS());
        throw;
    }
    SetText(element, kName, branch.Name());
}

void WriteCondition(IXMLDOMElement* element, const AeCondition& c)
{
    SetText(element, L"source", c.source);
    SetText(element, L"conditionName", c.conditionName);
    SetAttribute(element, L"category", CL::CVariant::UI4(c.category));
    SetAttribute(element, L"active", CL::CVariant::Bool(c.active));
    SetAttribute(element, L"enabled", CL::CVariant::Bool(c.enabled));
    SetAttribute(element, L"acked", CL::CVariant::Bool(c.acked));
    SetText(element, L"definition", c.definition);
    SetAttribute(element, L"severity", CL::CVariant::UI4(c.severity));
    SetText(element, L"description", c.description);
    SetAttribute(element, L"quality", CL::CVariant::UI2(c.quality));
    SetAttribute(element, L"lastAckTime", CL::CVariant::R8(c.lastAckTime));
    SetAttribute(element, L"lastActive", CL::CVariant::R8(c.lastActive));
    SetAttribute(element, L"lastInactive", CL::CVariant::R8(c.lastInactive));
    SetText(element, L"acknowledgerId", c.acknowledgerId);
    SetText(element, L"comment", c.comment);
}

// --- Reading ---------------------------------------------------------------

NodeList SelectNodes(IXMLDOMNode* node, const wchar_t* query)
{
    CL::CBstr path(query);
    NodeList list;
    Check(node->selectNodes(path.Get(), list.ReleaseAndGetAddressOf()), L"selectNodes");
    return list;
}

// The next element of the list, or null at its end.
CL::XmlElement NextElement(IXMLDOMNodeList* list)
{
    CL::XmlNode node;
    Check(list->nextNode(node.ReleaseAndGetAddressOf()), L"nextNode");
    CL::XmlElement element;
    if (node)
        Check(node.QueryInterface(__uuidof(IXMLDOMElement), element), L"QueryInterface (IXMLDOMElement)");
    return element;
}

// The child elements of an element with the given names, in document order,
// sorted by name: one walk over the children (an XPath query per name and
// per item costs far more with large files).
struct ChildElements {
    std::vector<CL::XmlElement> branches;
    std::vector<CL::XmlElement> items;
    CL::XmlElement value;   // the first Value child
};

ChildElements ChildrenOf(IXMLDOMElement* element)
{
    ChildElements children;
    CL::XmlNode child;
    Check(element->get_firstChild(child.ReleaseAndGetAddressOf()), L"get_firstChild");
    while (child) {
        DOMNodeType type = NODE_INVALID;
        Check(child->get_nodeType(&type), L"get_nodeType");
        if (type == NODE_ELEMENT) {
            CL::CBstr name;
            Check(child->get_nodeName(name.ReleaseAndGetAddressOf()), L"get_nodeName");
            std::vector<CL::XmlElement>* list = nullptr;
            const bool isValue = name.Get() && std::wcscmp(name.Get(), kValueElement) == 0;
            if (name.Get() && std::wcscmp(name.Get(), kBranchElement) == 0)
                list = &children.branches;
            else if (name.Get() && std::wcscmp(name.Get(), kItemElement) == 0)
                list = &children.items;
            if (list || (isValue && !children.value)) {
                CL::XmlElement childElement;
                Check(child.QueryInterface(__uuidof(IXMLDOMElement), childElement), L"QueryInterface (IXMLDOMElement)");
                if (list)
                    list->push_back(std::move(childElement));
                else
                    children.value = std::move(childElement);
            }
        }
        CL::XmlNode next;
        Check(child->get_nextSibling(next.ReleaseAndGetAddressOf()), L"get_nextSibling");
        child = std::move(next);
    }
    return children;
}

// The attribute converted to vt; false when the element has no such
// attribute. A text that does not convert throws with the attribute's name.
bool ReadAttribute(IXMLDOMElement* element, const wchar_t* name, VARTYPE vt, CL::CVariant& value)
{
    CL::CVariant text;
    Check(CL::GetAttribute(element, name, text.ReleaseAndGetAddressOf()), name);
    if (text.vt == VT_NULL)
        return false;
    value.Clear();
    Check(CL::EnhVariantChangeType(&value, &text, kValueLocale, CL::kConversionFlags, vt), name);
    return true;
}

// Like ReadAttribute, but the attribute must be there.
CL::CVariant RequireAttribute(IXMLDOMElement* element, const wchar_t* name, VARTYPE vt)
{
    CL::CVariant value;
    if (!ReadAttribute(element, name, vt, value))
        throw CL::CException(DISP_E_TYPEMISMATCH, name);
    return value;
}

std::wstring ReadName(IXMLDOMElement* element)
{
    CL::CVariant name;
    if (!ReadAttribute(element, kName, VT_BSTR, name) || !name.bstrVal)
        return std::wstring();
    return std::wstring(name.bstrVal, ::SysStringLen(name.bstrVal));
}

// Array elements are separated by line ends. The parser may have turned
// CR LF into LF (a file written by hand on another system), so every line
// end becomes CR LF again before the text is split.
std::wstring WithCrLfLineEnds(const std::wstring& text)
{
    std::wstring out;
    out.reserve(text.size() + text.size() / 8);
    for (size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (c == L'\r' || c == L'\n') {
            out += L"\r\n";
            if (c == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n')
                ++i;
        } else {
            out += c;
        }
    }
    return out;
}

void ReadValue(IXMLDOMElement* element, COPCItem& item)
{
    const CL::XmlElement valueNode = ChildrenOf(element).value;
    if (!valueNode)
        return;   // no Value child: the value stays empty
    CL::CBstr text;
    Check(valueNode->get_text(text.ReleaseAndGetAddressOf()), L"get_text");
    const VARTYPE vt = item.CanonicalDataType();
    const std::wstring raw = text.Str();
    const std::wstring valueText = (vt & VT_ARRAY) ? WithCrLfLineEnds(raw) : raw;
    item.SetValue(CL::StringToVariant(valueText, vt, kValueLocale, CL::kArraySeparator));
}

void ReadItem(IXMLDOMElement* element, COPCItem& item)
{
    item.Rename(ReadName(element).c_str());   // an empty name fails the item
    item.SetCanonicalDataType(RequireAttribute(element, L"CanonicalDataType", VT_UI2).uiVal);
    ReadValue(element, item);
    CL::CVariant v;
    if (ReadAttribute(element, L"ValueTime", VT_I8, v))
        item.SetValueTime(Int64ToFileTime(v.llVal));
    if (ReadAttribute(element, L"Quality", VT_UI2, v))
        item.SetQuality(v.uiVal);
    if (ReadAttribute(element, L"Readable", VT_BOOL, v))
        item.SetReadable(v.boolVal != VARIANT_FALSE);
    if (ReadAttribute(element, L"Writable", VT_BOOL, v))
        item.SetWritable(v.boolVal != VARIANT_FALSE);
    if (ReadAttribute(element, L"ScanRate", VT_UI4, v))
        item.SetScanRate(v.ulVal);
    if (ReadAttribute(element, L"Archive", VT_BOOL, v))
        item.SetArchive(v.boolVal != VARIANT_FALSE);
}

void ReadBranch(IXMLDOMElement* element, Branch& branch);

void ReadSubBranches(const std::vector<CL::XmlElement>& elements, Branch& branch)
{
    for (const CL::XmlElement& child : elements) {
        try {
            const auto subBranch = CL::CSmartPtr<Branch>::Make();
            ReadBranch(child.Get(), *subBranch);
            branch.AddBranch(subBranch);
        } catch (const CL::CException& e) {
            LogCaught(e, MV_POS());
            if (LogEnabled(1))
                Log(1, "Error loading a subbranch, branch = '" + CL::Narrow(branch.Name()) + "'" + MV_POS());
        }
    }
}

void ReadItems(const std::vector<CL::XmlElement>& elements, Branch& branch)
{
    for (const CL::XmlElement& child : elements) {
        try {
            const auto item = CL::CSmartPtr<COPCItem>::Make(0, 0, false, WORD(192), VARTYPE(VT_EMPTY), nullptr);
            ReadItem(child.Get(), *item);
            branch.AddItem(item);
        } catch (const CL::CException& e) {
            LogCaught(e, MV_POS());
            if (LogEnabled(1))
                Log(1, "Error loading an item, branch = '" + CL::Narrow(branch.Name()) + "'" + MV_POS());
        }
    }
}

void ReadBranch(IXMLDOMElement* element, Branch& branch)
{
    const std::wstring name = ReadName(element);
    if (!name.empty())
        branch.Rename(name.c_str());
    const ChildElements children = ChildrenOf(element);
    ReadSubBranches(children.branches, branch);
    ReadItems(children.items, branch);
}

AeCondition ReadCondition(IXMLDOMElement* element)
{
    AeCondition c;
    CL::CVariant v;
    auto text = [&](const wchar_t* name, std::wstring& field) {
        if (ReadAttribute(element, name, VT_BSTR, v))
            field.assign(v.bstrVal ? v.bstrVal : L"", ::SysStringLen(v.bstrVal));
    };
    auto flag = [&](const wchar_t* name, bool& field) {
        if (ReadAttribute(element, name, VT_BOOL, v))
            field = v.boolVal != VARIANT_FALSE;
    };
    auto date = [&](const wchar_t* name, DATE& field) {
        if (ReadAttribute(element, name, VT_R8, v))
            field = v.dblVal;
    };
    text(L"source", c.source);
    text(L"conditionName", c.conditionName);
    if (ReadAttribute(element, L"category", VT_UI4, v))
        c.category = v.ulVal;
    flag(L"active", c.active);
    flag(L"enabled", c.enabled);
    flag(L"acked", c.acked);
    text(L"definition", c.definition);
    if (ReadAttribute(element, L"severity", VT_UI4, v))
        c.severity = v.ulVal;
    text(L"description", c.description);
    if (ReadAttribute(element, L"quality", VT_UI2, v))
        c.quality = v.uiVal;
    date(L"lastAckTime", c.lastAckTime);
    date(L"lastActive", c.lastActive);
    date(L"lastInactive", c.lastInactive);
    text(L"acknowledgerId", c.acknowledgerId);
    text(L"comment", c.comment);
    return c;
}

} // namespace

COPCServerAddressSpace::COPCServerAddressSpace() : m_root(CL::CSmartPtr<Branch>::Make()) {}

std::vector<AeCondition> COPCServerAddressSpace::Conditions() const
{
    CL::CCriticalSection::Lock lock(m_conditionsLock);
    return m_conditions;
}

bool COPCServerAddressSpace::AddCondition(const AeCondition& condition)
{
    CL::CCriticalSection::Lock lock(m_conditionsLock);
    for (const AeCondition& listed : m_conditions)
        if (listed.SameConditionAs(condition))
            return false;
    m_conditions.push_back(condition);
    return true;
}

void COPCServerAddressSpace::ClearConditions()
{
    CL::CCriticalSection::Lock lock(m_conditionsLock);
    m_conditions.clear();
}

void COPCServerAddressSpace::Clear()
{
    m_root->Clear();
    ClearConditions();
}

void COPCServerAddressSpace::Save(const std::wstring& path) const
{
    CL::XmlDocument document;
    try {
        document = CL::CreateDomDocument30(kCreateDocumentSource);
    } catch (const CL::CException& e) {
        if (LogEnabled(0))
            Log(0, CL::FormatA("Microsoft XML Parser (MSXML) 4.0 is not installed: 0x%X",
                               static_cast<unsigned>(e.Error())) + MV_POS());
        throw CL::CException(E_FAIL, kCreateDocumentSource);
    }
    CL::XmlNode documentNode;
    Check(document.QueryInterface(__uuidof(IXMLDOMNode), documentNode), L"QueryInterface (IXMLDOMNode)");
    const CL::XmlElement root = AppendElement(document.Get(), documentNode.Get(), kRootElement);
    WriteBranch(document.Get(), root.Get(), *m_root);
    for (const AeCondition& condition : Conditions())
        WriteCondition(AppendElement(document.Get(), root.Get(), kConditionElement).Get(), condition);
    CL::SaveDocumentReplacing(document.Get(), path, L"pxmlDoc->save (_variant_t (path))");
}

void COPCServerAddressSpace::Load(const std::wstring& path)
{
    m_state = kStateLoading;
    const CL::XmlDocument document = CL::CreateDomDocument30(kCreateDocumentSource);
    // Values are taken exactly as written, blanks at their ends included.
    Check(document->put_preserveWhiteSpace(VARIANT_TRUE), L"put_preserveWhiteSpace");
    VARIANT_BOOL loaded = VARIANT_FALSE;
    const HRESULT hr = document->load(CL::CVariant(path), &loaded);
    if (FAILED(hr) || loaded != VARIANT_TRUE)
        throw CL::CException(E_FAIL, L"Error loading OPC Address Space file.");

    CL::CBstr query(kRootElement);
    CL::XmlNode rootNode;
    Check(document->selectSingleNode(query.Get(), rootNode.ReleaseAndGetAddressOf()), L"selectSingleNode");
    CL::XmlElement root;
    if (rootNode)
        rootNode.QueryInterface(__uuidof(IXMLDOMElement), root);
    if (!root)
        throw CL::CException(E_POINTER, L"pxmlDoc->selectSingleNode (\"Morvane_OPCDAAddressSpace\")");

    ReadBranch(root.Get(), *m_root);

    const NodeList conditions = SelectNodes(root.Get(), kConditionElement);
    ClearConditions();
    for (CL::XmlElement element = NextElement(conditions.Get()); element; element = NextElement(conditions.Get())) {
        try {
            if (!AddCondition(ReadCondition(element.Get())) && LogEnabled(1))
                Log(1, "Duplicate conditions in xml" + MV_POS());
        } catch (const CL::CException& e) {
            LogCaught(e, MV_POS());
            if (LogEnabled(1))
                Log(1, "Error loading a condition" + MV_POS());
        }
    }
    m_state = kStateLoaded;
}
