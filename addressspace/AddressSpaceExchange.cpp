#include "addressspace/AddressSpaceExchange.h"

#include "common/ServiceControl.h"
#include "common/Exception.h"
#include "common/Handle.h"

namespace {

ULONGLONG AsNumber(const FILETIME& time)
{
    return (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

// The last-write time of the file, or false when it cannot be read now
// (missing, or held open by the server while it writes).
bool TryLastWriteTime(const std::wstring& path, ULONGLONG& time, HRESULT& error, const wchar_t*& source)
{
    CL::UniqueFileHandle file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                            OPEN_EXISTING, 0, nullptr));
    if (!file) {
        error = CL::LastErrorAsHResult();
        source = L"hFile.get()";
        return false;
    }
    FILETIME lastWrite;
    if (!::GetFileTime(file.get(), nullptr, nullptr, &lastWrite)) {
        error = CL::LastErrorAsHResult();
        source = L"GetFileTime(hFile.get(), 0, 0, &res)";
        return false;
    }
    time = AsNumber(lastWrite);
    return true;
}

} // namespace

CAddressSpaceExchange::CAddressSpaceExchange(ServiceNameSource serviceName, std::wstring exchangeFile)
    : m_serviceName(std::move(serviceName)), m_exchangeFile(std::move(exchangeFile))
{
}

std::wstring CAddressSpaceExchange::ExchangeFilePath(const std::wstring& installationFolder)
{
    return installationFolder + kExchangeFileName;
}

bool CAddressSpaceExchange::ServerRunning() const
{
    return CL::IsServiceRunning(m_serviceName());
}

bool CAddressSpaceExchange::LoadFromServer(CAddressSpaceDocument& document)
{
    m_polls = 0;
    if (ServerRunning()) {
        const ULONGLONG before = LastWriteTime();
        CL::ControlServiceCode(m_serviceName(), CL::kControlWriteAddressSpace);
        if (!WaitForNewFile(before) && !AskToLoadSavedFile())
            return false;
    }
    // A stopped server's file is its configuration as it stands.
    document.SetModel(LoadExchangeFile());
    document.SetDirty(false);
    if (m_observer)
        m_observer->Loaded(m_exchangeFile);
    return true;
}

CAddressSpaceDocument::ModelPtr CAddressSpaceExchange::FetchFromServer()
{
    m_polls = 0;
    if (ServerRunning()) {
        const ULONGLONG before = LastWriteTime();
        CL::ControlServiceCode(m_serviceName(), CL::kControlWriteAddressSpace);
        if (!WaitForNewFile(before) && !AskToLoadSavedFile())
            return nullptr;
    }
    return LoadExchangeFile();
}

void CAddressSpaceExchange::ReloadFromFile(CAddressSpaceDocument& document)
{
    // Loaded aside first: a file that fails to load leaves the document and
    // its views as they were.
    CAddressSpaceDocument::ModelPtr model = LoadExchangeFile();
    if (IAddressSpaceViews* views = document.Views())
        views->ClearViews();
    document.SetModel(std::move(model));
    document.SetDirty(false);
    if (m_observer)
        m_observer->Loaded(m_exchangeFile);
    if (IAddressSpaceViews* views = document.Views())
        views->FillViews();
}

void CAddressSpaceExchange::SaveToServer(CAddressSpaceDocument& document)
{
    if (m_observer)
        m_observer->Saving(m_exchangeFile, document);
    document.Model()->Save(m_exchangeFile);
    // A stopped server reads the file when it starts.
    if (ServerRunning())
        CL::ControlServiceCode(m_serviceName(), CL::kControlReloadAddressSpace);
    document.SetDirty(false);
    if (m_observer)
        m_observer->Saved(m_exchangeFile, document);
}

ULONGLONG CAddressSpaceExchange::LastWriteTime() const
{
    ULONGLONG time = 0;
    HRESULT error = S_OK;
    const wchar_t* source = L"";
    if (!TryLastWriteTime(m_exchangeFile, time, error, source))
        throw CL::CException(error, source);
    return time;
}

bool CAddressSpaceExchange::WaitForNewFile(ULONGLONG before) const
{
    for (m_polls = 1; m_polls <= kPollCount; ++m_polls) {
        ::Sleep(kPollInterval);
        ULONGLONG now = 0;
        HRESULT error = S_OK;
        const wchar_t* source = L"";
        // A look that fails counts as no change.
        if (TryLastWriteTime(m_exchangeFile, now, error, source) && now != before)
            return true;
    }
    m_polls = kPollCount;
    return false;
}

bool CAddressSpaceExchange::AskToLoadSavedFile()
{
    return ::MessageBoxW(::GetActiveWindow(),
                         L"The server didn't return the Address Space within the timeout, probably it's too busy."
                         L"\n\nDo you want to load the Address Space saved before?",
                         L"Load", MB_YESNOCANCEL | MB_ICONSTOP) == IDYES;
}

CAddressSpaceDocument::ModelPtr CAddressSpaceExchange::LoadExchangeFile() const
{
    CAddressSpaceDocument::ModelPtr model = CAddressSpaceDocument::ModelPtr::Make();
    model->Load(m_exchangeFile);
    return model;
}
