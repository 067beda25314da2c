#include "addressspace/AddressSpaceFiles.h"

#include <cwchar>

#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "common/FileBytes.h"

namespace CL {

namespace {

CSmartPtr<COPCServerAddressSpace> LoadXml(const std::wstring& path)
{
    auto space = CSmartPtr<COPCServerAddressSpace>::Make();
    space->Load(path);
    return space;
}

CSmartPtr<COPCServerAddressSpace> LoadCsv(const std::wstring& path)
{
    const CsvImportPlan plan = ReadAddressSpaceCsv(ReadWholeFile(path));
    auto space = CSmartPtr<COPCServerAddressSpace>::Make();
    ApplyCsvImport(plan, *space, true);
    return space;
}

CSmartPtr<COPCServerAddressSpace> LoadWorkbook(const std::wstring& path)
{
    auto space = CSmartPtr<COPCServerAddressSpace>::Make();
    LoadAddressSpaceWorkbook(path, *space);
    return space;
}

bool EndsWithNoCase(const std::wstring& text, const wchar_t* end)
{
    const size_t length = std::wcslen(end);
    return text.size() >= length && _wcsicmp(text.c_str() + text.size() - length, end) == 0;
}

} // namespace

const std::vector<AddressSpaceFileType>& AddressSpaceFileTypes()
{
    static const std::vector<AddressSpaceFileType> types = {
        {L".xml", L"XML files", LoadXml},
        {L".csv", L"CSV files", LoadCsv},
        {L".xlsx", L"Excel Workbooks", LoadWorkbook},
    };
    return types;
}

std::wstring AddressSpaceFileFilter()
{
    std::wstring patterns;
    for (const AddressSpaceFileType& type : AddressSpaceFileTypes())
        patterns += (patterns.empty() ? L"*" : L";*") + std::wstring(type.extension);
    std::wstring filter = L"Address space files (" + patterns + L")" + L'\0' + patterns + L'\0';
    for (const AddressSpaceFileType& type : AddressSpaceFileTypes())
        filter += std::wstring(type.description) + L" (*" + type.extension + L")" + L'\0' + L"*" + type.extension + L'\0';
    filter += std::wstring(L"All files (*.*)") + L'\0' + L"*.*" + L'\0';
    return filter;
}

CSmartPtr<COPCServerAddressSpace> LoadAddressSpaceFile(const std::wstring& path)
{
    for (const AddressSpaceFileType& type : AddressSpaceFileTypes())
        if (EndsWithNoCase(path, type.extension))
            return type.load(path);
    return LoadXml(path);
}

} // namespace CL
