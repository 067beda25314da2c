#include "SettingsFuzz.h"

#include <algorithm>

#include "common/Exception.h"
#include "config/Settings.h"
#include "config/dlgOptions.h"
#include "res/resource.h"
#include "support/SettingsFileXml.h"
#include "support/TestSupport.h"

namespace fuzz {

namespace {

const std::vector<std::string> kSettingsTokens = {
    "<Morvane_ini/>", "<Morvane_ini ", "/>", "Title=\"x\"", "TraceLevel=\"7\"", "XmlDaPort=\"0\"",
    "ServiceName=\"a\\b\"", "DbDeletePercent=\"150\"", "<!-- -->", "<Other/>", "CustomADOConnection=\"-1\""};

// The options dialog's view of the server: nothing may be asked of it while
// the dialog is only opened and closed.
class CNoServer final : public CL::IServerControl {
public:
    bool IsServiceRunning(const std::wstring&) override { return Refuse(); }
    bool StopServiceAndWait(const std::wstring&, DWORD) override { return Refuse(); }
    bool StartServiceAndWait(const std::wstring&, DWORD) override { return Refuse(); }
    DWORD RunAndWait(const std::wstring&) override { return Refuse(); }

private:
    static bool Refuse() { throw CL::CException(E_UNEXPECTED, L"the server was asked for something"); }
};

constexpr size_t kLongestShown = 65536;

size_t LongestText(const CSettings& settings)
{
    size_t longest = 0;
    for (const std::wstring* text : {&settings.Title, &settings.ADOConnection, &settings.CCM, &settings.ServiceName})
        longest = std::max(longest, text->size());
    return longest;
}

} // namespace

CSettingsFuzz::CSettingsFuzz(const std::wstring& folder, unsigned dialogEvery)
    : m_folder(folder), m_file(folder + CL::kSettingsFileName), m_mutator(kSettingsTokens),
      m_dialogEvery(dialogEvery)
{
    m_bases[0] = test::SettingsFileXml();
    m_bases[1] = test::SettingsFileXml({{"Title", "  Northfield &amp; Co  "},
                                        {"HDAServer_CLSID", "{00000000-0000-0000-0000-000000000000}"},
                                        {"CustomADOConnection", "true"},
                                        {"ADOConnection", "Driver={SQLite3};Database=C:\\x.db"},
                                        {"TraceLevel", "4"},
                                        {"DbKeepAllValues", "0"},
                                        {"DbKeepLastValues", "-1"}});
}

void CSettingsFuzz::RunOne(CFuzzRandom& random, LoaderCounts& counts)
{
    m_input = m_mutator.Mutate(m_bases[random.Below(2)], random);
    test::WriteFileBytes(m_file, m_input);
    CSettings read;
    try {
        LoadSettingsFrom(m_file, read);
        ++counts.loaded;
    } catch (...) {
        const std::string kind = CaughtKind();
        ++counts.refused;
        ++counts.errors[kind];
        if (kind.rfind("CException ", 0) != 0 && kind.rfind("_com_error ", 0) != 0)
            counts.Violation("refused with " + kind);
    }
    // Wine's multi-line edit wraps one word of 300,000 characters in minutes
    // (a platform limit, not the program's): such records are read, not shown.
    if (m_dialogEvery && ++m_runs % m_dialogEvery == 0 && LongestText(read) <= kLongestShown) {
        g_Settings = read;
        OpenOptionsDialog(counts);
        g_Settings = CSettings();
    }
}

void CSettingsFuzz::OpenOptionsDialog(LoaderCounts& counts)
{
    try {
        CNoServer server;
        CdlgOptions dialog(server, m_folder);
        if (!dialog.Create(nullptr, IDD_OPTIONS))
            counts.Violation("the options dialog did not open");
        ++m_dialogs;
        ::DestroyWindow(dialog);
    } catch (...) {
        counts.Violation("opening the options dialog threw " + CaughtKind());
    }
}

} // namespace fuzz
