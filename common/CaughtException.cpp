#include "common/CaughtException.h"

#include <comdef.h>

#include <exception>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Bstr.h"
#include "common/ComPtr.h"
#include "common/Exception.h"
#include "common/Text.h"

namespace CL {

namespace {

std::string InfoText(IErrorInfo* info, HRESULT (STDMETHODCALLTYPE IErrorInfo::*get)(BSTR*))
{
    CBstr text;
    if (!info || FAILED((info->*get)(text.ReleaseAndGetAddressOf())) || !text.Get())
        return "(null)";
    return Narrow(text.Str());
}

} // namespace

std::string CaughtExceptionLine() noexcept
{
    try {
        try {
            throw;
        } catch (long hr) {
            return FormatA("Error HRESULT: 0x%X", static_cast<unsigned>(hr));
        } catch (const CException& e) {
            return "CException: " + Narrow(e.Text());
        } catch (const _com_error& e) {
            const ComPtr<IErrorInfo> info = ComPtr<IErrorInfo>::Attach(e.ErrorInfo());
            return "_com_error: " + InfoText(info.Get(), &IErrorInfo::GetDescription) + "(" +
                   InfoText(info.Get(), &IErrorInfo::GetSource) + ") " + Narrow(ComErrorMessage(e.Error())) +
                   FormatA("(0x%X)", static_cast<unsigned>(e.Error()));
        } catch (const std::exception& e) {
            return std::string("std::exception: ") + e.what();
        } catch (...) {
            return "Unknown exception ...";
        }
    } catch (...) {
        return "Unknown exception ...";
    }
}

void LogCaughtException(unsigned level, const std::string& marker) noexcept
{
    try {
        if (LogEnabled(level))
            Log(level, CaughtExceptionLine() + marker);
    } catch (...) {
        // The log never reports its own failures.
    }
}

} // namespace CL
