#include "WorkbookFuzz.h"

#include "AddressSpaceCorpus.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"
#include "common/FileBytes.h"
#include "common/ReplacingFile.h"
#include "common/ZipReader.h"
#include "common/ZipWriter.h"

namespace fuzz {

namespace {

const std::vector<std::string> kXmlTokens = {
    "<c t=\"s\"><v>99999</v></c>", "<c t=\"inlineStr\"><is><t>x</t></is></c>", "<c t=\"e\"><v>#REF!</v></c>",
    "<c t=\"b\"><v>2</v></c>", "<c t=\"d\"><v>2024-13-45</v></c>", "<c r=\"XFD1\"><v>1</v></c>",
    "<c r=\"A0\"/>", "<row r=\"0\"/>", "<row r=\"1048577\"/>", "<f>1+</f>", "_x0000_", "_xD800_", "1E+400",
    "-0", "NaN", "VT_I8", "VT_R4 | VT_ARRAY", "Path", "s=\"99\"", "t=\"n\"", "<rPh><t>p</t></rPh>",
    "r:id=\"rId9\"", "Target=\"../../x.xml\"", "date1904=\"1\""};
const std::vector<std::string> kByteTokens = {"PK\x03\x04", "PK\x01\x02", "PK\x05\x06", "\xFF\xFF\xFF\xFF",
                                              std::string("\0\0\0\0", 4), "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"};

size_t CountItems(const COPCServerAddressSpaceBranch& branch)
{
    size_t count = branch.ItemCount();
    for (const auto& child : branch.Branches())
        count += CountItems(*child);
    return count;
}

} // namespace

CWorkbookFuzz::CWorkbookFuzz(const std::wstring& folder)
    : m_file(folder + L"fuzz.xlsx"), m_xmlMutator(kXmlTokens), m_byteMutator(kByteTokens)
{
    // A small workbook (the values spreadsheets change, in their branch):
    // each input goes through the disk and five parsers, so its size counts.
    auto sample = ValueCorpusSpace();
    const auto root = sample->RootBranch();
    for (const auto& branch : root->Branches())
        if (branch->Name() != L"Spreadsheet")
            root->RemoveBranch(branch->Name());
    CL::ExportAddressSpaceWorkbook(*sample, m_file);
    m_base = CL::ReadWholeFile(m_file);
    const CL::CZipReader zip(m_base);
    for (const CL::CZipReader::Entry& entry : zip.Entries())
        m_parts.emplace_back(entry.name, zip.Read(entry, 1 << 26));
}

std::string CWorkbookFuzz::Packed(const std::vector<std::pair<std::string, std::string>>& parts) const
{
    {
        CL::CReplacingFile file(m_file, L"fuzz");
        CL::CZipWriter zip(file);
        for (const auto& [name, bytes] : parts) {
            zip.BeginEntry(name);
            zip.Write(bytes);
        }
        zip.Close();
        file.Commit();
    }
    return CL::ReadWholeFile(m_file);
}

void CWorkbookFuzz::RunOne(CFuzzRandom& random, LoaderCounts& counts)
{
    if (random.OneIn(3)) {
        m_input = m_byteMutator.Mutate(m_base, random);
    } else {
        auto parts = m_parts;
        // Mostly the sheet; sometimes the workbook, its relationships, the styles.
        auto& part = parts[random.OneIn(2) ? 0 : random.Below(parts.size())];
        part.second = m_xmlMutator.Mutate(part.second, random);
        m_input = Packed(parts);
    }
    CL::CsvImportPlan plan;
    try {
        plan = CL::ReadAddressSpaceWorkbook(m_input);
    } catch (...) {
        const std::string kind = CaughtKind();
        ++counts.refused;
        ++counts.errors[kind];
        if (kind.rfind("CException ", 0) != 0)
            counts.Violation("refused with " + kind);
        return;
    }
    ++counts.loaded;
    for (const CL::CsvRejectedLine& line : plan.rejected)
        if (line.reason.empty())
            counts.Violation("a rejected row without a reason");
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    try {
        const CL::CsvImportResult result = CL::ApplyCsvImport(plan, *space, random.OneIn(2));
        if (CountItems(*space->RootBranch()) != result.added)
            counts.Violation("the import added another number of items than it reports");
        if (result.added + result.updated + result.leftAlone != plan.items.size())
            counts.Violation("the import did not account for every row of its plan");
    } catch (...) {
        counts.Violation("applying a read plan threw " + CaughtText());
    }
}

} // namespace fuzz
