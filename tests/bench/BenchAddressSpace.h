#pragma once
// The address space the benchmarks work on: 10 top branches, 10 below each,
// 10 below those (1,000 leaf branches three levels deep, 1,110 branches in
// all), 100 items in each leaf branch: 100,000 items of mixed kinds.
#include <string>

#include "addressspace/OPCServerAddressSpace.h"
#include "common/Util_Variant.h"

namespace Bench {

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;

constexpr int kFanOut = 10;
constexpr int kItemsPerLeaf = 100;

// Items of mixed kinds: doubles, integers, strings, booleans, small arrays,
// and some without a value.
inline ItemPtr MakeItem(int n)
{
    static const VARTYPE kinds[] = {VT_R8, VT_I4, VT_BSTR, VT_BOOL, VT_ARRAY | VT_I4, VT_R8, VT_I4, VT_UI2, VT_R4, VT_I4};
    const VARTYPE vt = kinds[n % 10];
    ItemPtr item = ItemPtr::Make(COPCItem::kReadable | (n % 3 ? COPCItem::kWritable : 0), 1000, n % 7 == 0,
                                 WORD(192), vt, nullptr);
    item->Rename((L"Item" + std::to_wstring(n)).c_str());
    if (n % 13 == 0)
        return item;   // no value
    std::wstring text;
    switch (vt) {
    case VT_R8: text = std::to_wstring(n) + L".25"; break;
    case VT_BSTR: text = L"Text value " + std::to_wstring(n); break;
    case VT_BOOL: text = (n % 2) ? L"True" : L"False"; break;
    case VT_ARRAY | VT_I4: text = L"1\r\n2\r\n3\r\n" + std::to_wstring(n); break;
    case VT_R4: text = L"0.5"; break;
    default: text = std::to_wstring(n % 60000); break;
    }
    item->SetValue(CL::StringToVariant(text, vt, CL::kLocaleSystemDefault, CL::kArraySeparator));
    return item;
}

inline CL::CSmartPtr<COPCServerAddressSpace> Build()
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    int n = 0;
    for (int a = 0; a < kFanOut; ++a) {
        BranchPtr top = BranchPtr::Make(L"Area" + std::to_wstring(a));
        space->RootBranch()->AddBranch(top);
        for (int b = 0; b < kFanOut; ++b) {
            BranchPtr line = BranchPtr::Make(L"Line" + std::to_wstring(b));
            top->AddBranch(line);
            for (int c = 0; c < kFanOut; ++c) {
                BranchPtr unit = BranchPtr::Make(L"Unit" + std::to_wstring(c));
                line->AddBranch(unit);
                for (int i = 0; i < kItemsPerLeaf; ++i)
                    unit->AddItem(MakeItem(n++));
            }
        }
    }
    return space;
}

} // namespace Bench
