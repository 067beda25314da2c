#include "AddressSpaceCorpus.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "addressspace/ItemDataTypes.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;

namespace {

void Add(const BranchPtr& branch, const std::wstring& name, VARTYPE type, const VARIANT& value, DWORD rights = 3,
         bool archive = false, DWORD scanRate = 1000)
{
    ItemPtr item = ItemPtr::Make(rights, scanRate, archive, WORD(192), type, nullptr);
    item->Rename(name.c_str());
    item->SetValue(value);
    branch->AddItem(item);
}

void AddText(const BranchPtr& branch, const std::wstring& name, VARTYPE type, const std::wstring& text)
{
    Add(branch, name, type, CL::StringToVariant(text, type, CL::kLocaleInvariant, CL::kArraySeparator));
}

CL::CVariant Of(VARTYPE vt, auto setter)
{
    CL::CVariant v;
    v.vt = vt;
    setter(v);
    return v;
}

BranchPtr Child(const BranchPtr& parent, const std::wstring& name)
{
    BranchPtr branch = BranchPtr::Make(name);
    parent->AddBranch(branch);
    return branch;
}

std::wstring Describe(const VARIANT& v)
{
    try {
        return CL::VarTypeToString(v.vt) + L" " + CL::VariantToString(v, CL::kLocaleInvariant, L"|");
    } catch (...) {
        return CL::VarTypeToString(v.vt);
    }
}

bool SameValue(const VARIANT& a, const VARIANT& b)
{
    if (a.vt != b.vt)
        return false;
    if (a.vt & VT_ARRAY) {
        try {
            return CL::VariantToString(a, CL::kLocaleInvariant, L"|") == CL::VariantToString(b, CL::kLocaleInvariant, L"|");
        } catch (...) {
            return false;
        }
    }
    switch (a.vt) {
    case VT_EMPTY: case VT_NULL: return true;
    case VT_BSTR:
        return ::SysStringLen(a.bstrVal) == ::SysStringLen(b.bstrVal) &&
               std::memcmp(a.bstrVal, b.bstrVal, ::SysStringLen(a.bstrVal) * sizeof(wchar_t)) == 0;
    case VT_BOOL: return (a.boolVal != 0) == (b.boolVal != 0);
    case VT_R4: return std::memcmp(&a.fltVal, &b.fltVal, sizeof(float)) == 0;
    case VT_R8: case VT_DATE: return std::memcmp(&a.dblVal, &b.dblVal, sizeof(double)) == 0;
    case VT_I1: case VT_UI1: return a.bVal == b.bVal;
    case VT_I2: case VT_UI2: return a.uiVal == b.uiVal;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: return a.ulVal == b.ulVal;
    default: return a.ullVal == b.ullVal;   // VT_I8, VT_UI8, VT_CY
    }
}

std::wstring CompareBranches(const COPCServerAddressSpaceBranch& e, const COPCServerAddressSpaceBranch& a,
                             const std::wstring& path)
{
    const auto ei = e.Items();
    const auto ai = a.Items();
    if (ei.size() != ai.size())
        return CL::Format(L"%ls: %zu items expected, %zu found", path.c_str(), ei.size(), ai.size());
    for (size_t i = 0; i < ei.size(); ++i) {
        const std::wstring where = path + L"/" + ei[i]->Name();
        if (ei[i]->Name() != ai[i]->Name())
            return where + L": found the name " + ai[i]->Name();
        if (ei[i]->CanonicalDataType() != ai[i]->CanonicalDataType())
            return where + L": data type " + CL::VarTypeToString(ai[i]->CanonicalDataType());
        if (ei[i]->AccessRights() != ai[i]->AccessRights() || ei[i]->Archive() != ai[i]->Archive() ||
            ei[i]->ScanRate() != ai[i]->ScanRate())
            return where + L": flags or scan rate differ";
        const CL::CVariant ev = ei[i]->Value();
        const CL::CVariant av = ai[i]->Value();
        if (!SameValue(ev, av))
            return where + L": value " + Describe(av) + L" instead of " + Describe(ev);
    }
    const auto eb = e.Branches();
    const auto ab = a.Branches();
    if (eb.size() != ab.size())
        return CL::Format(L"%ls: %zu branches expected, %zu found", path.c_str(), eb.size(), ab.size());
    for (size_t i = 0; i < eb.size(); ++i) {
        if (eb[i]->Name() != ab[i]->Name())
            return path + L": branch " + ab[i]->Name() + L" instead of " + eb[i]->Name();
        const std::wstring difference = CompareBranches(*eb[i], *ab[i], path + L"/" + eb[i]->Name());
        if (!difference.empty())
            return difference;
    }
    return std::wstring();
}

} // namespace

CL::CSmartPtr<COPCServerAddressSpace> ValueCorpusSpace()
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    const BranchPtr root = space->RootBranch();

    // The values a spreadsheet changed on the way through CSV.
    const BranchPtr seven = Child(root, L"Spreadsheet");
    Add(seven, L"UI8 max", VT_UI8, Of(VT_UI8, [](VARIANT& v) { v.ullVal = ~0ull; }));
    Add(seven, L"Bool true", VT_BOOL, CL::CVariant::Bool(true));
    AddText(seven, L"Leading zeros", VT_BSTR, L"007");
    AddText(seven, L"Formula", VT_BSTR, L"=1+2");
    AddText(seven, L"Exponent", VT_BSTR, L"1E5");
    AddText(seven, L"True text", VT_BSTR, L"TRUE");
    Add(seven, L"I8 2^53+1", VT_I8, CL::CVariant::I8(9007199254740993LL));

    const BranchPtr ints = Child(root, L"Integers");
    Add(ints, L"I1 min", VT_I1, Of(VT_I1, [](VARIANT& v) { v.cVal = -128; }));
    Add(ints, L"I1 max", VT_I1, Of(VT_I1, [](VARIANT& v) { v.cVal = 127; }));
    Add(ints, L"I2 min", VT_I2, Of(VT_I2, [](VARIANT& v) { v.iVal = -32768; }));
    Add(ints, L"I4 min", VT_I4, CL::CVariant::I4(std::numeric_limits<LONG>::min()));
    Add(ints, L"I4 max", VT_I4, CL::CVariant::I4(std::numeric_limits<LONG>::max()));
    Add(ints, L"INT", VT_INT, Of(VT_INT, [](VARIANT& v) { v.intVal = -123456; }));
    Add(ints, L"UI1 max", VT_UI1, Of(VT_UI1, [](VARIANT& v) { v.bVal = 255; }));
    Add(ints, L"UI2 max", VT_UI2, CL::CVariant::UI2(65535));
    Add(ints, L"UI4 max", VT_UI4, CL::CVariant::UI4(0xFFFFFFFFu));
    Add(ints, L"UINT", VT_UINT, Of(VT_UINT, [](VARIANT& v) { v.uintVal = 4000000000u; }));
    Add(ints, L"I8 min", VT_I8, CL::CVariant::I8(std::numeric_limits<LONGLONG>::min()));
    Add(ints, L"I8 max", VT_I8, CL::CVariant::I8(std::numeric_limits<LONGLONG>::max()));
    Add(ints, L"I8 2^53", VT_I8, CL::CVariant::I8(9007199254740992LL));
    Add(ints, L"I8 -2^53", VT_I8, CL::CVariant::I8(-9007199254740992LL));
    Add(ints, L"UI8 2^53", VT_UI8, Of(VT_UI8, [](VARIANT& v) { v.ullVal = 9007199254740992ull; }));
    Add(ints, L"UI8 zero", VT_UI8, Of(VT_UI8, [](VARIANT& v) { v.ullVal = 0; }));

    const BranchPtr floats = Child(root, L"Floating");
    Add(floats, L"R4 tenth", VT_R4, CL::CVariant::R4(0.1f));
    Add(floats, L"R4 max", VT_R4, CL::CVariant::R4(std::numeric_limits<float>::max()));
    Add(floats, L"R4 denormal", VT_R4, CL::CVariant::R4(std::numeric_limits<float>::denorm_min()));
    Add(floats, L"R4 pi", VT_R4, CL::CVariant::R4(3.14159274f));
    Add(floats, L"R8 tenth", VT_R8, CL::CVariant::R8(0.1));
    Add(floats, L"R8 sum", VT_R8, CL::CVariant::R8(0.1 + 0.2));
    Add(floats, L"R8 max", VT_R8, CL::CVariant::R8(std::numeric_limits<double>::max()));
    Add(floats, L"R8 min", VT_R8, CL::CVariant::R8(std::numeric_limits<double>::denorm_min()));
    Add(floats, L"R8 big", VT_R8, CL::CVariant::R8(1e21));
    Add(floats, L"R8 negative", VT_R8, CL::CVariant::R8(-2.5e-7));
    Add(floats, L"R8 third", VT_R8, CL::CVariant::R8(1.0 / 3.0));
    Add(floats, L"CY max", VT_CY, Of(VT_CY, [](VARIANT& v) { v.cyVal.int64 = std::numeric_limits<LONGLONG>::max(); }));
    Add(floats, L"CY min", VT_CY, Of(VT_CY, [](VARIANT& v) { v.cyVal.int64 = std::numeric_limits<LONGLONG>::min(); }));
    Add(floats, L"CY cents", VT_CY, Of(VT_CY, [](VARIANT& v) { v.cyVal.int64 = 123456789; }));
    Add(floats, L"CY tiny", VT_CY, Of(VT_CY, [](VARIANT& v) { v.cyVal.int64 = -1; }));
    Add(floats, L"CY 15 digits", VT_CY, Of(VT_CY, [](VARIANT& v) { v.cyVal.int64 = 999999999999999LL; }));

    const BranchPtr dates = Child(root, L"Dates");
    // 1 February 2024 13:45:31.123, as the OLE date of that millisecond.
    Add(dates, L"Date ms", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = (45323.0 * 86400000.0 + 49531123.0) / 86400000.0; }));
    Add(dates, L"Date midnight", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = 36526.0; }));
    Add(dates, L"Date 1900-03-01", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = 61.0; }));
    Add(dates, L"Date 1900-01-01", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = 2.0; }));
    Add(dates, L"Date 1800", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = -36522.5; }));
    Add(dates, L"Date 9999", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = 2958465.5; }));
    Add(dates, L"Time only", VT_DATE, Of(VT_DATE, [](VARIANT& v) { v.date = 0.75; }));
    Add(dates, L"Bool false", VT_BOOL, CL::CVariant::Bool(false));

    const BranchPtr texts = Child(root, L"Texts");
    AddText(texts, L"Blanks", VT_BSTR, L"  two blanks at either end  ");
    // Line breaks as Windows writes them: spreadsheets keep a line feed
    // alone, and an import gives a text's line feeds their carriage returns.
    AddText(texts, L"Lines", VT_BSTR, L"first line\r\nsecond line\r\n\r\nafter an empty line\r\n");
    AddText(texts, L"Tab", VT_BSTR, L"\tstarts with a tab");
    AddText(texts, L"Escape look-alike", VT_BSTR, L"_x000D_ is not a CR, _x0041_ no A");
    AddText(texts, L"Markup", VT_BSTR, L"<a href=\"x\">&amp; 'quoted'</a>");
    AddText(texts, L"Plus", VT_BSTR, L"+49 30 1234");
    AddText(texts, L"Minus", VT_BSTR, L"-1");
    AddText(texts, L"At", VT_BSTR, L"@SUM(A1)");
    AddText(texts, L"Percent", VT_BSTR, L"50%");
    AddText(texts, L"Date-like", VT_BSTR, L"1/2/2024");
    AddText(texts, L"Decimal comma", VT_BSTR, L"1,5");
    AddText(texts, L"Non-BMP", VT_BSTR, L"Gr\u00fc\u00dfe \U0001F600 \u4e2d\u6587");
    AddText(texts, L"Empty", VT_BSTR, L"");
    AddText(texts, L"=HYPERLINK", VT_BSTR, L"=HYPERLINK(\"http://x\")");

    const BranchPtr arrays = Child(root, L"Arrays");
    int n = 0;
    for (VARTYPE vt : CL::kItemDataTypes) {
        if (!(vt & VT_ARRAY))
            continue;
        std::wstring text;
        switch (vt & VT_TYPEMASK) {
        case VT_R4: case VT_R8: text = L"1.5\r\n-2.25\r\n0"; break;
        case VT_CY: text = L"12.34\r\n-0.0001"; break;
        case VT_DATE: text = L"2/1/2024 1:45:30 PM\r\n12/31/1999"; break;
        case VT_BOOL: text = L"True\r\nFalse"; break;
        case VT_BSTR: text = L"007\r\n=1+2\r\n TRUE "; break;
        case VT_UI1: case VT_UI2: case VT_UI4: case VT_UI8: case VT_UINT: text = L"200\r\n0"; break;
        default: text = L"-7\r\n8"; break;
        }
        AddText(arrays, L"A" + std::to_wstring(++n), vt, text);
    }
    ItemPtr emptyArray = ItemPtr::Make(DWORD(1), DWORD(100), false, WORD(192), VARTYPE(VT_ARRAY | VT_I4), nullptr);
    emptyArray->Rename(L"No elements");
    CL::CVariant empty;
    empty.vt = VT_ARRAY | VT_I4;
    empty.parray = ::SafeArrayCreateVector(VT_I4, 0, 0);
    emptyArray->SetValue(empty);
    arrays->AddItem(emptyArray);

    // Flags and scan rates, names that need escapes, no initial value.
    const BranchPtr odd = Child(root, L"Plant.North\\Hall, \"A\"");
    Add(odd, L"Read only", VT_I4, CL::CVariant::I4(1), 1, true, 0);
    Add(odd, L"Write only", VT_I4, CL::CVariant::I4(2), 2, false, 4294967295u);
    Add(odd, L"No rights", VT_I4, CL::CVariant::I4(3), 0, true, 60000);
    Add(odd, L"No value", VT_R8, CL::CVariant());
    Add(odd, L"007", VT_R8, CL::CVariant::R8(7));
    Add(Child(odd, L"TRUE"), L"=A1", VT_I2, Of(VT_I2, [](VARIANT& v) { v.iVal = 5; }));
    Add(root, L"RootItem", VT_UI2, CL::CVariant::UI2(42));
    return space;
}

std::wstring CompareAddressSpaces(const COPCServerAddressSpace& expected, const COPCServerAddressSpace& actual)
{
    return CompareBranches(*expected.RootBranch(), *actual.RootBranch(), L"");
}
