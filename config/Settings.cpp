#include "config/Settings.h"

#include <objbase.h>

#include <cwchar>
#include <variant>
#include <vector>

#include "common/Bstr.h"
#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/MsXml.h"
#include "common/Text.h"
#include "common/Variant.h"

namespace CL {
// {6E2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A01} and its three siblings.
const GUID kDefaultHDAServerClsid = {0x6e2d1a40, 0x3b7c, 0x4f8e, {0x9a, 0x51, 0x0c, 0x4d, 0x2b, 0x7e, 0x8a, 0x01}};
const GUID kDefaultDAServerClsid = {0x6e2d1a41, 0x3b7c, 0x4f8e, {0x9a, 0x51, 0x0c, 0x4d, 0x2b, 0x7e, 0x8a, 0x01}};
const GUID kDefaultAEServerClsid = {0x6e2d1a42, 0x3b7c, 0x4f8e, {0x9a, 0x51, 0x0c, 0x4d, 0x2b, 0x7e, 0x8a, 0x01}};
const GUID kDefaultCcmServerClsid = {0x6e2d1a43, 0x3b7c, 0x4f8e, {0x9a, 0x51, 0x0c, 0x4d, 0x2b, 0x7e, 0x8a, 0x01}};
} // namespace CL

CSettings::CSettings()
    : HDAServer_CLSID(CL::kDefaultHDAServerClsid),
      DAServer_CLSID(CL::kDefaultDAServerClsid),
      AEServer_CLSID(CL::kDefaultAEServerClsid),
      CcmServer_CLSID(CL::kDefaultCcmServerClsid)
{
}

CSettings g_Settings;

namespace {
// The log reads its trace level straight from the settings record, so a
// changed TraceLevel takes effect at once.
[[maybe_unused]] const bool g_traceLevelAnnounced = (SetTraceLevelSource(&g_Settings.TraceLevel), true);
} // namespace

namespace {

constexpr wchar_t kCreateFailure[] = L"pxmlDoc.CreateInstance (__uuidof (MSXML2::DOMDocument30))";
// Attribute texts are converted in the invariant locale, so that the file
// means the same on every machine.
constexpr LCID kFileLocale = LOCALE_INVARIANT;

using Field = std::variant<std::wstring CSettings::*, bool CSettings::*, long CSettings::*,
                           GUID CSettings::*>;
struct Key {
    const wchar_t* name;
    Field field;
};

// The keys in the order in which they are read and written.
const std::vector<Key>& Keys()
{
    static const std::vector<Key> keys = {
        {L"Title", &CSettings::Title},
        {L"CustomADOConnection", &CSettings::CustomADOConnection},
        {L"ADOConnection", &CSettings::ADOConnection},
        {L"StartCCM", &CSettings::StartCCM},
        {L"CCM", &CSettings::CCM},
        {L"StartEmpty", &CSettings::StartEmpty},
        {L"HDAServer_CLSID", &CSettings::HDAServer_CLSID},
        {L"DAServer_CLSID", &CSettings::DAServer_CLSID},
        {L"AEServer_CLSID", &CSettings::AEServer_CLSID},
        {L"ServiceName", &CSettings::ServiceName},
        {L"MapItemsToFiles", &CSettings::MapItemsToFiles},
        {L"EnableXmlDa", &CSettings::EnableXmlDa},
        {L"XmlDaPort", &CSettings::XmlDaPort},
        {L"CcmServer_CLSID", &CSettings::CcmServer_CLSID},
        {L"EnableUa", &CSettings::EnableUa},
        {L"UaPort", &CSettings::UaPort},
        {L"TraceLevel", &CSettings::TraceLevel},
        {L"DbKeepAllValues", &CSettings::DbKeepAllValues},
        {L"DbKeepLastValues", &CSettings::DbKeepLastValues},
        {L"DbLastValues", &CSettings::DbLastValues},
        {L"DbKeepLastMinutesValues", &CSettings::DbKeepLastMinutesValues},
        {L"DbLastMinutesValues", &CSettings::DbLastMinutesValues},
        {L"DbDeletePercent", &CSettings::DbDeletePercent},
    };
    return keys;
}

// The attribute converted to the wanted variant type; a missing attribute
// (VT_NULL) or text that does not convert throws at this key.
CL::CVariant ReadAttribute(IXMLDOMElement* element, const wchar_t* name, VARTYPE type)
{
    const std::wstring source = CL::Format(L"Morvane_ini attribute '%ls'", name);
    if (!element)
        throw CL::CException(E_POINTER, source);
    CL::CVariant value;
    HRESULT hr = CL::GetAttribute(element, name, &value);
    if (FAILED(hr))
        throw CL::CException(hr, source);
    CL::CVariant converted;
    hr = ::VariantChangeTypeEx(&converted, &value, kFileLocale, 0, type);
    if (FAILED(hr)) {
        // "true"/"false" are read in any letter case, whatever the platform
        // conversion accepts.
        if (type == VT_BOOL && value.vt == VT_BSTR) {
            if (CL::EqualsNoCase(CL::TrimWhiteSpace(value.bstrVal), L"true"))
                return CL::CVariant::Bool(true);
            if (CL::EqualsNoCase(CL::TrimWhiteSpace(value.bstrVal), L"false"))
                return CL::CVariant::Bool(false);
        }
        throw CL::CException(hr, source);
    }
    return converted;
}

void ReadKey(IXMLDOMElement* element, const Key& key, CSettings& settings)
{
    std::visit(
        [&](auto member) {
            using T = std::remove_cvref_t<decltype(settings.*member)>;
            if constexpr (std::is_same_v<T, std::wstring>) {
                CL::CVariant v = ReadAttribute(element, key.name, VT_BSTR);
                settings.*member = v.bstrVal ? std::wstring(v.bstrVal, ::SysStringLen(v.bstrVal)) : L"";
            } else if constexpr (std::is_same_v<T, bool>) {
                settings.*member = ReadAttribute(element, key.name, VT_BOOL).boolVal == VARIANT_TRUE;
            } else if constexpr (std::is_same_v<T, long>) {
                settings.*member = ReadAttribute(element, key.name, VT_I4).lVal;
            } else {
                CL::CVariant v = ReadAttribute(element, key.name, VT_BSTR);
                GUID guid = GUID_NULL;
                ::CLSIDFromString(v.bstrVal, &guid);   // status deliberately not checked
                settings.*member = guid;
            }
        },
        key.field);
}

// The text a field is written as.
std::wstring FieldText(const Key& key, const CSettings& settings)
{
    return std::visit(
        [&](auto member) -> std::wstring {
            using T = std::remove_cvref_t<decltype(settings.*member)>;
            if constexpr (std::is_same_v<T, std::wstring>) {
                return settings.*member;
            } else if constexpr (std::is_same_v<T, bool>) {
                // The platform's own text for a boolean variant ("-1"/"0").
                CL::CVariant b = CL::CVariant::Bool(settings.*member);
                CL::CVariant text;
                const HRESULT hr = ::VariantChangeTypeEx(&text, &b, kFileLocale, 0, VT_BSTR);
                if (FAILED(hr))
                    throw CL::CException(hr, L"::VariantChangeTypeEx (VT_BOOL to VT_BSTR)");
                return text.bstrVal;
            } else if constexpr (std::is_same_v<T, long>) {
                return std::to_wstring(settings.*member);
            } else {
                wchar_t text[40] = {};
                ::StringFromGUID2(settings.*member, text, 40);
                return text;
            }
        },
        key.field);
}

std::wstring ModuleFolder()
{
    std::vector<wchar_t> path(260, L'\0');
    const DWORD n = ::GetModuleFileNameW(nullptr, path.data(), 260);
    if (n == 0)
        CL::ThrowLastError(L"::GetModuleFileNameW (0, path_buffer, 260)");
    std::wstring folder(path.data(), n);
    const size_t slash = folder.find_last_of(L"\\/");
    folder.erase(slash == std::wstring::npos ? 0 : slash + 1);
    return folder;
}

} // namespace

void LoadSettingsFrom(const std::wstring& path, CSettings& settings)
{
    CL::XmlDocument document = CL::CreateDomDocument30(kCreateFailure);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    CL::CVariant source(path);
    const HRESULT hr = document->load(source, &loaded);
    if (FAILED(hr))
        throw CL::CException(hr, L"pxmlDoc->load (szFile)");
    if (loaded != VARIANT_TRUE)
        return;   // missing or not well-formed: the record keeps what it holds

    CL::XmlNode node;
    CL::CBstr query(CL::kSettingsRootElement);
    document->selectSingleNode(query.Get(), node.ReleaseAndGetAddressOf());
    CL::XmlElement element;
    if (node)
        node.QueryInterface(__uuidof(IXMLDOMElement), element);

    for (const Key& key : Keys())
        ReadKey(element.Get(), key, settings);
    settings.Title = CL::TrimWhiteSpace(settings.Title);
}

void LoadSettings()
{
    LoadSettingsFrom(GetInstallationFolderPath(CL::kSettingsFileName), g_Settings);
}

void SaveSettingsTo(const std::wstring& path, const CSettings& settings)
{
    CL::XmlDocument document = CL::CreateDomDocument30(kCreateFailure);
    CL::XmlElement element;
    CL::CBstr rootName(CL::kSettingsRootElement);
    HRESULT hr = document->createElement(rootName.Get(), element.ReleaseAndGetAddressOf());
    if (FAILED(hr))
        throw CL::CException(hr, L"pxmlDoc->createElement (L\"Morvane_ini\")");
    for (const Key& key : Keys()) {
        CL::CBstr name(key.name);
        CL::CVariant value(FieldText(key, settings));
        hr = element->setAttribute(name.Get(), value);
        if (FAILED(hr))
            throw CL::CException(hr, CL::Format(L"pElement->setAttribute (L\"%ls\")", key.name));
    }
    CL::XmlNode appended;
    hr = document->appendChild(element.Get(), appended.ReleaseAndGetAddressOf());
    if (FAILED(hr))
        throw CL::CException(hr, L"pxmlDoc->appendChild (pElement)");
    CL::SaveDocumentReplacing(document.Get(), path, L"pxmlDoc->save (szFile)");
}

void SaveSettingsTo(const std::wstring& path)
{
    SaveSettingsTo(path, g_Settings);
}

void SaveSettings()
{
    SaveSettingsTo(GetInstallationFolderPath(CL::kSettingsFileName));
}

std::vector<std::pair<std::wstring, std::wstring>> SettingsAttributeTexts(const CSettings& settings)
{
    std::vector<std::pair<std::wstring, std::wstring>> texts;
    for (const Key& key : Keys())
        texts.emplace_back(key.name, FieldText(key, settings));
    return texts;
}

std::wstring GetInstallationFolderPath(const std::wstring& fileName)
{
    return ModuleFolder() + fileName;
}

std::wstring BackupSettingsFileName(const SYSTEMTIME& utc)
{
    return CL::Format(L"%ls.%04u_%02u_%02u-%02u_%02u_%02u", CL::kSettingsFileName, utc.wYear,
                      utc.wMonth, utc.wDay, utc.wHour, utc.wMinute, utc.wSecond);
}

std::wstring BackupSettings()
{
    SYSTEMTIME utc;
    ::GetSystemTime(&utc);
    const std::wstring path = GetInstallationFolderPath(BackupSettingsFileName(utc));
    SaveSettingsTo(path);
    return path;
}
