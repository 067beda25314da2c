#pragma once
// The one error report: every UI handler runs its work inside a try block and
// calls ReportException() from its catch (...) clause. The report shows one
// message box (no owner, error icon, OK) titled by the kind of exception.
#include <windows.h>

#include <string>

namespace CL {

// The product's support address, named in the "Access denied." report.
inline constexpr wchar_t kSupportEmail[] = L"support@varnel.example";

// Must be called from inside a catch clause: rethrows and reports.
void ReportException() noexcept;

// Runs work() and reports whatever it throws.
template <typename Work>
void RunReported(Work&& work) noexcept
{
    try {
        work();
    } catch (...) {
        ReportException();
    }
}

// The text of a _com_error's HRESULT: the system text without its trailing
// line break, else "IDispatch error #%d" for 0x80040200..0x8004FFFF (low word
// not 0x0200), else "Unknown error 0x%0lX".
std::wstring ComErrorMessage(HRESULT hr);

// The title and text the report shows for the current exception (used by
// ReportException; call it from inside a catch clause).
struct ErrorReportText {
    std::wstring title;
    std::wstring text;
};
ErrorReportText DescribeCurrentException() noexcept;

// Whether the system is Windows 6.0 or later. Tests replace the probe to see
// the older system's report; nullptr restores the real one.
using WindowsVersionProbe = bool (*)();
void SetWindowsVersionProbe(WindowsVersionProbe probe);

} // namespace CL
