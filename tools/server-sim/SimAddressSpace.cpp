#include "SimAddressSpace.h"

#include "SimFiles.h"
#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/MsXml.h"
#include "common/Text.h"
#include "common/Variant.h"

namespace sim {

namespace {

constexpr char kEmptyAddressSpace[] = "<Morvane_OPCDAAddressSpace Name=\"\"/>\r\n";

bool ReadWholeFile(const std::wstring& path, std::string& bytes)
{
    CL::UniqueFileHandle file(::CreateFileW(path.c_str(), GENERIC_READ,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                            nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file)
        return false;
    bytes.clear();
    char buffer[65536];
    DWORD got = 0;
    while (::ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr) && got > 0)
        bytes.append(buffer, got);
    return true;
}

bool WriteWholeFile(const std::wstring& path, const std::string& bytes, const FILETIME* lastWrite)
{
    CL::UniqueFileHandle file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return false;
    DWORD written = 0;
    if (!::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size())
        return false;
    return !lastWrite || ::SetFileTime(file.get(), nullptr, nullptr, lastWrite);
}

long NodeCount(IXMLDOMDocument* document, const wchar_t* query)
{
    CL::ComPtr<IXMLDOMNodeList> nodes;
    CL::CBstr text(query);
    long count = 0;
    if (SUCCEEDED(document->selectNodes(text.Get(), nodes.ReleaseAndGetAddressOf())) && nodes)
        nodes->get_length(&count);
    return count;
}

std::string RootName(IXMLDOMDocument* document)
{
    CL::XmlElement root;
    if (FAILED(document->get_documentElement(root.ReleaseAndGetAddressOf())) || !root)
        return "";
    CL::CBstr name;
    root->get_nodeName(name.ReleaseAndGetAddressOf());
    return CL::ToUtf8(name.Str());
}

uint64_t AsNumber(const FILETIME& time)
{
    return (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

FILETIME AsFileTime(uint64_t value)
{
    return FILETIME{static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

// The time to stamp a newly written exchange file with: now, but at least one
// millisecond after the time the file had, so that a reader polling the
// last-write time always sees the change even on a coarse file system clock.
FILETIME NextWriteTime(const std::wstring& path)
{
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return now;
    const uint64_t previous = AsNumber(data.ftLastWriteTime);
    return AsNumber(now) > previous + 10000 ? now : AsFileTime(previous + 10000);
}

} // namespace

CSimAddressSpace::CSimAddressSpace(CSimReport& report) : m_report(report), m_bytes(kEmptyAddressSpace) {}

std::wstring CSimAddressSpace::Path(const wchar_t* name) const
{
    return m_report.Folder() + name;
}

bool CSimAddressSpace::Load()
{
    const unsigned number = ++m_loadCount;
    const std::wstring path = Path(kExchangeFile);
    std::string bytes;
    if (!ReadWholeFile(path, bytes)) {
        m_report.Event(CL::FormatA("load failed #%u missing file (error %lu)", number, ::GetLastError()));
        return false;
    }
    try {
        CL::XmlDocument document = CL::CreateDomDocument30(L"DOMDocument30");
        VARIANT_BOOL loaded = VARIANT_FALSE;
        CL::CVariant source(path);
        if (FAILED(document->load(source, &loaded)) || loaded != VARIANT_TRUE) {
            m_report.Event(CL::FormatA("load failed #%u not well-formed", number));
            return false;
        }
        m_bytes = bytes;
        if (!WriteWholeFile(Path(kLoadedCopyFile), m_bytes, nullptr))
            m_report.Event(CL::FormatA("copy failed #%u (error %lu)", number, ::GetLastError()));
        m_report.Event(CL::FormatA("loaded #%u %u bytes root=%s branches=%ld items=%ld conditions=%ld",
                                   number, static_cast<unsigned>(bytes.size()),
                                   RootName(document.Get()).c_str(),
                                   NodeCount(document.Get(), L"//Branch"),
                                   NodeCount(document.Get(), L"//Item"),
                                   NodeCount(document.Get(), L"//OPCAECondition")));
        return true;
    } catch (const CL::CException& e) {
        m_report.Event(CL::FormatA("load failed #%u %s", number, CL::ToUtf8(e.Text()).c_str()));
        return false;
    }
}

void CSimAddressSpace::Write()
{
    const std::wstring path = Path(kExchangeFile);
    const std::wstring temporary = path + L".sim-writing";
    const FILETIME stamp = NextWriteTime(path);
    if (!WriteWholeFile(temporary, m_bytes, &stamp) ||
        !::MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        m_report.Event(CL::FormatA("write failed (error %lu)", ::GetLastError()));
        ::DeleteFileW(temporary.c_str());
        return;
    }
    m_report.Event(CL::FormatA("wrote %u bytes", static_cast<unsigned>(m_bytes.size())));
}

} // namespace sim
