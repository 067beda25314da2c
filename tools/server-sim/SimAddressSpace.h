#pragma once
// CSimAddressSpace: the address space the simulated server holds. It is kept
// as the exact bytes of the last exchange file that loaded as well-formed XML,
// so that what the control panel hands over is what it gets back.
#include <string>

#include "SimFiles.h"
#include "SimReport.h"

namespace sim {

class CSimAddressSpace {
public:
    explicit CSimAddressSpace(CSimReport& report);

    // Reads the exchange file (code 128 and start). A missing or malformed
    // file is reported and the address space held so far is kept; returns
    // whether the file was taken.
    bool Load();
    // Writes the held address space into the exchange file (code 129): the
    // file is replaced in one move and its last-write time always advances.
    void Write();

    const std::string& Bytes() const { return m_bytes; }
    // The byte copy of the address space held (ServerSim.loaded.xml).
    std::wstring LoadedCopyPath() const { return Path(kLoadedCopyFile); }

private:
    std::wstring Path(const wchar_t* name) const;

    CSimReport& m_report;
    std::string m_bytes;
    unsigned m_loadCount = 0;
};

} // namespace sim
