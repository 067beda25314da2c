#pragma once
// COPCServerAddressSpace: the root of the address space, a tree of branches
// and items plus the list of AE conditions, and its XML file (root element
// "Morvane_OPCDAAddressSpace", read and written through the MSXML DOM).
#include <windows.h>

#include <atomic>
#include <string>
#include <vector>

#include "addressspace/AeCondition.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"
#include "common/CriticalSection.h"
#include "common/RefCount.h"
#include "common/SmartPtr.h"

class COPCServerAddressSpace : public CL::CRefCount {
public:
    // Values of State().
    static constexpr LONG kStateLoaded = 1;
    static constexpr LONG kStateLoading = 3;

    // An empty root branch and no conditions.
    COPCServerAddressSpace();

    const CL::CSmartPtr<COPCServerAddressSpaceBranch>& RootBranch() const noexcept { return m_root; }
    // 3 while Load runs, 1 once a load has finished, 0 before any load.
    LONG State() const noexcept { return m_state.load(); }

    // The conditions in list order (a copy taken under the condition lock).
    std::vector<AeCondition> Conditions() const;
    // Appends the condition unless one with the same source and condition
    // name (ignoring case) is listed already; returns whether it was added.
    bool AddCondition(const AeCondition& condition);
    void ClearConditions();

    // Drops every branch, item and condition.
    void Clear();

    // Writes the whole address space to the file, replacing it; the file is
    // written beside the target first, so a failed save leaves the old file
    // as it was. Throws CException.
    void Save(const std::wstring& path) const;
    // Reads the file into this (empty) address space. A missing or malformed
    // file throws CException(E_FAIL, "Error loading OPC Address Space file."),
    // a document without the root element CException(E_POINTER). Faulty
    // branches, items and conditions are skipped and logged.
    void Load(const std::wstring& path);

protected:
    ~COPCServerAddressSpace() override = default;

private:
    CL::CSmartPtr<COPCServerAddressSpaceBranch> m_root;
    std::atomic<LONG> m_state{0};
    CL::CCriticalSection m_conditionsLock;
    std::vector<AeCondition> m_conditions;
};
