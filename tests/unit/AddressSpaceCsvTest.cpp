// The address space as CSV: what export writes, what import makes of files
// written by hand (good and bad lines), the round trip export - import into
// an empty address space - export, and the copy an import works on.
#include <gtest/gtest.h>

#include <windows.h>

#include "AddressSpaceNames.h"
#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/ItemDataTypes.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;
using SpacePtr = CL::CSmartPtr<COPCServerAddressSpace>;

namespace {

const std::string kHeader = "\xEF\xBB\xBFPath,Data type,Value,Readable,Writable,Archive,Scan rate\r\n";

ItemPtr MakeItem(const std::wstring& name, VARTYPE vt, const std::wstring& text, DWORD rights = 3,
                 bool archive = false, DWORD scanRate = 1000)
{
    ItemPtr item = ItemPtr::Make(rights, scanRate, archive, WORD(192), vt, nullptr);
    item->Rename(name.c_str());
    if (!text.empty() || vt == VT_BSTR)
        item->SetValue(CL::StringToVariant(text, vt, CL::kLocaleSystemDefault, CL::kArraySeparator));
    return item;
}

BranchPtr AddBranch(const BranchPtr& parent, const std::wstring& name)
{
    BranchPtr branch = BranchPtr::Make(name);
    parent->AddBranch(branch);
    return branch;
}

std::string Utf8(const std::wstring& text)
{
    return CL::ToUtf8(text);
}

CL::CsvImportPlan Read(const std::string& body, const CL::CsvItemDefaults& defaults = {})
{
    return CL::ReadAddressSpaceCsv(kHeader + body, defaults);
}

std::wstring ValueText(const ItemPtr& item)
{
    return CL::VariantToString(item->Value(), CL::kLocaleSystemDefault, CL::kArraySeparator);
}

// An example value text for each of the item dialog's types.
std::wstring ExampleText(VARTYPE vt)
{
    switch (vt & ~VT_ARRAY) {
    case VT_INT: case VT_I1: case VT_I2: case VT_I4: case VT_I8: return L"-7";
    case VT_UINT: case VT_UI1: case VT_UI2: case VT_UI4: case VT_UI8: return L"200";
    case VT_R4: return L"1.5";
    case VT_R8: return L"-3.25";
    case VT_CY: return L"12.34";
    case VT_DATE: return L"2/1/2024 1:45:30 PM";
    case VT_BOOL: return L"True";
    default: return L"Grüße, \"Welt\"";
    }
}

// Every type, arrays with three elements, an empty array, an empty string,
// non-ASCII text with a line break, names holding ".", "\", commas and
// quotes, items on the root and deep down.
SpacePtr RichSpaceOrThrow()
{
    SpacePtr space = SpacePtr::Make();
    const BranchPtr root = space->RootBranch();
    const BranchPtr types = AddBranch(root, L"Types");
    int n = 0;
    for (VARTYPE vt : CL::kItemDataTypes) {
        std::wstring text = ExampleText(vt);
        if (vt & VT_ARRAY) {
            if (vt == (VT_ARRAY | VT_DATE))
                text = L"2/1/2024 1:45:30 PM\r\n12/31/1999\r\n1/1/2030 6:00:00 AM";
            else if (vt == (VT_ARRAY | VT_BOOL))
                text = L"True\r\nFalse\r\nTrue";
            else
                text = text + L"\r\n" + text + L"\r\n" + text;
        }
        ++n;
        types->AddItem(MakeItem(L"T" + std::to_wstring(n), vt, text, DWORD(n % 4), n % 2 == 0, DWORD(n * 250)));
    }
    const BranchPtr odd = AddBranch(root, L"Plant.North\\Hall, \"A\"");
    odd->AddItem(MakeItem(L"Speed.Max", VT_R8, L"2.5"));
    odd->AddItem(MakeItem(L"Über\\Temp", VT_BSTR, L"line one\r\nline two, ü"));
    odd->AddItem(MakeItem(L"Empty text", VT_BSTR, L""));
    ItemPtr emptyArray = ItemPtr::Make(DWORD(1), DWORD(100), false, WORD(192), VARTYPE(VT_ARRAY | VT_I4), nullptr);
    emptyArray->Rename(L"No elements");
    CL::CVariant empty;
    empty.vt = VT_ARRAY | VT_I4;
    empty.parray = ::SafeArrayCreateVector(VT_I4, 0, 0);
    emptyArray->SetValue(empty);
    odd->AddItem(emptyArray);
    AddBranch(odd, L"Deeper")->AddItem(MakeItem(L"Level", VT_I4, L"3"));
    root->AddItem(MakeItem(L"RootItem", VT_UI2, L"42"));
    return space;
}

SpacePtr RichSpace()
{
    try {
        return RichSpaceOrThrow();
    } catch (const CL::CException& e) {
        ADD_FAILURE() << CL::Narrow(e.Text());
        return SpacePtr::Make();
    }
}

SpacePtr Imported(const std::string& bytes, bool updateExisting = false)
{
    SpacePtr space = SpacePtr::Make();
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv(bytes);
    EXPECT_TRUE(plan.rejected.empty()) << (plan.rejected.empty() ? "" : CL::Narrow(plan.rejected[0].reason));
    CL::ApplyCsvImport(plan, *space, updateExisting);
    return space;
}

} // namespace

TEST(AddressSpaceCsv, EmptyAddressSpaceIsTheByteOrderMarkAndTheHeader)
{
    SpacePtr space = SpacePtr::Make();
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*space), kHeader);
}

TEST(AddressSpaceCsv, ItemRecordHoldsPathTypeValueFlagsAndScanRate)
{
    SpacePtr space = SpacePtr::Make();
    AddBranch(AddBranch(space->RootBranch(), L"Plant"), L"Line1")
        ->AddItem(MakeItem(L"Speed", VT_R8, L"1.5", COPCItem::kReadable, true, 500));
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*space), kHeader + "Plant.Line1.Speed,VT_R8,1.5,1,0,1,500\r\n");
}

TEST(AddressSpaceCsv, ItemsOfABranchComeBeforeItsSubBranchesInTreeOrder)
{
    SpacePtr space = SpacePtr::Make();
    const BranchPtr b = AddBranch(space->RootBranch(), L"b");
    AddBranch(space->RootBranch(), L"A")->AddItem(MakeItem(L"x", VT_I4, L"1"));
    b->AddItem(MakeItem(L"y", VT_I4, L"2"));
    space->RootBranch()->AddItem(MakeItem(L"z", VT_I4, L"3"));
    const std::string csv = CL::ExportAddressSpaceCsv(*space);
    EXPECT_EQ(csv, kHeader + "z,VT_I4,3,1,1,0,1000\r\nA.x,VT_I4,1,1,1,0,1000\r\nb.y,VT_I4,2,1,1,0,1000\r\n");
}

TEST(AddressSpaceCsv, ArrayValueIsOneQuotedFieldWithOneElementPerLine)
{
    SpacePtr space = SpacePtr::Make();
    space->RootBranch()->AddItem(MakeItem(L"a", VT_ARRAY | VT_I4, L"1\r\n2\r\n3"));
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*space), kHeader + "a,VT_I4 | VT_ARRAY,\"1\r\n2\r\n3\",1,1,0,1000\r\n");
}

TEST(AddressSpaceCsv, NonAsciiNamesAreUtf8AndFieldsWithCommasOrQuotesAreQuoted)
{
    SpacePtr space = SpacePtr::Make();
    space->RootBranch()->AddItem(MakeItem(L"Grüße, \"x\"", VT_BSTR, L"ö"));
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*space),
              kHeader + Utf8(L"\"Grüße, \"\"x\"\"\",VT_BSTR,ö,1,1,0,1000\r\n"));
}

TEST(AddressSpaceCsv, DotsAndBackslashesInNamesAreEscapedAndSplitBack)
{
    const std::vector<std::wstring> names = {L"a.b", L"c\\d", L"e\\.", L"plain"};
    const std::wstring path = CL::JoinItemPath(names);
    EXPECT_EQ(path, L"a\\.b.c\\\\d.e\\\\\\..plain");
    std::vector<std::wstring> back;
    std::wstring reason;
    ASSERT_TRUE(CL::SplitItemPath(path, back, reason)) << CL::Narrow(reason);
    EXPECT_EQ(back, names);
}

TEST(AddressSpaceCsv, RoundTripGivesTheSameFileByteForByte)
{
    const std::string first = CL::ExportAddressSpaceCsv(*RichSpace());
    const std::string second = CL::ExportAddressSpaceCsv(*Imported(first));
    EXPECT_EQ(second, first);
}

TEST(AddressSpaceCsv, RoundTripKeepsEveryTypeValueAndFlag)
{
    SpacePtr original = RichSpace();
    SpacePtr back = Imported(CL::ExportAddressSpaceCsv(*original));
    const auto from = original->RootBranch()->FindBranch(L"Types")->Items();
    const auto to = back->RootBranch()->FindBranch(L"types")->Items();
    ASSERT_EQ(from.size(), 32u);
    ASSERT_EQ(to.size(), 32u);
    for (size_t i = 0; i < from.size(); ++i) {
        SCOPED_TRACE(CL::Narrow(from[i]->Name()));
        EXPECT_EQ(to[i]->Name(), from[i]->Name());
        EXPECT_EQ(to[i]->CanonicalDataType(), from[i]->CanonicalDataType());
        EXPECT_EQ(to[i]->Value().vt, from[i]->Value().vt);
        EXPECT_EQ(ValueText(to[i]), ValueText(from[i]));
        EXPECT_EQ(to[i]->AccessRights(), from[i]->AccessRights());
        EXPECT_EQ(to[i]->Archive(), from[i]->Archive());
        EXPECT_EQ(to[i]->ScanRate(), from[i]->ScanRate());
        EXPECT_EQ(to[i]->Quality(), 192);
    }
    const BranchPtr odd = back->RootBranch()->FindBranch(L"Plant.North\\Hall, \"A\"");
    ASSERT_TRUE(odd);
    EXPECT_EQ(ItemNames(*odd), (std::vector<std::wstring>{L"Empty text", L"No elements", L"Speed.Max", L"Über\\Temp"}));
    EXPECT_EQ(odd->FindItem(L"No elements")->Value().vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(odd->FindItem(L"Empty text")->Value().vt, VT_BSTR);
    EXPECT_EQ(ValueText(odd->FindItem(L"Über\\Temp")), L"line one\r\nline two, ü");
    ASSERT_TRUE(odd->FindBranch(L"Deeper"));
    EXPECT_TRUE(odd->FindBranch(L"Deeper")->FindItem(L"Level"));
}

TEST(AddressSpaceCsv, ColumnsAreFoundByNameInAnyOrderIgnoringCase)
{
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv(
        "scan rate,VALUE,path,Data Type,Archive,Writable,Readable\r\n250,7,A.B,VT_UI1,1,0,1\r\n");
    ASSERT_EQ(plan.items.size(), 1u);
    const CL::CsvItem& item = plan.items[0];
    EXPECT_EQ(item.branches, (std::vector<std::wstring>{L"A"}));
    EXPECT_EQ(item.name, L"B");
    EXPECT_EQ(item.dataType, VT_UI1);
    EXPECT_EQ(item.value.vt, VT_UI1);
    EXPECT_EQ(item.value.bVal, 7);
    EXPECT_EQ(item.scanRate, 250u);
    EXPECT_TRUE(item.archive);
    EXPECT_FALSE(item.writable);
    EXPECT_TRUE(item.readable);
}

TEST(AddressSpaceCsv, MissingOptionalColumnsTakeTheDefaults)
{
    CL::CsvItemDefaults defaults;
    defaults.dataType = VT_R8;
    defaults.readable = true;
    defaults.writable = false;
    defaults.archive = true;
    defaults.scanRate = 333;
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv("Path,Value\r\nx,2.5\r\n", defaults);
    ASSERT_EQ(plan.items.size(), 1u);
    EXPECT_EQ(plan.items[0].dataType, VT_R8);
    EXPECT_EQ(plan.items[0].value.vt, VT_R8);
    EXPECT_FALSE(plan.items[0].writable);
    EXPECT_TRUE(plan.items[0].archive);
    EXPECT_EQ(plan.items[0].scanRate, 333u);
}

TEST(AddressSpaceCsv, EveryKindOfBadLineIsListedWithItsLineAndReasonAndGoodLinesStay)
{
    const CL::CsvImportPlan plan = Read(
        "good1,VT_I4,1,1,1,0,1000\r\n"          // line 2
        "t,VT_NOPE,1,1,1,0,1000\r\n"            // 3: unknown type
        "v,VT_I4,abc,1,1,0,1000\r\n"            // 4: value does not convert
        "a..b,VT_I4,1,1,1,0,1000\r\n"           // 5: empty name
        ",VT_I4,1,1,1,0,1000\r\n"               // 6: empty path
        "q\"x,VT_I4,1,1,1,0,1000\r\n"           // 7: malformed quote
        "e\\x,VT_I4,1,1,1,0,1000\r\n"           // 8: malformed escape
        "f,VT_I4,1,yes,1,0,1000\r\n"            // 9: flag
        "s,VT_I4,1,1,1,0,-5\r\n"                // 10: scan rate
        "\"multi\r\nline\",VT_BSTR,x,1,1,0,1\r\n"  // 11-12: good
        "good2,VT_I4,2,1,1,0,1000\r\n");        // 13
    ASSERT_EQ(plan.items.size(), 3u);
    EXPECT_EQ(plan.items[0].line, 2u);
    EXPECT_EQ(plan.items[1].name, L"multi\r\nline");
    EXPECT_EQ(plan.items[2].line, 13u);
    ASSERT_EQ(plan.rejected.size(), 8u);
    const std::pair<size_t, const wchar_t*> expected[] = {
        {3, L"unknown data type"}, {4, L"does not convert"}, {5, L"empty name"}, {6, L"path is empty"},
        {7, L"malformed quotes"},  {8, L"not followed by"},  {9, L"must be 1 or 0"}, {10, L"scan rate"}};
    for (size_t i = 0; i < plan.rejected.size(); ++i) {
        EXPECT_EQ(plan.rejected[i].line, expected[i].first);
        EXPECT_NE(plan.rejected[i].reason.find(expected[i].second), std::wstring::npos)
            << CL::Narrow(plan.rejected[i].reason);
    }
}

TEST(AddressSpaceCsv, EmptyValueOfANumberMeansNoInitialValue)
{
    const CL::CsvImportPlan plan = Read("n,VT_I4,,1,1,0,1000\r\n");
    ASSERT_EQ(plan.items.size(), 1u);
    EXPECT_EQ(plan.items[0].value.vt, VT_EMPTY);
}

TEST(AddressSpaceCsv, ArrayElementsOnLinesEndedByABareLineFeedAreTakenToo)
{
    const CL::CsvImportPlan plan = Read("a,VT_R8 | VT_ARRAY,\"1.5\n2.5\",1,1,0,1000\r\n");
    ASSERT_EQ(plan.items.size(), 1u);
    EXPECT_EQ(CL::VariantToString(plan.items[0].value, CL::kLocaleSystemDefault, L"|"), L"1.5|2.5");
}

TEST(AddressSpaceCsv, FileWithoutPathColumnOrWithATwiceNamedColumnIsRefusedWhole)
{
    EXPECT_THROW(CL::ReadAddressSpaceCsv("Name,Value\r\nx,1\r\n"), CL::CException);
    EXPECT_THROW(CL::ReadAddressSpaceCsv("Path,Value,value\r\nx,1,2\r\n"), CL::CException);
    EXPECT_THROW(CL::ReadAddressSpaceCsv(""), CL::CException);
    EXPECT_THROW(CL::ReadAddressSpaceCsv("Path\r\n\xC3\x28\r\n"), CL::CException);
}

TEST(AddressSpaceCsv, ExistingItemsAreLeftAloneAndCountedUnlessUpdatingIsChosen)
{
    const std::string csv = kHeader + "plant.SPEED,VT_R8,9.5,1,0,1,250\r\nPlant.New,VT_I4,1,1,1,0,1000\r\n";
    for (const bool update : {false, true}) {
        SCOPED_TRACE(update);
        SpacePtr space = SpacePtr::Make();
        AddBranch(space->RootBranch(), L"Plant")->AddItem(MakeItem(L"Speed", VT_I4, L"1"));
        const CL::CsvImportResult result = CL::ApplyCsvImport(CL::ReadAddressSpaceCsv(csv), *space, update);
        const BranchPtr plant = space->RootBranch()->FindBranch(L"Plant");
        EXPECT_EQ(result.added, 1u);
        EXPECT_EQ(result.updated, update ? 1u : 0u);
        EXPECT_EQ(result.leftAlone, update ? 0u : 1u);
        EXPECT_EQ(result.branchesCreated, 0u);
        EXPECT_EQ(ItemNames(*plant), (std::vector<std::wstring>{L"New", L"Speed"}));
        const ItemPtr speed = plant->FindItem(L"Speed");
        EXPECT_EQ(speed->CanonicalDataType(), update ? VT_R8 : VT_I4);
        EXPECT_EQ(ValueText(speed), update ? L"9.5" : L"1");
        EXPECT_EQ(speed->Archive(), update);
    }
}

TEST(AddressSpaceCsv, BranchesAlongEachPathAreCreatedOnce)
{
    SpacePtr space = SpacePtr::Make();
    const CL::CsvImportResult result = CL::ApplyCsvImport(
        Read("A.B.x,VT_I4,1,1,1,0,1\r\na.b.y,VT_I4,2,1,1,0,1\r\nA.C.z,VT_I4,3,1,1,0,1\r\n"), *space, false);
    EXPECT_EQ(result.branchesCreated, 3u);
    EXPECT_EQ(result.added, 3u);
    const BranchPtr a = space->RootBranch()->FindBranch(L"A");
    EXPECT_EQ(BranchNames(*a), (std::vector<std::wstring>{L"B", L"C"}));
    EXPECT_EQ(ItemNames(*a->FindBranch(L"B")), (std::vector<std::wstring>{L"x", L"y"}));
}

TEST(AddressSpaceCsv, CopyIsDeepSoImportingIntoItLeavesTheOriginalAlone)
{
    SpacePtr original = RichSpace();
    const std::string before = CL::ExportAddressSpaceCsv(*original);
    SpacePtr copy = CL::CopyAddressSpace(*original);
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*copy), before);
    CL::ApplyCsvImport(Read("Types.T1,VT_I4,99,1,1,0,1\r\nNew.Item,VT_I4,1,1,1,0,1\r\n"), *copy, true);
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*original), before);
    EXPECT_NE(CL::ExportAddressSpaceCsv(*copy), before);
}

TEST(AddressSpaceCsvSeparator, ASemicolonFileReadsDecimalCommasInFloatingTypesAndTheirArrays)
{
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv(
        "Path;Data type;Value\r\n"
        "A.Speed;VT_R8;12,5\r\n"
        "A.Gain;VT_R4;0,25\r\n"
        "A.Money;VT_CY;3,75\r\n"
        "A.Set;VT_R8 | VT_ARRAY;\"1,5\n2,5\"\r\n"
        "A.Label;VT_BSTR;a,b\r\n");
    EXPECT_EQ(plan.separator, L';');
    ASSERT_TRUE(plan.rejected.empty()) << CL::Narrow(plan.rejected.front().reason);
    ASSERT_EQ(plan.items.size(), 5u);
    EXPECT_EQ(plan.items[0].value.dblVal, 12.5);
    EXPECT_EQ(plan.items[1].value.fltVal, 0.25f);
    EXPECT_EQ(plan.items[2].value.cyVal.int64, 37500);
    EXPECT_EQ(CL::VariantToString(plan.items[3].value, CL::kLocaleSystemDefault, CL::kArraySeparator), L"1.5\r\n2.5");
    EXPECT_EQ(std::wstring(plan.items[4].value.bstrVal), L"a,b") << "text keeps its commas";
}

TEST(AddressSpaceCsvSeparator, ATabSeparatedTextIsReadLikeTheClipboardsOfSpreadsheets)
{
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsvText(L"Path\tData type\tValue\r\nLine1.Speed\tVT_R8\t7,5\r\n");
    EXPECT_EQ(plan.separator, L'\t');
    ASSERT_EQ(plan.items.size(), 1u);
    EXPECT_EQ(plan.items[0].branches, (std::vector<std::wstring>{L"Line1"}));
    EXPECT_EQ(plan.items[0].value.dblVal, 7.5);
}

TEST(AddressSpaceCsvSeparator, ACommaFileKeepsTheCommaAsTheSeparatorOnly)
{
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv("Path,Data type,Value\r\nA.Speed,VT_R8,\"12,5\"\r\n");
    EXPECT_EQ(plan.separator, L',');
    ASSERT_EQ(plan.rejected.size() + plan.items.size(), 1u);
    if (!plan.items.empty()) {
        EXPECT_NE(plan.items[0].value.dblVal, 12.5) << "no decimal comma in a comma-separated file";
    }
}
