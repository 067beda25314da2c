#pragma once
// CdlgVersionRetention: "Address Space Versions", the number of address
// space versions the control panel keeps (0 keeps every version). OK stores
// the number, removes the versions beyond it at once and records the change
// in the change journal.
#include <string>

#include "addressspace/AddressSpaceVersions.h"
#include "addressspace/VersionRetention.h"
#include "common/Window.h"

namespace CL {
class CChangeJournal;
}

class CdlgVersionRetention : public CL::CDialog {
public:
    CdlgVersionRetention(const CVersionRetention& retention, const CAddressSpaceVersions& versions,
                         CL::CChangeJournal& journal);

    INT_PTR DoModal(HWND owner);

    // The journal's details for a change of the number kept.
    static std::wstring ChangeDetails(unsigned before, unsigned after, size_t removed);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    void OnOK();

    const CVersionRetention& m_retention;
    const CAddressSpaceVersions& m_versions;
    CL::CChangeJournal& m_journal;
};
