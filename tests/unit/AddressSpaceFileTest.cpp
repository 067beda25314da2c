// The address space file: what Save writes, byte for byte where the format
// fixes it, and what Load makes of files written by hand (not by the
// program), including bad ones.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "AddressSpaceNames.h"
#include "support/LogCapture.h"
#include "support/TestSupport.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;
using SpacePtr = CL::CSmartPtr<COPCServerAddressSpace>;

namespace {

std::string WithoutFinalLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

class AddressSpaceFile : public ::testing::Test {
protected:
    void SetUp() override { ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    void TearDown() override { ::CoUninitialize(); }

    std::wstring Write(const std::string& xml, const wchar_t* name = L"space.xml")
    {
        const std::wstring path = dir.File(name);
        test::WriteFileBytes(path, xml);
        return path;
    }
    SpacePtr LoadText(const std::string& xml)
    {
        SpacePtr space = SpacePtr::Make();
        space->Load(Write(xml));
        return space;
    }
    // The saved file without the line end that the DOM library puts after
    // the root element (LF here, CR LF for other builds of the library).
    std::string SaveText(const SpacePtr& space, const wchar_t* name = L"saved.xml")
    {
        const std::wstring path = dir.File(name);
        space->Save(path);
        return WithoutFinalLineEnd(test::ReadFileBytes(path));
    }

    test::TempDir dir;
};

ItemPtr MakeItem(const wchar_t* name, VARTYPE vt, DWORD rights = 3, DWORD scanRate = 1000, bool archive = false)
{
    ItemPtr item = ItemPtr::Make(rights, scanRate, archive, WORD(192), vt, nullptr);
    item->Rename(name);
    item->SetValueTime(FILETIME{0x9ABCDEF0u, 0x01DA1234u});
    return item;
}

CL::CException CaughtFrom(const std::function<void()>& action)
{
    try {
        action();
    } catch (const CL::CException& e) {
        return e;
    }
    return CL::CException(S_OK, L"no exception");
}

ULONGLONG Ticks(const FILETIME& time)
{
    return (ULONGLONG(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

std::wstring Text(const CL::CVariant& v)
{
    return v.vt == VT_BSTR ? std::wstring(v.bstrVal, ::SysStringLen(v.bstrVal)) : L"<not a string>";
}

std::vector<LONG> IntArray(const CL::CVariant& v)
{
    std::vector<LONG> values;
    if (v.vt != (VT_ARRAY | VT_I4) || ::SafeArrayGetDim(v.parray) != 1)
        return values;
    LONG lower = 0, upper = -1;
    ::SafeArrayGetLBound(v.parray, 1, &lower);
    ::SafeArrayGetUBound(v.parray, 1, &upper);
    for (LONG i = lower; i <= upper; ++i) {
        LONG element = 0;
        ::SafeArrayGetElement(v.parray, &i, &element);
        values.push_back(element);
    }
    return values;
}

// A file written by hand, with LF line ends and indentation: every element
// and attribute of the format, booleans spelled "true", "True", "-1", "0",
// "false" and "False", an array one element per line, an item without a
// Value, a condition inside a branch (which a reader must ignore).
const char kEveryElementAndAttribute[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Morvane_OPCDAAddressSpace Name=\"\">\n"
    "  <Branch Name=\"Plant\">\n"
    "    <Branch Name=\"Line1\">\n"
    "      <Item Name=\"Speed\" CanonicalDataType=\"5\" Quality=\"192\" Writable=\"true\" Readable=\"True\"\n"
    "            ScanRate=\"1000\" Archive=\"0\" ValueTime=\"133500000001234567\">\n"
    "        <Value>12.5</Value>\n"
    "      </Item>\n"
    "      <Item Name=\"Counts\" CanonicalDataType=\"8195\" Quality=\"216\" Writable=\"-1\" Readable=\"-1\"\n"
    "            ScanRate=\"250\" Archive=\"-1\" ValueTime=\"133500000000000000\"><Value>1\n"
    "-2\n"
    "300000</Value></Item>\n"
    "      <Item Name=\"Spare\" CanonicalDataType=\"3\" Quality=\"0\" Writable=\"0\" Readable=\"true\"\n"
    "            ScanRate=\"0\" Archive=\"false\" ValueTime=\"0\"/>\n"
    "    </Branch>\n"
    "    <OPCAECondition source=\"inner\" conditionName=\"Ignored\" category=\"1\" active=\"0\" enabled=\"0\"\n"
    "         acked=\"0\" definition=\"\" severity=\"1\" description=\"\" quality=\"0\" lastAckTime=\"0\"\n"
    "         lastActive=\"0\" lastInactive=\"0\" acknowledgerId=\"\" comment=\"\"/>\n"
    "  </Branch>\n"
    "  <Item Name=\"Label\" CanonicalDataType=\"8\" Quality=\"64\" Writable=\"false\" Readable=\"False\"\n"
    "        ScanRate=\"5000\" Archive=\"True\" ValueTime=\"133500000000000001\">"
    "<Value>Tank &amp; \"valve\" &lt;A&gt;</Value></Item>\n"
    "  <OPCAECondition source=\"Plant.Line1.Speed\" conditionName=\"HiHi\" category=\"7\" active=\"true\"\n"
    "       enabled=\"-1\" acked=\"0\" definition=\"Speed above limit\" severity=\"500\"\n"
    "       description=\"Speed high high\" quality=\"192\" lastAckTime=\"45234.5\" lastActive=\"45234.25\"\n"
    "       lastInactive=\"45233.75\" acknowledgerId=\"operator\" comment=\"checked\"/>\n"
    "</Morvane_OPCDAAddressSpace>\n";

} // namespace

// --- Saving ------------------------------------------------------------------

TEST_F(AddressSpaceFile, EmptyAddressSpaceIsTheRootElementWithEmptyName)
{
    EXPECT_EQ(SaveText(SpacePtr::Make()), "<Morvane_OPCDAAddressSpace Name=\"\"/>");
}

TEST_F(AddressSpaceFile, ItemIsWrittenWithValueChildAndAttributesInOrder)
{
    SpacePtr space = SpacePtr::Make();
    ItemPtr item = MakeItem(L"Speed", VT_R8, COPCItem::kReadable | COPCItem::kWritable, 1000, false);
    item->SetValue(CL::CVariant::R8(12.5));
    item->SetValueTime(FILETIME{0x55A2F987u, 0x01DA4B6Fu});
    space->RootBranch()->AddItem(item);
    EXPECT_EQ(SaveText(space),
              "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"Speed\" CanonicalDataType=\"5\" Quality=\"192\" "
              "Writable=\"-1\" Readable=\"-1\" ScanRate=\"1000\" Archive=\"0\" ValueTime=\"133502080511048071\">"
              "<Value>12.5</Value></Item></Morvane_OPCDAAddressSpace>");
}

TEST_F(AddressSpaceFile, ItemWithEmptyValueIsWrittenWithoutValueChild)
{
    SpacePtr space = SpacePtr::Make();
    space->RootBranch()->AddItem(MakeItem(L"Spare", VT_I4, COPCItem::kReadable, 0, true));
    const std::string text = SaveText(space);
    EXPECT_EQ(text.find("<Value"), std::string::npos);
    EXPECT_NE(text.find("<Item Name=\"Spare\" CanonicalDataType=\"3\" Quality=\"192\" Writable=\"0\" Readable=\"-1\" "
                        "ScanRate=\"0\" Archive=\"-1\" ValueTime=\"133439156104519408\"/>"),
              std::string::npos)
        << text;
}

TEST_F(AddressSpaceFile, ArrayValueIsWrittenOneElementPerLine)
{
    SpacePtr space = SpacePtr::Make();
    ItemPtr item = MakeItem(L"Counts", VT_ARRAY | VT_I4);
    item->SetValue(CL::StringToVariant(L"1\r\n-2\r\n3", VT_ARRAY | VT_I4, CL::kLocaleInvariant, L"\r\n"));
    space->RootBranch()->AddItem(item);
    const std::string text = SaveText(space);
    EXPECT_NE(text.find("CanonicalDataType=\"8195\""), std::string::npos);
    // The DOM writes the CR of each line end as a character reference.
    EXPECT_NE(text.find("<Value>1&#13;\n-2&#13;\n3</Value>"), std::string::npos) << text;
}

TEST_F(AddressSpaceFile, BranchesAndItemsAreWrittenInCaseInsensitiveOrderBranchesFirst)
{
    SpacePtr space = SpacePtr::Make();
    auto root = space->RootBranch();
    root->AddItem(MakeItem(L"beta", VT_I4));
    root->AddItem(MakeItem(L"Alpha", VT_I4));
    root->AddBranch(BranchPtr::Make(L"zone"));
    root->AddBranch(BranchPtr::Make(L"Area"));
    root->FindBranch(L"zone")->AddBranch(BranchPtr::Make(L"Inner"));
    const std::string text = SaveText(space);
    const size_t area = text.find("<Branch Name=\"Area\"/>");
    const size_t zone = text.find("<Branch Name=\"zone\"><Branch Name=\"Inner\"/></Branch>");
    const size_t alpha = text.find("<Item Name=\"Alpha\"");
    const size_t beta = text.find("<Item Name=\"beta\"");
    ASSERT_NE(area, std::string::npos) << text;
    ASSERT_NE(zone, std::string::npos) << text;
    ASSERT_NE(alpha, std::string::npos) << text;
    ASSERT_NE(beta, std::string::npos) << text;
    EXPECT_LT(area, zone);
    EXPECT_LT(zone, alpha);
    EXPECT_LT(alpha, beta);
}

TEST_F(AddressSpaceFile, ConditionsFollowTheTreeWithAttributesInOrder)
{
    SpacePtr space = SpacePtr::Make();
    space->RootBranch()->AddItem(MakeItem(L"Speed", VT_R8));
    AeCondition c;
    c.source = L"Plant.Line1.Speed";
    c.conditionName = L"HiHi";
    c.category = 1;
    c.active = true;
    c.enabled = true;
    c.acked = false;
    c.definition = L"def";
    c.severity = 500;
    c.description = L"desc";
    c.quality = 192;
    c.lastAckTime = 45234.5;
    c.lastActive = 45234.25;
    c.lastInactive = 0;
    c.acknowledgerId = L"op";
    c.comment = L"ok";
    space->AddCondition(c);
    const std::string text = SaveText(space);
    const std::string expected =
        "<OPCAECondition source=\"Plant.Line1.Speed\" conditionName=\"HiHi\" category=\"1\" active=\"-1\" "
        "enabled=\"-1\" acked=\"0\" definition=\"def\" severity=\"500\" description=\"desc\" quality=\"192\" "
        "lastAckTime=\"45234.5\" lastActive=\"45234.25\" lastInactive=\"0\" acknowledgerId=\"op\" "
        "comment=\"ok\"/></Morvane_OPCDAAddressSpace>";
    const size_t at = text.find(expected);
    ASSERT_NE(at, std::string::npos) << text;
    EXPECT_LT(text.find("<Item Name=\"Speed\""), at);
}

TEST_F(AddressSpaceFile, ValueThatCannotBeTextIsLoggedAndLeftOut)
{
    test::LogCapture log;
    SpacePtr space = SpacePtr::Make();
    ItemPtr item = MakeItem(L"Matrix", VT_ARRAY | VT_I4);
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    CL::CVariant matrix;
    matrix.parray = ::SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(matrix.parray, nullptr);
    matrix.vt = VT_ARRAY | VT_I4;
    item->SetValue(matrix);
    space->RootBranch()->AddItem(item);
    const std::string text = SaveText(space);
    EXPECT_NE(text.find("<Item Name=\"Matrix\""), std::string::npos);
    EXPECT_EQ(text.find("<Value"), std::string::npos);
    EXPECT_TRUE(log.Contains("[2] Failed to convert VARIANT to VT_BSTR [OPCServerAddressSpace, 161]"));
}

TEST_F(AddressSpaceFile, SaveReplacesAnExistingFile)
{
    const std::wstring path = Write("old content that is much longer than the new file will be ........");
    SpacePtr::Make()->Save(path);
    EXPECT_EQ(WithoutFinalLineEnd(test::ReadFileBytes(path)), "<Morvane_OPCDAAddressSpace Name=\"\"/>");
}

TEST_F(AddressSpaceFile, FailedSaveLeavesTheOldFileWhole)
{
    const std::string old = "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"Old\" CanonicalDataType=\"3\"/>"
                            "</Morvane_OPCDAAddressSpace>";
    const std::wstring path = Write(old);
    // The file is held open by another program: the new text written beside
    // it cannot replace it, and it stays as it was.
    const HANDLE held = ::CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    SpacePtr space = SpacePtr::Make();
    space->RootBranch()->AddItem(MakeItem(L"New", VT_I4));
    const CL::CException e = CaughtFrom([&] { space->Save(path); });
    ::CloseHandle(held);
    EXPECT_TRUE(FAILED(e.Error())) << CL::Narrow(e.Text());
    EXPECT_EQ(test::ReadFileBytes(path), old);
}

TEST_F(AddressSpaceFile, SaveIntoAMissingFolderFails)
{
    const CL::CException e = CaughtFrom([&] { SpacePtr::Make()->Save(dir.File(L"no\\such\\folder.xml")); });
    EXPECT_TRUE(FAILED(e.Error()));
}

TEST_F(AddressSpaceFile, NameThatXmlCannotHoldFailsTheSaveLogsAndLeavesTheOldFile)
{
    test::LogCapture log;
    const std::wstring path = Write(SaveText(SpacePtr::Make(), L"old.xml"));
    const std::string old = test::ReadFileBytes(path);
    SpacePtr space = SpacePtr::Make();
    auto plant = BranchPtr::Make(L"Plant");
    space->RootBranch()->AddBranch(plant);
    plant->AddBranch(BranchPtr::Make(L"Bad\x01Name"));
    const CL::CException e = CaughtFrom([&] { space->Save(path); });
    EXPECT_EQ(e.Error(), E_INVALIDARG);
    EXPECT_EQ(e.Source(), L"Character 0x0001 in Name \"Bad\x01Name\" cannot be stored in an XML file.");
    EXPECT_EQ(test::ReadFileBytes(path), old);
    // Logged once by each branch level the failure passed through.
    EXPECT_EQ(log.Count("[0] Error saving branches [OPCServerAddressSpace, "), 2u);
}

TEST_F(AddressSpaceFile, ValueThatXmlCannotHoldFailsTheSaveAndIsLoggedAsItemError)
{
    test::LogCapture log;
    SpacePtr space = SpacePtr::Make();
    ItemPtr item = MakeItem(L"Text", VT_BSTR);
    item->SetValue(CL::CVariant(std::wstring_view(L"bell\x07")));
    space->RootBranch()->AddItem(item);
    const CL::CException e = CaughtFrom([&] { space->Save(dir.File(L"value.xml")); });
    EXPECT_EQ(e.Error(), E_INVALIDARG);
    EXPECT_EQ(e.Source(), L"Character 0x0007 in the value of item \"Text\" cannot be stored in an XML file.");
    EXPECT_FALSE(test::FileExists(dir.File(L"value.xml")));
    EXPECT_EQ(log.Count("[0] Error saving items [OPCServerAddressSpace, "), 1u);
}

TEST_F(AddressSpaceFile, HalfASurrogatePairCannotBeSaved)
{
    SpacePtr space = SpacePtr::Make();
    space->RootBranch()->AddItem(MakeItem(L"Half\xD800", VT_I4));
    EXPECT_EQ(CaughtFrom([&] { space->Save(dir.File(L"half.xml")); }).Error(), E_INVALIDARG);
    SpacePtr whole = SpacePtr::Make();
    whole->RootBranch()->AddItem(MakeItem(L"Whole\xD83D\xDE00 tab\t line\r\n", VT_I4));
    const std::wstring path = dir.File(L"whole.xml");
    whole->Save(path);
    SpacePtr loaded = SpacePtr::Make();
    loaded->Load(path);
    EXPECT_EQ(ItemNames(*loaded->RootBranch()), std::vector<std::wstring>{L"Whole\xD83D\xDE00 tab\t line\r\n"});
}

// --- Loading a file written by hand -------------------------------------------

TEST_F(AddressSpaceFile, HandWrittenFileWithEveryElementAndAttributeLoads)
{
    SpacePtr space = LoadText(kEveryElementAndAttribute);
    auto root = space->RootBranch();
    EXPECT_TRUE(root->Name().empty());
    ASSERT_EQ(BranchNames(*root), std::vector<std::wstring>{L"Plant"});
    auto line1 = root->FindBranch(L"Plant")->FindBranch(L"Line1");
    ASSERT_TRUE(line1);
    EXPECT_EQ(ItemNames(*line1), (std::vector<std::wstring>{L"Counts", L"Spare", L"Speed"}));

    auto speed = line1->FindItem(L"Speed");
    EXPECT_EQ(speed->CanonicalDataType(), VT_R8);
    EXPECT_EQ(speed->Value().vt, VT_R8);
    EXPECT_EQ(speed->Value().dblVal, 12.5);
    EXPECT_EQ(speed->Quality(), 192);
    EXPECT_TRUE(speed->Writable());    // "true"
    EXPECT_TRUE(speed->Readable());    // "True"
    EXPECT_FALSE(speed->Archive());    // "0"
    EXPECT_EQ(speed->ScanRate(), 1000u);
    EXPECT_EQ(Ticks(speed->ValueTime()), 133500000001234567ull);

    auto counts = line1->FindItem(L"Counts");
    EXPECT_EQ(counts->CanonicalDataType(), VT_ARRAY | VT_I4);
    EXPECT_EQ(IntArray(counts->Value()), (std::vector<LONG>{1, -2, 300000}));
    EXPECT_EQ(counts->Quality(), 216);
    EXPECT_EQ(counts->AccessRights(), 3u);   // "-1", "-1"
    EXPECT_TRUE(counts->Archive());          // "-1"
    EXPECT_EQ(counts->ScanRate(), 250u);

    auto spare = line1->FindItem(L"Spare");
    EXPECT_EQ(spare->Value().vt, VT_EMPTY);
    EXPECT_EQ(spare->AccessRights(), COPCItem::kReadable);
    EXPECT_FALSE(spare->Archive());          // "false"
    EXPECT_EQ(Ticks(spare->ValueTime()), 0u);

    auto label = root->FindItem(L"Label");
    ASSERT_TRUE(label);
    EXPECT_EQ(Text(label->Value()), L"Tank & \"valve\" <A>");
    EXPECT_EQ(label->AccessRights(), 0u);    // "false", "False"
    EXPECT_TRUE(label->Archive());           // "True"
    EXPECT_EQ(label->Quality(), 64);
    EXPECT_EQ(label->ScanRate(), 5000u);
    EXPECT_EQ(label->Parent(), root.get());

    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 1u) << "the condition inside a branch is ignored";
    const AeCondition& c = conditions[0];
    EXPECT_EQ(c.source, L"Plant.Line1.Speed");
    EXPECT_EQ(c.conditionName, L"HiHi");
    EXPECT_EQ(c.category, 7u);
    EXPECT_TRUE(c.active);
    EXPECT_TRUE(c.enabled);
    EXPECT_FALSE(c.acked);
    EXPECT_EQ(c.definition, L"Speed above limit");
    EXPECT_EQ(c.severity, 500u);
    EXPECT_EQ(c.description, L"Speed high high");
    EXPECT_EQ(c.quality, 192);
    EXPECT_EQ(c.lastAckTime, 45234.5);
    EXPECT_EQ(c.lastActive, 45234.25);
    EXPECT_EQ(c.lastInactive, 45233.75);
    EXPECT_EQ(c.acknowledgerId, L"operator");
    EXPECT_EQ(c.comment, L"checked");
    EXPECT_EQ(space->State(), COPCServerAddressSpace::kStateLoaded);
}

TEST_F(AddressSpaceFile, ItemWithoutValueLoadsEmptyAndIsSavedWithoutOne)
{
    SpacePtr space = LoadText(
        "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"Spare\" CanonicalDataType=\"3\" Quality=\"192\" "
        "Writable=\"0\" Readable=\"-1\" ScanRate=\"0\" Archive=\"0\" ValueTime=\"5\"/></Morvane_OPCDAAddressSpace>");
    auto spare = space->RootBranch()->FindItem(L"Spare");
    ASSERT_TRUE(spare);
    EXPECT_EQ(spare->Value().vt, VT_EMPTY);
    EXPECT_EQ(SaveText(space),
              "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"Spare\" CanonicalDataType=\"3\" Quality=\"192\" "
              "Writable=\"0\" Readable=\"-1\" ScanRate=\"0\" Archive=\"0\" ValueTime=\"5\"/>"
              "</Morvane_OPCDAAddressSpace>");
}

TEST_F(AddressSpaceFile, BooleanAttributesAcceptEveryUsualSpelling)
{
    struct Case {
        const char* text;
        bool value;
    };
    const Case cases[] = {{"true", true}, {"True", true}, {"TRUE", true}, {"-1", true},
                          {"0", false}, {"false", false}, {"False", false}};
    std::string xml = "<Morvane_OPCDAAddressSpace Name=\"\">";
    int n = 0;
    for (const Case& c : cases)
        xml += "<Item Name=\"I" + std::to_string(n++) + "\" CanonicalDataType=\"3\" Writable=\"" + c.text +
               "\" Readable=\"" + c.text + "\" Archive=\"" + c.text + "\"/>";
    xml += "</Morvane_OPCDAAddressSpace>";
    SpacePtr space = LoadText(xml);
    n = 0;
    for (const Case& c : cases) {
        auto item = space->RootBranch()->FindItem(L"I" + std::to_wstring(n++));
        ASSERT_TRUE(item) << c.text;
        EXPECT_EQ(item->Writable(), c.value) << c.text;
        EXPECT_EQ(item->Readable(), c.value) << c.text;
        EXPECT_EQ(item->Archive(), c.value) << c.text;
    }
}

TEST_F(AddressSpaceFile, ArrayWithCrLfLineEndsLoadsLikeOneWithLf)
{
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<Item Name=\"A\" CanonicalDataType=\"8195\"><Value>4\r\n5\r\n6</Value></Item>"
                              "<Item Name=\"B\" CanonicalDataType=\"8195\"><Value>4&#13;\n5&#13;\n6</Value></Item>"
                              "<Item Name=\"C\" CanonicalDataType=\"8195\"><Value>4\n5\n6</Value></Item>"
                              "</Morvane_OPCDAAddressSpace>");
    for (const wchar_t* name : {L"A", L"B", L"C"}) {
        auto item = space->RootBranch()->FindItem(name);
        ASSERT_TRUE(item) << CL::Narrow(name);
        EXPECT_EQ(IntArray(item->Value()), (std::vector<LONG>{4, 5, 6})) << CL::Narrow(name);
    }
}

TEST_F(AddressSpaceFile, StringArrayKeepsEmptyLinesBetweenElements)
{
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<Item Name=\"S\" CanonicalDataType=\"8200\"><Value>a\n\nb</Value></Item>"
                              "</Morvane_OPCDAAddressSpace>");
    auto item = space->RootBranch()->FindItem(L"S");
    ASSERT_TRUE(item);
    EXPECT_EQ(CL::VariantToString(item->Value(), CL::kLocaleInvariant, L"|"), L"a||b");
}

TEST_F(AddressSpaceFile, SiblingBranchesDifferingOnlyInCaseKeepTheFirstAndLogTheSecond)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\">"
                              "<Branch Name=\"Area\"><Item Name=\"First\" CanonicalDataType=\"3\"/></Branch>"
                              "<Branch Name=\"AREA\"><Item Name=\"Second\" CanonicalDataType=\"3\"/></Branch>"
                              "<Branch Name=\"Zone\"/>"
                              "</Branch></Morvane_OPCDAAddressSpace>");
    auto plant = space->RootBranch()->FindBranch(L"Plant");
    ASSERT_TRUE(plant);
    EXPECT_EQ(BranchNames(*plant), (std::vector<std::wstring>{L"Area", L"Zone"}));
    EXPECT_EQ(ItemNames(*plant->FindBranch(L"area")), std::vector<std::wstring>{L"First"});
    EXPECT_EQ(log.Count("[1] Error loading a subbranch, branch = 'Plant' [OPCServerAddressSpace, "), 1u);
}

TEST_F(AddressSpaceFile, SiblingItemsDifferingOnlyInCaseKeepTheFirstAndLogTheSecond)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Tanks\">"
                              "<Item Name=\"Tank1\" CanonicalDataType=\"3\" Quality=\"1\"/>"
                              "<Item Name=\"TANK1\" CanonicalDataType=\"3\" Quality=\"2\"/>"
                              "</Branch></Morvane_OPCDAAddressSpace>");
    auto tanks = space->RootBranch()->FindBranch(L"Tanks");
    ASSERT_EQ(ItemNames(*tanks), std::vector<std::wstring>{L"Tank1"});
    EXPECT_EQ(tanks->FindItem(L"Tank1")->Quality(), 1);
    EXPECT_EQ(log.Count("[1] Error loading an item, branch = 'Tanks' [OPCServerAddressSpace, "), 1u);
}

TEST_F(AddressSpaceFile, ChildrenAreInCaseInsensitiveOrderWhateverTheFileOrder)
{
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<Item Name=\"gamma\" CanonicalDataType=\"3\"/><Branch Name=\"gamma\"/>"
                              "<Item Name=\"Alpha\" CanonicalDataType=\"3\"/><Branch Name=\"beta\"/>"
                              "<Item Name=\"beta\" CanonicalDataType=\"3\"/><Branch Name=\"Alpha\"/>"
                              "</Morvane_OPCDAAddressSpace>");
    const std::vector<std::wstring> expected{L"Alpha", L"beta", L"gamma"};
    EXPECT_EQ(ItemNames(*space->RootBranch()), expected);
    EXPECT_EQ(BranchNames(*space->RootBranch()), expected);
    const std::string text = SaveText(space);
    EXPECT_LT(text.find("<Branch Name=\"Alpha\""), text.find("<Branch Name=\"beta\""));
    EXPECT_LT(text.find("<Branch Name=\"gamma\""), text.find("<Item Name=\"Alpha\""));
    EXPECT_LT(text.find("<Item Name=\"beta\""), text.find("<Item Name=\"gamma\""));
}

TEST_F(AddressSpaceFile, ConditionsInsideABranchAreIgnored)
{
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"B\">"
                              "<OPCAECondition source=\"x\" conditionName=\"Inner\"/>"
                              "<Branch Name=\"C\"><OPCAECondition source=\"y\" conditionName=\"Deeper\"/></Branch>"
                              "</Branch><OPCAECondition source=\"z\" conditionName=\"Outer\"/>"
                              "</Morvane_OPCDAAddressSpace>");
    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 1u);
    EXPECT_EQ(conditions[0].conditionName, L"Outer");
}

TEST_F(AddressSpaceFile, DuplicateConditionsKeepTheFirstAndAreLogged)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<OPCAECondition source=\"Src\" conditionName=\"Hi\" severity=\"100\"/>"
                              "<OPCAECondition source=\"Other\" conditionName=\"Hi\" severity=\"200\"/>"
                              "<OPCAECondition source=\"src\" conditionName=\"HI\" severity=\"900\"/>"
                              "</Morvane_OPCDAAddressSpace>");
    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 2u);
    EXPECT_EQ(conditions[0].source, L"Src");
    EXPECT_EQ(conditions[0].severity, 100u);
    EXPECT_EQ(conditions[1].source, L"Other");
    EXPECT_EQ(log.Count("[1] Duplicate conditions in xml [OPCServerAddressSpace, "), 1u);
}

TEST_F(AddressSpaceFile, AbsentConditionAttributesKeepTheirDefaults)
{
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<OPCAECondition source=\"S\" severity=\"7\"/></Morvane_OPCDAAddressSpace>");
    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 1u);
    EXPECT_EQ(conditions[0].source, L"S");
    EXPECT_EQ(conditions[0].severity, 7u);
    EXPECT_TRUE(conditions[0].conditionName.empty());
    EXPECT_EQ(conditions[0].category, 0u);
    EXPECT_FALSE(conditions[0].enabled);
    EXPECT_EQ(conditions[0].lastActive, 0.0);
}

// --- Round trip ---------------------------------------------------------------

TEST_F(AddressSpaceFile, SaveLoadSaveIsByteIdentical)
{
    SpacePtr first = LoadText(kEveryElementAndAttribute);
    const std::string once = SaveText(first, L"once.xml");
    SpacePtr second = SpacePtr::Make();
    second->Load(dir.File(L"once.xml"));
    const std::string twice = SaveText(second, L"twice.xml");
    EXPECT_EQ(once, twice);
    EXPECT_NE(once.find("<Item Name=\"Spare\""), std::string::npos);
}

TEST_F(AddressSpaceFile, RoundTripKeepsNamesTypesValuesFlagsScanRatesAndTimes)
{
    SpacePtr space = SpacePtr::Make();
    auto branch = BranchPtr::Make(L"Zone \u00c4 \u65e5\u672c");
    space->RootBranch()->AddBranch(branch);
    struct Case {
        const wchar_t* name;
        VARTYPE vt;
        const wchar_t* text;
    };
    const Case cases[] = {{L"r8", VT_R8, L"0.1"},           {L"r4", VT_R4, L"-2.5"},
                          {L"i1", VT_I1, L"-128"},          {L"ui1", VT_UI1, L"255"},
                          {L"i2", VT_I2, L"-32768"},        {L"ui2", VT_UI2, L"65535"},
                          {L"i4", VT_I4, L"-2147483648"},   {L"ui4", VT_UI4, L"4294967295"},
                          {L"i8", VT_I8, L"-9000000000"},   {L"bool", VT_BOOL, L"True"},
                          {L"text", VT_BSTR, L"  padded & <marked>  "},
                          {L"lines", VT_BSTR, L"one\r\ntwo"},
                          {L"strings", VT_ARRAY | VT_BSTR, L"a\r\n\r\nc"},
                          {L"doubles", VT_ARRAY | VT_R8, L"1.5\r\n-0.25\r\n1E+20"}};
    DWORD scan = 100;
    for (const Case& s : cases) {
        ItemPtr item = MakeItem(s.name, s.vt, (scan / 100) % 4, scan, scan % 200 == 0);
        item->SetValue(CL::StringToVariant(s.text, s.vt, CL::kLocaleSystemDefault, L"\r\n"));
        item->SetQuality(static_cast<WORD>(scan));
        item->SetValueTime(FILETIME{static_cast<DWORD>(scan * 12345), 0x01DA0000u});
        branch->AddItem(item);
        scan += 100;
    }
    space->RootBranch()->AddItem(MakeItem(L"empty", VT_I4));
    const std::wstring path = dir.File(L"round.xml");
    space->Save(path);
    SpacePtr loaded = SpacePtr::Make();
    loaded->Load(path);

    auto loadedBranch = loaded->RootBranch()->FindBranch(branch->Name());
    ASSERT_TRUE(loadedBranch);
    EXPECT_EQ(loadedBranch->Name(), branch->Name());
    for (const auto& original : branch->Items()) {
        const std::string name = CL::Narrow(original->Name());
        auto copy = loadedBranch->FindItem(original->Name());
        ASSERT_TRUE(copy) << name;
        EXPECT_EQ(copy->Name(), original->Name());
        EXPECT_EQ(copy->CanonicalDataType(), original->CanonicalDataType()) << name;
        EXPECT_EQ(copy->Value().vt, original->Value().vt) << name;
        if (original->Value().vt == VT_R8) {
            EXPECT_EQ(copy->Value().dblVal, original->Value().dblVal) << name;
        }
        EXPECT_EQ(CL::VariantToString(copy->Value(), CL::kLocaleInvariant, L"|"),
                  CL::VariantToString(original->Value(), CL::kLocaleInvariant, L"|"))
            << name;
        EXPECT_EQ(copy->AccessRights(), original->AccessRights()) << name;
        EXPECT_EQ(copy->ScanRate(), original->ScanRate()) << name;
        EXPECT_EQ(copy->Archive(), original->Archive()) << name;
        EXPECT_EQ(copy->Quality(), original->Quality()) << name;
        EXPECT_EQ(Ticks(copy->ValueTime()), Ticks(original->ValueTime())) << name;
    }
    auto empty = loaded->RootBranch()->FindItem(L"empty");
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->Value().vt, VT_EMPTY);
}

// --- State ---------------------------------------------------------------------

TEST_F(AddressSpaceFile, StateIsLoadingDuringALoadAndLoadedAfterIt)
{
    std::string xml = "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"B\">";
    for (int i = 0; i < 20000; ++i)
        xml += "<Item Name=\"item" + std::to_string(i) + "\" CanonicalDataType=\"3\"><Value>" + std::to_string(i) +
               "</Value></Item>";
    xml += "</Branch></Morvane_OPCDAAddressSpace>";
    const std::wstring path = Write(xml);
    SpacePtr space = SpacePtr::Make();
    EXPECT_NE(space->State(), COPCServerAddressSpace::kStateLoading);
    std::atomic<bool> done{false};
    std::thread loader([&] {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        space->Load(path);
        ::CoUninitialize();
        done = true;
    });
    bool sawLoading = false;
    while (!done)
        sawLoading = sawLoading || space->State() == COPCServerAddressSpace::kStateLoading;
    loader.join();
    EXPECT_TRUE(sawLoading);
    EXPECT_EQ(space->State(), COPCServerAddressSpace::kStateLoaded);
    EXPECT_EQ(space->RootBranch()->FindBranch(L"B")->ItemCount(), 20000u);
}

TEST_F(AddressSpaceFile, FailedLoadNeverReportsTheStateLoaded)
{
    SpacePtr space = SpacePtr::Make();
    CaughtFrom([&] { space->Load(dir.File(L"missing.xml")); });
    EXPECT_EQ(space->State(), COPCServerAddressSpace::kStateLoading);
}

// --- Bad input -------------------------------------------------------------------

TEST_F(AddressSpaceFile, MissingFileFailsWithTheLoadingError)
{
    SpacePtr space = SpacePtr::Make();
    const CL::CException e = CaughtFrom([&] { space->Load(dir.File(L"missing.xml")); });
    EXPECT_EQ(e.Error(), E_FAIL);
    EXPECT_EQ(e.Source(), L"Error loading OPC Address Space file.");
}

TEST_F(AddressSpaceFile, TruncatedFileFailsWithTheLoadingError)
{
    std::string whole = kEveryElementAndAttribute;
    const std::wstring path = Write(whole.substr(0, whole.size() / 2));
    SpacePtr space = SpacePtr::Make();
    const CL::CException e = CaughtFrom([&] { space->Load(path); });
    EXPECT_EQ(e.Error(), E_FAIL);
    EXPECT_EQ(e.Source(), L"Error loading OPC Address Space file.");
    EXPECT_EQ(space->RootBranch()->BranchCount() + space->RootBranch()->ItemCount(), 0u);
}

TEST_F(AddressSpaceFile, EmptyFileFailsWithTheLoadingError)
{
    const std::wstring path = Write("");
    const CL::CException e = CaughtFrom([&] { SpacePtr::Make()->Load(path); });
    EXPECT_EQ(e.Error(), E_FAIL);
    EXPECT_EQ(e.Source(), L"Error loading OPC Address Space file.");
}

TEST_F(AddressSpaceFile, DocumentWithAnotherRootElementFailsWithEPointer)
{
    const std::wstring path = Write("<Morvane_ini Title=\"Varnel\"><Morvane_OPCDAAddressSpace Name=\"\"/></Morvane_ini>");
    const CL::CException e = CaughtFrom([&] { SpacePtr::Make()->Load(path); });
    EXPECT_EQ(e.Error(), E_POINTER);
}

TEST_F(AddressSpaceFile, ItemWithUnconvertibleValueIsSkippedAndLogged)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Pumps\">"
                              "<Item Name=\"Bad\" CanonicalDataType=\"3\"><Value>twelve</Value></Item>"
                              "<Item Name=\"TooBig\" CanonicalDataType=\"2\"><Value>70000</Value></Item>"
                              "<Item Name=\"Good\" CanonicalDataType=\"3\"><Value>12</Value></Item>"
                              "</Branch></Morvane_OPCDAAddressSpace>");
    auto pumps = space->RootBranch()->FindBranch(L"Pumps");
    ASSERT_TRUE(pumps);
    EXPECT_EQ(ItemNames(*pumps), std::vector<std::wstring>{L"Good"});
    EXPECT_EQ(pumps->FindItem(L"Good")->Value().lVal, 12);
    EXPECT_EQ(log.Count("[1] Error loading an item, branch = 'Pumps' [OPCServerAddressSpace, "), 2u);
    EXPECT_GE(log.Count("[1] CException: "), 2u);
}

TEST_F(AddressSpaceFile, ItemWithUnconvertibleAttributeIsSkippedAndLogged)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<Item Name=\"A\" CanonicalDataType=\"3\" Quality=\"good\"/>"
                              "<Item Name=\"B\" CanonicalDataType=\"int\"/>"
                              "<Item Name=\"C\" CanonicalDataType=\"3\" Writable=\"maybe\"/>"
                              "<Item Name=\"D\" CanonicalDataType=\"3\" ValueTime=\"yesterday\"/>"
                              "<Item Name=\"E\" CanonicalDataType=\"3\"/>"
                              "</Morvane_OPCDAAddressSpace>");
    EXPECT_EQ(ItemNames(*space->RootBranch()), std::vector<std::wstring>{L"E"});
    EXPECT_EQ(log.Count("[1] Error loading an item, branch = '' [OPCServerAddressSpace, "), 4u);
}

TEST_F(AddressSpaceFile, ItemWithoutNameOrTypeIsSkippedAndLogged)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"B\">"
                              "<Item Name=\"\" CanonicalDataType=\"3\"/>"
                              "<Item CanonicalDataType=\"3\"/>"
                              "<Item Name=\"NoType\"/>"
                              "<Item Name=\"Fine\" CanonicalDataType=\"3\"/>"
                              "</Branch></Morvane_OPCDAAddressSpace>");
    EXPECT_EQ(ItemNames(*space->RootBranch()->FindBranch(L"B")), std::vector<std::wstring>{L"Fine"});
    EXPECT_EQ(log.Count("[1] Error loading an item, branch = 'B' [OPCServerAddressSpace, "), 3u);
}

TEST_F(AddressSpaceFile, BranchWithEmptyNameIsSkippedAndLogged)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\">"
                              "<Branch Name=\"\"><Item Name=\"Lost\" CanonicalDataType=\"3\"/></Branch>"
                              "<Branch><Item Name=\"AlsoLost\" CanonicalDataType=\"3\"/></Branch>"
                              "<Branch Name=\"Kept\"/>"
                              "</Branch></Morvane_OPCDAAddressSpace>");
    auto plant = space->RootBranch()->FindBranch(L"Plant");
    ASSERT_TRUE(plant);
    EXPECT_EQ(BranchNames(*plant), std::vector<std::wstring>{L"Kept"});
    EXPECT_EQ(log.Count("[1] Error loading a subbranch, branch = 'Plant' [OPCServerAddressSpace, "), 2u);
}

TEST_F(AddressSpaceFile, FaultyElementDeepInTheTreeSkipsOnlyItself)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"A\"><Branch Name=\"B\">"
                              "<Item Name=\"Bad\" CanonicalDataType=\"3\"><Value>x</Value></Item>"
                              "<Item Name=\"Ok\" CanonicalDataType=\"3\"><Value>1</Value></Item>"
                              "</Branch></Branch></Morvane_OPCDAAddressSpace>");
    auto b = space->RootBranch()->FindBranch(L"A")->FindBranch(L"B");
    ASSERT_TRUE(b);
    EXPECT_EQ(ItemNames(*b), std::vector<std::wstring>{L"Ok"});
    EXPECT_EQ(log.Count("Error loading an item, branch = 'B'"), 1u);
    EXPECT_EQ(log.Count("Error loading a subbranch"), 0u);
}

TEST_F(AddressSpaceFile, ConditionWithUnconvertibleAttributeIsSkippedAndLogged)
{
    test::LogCapture log;
    SpacePtr space = LoadText("<Morvane_OPCDAAddressSpace Name=\"\">"
                              "<OPCAECondition source=\"A\" conditionName=\"Hi\" severity=\"very\"/>"
                              "<OPCAECondition source=\"B\" conditionName=\"Hi\" severity=\"10\"/>"
                              "</Morvane_OPCDAAddressSpace>");
    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 1u);
    EXPECT_EQ(conditions[0].source, L"B");
    EXPECT_EQ(log.Count("[1] Error loading a condition [OPCServerAddressSpace, "), 1u);
}
