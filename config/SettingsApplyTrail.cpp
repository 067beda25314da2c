#include "config/SettingsApplyTrail.h"

#include "common/CaughtException.h"
#include "common/DiagnosticLog.h"

namespace {

// The log takes one line per message: the line breaks of system texts
// become single blanks, and none is left before a closing bracket or at the end.
std::string OneLine(const std::string& text)
{
    std::string line;
    for (char c : text) {
        const char put = (c == '\r' || c == '\n') ? ' ' : c;
        if (put == ' ' && (line.empty() || line.back() == ' '))
            continue;
        if (put == ')' && !line.empty() && line.back() == ' ')
            line.pop_back();
        line += put;
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

} // namespace

CSettingsApplyTrail::CSettingsApplyTrail(std::string previousSettings) : m_previous(std::move(previousSettings)) {}

void CSettingsApplyTrail::Begin(std::string step)
{
    m_step = std::move(step);
}

void CSettingsApplyTrail::Done(std::string what)
{
    m_done.push_back(std::move(what));
}

void CSettingsApplyTrail::PreviousSettingsAt(std::string path)
{
    m_previous = std::move(path);
}

std::string CSettingsApplyTrail::FailureText(const std::string& error) const
{
    std::string done;
    for (const std::string& what : m_done)
        done += (done.empty() ? "" : "; ") + what;
    return "Settings change failed at " + m_step + " (" + OneLine(error) + "). Done before it: " +
           (done.empty() ? std::string("nothing") : done) + ". The previous settings are in " + m_previous + ".";
}

void CSettingsApplyTrail::LogFailure() const noexcept
{
    try {
        Log(0, FailureText(CL::CaughtExceptionLine()) + MV_POS());
    } catch (...) {
        // The log never reports its own failures.
    }
}
