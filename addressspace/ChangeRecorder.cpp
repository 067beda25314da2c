#include "addressspace/ChangeRecorder.h"

#include "addressspace/AddressSpaceDocument.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "common/ChangeJournal.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/FileBytes.h"
#include "common/Handle.h"
#include "common/Text.h"

namespace {

bool SameBytes(const std::wstring& path, const std::string& bytes)
{
    try {
        return !path.empty() && CL::ReadWholeFile(path) == bytes;
    } catch (...) {
        return false;
    }
}

} // namespace

CChangeRecorder::CChangeRecorder(const std::wstring& exchangeFile, CL::CChangeJournal& journal,
                                 CVersionRetention retention)
    : m_versions(exchangeFile), m_journal(journal), m_retention(std::move(retention))
{
}

ULONGLONG CChangeRecorder::LastWriteTime(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return 0;
    return (static_cast<ULONGLONG>(data.ftLastWriteTime.dwHighDateTime) << 32) | data.ftLastWriteTime.dwLowDateTime;
}

void CChangeRecorder::Loaded(const std::wstring& exchangeFile)
{
    m_knownVersion.clear();
    m_elsewhereVersion.clear();
    m_restoredFrom.clear();
    m_knownWriteTime = LastWriteTime(exchangeFile);
    try {
        m_loadedBytes = CL::ReadWholeFile(exchangeFile);
    } catch (...) {
        // The load itself read the file a moment ago; without its bytes the
        // first Save keeps no version of the loaded address space.
        m_loadedBytes.clear();
        Log(0, "The loaded address space could not be noted for its version: " +
                   CL::Narrow(CL::DescribeCurrentException().text) + MV_POS());
    }
}

std::wstring CChangeRecorder::KeepVersion(const std::string& bytes)
{
    try {
        const std::wstring newest = m_versions.Newest();
        if (SameBytes(newest, bytes))
            return newest;
        return m_versions.Keep(bytes);
    } catch (...) {
        const std::wstring failure = CL::DescribeCurrentException().text;
        Log(0, "An address space version could not be kept in " + CL::Narrow(m_versions.Folder()) + ": " +
                   CL::Narrow(failure) + MV_POS());
        m_journal.PresentWarning(L"The address space is saved, but a version of it could not be kept in " +
                                 m_versions.Folder() + L".\r\n\r\n" + failure);
        return L"";
    }
}

void CChangeRecorder::Saving(const std::wstring& exchangeFile, const CAddressSpaceDocument& document)
{
    m_elsewhereVersion.clear();
    // The server's address space as the editor loaded it, once per editing.
    if (!m_loadedBytes.empty()) {
        m_knownVersion = KeepVersion(m_loadedBytes);
        m_loadedBytes.clear();
        m_loadedBytes.shrink_to_fit();
    }
    // The exchange file written by someone else since: the server's address
    // space that this Save replaces.
    const ULONGLONG writeTime = LastWriteTime(exchangeFile);
    if (writeTime != 0 && m_knownWriteTime != 0 && writeTime != m_knownWriteTime) {
        try {
            m_elsewhereVersion = KeepVersion(CL::ReadWholeFile(exchangeFile));
        } catch (...) {
            Log(0, "The exchange file changed elsewhere could not be read: " +
                       CL::Narrow(CL::DescribeCurrentException().text) + MV_POS());
        }
    }
    CompareBeforeSave(exchangeFile, document);
}

void CChangeRecorder::CompareBeforeSave(const std::wstring& exchangeFile, const CAddressSpaceDocument& document)
{
    m_compared = false;
    m_serverChanges = 0;
    m_conflicts.clear();
    try {
        const COPCServerAddressSpace& baseline = *document.Baseline();
        const COPCServerAddressSpace& editor = *document.Model();
        if (m_elsewhereVersion.empty()) {
            m_saveCounts = SummarizeDifferences(CompareAddressSpaces(baseline, editor));
        } else {
            // The server's address space now is the exchange file as written
            // elsewhere: the Save is measured against it, and what both sides
            // changed since the load is a conflict the Save overrides.
            auto server = CAddressSpaceDocument::ModelPtr::Make();
            server->Load(exchangeFile);
            AddressSpaceDifferences save = CompareAddressSpaces(*server, editor);
            const AddressSpaceDifferences serverChanges = CompareAddressSpaces(baseline, *server);
            MarkOrigins(save, CompareAddressSpaces(baseline, editor), serverChanges);
            m_saveCounts = SummarizeDifferences(save);
            m_serverChanges = SummarizeDifferences(serverChanges).Total();
            for (const AddressSpaceDifference& difference : save)
                if (difference.Conflict() &&
                    (m_conflicts.empty() || m_conflicts.back() != difference.path))
                    m_conflicts.push_back(difference.path);
        }
        m_compared = true;
    } catch (...) {
        Log(0, "The Save could not be compared with the server's address space: " +
                   CL::Narrow(CL::DescribeCurrentException().text) + MV_POS());
    }
}

void CChangeRecorder::Saved(const std::wstring& exchangeFile, const CAddressSpaceDocument& /*document*/)
{
    std::wstring written;
    try {
        written = KeepVersion(CL::ReadWholeFile(exchangeFile));
    } catch (...) {
        Log(0, "The saved address space could not be read for its version: " +
                   CL::Narrow(CL::DescribeCurrentException().text) + MV_POS());
    }
    const std::wstring previous = m_elsewhereVersion.empty() ? m_knownVersion : m_elsewhereVersion;
    const size_t removed = m_versions.ApplyRetention(m_retention.Kept()).size();
    m_journal.Record(CL::kJournalAddressSpaceSaved, SaveDetails(exchangeFile, removed), written,
                     previous == written ? std::wstring() : previous);
    m_knownVersion = written;
    m_elsewhereVersion.clear();
    m_restoredFrom.clear();
    m_knownWriteTime = LastWriteTime(exchangeFile);
}

void CChangeRecorder::NoteRestored(const std::wstring& versionFile)
{
    m_restoredFrom = versionFile;
    m_journal.Record(CL::kJournalAddressSpaceRestored,
                     L"Version taken back into the address space editor (sent to the server by the next Save).",
                     versionFile);
}

std::wstring CChangeRecorder::SaveDetails(const std::wstring& exchangeFile, size_t removedVersions) const
{
    std::wstring details = L"Saved to " + exchangeFile + L".";
    if (m_compared)
        details += CL::Format(L" %zu added, %zu removed, %zu changed, %zu moved.", m_saveCounts.added,
                              m_saveCounts.removed, m_saveCounts.changed, m_saveCounts.moved);
    if (!m_elsewhereVersion.empty()) {
        details += L" The server's address space had been changed elsewhere since it was loaded";
        if (m_compared)
            details += CL::Format(L" (%zu change(s))", m_serverChanges);
        details += L"; those changes were overridden.";
        if (m_compared)
            details += CL::Format(L" %zu conflict(s) overridden", m_conflicts.size());
        for (size_t i = 0; i < m_conflicts.size() && i < 20; ++i)
            details += (i ? L", " : L": ") + m_conflicts[i];
        if (m_compared)
            details += L".";
    }
    if (!m_restoredFrom.empty())
        details += L" Restored from " + m_restoredFrom + L".";
    if (removedVersions)
        details += L" " + std::to_wstring(removedVersions) + L" old version(s) removed (keeping " +
                   CVersionRetention::Describe(m_retention.Kept()) + L").";
    return details;
}
