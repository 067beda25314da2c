#include "common/ErrorReport.h"

#include <comdef.h>
#include <versionhelpers.h>

#include <exception>

#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/Text.h"

namespace CL {

namespace {

bool RealWindowsVersionProbe()
{
    return ::IsWindowsVersionOrGreater(6, 0, 0);
}

WindowsVersionProbe g_versionProbe = &RealWindowsVersionProbe;

std::wstring ErrorInfoText(IErrorInfo* info, HRESULT (STDMETHODCALLTYPE IErrorInfo::*get)(BSTR*))
{
    if (!info)
        return L"(null)";
    CBstr text;
    if (FAILED((info->*get)(text.ReleaseAndGetAddressOf())) || !text.Get())
        return L"(null)";
    return text.Str();
}

std::wstring AccessDeniedText()
{
    return std::wstring(L"Access denied.\n\nPlease, close the application and 'Run as administrator' or contact ") +
           kSupportEmail + L".";
}

} // namespace

void SetWindowsVersionProbe(WindowsVersionProbe probe)
{
    g_versionProbe = probe ? probe : &RealWindowsVersionProbe;
}

std::wstring ComErrorMessage(HRESULT hr)
{
    std::wstring text = SystemMessage(hr);
    if (!text.empty()) {
        if (text.back() == L'\n') {
            text.pop_back();
            if (!text.empty() && text.back() == L'\r')
                text.pop_back();
        }
        return text;
    }
    const unsigned long code = static_cast<unsigned long>(hr);
    if (code >= 0x80040200ul && code <= 0x8004FFFFul && (code & 0xFFFFul) != 0x0200ul)
        return Format(L"IDispatch error #%d", static_cast<int>((code & 0xFFFFul) - 0x200ul));
    return Format(L"Unknown error 0x%0lX", code);
}

ErrorReportText DescribeCurrentException() noexcept
{
    try {
        try {
            throw;
        } catch (const CException& e) {
            if (static_cast<unsigned long>(e.Error()) == 0x80070005ul && g_versionProbe())
                return {L"Exception", AccessDeniedText()};
            return {L"CException", e.Text()};
        } catch (const _com_error& e) {
            IErrorInfo* info = e.ErrorInfo();   // AddRef'ed by _com_error
            const std::wstring description = ErrorInfoText(info, &IErrorInfo::GetDescription);
            const std::wstring source = ErrorInfoText(info, &IErrorInfo::GetSource);
            if (info)
                info->Release();
            return {L"_com_error",
                    Format(L"%ls(%ls) %ls(0x%X)", description.c_str(), source.c_str(),
                           ComErrorMessage(e.Error()).c_str(), static_cast<unsigned>(e.Error()))};
        } catch (long hr) {
            return {L"Error HRESULT", Format(L"0x%X", static_cast<unsigned>(hr))};
        } catch (const std::exception& e) {
            return {L"std::exception", Widen(e.what())};
        } catch (...) {
            return {L"...", L"Unexpected exception"};
        }
    } catch (...) {
        return {L"...", L"Unexpected exception"};
    }
}

void ReportException() noexcept
{
    const ErrorReportText report = DescribeCurrentException();
    ::MessageBoxW(nullptr, report.text.c_str(), report.title.c_str(), MB_OK | MB_ICONERROR);
}

} // namespace CL
