#include "addressspace/AddressSpaceCsv.h"

#include <cwchar>
#include <optional>

#include "addressspace/ItemDataTypes.h"
#include "addressspace/NoCaseLess.h"
#include "common/Csv.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

namespace CL {

const wchar_t* const kCsvColumns[7] = {L"Path", L"Data type", L"Value", L"Readable",
                                       L"Writable", L"Archive", L"Scan rate"};

namespace {

enum Column { kPath, kType, kValue, kReadable, kWritable, kArchive, kScanRate, kColumnCount };

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";

using BranchPtr = CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CSmartPtr<COPCItem>;

// ---- Export -----------------------------------------------------------------

std::wstring ValueText(const COPCItem& item)
{
    const CVariant value = item.Value();
    return VariantToString(value, kLocaleSystemDefault, kArraySeparator);
}

std::wstring Header(wchar_t separator)
{
    return DelimitedRecord(std::vector<std::wstring>(std::begin(kCsvColumns), std::end(kCsvColumns)), separator);
}

std::wstring ItemRecord(const COPCItem& item, const std::vector<std::wstring>& names, wchar_t separator)
{
    return DelimitedRecord({JoinItemPath(names), VarTypeToString(item.CanonicalDataType()), ValueText(item),
                   item.Readable() ? L"1" : L"0", item.Writable() ? L"1" : L"0", item.Archive() ? L"1" : L"0",
                   std::to_wstring(item.ScanRate())},
                  separator);
}

void ExportBranch(const COPCServerAddressSpaceBranch& branch, std::vector<std::wstring>& names,
                  std::wstring& out, wchar_t separator = L',')
{
    for (const ItemPtr& item : branch.Items()) {
        names.push_back(item->Name());
        out += ItemRecord(*item, names, separator);
        names.pop_back();
    }
    for (const BranchPtr& child : branch.Branches()) {
        names.push_back(child->Name());
        ExportBranch(*child, names, out, separator);
        names.pop_back();
    }
}

// ---- Import -----------------------------------------------------------------

std::optional<VARTYPE> TypeByName(const std::wstring& name)
{
    for (VARTYPE vt : kItemDataTypes) {
        if (EqualsNoCase(VarTypeToString(vt), name))
            return vt;
    }
    return std::nullopt;
}

std::optional<bool> Flag(const std::wstring& text)
{
    if (text == L"1" || EqualsNoCase(text, L"true"))
        return true;
    if (text == L"0" || EqualsNoCase(text, L"false"))
        return false;
    return std::nullopt;
}

std::optional<DWORD> ScanRate(const std::wstring& text)
{
    if (text.empty() || text.size() > 10)
        return std::nullopt;
    unsigned long long value = 0;
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9')
            return std::nullopt;
        value = value * 10 + static_cast<unsigned>(c - L'0');
    }
    if (value > 0xFFFFFFFFull)
        return std::nullopt;
    return static_cast<DWORD>(value);
}

// Array elements one per line: a spreadsheet may hand lines back with a
// bare LF, the conversion splits at CR LF.
std::wstring WithCrLf(const std::wstring& text)
{
    std::wstring out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'\n' && (i == 0 || text[i - 1] != L'\r'))
            out += L'\r';
        out += text[i];
    }
    return out;
}

// An empty cell: an empty string for a text item, an empty array for an
// array item, and no initial value for the other types (what export writes
// for such items).
CVariant EmptyValue(VARTYPE vt)
{
    if (vt == VT_BSTR)
        return CVariant(std::wstring());
    CVariant value;
    if (vt & VT_ARRAY) {
        SAFEARRAY* array = ::SafeArrayCreateVector(static_cast<VARTYPE>(vt & ~VT_ARRAY), 0, 0);
        if (!array)
            throw CException(E_OUTOFMEMORY, L"::SafeArrayCreateVector");
        value.vt = vt;
        value.parray = array;
    }
    return value;
}

// A value of a type with a fraction, written with a decimal comma, in the
// form the conversion reads (the system's decimal mark).
std::wstring WithDecimalPoint(std::wstring text, VARTYPE dataType)
{
    const VARTYPE base = dataType & VT_TYPEMASK;
    if (base != VT_R4 && base != VT_R8 && base != VT_CY)
        return text;
    wchar_t mark[8] = L".";
    if (::GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SDECIMAL, mark, 8) == 0 || mark[0] == L'\0')
        return text;
    for (wchar_t& c : text)
        if (c == L',')
            c = mark[0];
    return text;
}

BranchPtr BranchAlong(COPCServerAddressSpace& space, const std::vector<std::wstring>& names, size_t& created)
{
    BranchPtr branch = space.RootBranch();
    for (const std::wstring& name : names) {
        BranchPtr next = branch->FindBranch(name);
        if (!next) {
            next = BranchPtr::Make(name);
            branch->AddBranch(next);
            ++created;
        }
        branch = next;
    }
    return branch;
}

void ApplyValues(COPCItem& item, const CsvItem& from, const FILETIME& now)
{
    item.SetAccessRights((from.readable ? COPCItem::kReadable : 0) | (from.writable ? COPCItem::kWritable : 0));
    item.SetScanRate(from.scanRate);
    item.SetArchive(from.archive);
    item.SetCanonicalDataType(from.dataType);
    item.SetValue(from.value);
    item.SetQuality(192);
    item.SetValueTime(now);
}

} // namespace

std::wstring JoinItemPath(const std::vector<std::wstring>& names)
{
    std::wstring path;
    for (const std::wstring& name : names)
        AppendItemPathName(path, name);
    return path;
}

void AppendItemPathName(std::wstring& path, std::wstring_view name)
{
    if (!path.empty())
        path += L'.';
    for (wchar_t c : name) {
        if (c == L'.' || c == L'\\')
            path += L'\\';
        path += c;
    }
}

bool SplitItemPath(std::wstring_view path, std::vector<std::wstring>& names, std::wstring& reason)
{
    names.assign(1, std::wstring());
    for (size_t i = 0; i < path.size(); ++i) {
        const wchar_t c = path[i];
        if (c == L'\\') {
            if (i + 1 < path.size() && (path[i + 1] == L'.' || path[i + 1] == L'\\')) {
                names.back() += path[++i];
                continue;
            }
            reason = Format(L"the path \"%ls\" holds a \\ that is not followed by . or \\",
                            std::wstring(path).c_str());
            return false;
        }
        if (c == L'\0') {
            // Names are C strings to the rest of the program: a NUL would cut one short.
            reason = L"the path holds a NUL character";
            return false;
        }
        if (c == L'.')
            names.emplace_back();
        else
            names.back() += c;
    }
    for (const std::wstring& name : names) {
        if (name.empty()) {
            reason = path.empty() ? std::wstring(L"the path is empty")
                                  : Format(L"the path \"%ls\" holds an empty name", std::wstring(path).c_str());
            return false;
        }
    }
    return true;
}

std::wstring TabSeparatedItems(const std::vector<CSmartPtr<COPCItem>>& items)
{
    std::wstring text = Header(L'\t');
    for (const ItemPtr& item : items)
        text += ItemRecord(*item, {item->Name()}, L'\t');
    return text;
}

std::wstring TabSeparatedBranch(const COPCServerAddressSpaceBranch& branch)
{
    std::wstring text = Header(L'\t');
    std::vector<std::wstring> names{branch.Name()};
    ExportBranch(branch, names, text, L'\t');
    return text;
}

std::string ExportAddressSpaceCsv(const COPCServerAddressSpace& space)
{
    std::wstring text = Header(L',');
    std::vector<std::wstring> names;
    ExportBranch(*space.RootBranch(), names, text);
    return kUtf8Bom + ToUtf8(text);
}

CsvImportPlan ReadAddressSpaceCsv(std::string_view bytes, const CsvItemDefaults& defaults)
{
    if (bytes.substr(0, 3) == kUtf8Bom)
        bytes.remove_prefix(3);
    if (!bytes.empty() && ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                                static_cast<int>(bytes.size()), nullptr, 0) == 0)
        throw CException(E_INVALIDARG, L"The CSV file is not UTF-8 text.");
    return ReadAddressSpaceCsvText(FromUtf8(bytes), defaults);
}

CsvImportPlan ReadAddressSpaceCsvText(std::wstring_view text, const CsvItemDefaults& defaults)
{
    const wchar_t separator = DetectCsvSeparator(text);
    CCsvReader reader(text, separator);
    CsvRow row;
    if (!reader.Next(row))
        throw CException(E_INVALIDARG, L"The CSV file is empty: its first line must name the columns.");
    if (!row.error.empty())
        throw CException(E_INVALIDARG, L"The header line of the CSV file is malformed: " + row.error + L".");
    const CsvColumnMap map = MapCsvColumns(row.fields, L"The CSV file", L"first line");
    CsvImportPlan plan;
    plan.separator = separator;
    while (reader.Next(row)) {
        if (row.error.empty() && row.fields.size() == 1 && row.fields[0].empty())
            continue;   // a blank line
        CsvItem item;
        item.line = row.line;
        const std::wstring reason = row.error.empty()
                                        ? ReadCsvFields(row.fields, map, defaults, separator != L',', item)
                                        : Format(L"malformed quotes: %ls", row.error.c_str());
        if (reason.empty())
            plan.items.push_back(std::move(item));
        else
            plan.rejected.push_back({row.line, reason});
    }
    return plan;
}

CsvColumnMap MapCsvColumns(const std::vector<std::wstring>& names, const wchar_t* file, const wchar_t* firstLine)
{
    CsvColumnMap map;
    for (size_t i = 0; i < names.size(); ++i) {
        const std::wstring name = TrimWhiteSpace(names[i]);
        for (int c = 0; c < kColumnCount; ++c) {
            if (!EqualsNoCase(name, kCsvColumns[c]))
                continue;
            if (map.index[c] >= 0)
                throw CException(E_INVALIDARG, Format(L"%ls names the column \"%ls\" twice.", file, kCsvColumns[c]));
            map.index[c] = static_cast<int>(i);
        }
    }
    if (map.index[kPath] < 0)
        throw CException(E_INVALIDARG, Format(L"%ls has no \"Path\" column in its %ls.", file, firstLine));
    return map;
}

std::wstring ReadCsvFields(const std::vector<std::wstring>& fields, const CsvColumnMap& map,
                          const CsvItemDefaults& defaults, bool decimalComma, CsvItem& item)
{
    auto cell = [&](Column c) -> const std::wstring* {
        const int i = map.index[c];
        return i >= 0 && static_cast<size_t>(i) < fields.size() ? &fields[static_cast<size_t>(i)] : nullptr;
    };
    std::vector<std::wstring> names;
    std::wstring reason;
    const std::wstring* path = cell(kPath);
    if (!SplitItemPath(path ? *path : std::wstring(), names, reason))
        return reason;
    item.name = names.back();
    names.pop_back();
    item.branches = std::move(names);

    item.dataType = defaults.dataType;
    if (const std::wstring* type = cell(kType); type && !type->empty()) {
        const auto vt = TypeByName(TrimWhiteSpace(*type));
        if (!vt)
            return Format(L"unknown data type \"%ls\"", type->c_str());
        item.dataType = *vt;
    }
    item.readable = defaults.readable;
    item.writable = defaults.writable;
    item.archive = defaults.archive;
    const std::pair<Column, bool*> flags[] = {{kReadable, &item.readable}, {kWritable, &item.writable},
                                              {kArchive, &item.archive}};
    for (const auto& [column, target] : flags) {
        if (const std::wstring* text = cell(column); text && !text->empty()) {
            const auto flag = Flag(TrimWhiteSpace(*text));
            if (!flag)
                return Format(L"%ls must be 1 or 0, not \"%ls\"", kCsvColumns[column], text->c_str());
            *target = *flag;
        }
    }
    item.scanRate = defaults.scanRate;
    if (const std::wstring* text = cell(kScanRate); text && !text->empty()) {
        const auto rate = ScanRate(TrimWhiteSpace(*text));
        if (!rate)
            return Format(L"the scan rate \"%ls\" is not a number of milliseconds", text->c_str());
        item.scanRate = *rate;
    }
    const std::wstring* value = cell(kValue);
    if (!value || value->empty()) {
        item.value = EmptyValue(item.dataType);
        return std::wstring();
    }
    try {
        const std::wstring text = decimalComma ? WithDecimalPoint(*value, item.dataType) : *value;
        item.value = StringToVariant(WithCrLf(text), item.dataType, kLocaleSystemDefault, kArraySeparator);
    } catch (const CException&) {
        return Format(L"the value \"%ls\" does not convert to %ls", value->c_str(),
                      VarTypeToString(item.dataType).c_str());
    }
    return std::wstring();
}

CSmartPtr<COPCItem> NewCsvItem(const CsvItem& entry, const std::wstring& name, const FILETIME& now)
{
    ItemPtr item = ItemPtr::Make(DWORD(0), entry.scanRate, entry.archive, WORD(192), entry.dataType, nullptr);
    item->Rename(name.c_str());
    ApplyValues(*item, entry, now);
    return item;
}

CsvImportResult ApplyCsvImport(const CsvImportPlan& plan, COPCServerAddressSpace& space, bool updateExisting)
{
    CsvImportResult result;
    FILETIME now = {};
    ::GetSystemTimeAsFileTime(&now);
    for (const CsvItem& entry : plan.items) {
        const BranchPtr branch = BranchAlong(space, entry.branches, result.branchesCreated);
        if (const ItemPtr existing = branch->FindItem(entry.name)) {
            if (!updateExisting) {
                ++result.leftAlone;
                continue;
            }
            ApplyValues(*existing, entry, now);
            ++result.updated;
            continue;
        }
        branch->AddItem(NewCsvItem(entry, entry.name, now));
        ++result.added;
    }
    return result;
}

} // namespace CL
