#include "common/ChangeJournal.h"

#include <windows.h>

#include "common/Csv.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "version.h"

namespace CL {

namespace {

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";
constexpr wchar_t kWarningCaption[] = L"Change journal";

// The writers' lock: one byte far beyond any journal's data. Windows locks
// are mandatory, so a lock over the data would make readers fail; a lock
// there only orders the writers.
constexpr DWORD kLockOffsetHigh = 0x7FFFFFFF;
constexpr DWORD kLockOffsetLow = 0;

class CWriterLock {
public:
    explicit CWriterLock(HANDLE file) : m_file(file)
    {
        m_overlapped.OffsetHigh = kLockOffsetHigh;
        m_overlapped.Offset = kLockOffsetLow;
        if (!::LockFileEx(m_file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &m_overlapped))
            ThrowLastError(L"LockFileEx(journal)");
    }
    ~CWriterLock()
    {
        ::UnlockFileEx(m_file, 0, 1, 0, &m_overlapped);
    }
    CWriterLock(const CWriterLock&) = delete;
    CWriterLock& operator=(const CWriterLock&) = delete;

private:
    HANDLE m_file;
    OVERLAPPED m_overlapped = {};
};

void WriteAll(HANDLE file, const std::string& bytes)
{
    DWORD written = 0;
    if (!::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size())
        ThrowLastError(L"WriteFile(journal)");
}

std::wstring FolderOfModule()
{
    wchar_t path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path, length);
    const size_t slash = folder.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : folder.substr(0, slash + 1);
}

void ShowWarning(const std::wstring& text)
{
    ::MessageBoxW(::GetActiveWindow(), text.c_str(), kWarningCaption, MB_OK | MB_ICONWARNING);
}

CJournalEntry EntryOf(const std::vector<std::wstring>& fields)
{
    auto field = [&fields](size_t i) { return i < fields.size() ? fields[i] : std::wstring(); };
    return {field(0), field(1), field(2), field(3), field(4), field(5), field(6), field(7)};
}

} // namespace

CChangeJournal::CChangeJournal(std::wstring path, std::shared_ptr<IEventLogSink> eventLog)
    : m_path(std::move(path)), m_eventLog(std::move(eventLog))
{
}

CChangeJournal& CChangeJournal::Instance()
{
    static CChangeJournal journal(FolderOfModule() + kFileName,
                                  std::make_shared<CWindowsEventLog>(Widen(MORVANE_PRODUCT_NAME)));
    return journal;
}

std::vector<std::wstring> CChangeJournal::ColumnTitles()
{
    return {L"Time (UTC)", L"Account", L"Computer", L"Program", L"Action", L"Details", L"File", L"Previous file"};
}

std::wstring CChangeJournal::TimeText(const SYSTEMTIME& utc)
{
    return Format(L"%04u-%02u-%02u %02u:%02u:%02u", utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute,
                  utc.wSecond);
}

std::wstring CChangeJournal::CurrentAccount()
{
    UniqueKernelHandle token;
    HANDLE raw = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &raw))
        return L"";
    token.reset(raw);
    DWORD size = 0;
    ::GetTokenInformation(raw, TokenUser, nullptr, 0, &size);
    std::vector<BYTE> buffer(size);
    if (size == 0 || !::GetTokenInformation(raw, TokenUser, buffer.data(), size, &size))
        return L"";
    const PSID sid = reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid;
    wchar_t name[256] = {};
    wchar_t domain[256] = {};
    DWORD nameLength = 256;
    DWORD domainLength = 256;
    SID_NAME_USE use;
    if (!::LookupAccountSidW(nullptr, sid, name, &nameLength, domain, &domainLength, &use))
        return L"";
    return domainLength ? std::wstring(domain) + L"\\" + name : std::wstring(name);
}

std::wstring CChangeJournal::ComputerName()
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    return ::GetComputerNameW(name, &length) ? std::wstring(name, length) : std::wstring();
}

std::wstring CChangeJournal::ProgramName()
{
    wchar_t path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring name(path, length);
    const size_t slash = name.find_last_of(L"\\/");
    if (slash != std::wstring::npos)
        name.erase(0, slash + 1);
    return name + L" " + MORVANE_VERSION_WTEXT;
}

CJournalEntry CChangeJournal::NewEntry(std::wstring_view action, std::wstring_view details, std::wstring_view file,
                                       std::wstring_view previousFile)
{
    SYSTEMTIME utc;
    ::GetSystemTime(&utc);
    return {TimeText(utc),       CurrentAccount(),       ComputerName(),       ProgramName(),
            std::wstring(action), std::wstring(details), std::wstring(file), std::wstring(previousFile)};
}

std::wstring CChangeJournal::RecordText(const CJournalEntry& entry)
{
    return CsvRecord({entry.time, entry.account, entry.computer, entry.program, entry.action, entry.details,
                      entry.file, entry.previousFile});
}

std::wstring CChangeJournal::EventText(const CJournalEntry& entry)
{
    std::wstring text = entry.action + L" by " + entry.account + L" on " + entry.computer + L" (" + entry.program +
                        L"), " + entry.time + L" UTC.\r\n" + entry.details;
    if (!entry.file.empty())
        text += L"\r\nFile: " + entry.file;
    if (!entry.previousFile.empty())
        text += L"\r\nPrevious file: " + entry.previousFile;
    return text;
}

bool CChangeJournal::Record(std::wstring_view action, std::wstring_view details, std::wstring_view file,
                            std::wstring_view previousFile) noexcept
{
    try {
        return Append(NewEntry(action, details, file, previousFile));
    } catch (...) {
        Warn(DescribeCurrentException().text);
        return false;
    }
}

bool CChangeJournal::Append(const CJournalEntry& entry) noexcept
{
    bool written = false;
    try {
        AppendBytes(ToUtf8(RecordText(entry)));
        written = true;
        Log(2, "Change journal: " + Narrow(entry.action) + ": " + Narrow(entry.details) + MV_POS());
    } catch (...) {
        Warn(DescribeCurrentException().text);
    }
    // The event log gets the entry even when the file did not.
    if (m_eventLog && !m_eventLog->Report(EventText(entry)))
        Log(1, "The change could not be reported to the Application event log" + MV_POS());
    return written;
}

void CChangeJournal::AppendBytes(const std::string& record) const
{
    UniqueFileHandle file(::CreateFileW(m_path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        ThrowLastError(L"CreateFileW(journal)");
    CWriterLock lock(file.get());
    LARGE_INTEGER size = {};
    if (!::GetFileSizeEx(file.get(), &size))
        ThrowLastError(L"GetFileSizeEx(journal)");
    LARGE_INTEGER end = {};
    if (!::SetFilePointerEx(file.get(), end, nullptr, FILE_END))
        ThrowLastError(L"SetFilePointerEx(journal)");
    std::string bytes;
    if (size.QuadPart == 0)
        bytes = kUtf8Bom + ToUtf8(CsvRecord(ColumnTitles()));
    bytes += record;
    WriteAll(file.get(), bytes);
}

void CChangeJournal::Warn(const std::wstring& failure) noexcept
{
    try {
        Log(0, "The change was made but not recorded in the change journal " + Narrow(m_path) + ": " +
                   Narrow(failure) + MV_POS());
        const std::wstring text = L"The change was made, but it could not be recorded in the change journal " +
                                  m_path + L".\r\n\r\n" + failure;
        PresentWarning(text);
    } catch (...) {
    }
}

void CChangeJournal::PresentWarning(const std::wstring& text) const noexcept
{
    try {
        if (m_warn)
            m_warn(text);
        else
            ShowWarning(text);
    } catch (...) {
    }
}

std::vector<CJournalEntry> CChangeJournal::ReadAll() const
{
    std::vector<CJournalEntry> entries;
    if (::GetFileAttributesW(m_path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return entries;
    UniqueFileHandle file(::CreateFileW(m_path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        ThrowLastError(L"CreateFileW(journal)");
    LARGE_INTEGER size = {};
    if (!::GetFileSizeEx(file.get(), &size))
        ThrowLastError(L"GetFileSizeEx(journal)");
    std::string bytes(static_cast<size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!bytes.empty() && !::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
        ThrowLastError(L"ReadFile(journal)");
    bytes.resize(read);
    // A record being written while this read ran is left for the next read.
    bytes.erase(bytes.find_last_of('\n') == std::string::npos ? 0 : bytes.find_last_of('\n') + 1);
    if (bytes.compare(0, 3, kUtf8Bom) == 0)
        bytes.erase(0, 3);
    const std::wstring text = FromUtf8(bytes);
    CCsvReader reader(text);
    CsvRow row;
    bool header = true;
    while (reader.Next(row)) {
        if (header) {
            header = false;
            continue;
        }
        if (row.error.empty() && row.fields.size() == ColumnTitles().size())
            entries.push_back(EntryOf(row.fields));
    }
    return entries;
}

} // namespace CL
