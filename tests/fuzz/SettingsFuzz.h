#pragma once
// The settings file under mutation: read as start-up reads it (a missing or
// malformed file keeps every default silently; a missing or unconvertible
// key raises an error at that key, the keys before it read), and every few
// inputs the options dialog opened over what was read, as the administrator
// would open it next (it must show any record without failing), then closed
// without applying anything. Records with a text of more than 65,536
// characters are only read (see SettingsFuzz.cpp).
#include <string>

#include "FuzzTarget.h"
#include "TextMutator.h"

namespace fuzz {

class CSettingsFuzz final : public IFuzzTarget {
public:
    // dialogEvery: open the options dialog for every n-th input (0: never).
    CSettingsFuzz(const std::wstring& folder, unsigned dialogEvery);

    const char* Name() const override { return "settings file"; }
    const std::string& CurrentInput() const override { return m_input; }
    void RunOne(CFuzzRandom& random, LoaderCounts& counts) override;

    uint64_t DialogsOpened() const { return m_dialogs; }

private:
    void OpenOptionsDialog(LoaderCounts& counts);

    std::wstring m_folder;
    std::wstring m_file;
    std::string m_bases[2];
    std::string m_input;
    CTextMutator m_mutator;
    unsigned m_dialogEvery;
    uint64_t m_runs = 0;
    uint64_t m_dialogs = 0;
};

} // namespace fuzz
