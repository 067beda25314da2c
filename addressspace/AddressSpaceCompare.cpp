#include "addressspace/AddressSpaceCompare.h"

#include <cstring>
#include <cwchar>
#include <cwctype>
#include <unordered_map>
#include <unordered_set>

#include "addressspace/NoCaseLess.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "common/Exception.h"
#include "common/Util_Variant.h"

namespace {

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;
using Difference = AddressSpaceDifference;

// A key in which letter case no longer counts (as the model's maps).
std::wstring Folded(const std::wstring& text)
{
    std::wstring folded(text);
    for (wchar_t& c : folded)
        c = static_cast<wchar_t>(std::towlower(c));
    return folded;
}

std::wstring Joined(const std::wstring& prefix, const std::wstring& name)
{
    return prefix.empty() ? name : prefix + L"." + name;
}

std::wstring ValueText(const VARIANT& value)
{
    if (value.vt == VT_EMPTY)
        return {};
    try {
        return CL::VariantToString(value, CL::kLocaleSystemDefault, CL::kArraySeparator);
    } catch (const CL::CException&) {
        return L"?";   // a value of a type that has no text
    }
}

// Equal one-dimensional arrays of equal element type: bounds, then the
// elements (strings by their text, the rest by their bytes).
bool SameArray(const VARIANT& a, const VARIANT& b)
{
    const SAFEARRAY* x = a.parray;
    const SAFEARRAY* y = b.parray;
    if (!x || !y)
        return x == y;
    if (x->cDims != 1 || y->cDims != 1 || x->cbElements != y->cbElements ||
        x->rgsabound[0].cElements != y->rgsabound[0].cElements || x->rgsabound[0].lLbound != y->rgsabound[0].lLbound)
        return false;
    const ULONG count = x->rgsabound[0].cElements;
    if ((a.vt & VT_TYPEMASK) == VT_BSTR) {
        const BSTR* p = static_cast<const BSTR*>(x->pvData);
        const BSTR* q = static_cast<const BSTR*>(y->pvData);
        for (ULONG i = 0; i < count; ++i) {
            const UINT length = ::SysStringLen(p[i]);
            if (length != ::SysStringLen(q[i]) || std::wmemcmp(p[i], q[i], length) != 0)
                return false;
        }
        return true;
    }
    if ((a.vt & VT_TYPEMASK) == VT_VARIANT || (a.vt & VT_TYPEMASK) == VT_DECIMAL)
        return ValueText(a) == ValueText(b);
    return std::memcmp(x->pvData, y->pvData, static_cast<size_t>(count) * x->cbElements) == 0;
}

// Equal values of equal type, without making texts of them (the compare
// must stay fast on a hundred thousand items).
bool SameValue(const VARIANT& a, const VARIANT& b)
{
    if (a.vt != b.vt)
        return false;
    switch (a.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return true;
    case VT_BSTR: {
        const UINT length = ::SysStringLen(a.bstrVal);
        return length == ::SysStringLen(b.bstrVal) && std::wmemcmp(a.bstrVal, b.bstrVal, length) == 0;
    }
    case VT_I1: case VT_UI1: return a.bVal == b.bVal;
    case VT_I2: case VT_UI2: case VT_BOOL: return a.uiVal == b.uiVal;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_ERROR: return a.ulVal == b.ulVal;
    case VT_R4: return a.lVal == b.lVal;   // the bits, so that a NaN equals itself
    case VT_I8: case VT_UI8: case VT_R8: case VT_CY: case VT_DATE: return a.llVal == b.llVal;
    default:
        if ((a.vt & VT_ARRAY) && !(a.vt & VT_BYREF))
            return SameArray(a, b);
        // The rare rest: by their texts.
        return ValueText(a) == ValueText(b);
    }
}

std::wstring AccessText(const COPCItem& item)
{
    return std::wstring(item.Readable() ? L"R" : L"") + (item.Writable() ? L"W" : L"");
}

const wchar_t* YesNo(bool value)
{
    return value ? L"Yes" : L"No";
}

// The item in short, for an added or removed row.
std::wstring ItemSummary(const COPCItem& item)
{
    std::wstring text = CL::VarTypeToString(item.CanonicalDataType());
    const CL::CVariant value = item.Value();
    if (value.vt != VT_EMPTY)
        text += L" = " + ValueText(value);
    text += L", " + AccessText(item) + L", " + std::to_wstring(item.ScanRate()) + L" ms";
    if (item.Archive())
        text += L", archived";
    return text;
}

// Everything that makes two items the same but their names.
std::wstring ItemSignature(const COPCItem& item)
{
    return std::to_wstring(item.CanonicalDataType()) + L"|" + std::to_wstring(item.AccessRights()) + L"|" +
           std::to_wstring(item.ScanRate()) + L"|" + (item.Archive() ? L"1" : L"0") + L"|" + ValueText(item.Value());
}

// A branch's whole content with names folded, its own name left out.
void AppendBranchSignature(const COPCServerAddressSpaceBranch& branch, std::wstring& out)
{
    for (const BranchPtr& child : branch.Branches()) {
        out += L"<" + Folded(child->Name()) + L">";
        AppendBranchSignature(*child, out);
        out += L"</>";
    }
    for (const ItemPtr& item : branch.Items())
        out += L"[" + Folded(item->Name()) + L"|" + ItemSignature(*item) + L"]";
}

std::wstring ConditionPath(const AeCondition& condition)
{
    return condition.source + L" / " + condition.conditionName;
}

std::wstring ConditionKey(const AeCondition& condition)
{
    return Folded(condition.source) + L"\n" + Folded(condition.conditionName);
}

class CComparer {
public:
    AddressSpaceDifferences Run(const COPCServerAddressSpace& before, const COPCServerAddressSpace& after)
    {
        CompareBranches(*before.RootBranch(), *after.RootBranch(), std::wstring());
        MatchMovedBranches();
        MatchMovedItems();
        CompareConditions(before.Conditions(), after.Conditions());
        AddressSpaceDifferences result;
        result.reserve(m_out.size());
        for (size_t i = 0; i < m_out.size(); ++i)
            if (!m_dropped[i])
                result.push_back(std::move(m_out[i]));
        return result;
    }

private:
    // A branch or item found on one side only, with the rows it made.
    struct Loose {
        BranchPtr branch;
        ItemPtr item;
        size_t first = 0;   // its own row
        size_t end = 0;     // past the rows of its content
    };

    size_t Add(Difference difference)
    {
        m_out.push_back(std::move(difference));
        m_dropped.push_back(false);
        return m_out.size() - 1;
    }

    void CompareBranches(const COPCServerAddressSpaceBranch& before, const COPCServerAddressSpaceBranch& after,
                         const std::wstring& prefix)
    {
        const std::vector<BranchPtr> a = before.Branches();
        const std::vector<BranchPtr> b = after.Branches();
        size_t i = 0, j = 0;
        while (i < a.size() || j < b.size()) {
            const int order = i == a.size()   ? 1
                              : j == b.size() ? -1
                                              : _wcsicmp(a[i]->Name().c_str(), b[j]->Name().c_str());
            if (order == 0) {
                m_names.push_back(b[j]->Name());
                CompareBranches(*a[i], *b[j], Joined(prefix, b[j]->Name()));
                m_names.pop_back();
                ++i, ++j;
            } else if (order < 0) {
                m_removedBranches.push_back(OneSide(a[i++], prefix, DifferenceKind::Removed));
            } else {
                m_addedBranches.push_back(OneSide(b[j++], prefix, DifferenceKind::Added));
            }
        }
        CompareItemLists(before.Items(), after.Items(), prefix);
    }

    void CompareItemLists(const std::vector<ItemPtr>& a, const std::vector<ItemPtr>& b, const std::wstring& prefix)
    {
        size_t i = 0, j = 0;
        while (i < a.size() || j < b.size()) {
            const int order = i == a.size()   ? 1
                              : j == b.size() ? -1
                                              : _wcsicmp(a[i]->Name().c_str(), b[j]->Name().c_str());
            if (order == 0) {
                CompareItems(*a[i], *b[j], prefix);
                ++i, ++j;
            } else if (order < 0) {
                OneItem(a[i++], prefix, DifferenceKind::Removed);
            } else {
                OneItem(b[j++], prefix, DifferenceKind::Added);
            }
        }
    }

    // The paths are made only for an item that differs: most do not.
    void CompareItems(const COPCItem& a, const COPCItem& b, const std::wstring& prefix)
    {
        auto changed = [&](const wchar_t* field, std::wstring before, std::wstring after) {
            Difference d;
            d.kind = DifferenceKind::Changed;
            d.subject = DifferenceSubject::Item;
            d.path = Joined(prefix, b.Name());
            d.field = field;
            d.before = std::move(before);
            d.after = std::move(after);
            d.itemId = Joined(prefix, a.Name());
            d.location = Here(b.Name());
            Add(std::move(d));
        };
        if (a.CanonicalDataType() != b.CanonicalDataType())
            changed(L"Data type", CL::VarTypeToString(a.CanonicalDataType()), CL::VarTypeToString(b.CanonicalDataType()));
        const CL::CVariant va = a.Value();
        const CL::CVariant vb = b.Value();
        if (!SameValue(va, vb)) {
            // A new type alone shows as the type; the value counts when its
            // text changed too.
            std::wstring textA = ValueText(va), textB = ValueText(vb);
            if (a.CanonicalDataType() == b.CanonicalDataType() || textA != textB)
                changed(L"Value", std::move(textA), std::move(textB));
        }
        if (a.AccessRights() != b.AccessRights())
            changed(L"Access", AccessText(a), AccessText(b));
        if (a.ScanRate() != b.ScanRate())
            changed(L"Scan rate", std::to_wstring(a.ScanRate()), std::to_wstring(b.ScanRate()));
        if (a.Archive() != b.Archive())
            changed(L"Archive", YesNo(a.Archive()), YesNo(b.Archive()));
    }

    // An item of one side only: its row, kept loose for the match by content.
    void OneItem(const ItemPtr& item, const std::wstring& prefix, DifferenceKind kind)
    {
        Difference d;
        d.kind = kind;
        d.subject = DifferenceSubject::Item;
        d.path = Joined(prefix, item->Name());
        d.location = Here(item->Name());
        if (kind == DifferenceKind::Removed) {
            d.before = ItemSummary(*item);
            d.itemId = d.path;
        } else {
            d.after = ItemSummary(*item);
        }
        const size_t row = Add(std::move(d));
        Loose loose;
        loose.item = item;
        loose.first = row;
        loose.end = row + 1;
        (kind == DifferenceKind::Removed ? m_removedItems : m_addedItems).push_back(loose);
    }

    // A branch of one side only: its row, then rows for all it holds.
    Loose OneSide(const BranchPtr& branch, const std::wstring& prefix, DifferenceKind kind)
    {
        Difference d;
        d.kind = kind;
        d.subject = DifferenceSubject::Branch;
        d.path = Joined(prefix, branch->Name());
        d.location = Here(branch->Name());
        const std::wstring path = d.path;
        if (kind == DifferenceKind::Removed)
            d.itemId = path;
        Loose loose;
        loose.branch = branch;
        loose.first = Add(std::move(d));
        m_names.push_back(branch->Name());
        AddContent(*branch, path, kind);
        m_names.pop_back();
        loose.end = m_out.size();
        return loose;
    }

    void AddContent(const COPCServerAddressSpaceBranch& branch, const std::wstring& path, DifferenceKind kind)
    {
        for (const BranchPtr& child : branch.Branches()) {
            Difference d;
            d.kind = kind;
            d.subject = DifferenceSubject::Branch;
            d.path = Joined(path, child->Name());
            d.location = Here(child->Name());
            if (kind == DifferenceKind::Removed)
                d.itemId = d.path;
            Add(std::move(d));
            m_names.push_back(child->Name());
            AddContent(*child, Joined(path, child->Name()), kind);
            m_names.pop_back();
        }
        for (const ItemPtr& item : branch.Items())
            OneItem(item, path, kind);
    }

    // The names down to a child of the branch being walked.
    std::vector<std::wstring> Here(const std::wstring& name) const
    {
        std::vector<std::wstring> names(m_names);
        names.push_back(name);
        return names;
    }

    void Drop(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i)
            m_dropped[i] = true;
    }

    // The added row becomes the move; the removed rows go.
    void MakeMove(const Loose& removed, const Loose& added)
    {
        Difference& d = m_out[added.first];
        const std::wstring oldPath = m_out[removed.first].path;
        d.oldLocation = m_out[removed.first].location;
        d.kind = DifferenceKind::Moved;
        d.field = L"Path";
        d.before = oldPath;
        d.after = d.path;
        d.itemId = oldPath;
        Drop(removed.first, removed.end);
        Drop(added.first + 1, added.end);
    }

    // Pairs removed and added entries of equal signature, preferring one of
    // the same name (a move to another branch) over any other (a rename).
    template <typename Signature, typename Name>
    void Match(std::vector<Loose>& removed, std::vector<Loose>& added, Signature signature, Name name)
    {
        if (removed.empty() || added.empty())
            return;
        std::unordered_map<std::wstring, std::vector<size_t>> bySignature;
        for (size_t i = 0; i < removed.size(); ++i)
            if (!m_dropped[removed[i].first])
                bySignature[signature(removed[i])].push_back(i);
        for (const Loose& candidate : added) {
            if (m_dropped[candidate.first])
                continue;
            auto found = bySignature.find(signature(candidate));
            if (found == bySignature.end() || found->second.empty())
                continue;
            std::vector<size_t>& choices = found->second;
            size_t pick = 0;
            for (size_t k = 0; k < choices.size(); ++k)
                if (EqualNoCase(name(removed[choices[k]]), name(candidate))) {
                    pick = k;
                    break;
                }
            const Loose& partner = removed[choices[pick]];
            choices.erase(choices.begin() + static_cast<std::ptrdiff_t>(pick));
            MakeMove(partner, candidate);
        }
    }

    void MatchMovedBranches()
    {
        Match(
            m_removedBranches, m_addedBranches,
            [](const Loose& loose) {
                std::wstring signature;
                AppendBranchSignature(*loose.branch, signature);
                return signature;
            },
            [](const Loose& loose) { return loose.branch->Name(); });
    }

    void MatchMovedItems()
    {
        Match(
            m_removedItems, m_addedItems, [](const Loose& loose) { return ItemSignature(*loose.item); },
            [](const Loose& loose) { return loose.item->Name(); });
    }

    void CompareConditions(const std::vector<AeCondition>& before, const std::vector<AeCondition>& after)
    {
        std::unordered_map<std::wstring, const AeCondition*> beforeByKey;
        for (const AeCondition& condition : before)
            beforeByKey.emplace(ConditionKey(condition), &condition);
        std::unordered_set<std::wstring> seen;
        for (const AeCondition& condition : after) {
            const std::wstring key = ConditionKey(condition);
            seen.insert(key);
            auto found = beforeByKey.find(key);
            if (found == beforeByKey.end())
                OneCondition(condition, DifferenceKind::Added);
            else
                CompareCondition(*found->second, condition);
        }
        for (const AeCondition& condition : before)
            if (!seen.count(ConditionKey(condition)))
                OneCondition(condition, DifferenceKind::Removed);
    }

    void OneCondition(const AeCondition& condition, DifferenceKind kind)
    {
        Difference d;
        d.kind = kind;
        d.subject = DifferenceSubject::Condition;
        d.path = ConditionPath(condition);
        d.location = {condition.source, condition.conditionName};
        std::wstring summary = L"Severity " + std::to_wstring(condition.severity) + L", category " +
                               std::to_wstring(condition.category);
        if (!condition.description.empty())
            summary += L", " + condition.description;
        (kind == DifferenceKind::Added ? d.after : d.before) = summary;
        Add(std::move(d));
    }

    void CompareCondition(const AeCondition& a, const AeCondition& b)
    {
        auto changed = [&](const wchar_t* field, std::wstring before, std::wstring after) {
            Difference d;
            d.kind = DifferenceKind::Changed;
            d.subject = DifferenceSubject::Condition;
            d.path = ConditionPath(b);
            d.location = {b.source, b.conditionName};
            d.field = field;
            d.before = std::move(before);
            d.after = std::move(after);
            Add(std::move(d));
        };
        if (a.category != b.category)
            changed(L"Category", std::to_wstring(a.category), std::to_wstring(b.category));
        if (a.enabled != b.enabled)
            changed(L"Enabled", YesNo(a.enabled), YesNo(b.enabled));
        if (a.definition != b.definition)
            changed(L"Definition", a.definition, b.definition);
        if (a.severity != b.severity)
            changed(L"Severity", std::to_wstring(a.severity), std::to_wstring(b.severity));
        if (a.description != b.description)
            changed(L"Description", a.description, b.description);
    }

    std::vector<Difference> m_out;
    std::vector<bool> m_dropped;
    std::vector<std::wstring> m_names;   // the branch being walked, from below the root
    std::vector<Loose> m_removedBranches, m_addedBranches, m_removedItems, m_addedItems;
};

// The objects a list of differences touches: subject and folded path, both
// paths of a move.
std::unordered_set<std::wstring> TouchedKeys(const AddressSpaceDifferences& differences)
{
    std::unordered_set<std::wstring> keys;
    for (const Difference& d : differences) {
        const std::wstring tag(1, static_cast<wchar_t>(L'0' + static_cast<int>(d.subject)));
        keys.insert(tag + Folded(d.path));
        if (d.kind == DifferenceKind::Moved)
            keys.insert(tag + Folded(d.before));
    }
    return keys;
}

bool Touches(const std::unordered_set<std::wstring>& keys, const Difference& d)
{
    const std::wstring tag(1, static_cast<wchar_t>(L'0' + static_cast<int>(d.subject)));
    if (keys.count(tag + Folded(d.path)))
        return true;
    return d.kind == DifferenceKind::Moved && keys.count(tag + Folded(d.before));
}

} // namespace

AddressSpaceDifferences CompareAddressSpaces(const COPCServerAddressSpace& before, const COPCServerAddressSpace& after)
{
    return CComparer().Run(before, after);
}

CompareSummary SummarizeDifferences(const AddressSpaceDifferences& differences)
{
    CompareSummary summary;
    std::unordered_set<std::wstring> changed;
    std::unordered_set<std::wstring> conflicts;
    for (const Difference& d : differences) {
        const std::wstring key = std::wstring(1, static_cast<wchar_t>(L'0' + static_cast<int>(d.subject))) + Folded(d.path);
        switch (d.kind) {
        case DifferenceKind::Added: ++summary.added; break;
        case DifferenceKind::Removed: ++summary.removed; break;
        case DifferenceKind::Moved: ++summary.moved; break;
        case DifferenceKind::Changed: changed.insert(key); break;
        }
        if (d.Conflict())
            conflicts.insert(key);
    }
    summary.changed = changed.size();
    summary.conflicts = conflicts.size();
    return summary;
}

const wchar_t* DifferenceKindText(DifferenceKind kind)
{
    switch (kind) {
    case DifferenceKind::Added: return L"Added";
    case DifferenceKind::Removed: return L"Removed";
    case DifferenceKind::Changed: return L"Changed";
    case DifferenceKind::Moved: return L"Moved";
    }
    return L"";
}

const wchar_t* DifferenceSubjectText(DifferenceSubject subject)
{
    switch (subject) {
    case DifferenceSubject::Branch: return L"Branch";
    case DifferenceSubject::Item: return L"Item";
    case DifferenceSubject::Condition: return L"Condition";
    }
    return L"";
}

const wchar_t* DifferenceOriginText(DifferenceOrigin origin)
{
    switch (origin) {
    case DifferenceOrigin::Editor: return L"Editor";
    case DifferenceOrigin::Server: return L"Server";
    case DifferenceOrigin::Both: return L"Both";
    }
    return L"";
}

void MarkOrigins(AddressSpaceDifferences& saveDifferences, const AddressSpaceDifferences& editorChanges,
                 const AddressSpaceDifferences& serverChanges)
{
    const std::unordered_set<std::wstring> editor = TouchedKeys(editorChanges);
    const std::unordered_set<std::wstring> server = TouchedKeys(serverChanges);
    for (Difference& d : saveDifferences) {
        const bool byServer = Touches(server, d);
        const bool byEditor = Touches(editor, d);
        d.origin = byServer && byEditor ? DifferenceOrigin::Both
                   : byServer           ? DifferenceOrigin::Server
                                        : DifferenceOrigin::Editor;
    }
}
