#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "AddressSpaceNames.h"
#include "addressspace/OPCServerAddressSpace.h"

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;

namespace {

ItemPtr MakeItem(const wchar_t* name, VARTYPE vt = VT_I4)
{
    ItemPtr item = ItemPtr::Make(COPCItem::kReadable, 1000, false, WORD(192), vt, nullptr);
    item->Rename(name);
    return item;
}

BranchPtr MakeBranch(const wchar_t* name)
{
    return BranchPtr::Make(name);
}

HRESULT ErrorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const CL::CException& e) {
        return e.Error();
    }
    return S_OK;
}

AeCondition Condition(const wchar_t* source, const wchar_t* name, ULONG severity = 500)
{
    AeCondition c;
    c.source = source;
    c.conditionName = name;
    c.severity = severity;
    return c;
}

} // namespace

// --- Adding ------------------------------------------------------------------

TEST(AddressSpaceBranch, AddingItemWhoseNameDiffersOnlyInCaseFailsAndLeavesBranchUnchanged)
{
    BranchPtr branch = MakeBranch(L"Plant");
    ItemPtr first = MakeItem(L"TANK1");
    branch->AddItem(first);
    ItemPtr second = MakeItem(L"Tank1");
    EXPECT_EQ(ErrorOf([&] { branch->AddItem(second); }), E_INVALIDARG);
    EXPECT_EQ(branch->ItemCount(), 1u);
    EXPECT_EQ(branch->FindItem(L"tank1").get(), first.get());
    EXPECT_EQ(first->Name(), L"TANK1");
    EXPECT_EQ(second->Parent(), nullptr);
}

TEST(AddressSpaceBranch, AddingSubBranchWhoseNameDiffersOnlyInCaseFails)
{
    BranchPtr root = BranchPtr::Make();
    BranchPtr first = MakeBranch(L"Line1");
    root->AddBranch(first);
    EXPECT_EQ(ErrorOf([&] { root->AddBranch(MakeBranch(L"LINE1")); }), E_INVALIDARG);
    EXPECT_EQ(BranchNames(*root), std::vector<std::wstring>{L"Line1"});
    EXPECT_EQ(root->FindBranch(L"line1").get(), first.get());
}

TEST(AddressSpaceBranch, AddingNullChildFailsWithInvalidArg)
{
    BranchPtr branch = BranchPtr::Make();
    EXPECT_EQ(ErrorOf([&] { branch->AddItem(ItemPtr()); }), E_INVALIDARG);
    EXPECT_EQ(ErrorOf([&] { branch->AddBranch(BranchPtr()); }), E_INVALIDARG);
    EXPECT_EQ(branch->ItemCount() + branch->BranchCount(), 0u);
}

TEST(AddressSpaceBranch, AddingChildWithEmptyNameFailsWithInvalidArg)
{
    BranchPtr branch = BranchPtr::Make();
    ItemPtr unnamed = ItemPtr::Make(0, 0, false, WORD(192), VARTYPE(VT_I4), nullptr);
    EXPECT_EQ(ErrorOf([&] { branch->AddItem(unnamed); }), E_INVALIDARG);
    EXPECT_EQ(ErrorOf([&] { branch->AddBranch(BranchPtr::Make()); }), E_INVALIDARG);
    EXPECT_EQ(branch->ItemCount() + branch->BranchCount(), 0u);
}

TEST(AddressSpaceBranch, AddingSetsTheChildsParent)
{
    BranchPtr root = BranchPtr::Make();
    BranchPtr branch = MakeBranch(L"Plant");
    ItemPtr item = MakeItem(L"Speed");
    root->AddBranch(branch);
    branch->AddItem(item);
    EXPECT_EQ(branch->Parent(), root.get());
    EXPECT_EQ(item->Parent(), branch.get());
    EXPECT_EQ(root->Parent(), nullptr);
}

TEST(AddressSpaceBranch, BranchAndItemOnOneLevelMayShareAName)
{
    BranchPtr root = BranchPtr::Make();
    root->AddBranch(MakeBranch(L"Pump"));
    root->AddItem(MakeItem(L"PUMP"));
    EXPECT_EQ(root->BranchCount(), 1u);
    EXPECT_EQ(root->ItemCount(), 1u);
}

TEST(AddressSpaceBranch, AddingChildOfAnotherBranchFails)
{
    BranchPtr a = MakeBranch(L"A"), b = MakeBranch(L"B");
    ItemPtr item = MakeItem(L"X");
    a->AddItem(item);
    EXPECT_EQ(ErrorOf([&] { b->AddItem(item); }), E_INVALIDARG);
    EXPECT_EQ(item->Parent(), a.get());
    EXPECT_EQ(b->ItemCount(), 0u);
}

TEST(AddressSpaceBranch, AddingBranchBelowItselfFails)
{
    BranchPtr top = MakeBranch(L"Top");
    BranchPtr middle = MakeBranch(L"Middle");
    middle->AddBranch(top);
    // Middle is Top's parent: putting Middle under Top would make a loop.
    EXPECT_EQ(ErrorOf([&] { top->AddBranch(middle); }), E_INVALIDARG);
    EXPECT_EQ(ErrorOf([&] { middle->AddBranch(middle); }), E_INVALIDARG);
    EXPECT_EQ(top->Parent(), middle.get());
    EXPECT_EQ(middle->Parent(), nullptr);
    EXPECT_EQ(top->BranchCount(), 0u);
    EXPECT_EQ(middle->BranchCount(), 1u);
}

// --- Renaming ------------------------------------------------------------------

TEST(AddressSpaceItem, RenamingOnlyInLetterCaseKeepsTheOldSpelling)
{
    BranchPtr branch = MakeBranch(L"Plant");
    ItemPtr item = MakeItem(L"pump");
    branch->AddItem(item);
    item->Rename(L"Pump");
    EXPECT_EQ(item->Name(), L"pump");
    EXPECT_EQ(ItemNames(*branch), std::vector<std::wstring>{L"pump"});
}

TEST(AddressSpaceBranch, RenamingOnlyInLetterCaseKeepsTheOldSpelling)
{
    BranchPtr root = BranchPtr::Make();
    BranchPtr branch = MakeBranch(L"line1");
    root->AddBranch(branch);
    branch->Rename(L"LINE1");
    EXPECT_EQ(branch->Name(), L"line1");
    EXPECT_EQ(BranchNames(*root), std::vector<std::wstring>{L"line1"});
}

TEST(AddressSpaceItem, RenamingToTheNameOfASiblingBranchSucceeds)
{
    BranchPtr root = BranchPtr::Make();
    root->AddBranch(MakeBranch(L"Motor"));
    ItemPtr item = MakeItem(L"Speed");
    root->AddItem(item);
    item->Rename(L"Motor");
    EXPECT_EQ(item->Name(), L"Motor");
    EXPECT_EQ(root->FindItem(L"Motor").get(), item.get());
    EXPECT_FALSE(root->FindItem(L"Speed"));
}

TEST(AddressSpaceItem, RenamingToTheNameOfASiblingItemFailsAndChangesNothing)
{
    BranchPtr root = BranchPtr::Make();
    ItemPtr a = MakeItem(L"A"), b = MakeItem(L"B");
    root->AddItem(a);
    root->AddItem(b);
    EXPECT_EQ(ErrorOf([&] { b->Rename(L"a"); }), E_INVALIDARG);
    EXPECT_EQ(b->Name(), L"B");
    EXPECT_EQ(root->FindItem(L"B").get(), b.get());
    EXPECT_EQ(root->FindItem(L"A").get(), a.get());
    EXPECT_EQ(root->ItemCount(), 2u);
}

TEST(AddressSpaceBranch, RenamingToTheNameOfASiblingBranchFailsAndChangesNothing)
{
    BranchPtr root = BranchPtr::Make();
    BranchPtr a = MakeBranch(L"A"), b = MakeBranch(L"B");
    root->AddBranch(a);
    root->AddBranch(b);
    EXPECT_EQ(ErrorOf([&] { b->Rename(L"A"); }), E_INVALIDARG);
    EXPECT_EQ(b->Name(), L"B");
    EXPECT_EQ(BranchNames(*root), (std::vector<std::wstring>{L"A", L"B"}));
}

TEST(AddressSpaceItem, RenamingToEmptyOrNullNameFails)
{
    BranchPtr root = BranchPtr::Make();
    ItemPtr item = MakeItem(L"Speed");
    root->AddItem(item);
    EXPECT_EQ(ErrorOf([&] { item->Rename(L""); }), E_INVALIDARG);
    EXPECT_EQ(ErrorOf([&] { item->Rename(nullptr); }), E_INVALIDARG);
    EXPECT_EQ(item->Name(), L"Speed");
    EXPECT_EQ(ErrorOf([&] { root->Rename(L""); }), E_INVALIDARG);
}

TEST(AddressSpaceItem, RenamingReKeysTheItemInItsBranch)
{
    BranchPtr root = BranchPtr::Make();
    ItemPtr a = MakeItem(L"alpha"), z = MakeItem(L"zulu");
    root->AddItem(a);
    root->AddItem(z);
    a->Rename(L"Yankee");
    EXPECT_EQ(ItemNames(*root), (std::vector<std::wstring>{L"Yankee", L"zulu"}));
    EXPECT_EQ(root->FindItem(L"yankee").get(), a.get());
    EXPECT_FALSE(root->FindItem(L"alpha"));
    EXPECT_EQ(a->Parent(), root.get());
}

TEST(AddressSpaceBranch, RenamingReKeysTheBranchInItsParent)
{
    BranchPtr root = BranchPtr::Make();
    BranchPtr b = MakeBranch(L"Old");
    root->AddBranch(b);
    b->Rename(L"New");
    EXPECT_EQ(root->FindBranch(L"NEW").get(), b.get());
    EXPECT_FALSE(root->FindBranch(L"Old"));
}

TEST(AddressSpaceItem, RenamingAnUnaddedItemOnlySetsItsName)
{
    ItemPtr item = MakeItem(L"first");
    item->Rename(L"second");
    EXPECT_EQ(item->Name(), L"second");
}

// --- Lookup, order, removal ---------------------------------------------------

TEST(AddressSpaceBranch, IterationListsNamesInCaseInsensitiveOrder)
{
    BranchPtr root = BranchPtr::Make();
    for (const wchar_t* name : {L"beta", L"Alpha", L"gamma"}) {
        root->AddItem(MakeItem(name));
        root->AddBranch(MakeBranch(name));
    }
    const std::vector<std::wstring> expected{L"Alpha", L"beta", L"gamma"};
    EXPECT_EQ(ItemNames(*root), expected);
    EXPECT_EQ(BranchNames(*root), expected);
}

TEST(AddressSpaceBranch, FindIgnoresCaseAndGivesNullForUnknownNames)
{
    BranchPtr root = BranchPtr::Make();
    ItemPtr item = MakeItem(L"Level");
    root->AddItem(item);
    EXPECT_EQ(root->FindItem(L"LEVEL").get(), item.get());
    EXPECT_FALSE(root->FindItem(L"Levels"));
    EXPECT_FALSE(root->FindBranch(L"Level"));
}

TEST(AddressSpaceBranch, RemovingTakesTheChildOutAndClearsItsParent)
{
    BranchPtr root = BranchPtr::Make();
    ItemPtr item = MakeItem(L"Flow");
    BranchPtr branch = MakeBranch(L"Area");
    root->AddItem(item);
    root->AddBranch(branch);
    EXPECT_EQ(root->RemoveItem(L"FLOW").get(), item.get());
    EXPECT_EQ(root->RemoveBranch(L"area").get(), branch.get());
    EXPECT_EQ(item->Parent(), nullptr);
    EXPECT_EQ(branch->Parent(), nullptr);
    EXPECT_EQ(root->ItemCount() + root->BranchCount(), 0u);
}

TEST(AddressSpaceBranch, RemovingAMissingNameFailsWithEPointerAndChangesNothing)
{
    BranchPtr root = BranchPtr::Make();
    root->AddItem(MakeItem(L"Flow"));
    EXPECT_EQ(ErrorOf([&] { root->RemoveItem(L"Pressure"); }), E_POINTER);
    EXPECT_EQ(ErrorOf([&] { root->RemoveBranch(L"Flow"); }), E_POINTER);
    EXPECT_EQ(root->ItemCount(), 1u);
}

TEST(AddressSpaceBranch, ChildrenOutlivingTheirBranchHaveNoParent)
{
    ItemPtr item = MakeItem(L"Kept");
    BranchPtr child = MakeBranch(L"KeptBranch");
    {
        BranchPtr branch = MakeBranch(L"Dies");
        branch->AddItem(item);
        branch->AddBranch(child);
    }
    EXPECT_EQ(item->Parent(), nullptr);
    EXPECT_EQ(child->Parent(), nullptr);
    EXPECT_EQ(item->RefCount(), 1);
}

TEST(AddressSpaceBranch, ClearDropsAllChildren)
{
    BranchPtr root = BranchPtr::Make();
    ItemPtr item = MakeItem(L"I");
    root->AddItem(item);
    root->AddBranch(MakeBranch(L"B"));
    root->Clear();
    EXPECT_EQ(root->ItemCount() + root->BranchCount(), 0u);
    EXPECT_EQ(item->Parent(), nullptr);
    EXPECT_EQ(item->RefCount(), 1);
}

TEST(AddressSpaceBranch, ConcurrentAddsFromTwoThreadsAllArrive)
{
    BranchPtr root = BranchPtr::Make();
    auto adder = [&root](int offset) {
        for (int i = 0; i < 500; ++i) {
            const std::wstring name = L"item" + std::to_wstring(offset + i);
            root->AddItem(MakeItem(name.c_str()));
        }
    };
    std::thread a(adder, 0), b(adder, 500);
    a.join();
    b.join();
    EXPECT_EQ(root->ItemCount(), 1000u);
}

// --- Items ---------------------------------------------------------------------

namespace {

class RecordingOwner : public IOPCItemOwner {
public:
    void OnItemValueChanged(COPCItem& item) override { changed.push_back(&item); }
    std::vector<COPCItem*> changed;
};

} // namespace

TEST(AddressSpaceItem, ConstructorTakesRightsScanRateArchiveQualityTypeAndOwnerInThisOrder)
{
    RecordingOwner owner;
    ItemPtr item = ItemPtr::Make(COPCItem::kReadable | COPCItem::kWritable, 250, true, WORD(0x1C),
                                 VARTYPE(VT_R8), &owner);
    EXPECT_EQ(item->AccessRights(), 3u);
    EXPECT_TRUE(item->Readable());
    EXPECT_TRUE(item->Writable());
    EXPECT_EQ(item->ScanRate(), 250u);
    EXPECT_TRUE(item->Archive());
    EXPECT_EQ(item->Quality(), 0x1C);
    EXPECT_EQ(item->CanonicalDataType(), VT_R8);
    EXPECT_EQ(item->Owner(), &owner);
    EXPECT_EQ(item->Value().vt, VT_EMPTY);
    EXPECT_TRUE(item->Name().empty());
    EXPECT_EQ(item->Parent(), nullptr);
}

TEST(AddressSpaceItem, ValueTimeStartsAtTheCurrentSystemTime)
{
    FILETIME before, after;
    ::GetSystemTimeAsFileTime(&before);
    ItemPtr item = MakeItem(L"T");
    ::GetSystemTimeAsFileTime(&after);
    const FILETIME t = item->ValueTime();
    auto u = [](const FILETIME& f) { return (ULONGLONG(f.dwHighDateTime) << 32) | f.dwLowDateTime; };
    EXPECT_GE(u(t) + 10000, u(before));   // the item keeps milliseconds only
    EXPECT_LE(u(t), u(after));
}

TEST(AddressSpaceItem, AccessRightBitsAreReadableOneWritableTwo)
{
    ItemPtr item = ItemPtr::Make(0, 0, false, WORD(192), VARTYPE(VT_I4), nullptr);
    item->SetWritable(true);
    EXPECT_EQ(item->AccessRights(), 2u);
    item->SetReadable(true);
    EXPECT_EQ(item->AccessRights(), 3u);
    item->SetWritable(false);
    EXPECT_EQ(item->AccessRights(), 1u);
    EXPECT_TRUE(item->Readable());
    EXPECT_FALSE(item->Writable());
}

TEST(AddressSpaceItem, ValueIsStoredAsACopy)
{
    ItemPtr item = MakeItem(L"Text", VT_BSTR);
    CL::CVariant text(std::wstring_view(L"hello"));
    item->SetValue(text);
    text = CL::CVariant(std::wstring_view(L"changed"));
    const CL::CVariant stored = item->Value();
    ASSERT_EQ(stored.vt, VT_BSTR);
    EXPECT_STREQ(stored.bstrVal, L"hello");
}

TEST(AddressSpaceItem, ValueChangeStoresValueQualityAndTimeAndTellsTheOwner)
{
    RecordingOwner owner;
    ItemPtr item = ItemPtr::Make(1, 0, false, WORD(0), VARTYPE(VT_I4), &owner);
    CL::CVariant v;
    v.vt = VT_I4;
    v.lVal = 42;
    const FILETIME time{0x12345678, 0x01D00000};
    IOPCItemValueSink& sink = *item;
    sink.OnValueChange(v, 192, time);
    EXPECT_EQ(item->Value().lVal, 42);
    EXPECT_EQ(item->Quality(), 192);
    EXPECT_EQ(item->ValueTime().dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(item->ValueTime().dwHighDateTime, time.dwHighDateTime);
    ASSERT_EQ(owner.changed.size(), 1u);
    EXPECT_EQ(owner.changed[0], item.get());
}

// --- The address space --------------------------------------------------------

TEST(AddressSpace, FreshAddressSpaceHasAnEmptyUnnamedRootAndNoConditions)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    ASSERT_TRUE(space->RootBranch());
    EXPECT_TRUE(space->RootBranch()->Name().empty());
    EXPECT_EQ(space->RootBranch()->ItemCount() + space->RootBranch()->BranchCount(), 0u);
    EXPECT_TRUE(space->Conditions().empty());
}

TEST(AddressSpace, ConditionsDifferingOnlyInCaseKeepOnlyTheFirst)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    EXPECT_TRUE(space->AddCondition(Condition(L"Src", L"Hi", 100)));
    EXPECT_FALSE(space->AddCondition(Condition(L"src", L"HI", 900)));
    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 1u);
    EXPECT_EQ(conditions[0].source, L"Src");
    EXPECT_EQ(conditions[0].severity, 100u);
}

TEST(AddressSpace, ConditionsKeepTheirOrderAndDifferBySourceOrName)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    EXPECT_TRUE(space->AddCondition(Condition(L"B", L"Hi")));
    EXPECT_TRUE(space->AddCondition(Condition(L"A", L"Hi")));
    EXPECT_TRUE(space->AddCondition(Condition(L"A", L"Lo")));
    const auto conditions = space->Conditions();
    ASSERT_EQ(conditions.size(), 3u);
    EXPECT_EQ(conditions[0].source, L"B");
    EXPECT_EQ(conditions[1].conditionName, L"Hi");
    EXPECT_EQ(conditions[2].conditionName, L"Lo");
}

TEST(AddressSpace, ClearDropsBranchesItemsAndConditions)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    space->RootBranch()->AddBranch(MakeBranch(L"B"));
    space->RootBranch()->AddItem(MakeItem(L"I"));
    space->AddCondition(Condition(L"I", L"Hi"));
    space->Clear();
    EXPECT_EQ(space->RootBranch()->ItemCount() + space->RootBranch()->BranchCount(), 0u);
    EXPECT_TRUE(space->Conditions().empty());
}
