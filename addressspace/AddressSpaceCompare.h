#pragma once
// The compare of two address spaces: what turns one (before) into the other
// (after), as a list of differences that the review window, the journal and
// the history window all read. No window code.
//
// Names are compared as the model compares them, without regard to letter
// case. Branches and items are matched by path; what is left over on both
// sides is matched by content, so that a branch or item renamed or moved
// with its content unchanged is one "moved" difference instead of a removal
// and an addition. A moved branch is one difference for the branch and its
// whole content. Items are compared field by field (data type, value,
// access, scan rate, archive; the value's quality and time are run-time
// state and not compared). AE conditions are matched by source and
// condition name and compared by category, enabled, definition, severity and
// description (active, acked, quality, the times, the acknowledger and the
// comment are the server's run-time state).
#include <cstddef>
#include <string>
#include <vector>

class COPCServerAddressSpace;

enum class DifferenceKind { Added, Removed, Changed, Moved };
enum class DifferenceSubject { Branch, Item, Condition };
// Which side made the change, for a compare of the editor with the server:
// the editor since the address space was loaded, the server since then, or
// both (a conflict: Save overrides the server's change).
enum class DifferenceOrigin { Editor, Server, Both };

struct AddressSpaceDifference {
    DifferenceKind kind = DifferenceKind::Changed;
    DifferenceSubject subject = DifferenceSubject::Item;
    DifferenceOrigin origin = DifferenceOrigin::Editor;
    // Branches and items: the dot-joined path from below the root
    // ("Plant.Line1.Speed"), where the object is after the change, or was
    // before it when it was removed. Conditions: "source / conditionName".
    std::wstring path;
    // Changed: the field's name ("Data type", "Value", "Access", "Scan
    // rate", "Archive"; for conditions "Category", "Enabled", "Definition",
    // "Severity", "Description"). Moved: "Path". Added, removed: empty.
    std::wstring field;
    // Changed: the field's text before and after. Moved: the path before and
    // after. Added: empty before, the object in short after; removed the
    // other way round.
    std::wstring before;
    std::wstring after;
    // Items: the ID under which the historian archived its values before
    // the change (the path before); empty for an added item. Branches that
    // moved or were removed: their path before, the start of the IDs of
    // every item under them. Empty for conditions.
    std::wstring itemId;
    // The same places as names, for finding the objects again without
    // splitting paths (a name may hold a "."): the branch names from below
    // the root and the object's own name, where it is after the change (or
    // was, when removed); for conditions {source, conditionName}.
    std::vector<std::wstring> location;
    // Moved: where it was before, as names. Empty otherwise.
    std::vector<std::wstring> oldLocation;

    bool Conflict() const noexcept { return origin == DifferenceOrigin::Both; }
};

using AddressSpaceDifferences = std::vector<AddressSpaceDifference>;

// Counts for a journal line or a summary: added, removed and moved count the
// differences of that kind (a moved branch is one), changed counts the
// branches, items and conditions with at least one changed field, conflicts
// the objects changed on both sides.
struct CompareSummary {
    size_t added = 0;
    size_t removed = 0;
    size_t changed = 0;
    size_t moved = 0;
    size_t conflicts = 0;

    size_t Total() const noexcept { return added + removed + changed + moved; }
};

// What turns `before` into `after`: every branch and item in tree order of
// `after` (removed ones where they stood in `before`), then the conditions.
// Removed and added branches list their items as well (each item's values
// are affected); a moved branch does not.
AddressSpaceDifferences CompareAddressSpaces(const COPCServerAddressSpace& before,
                                             const COPCServerAddressSpace& after);

CompareSummary SummarizeDifferences(const AddressSpaceDifferences& differences);

// The text of a kind, a subject and an origin as the review shows them
// ("Added", "Removed", "Changed", "Moved"; "Branch", "Item", "Condition";
// "Editor", "Server", "Both").
const wchar_t* DifferenceKindText(DifferenceKind kind);
const wchar_t* DifferenceSubjectText(DifferenceSubject subject);
const wchar_t* DifferenceOriginText(DifferenceOrigin origin);

// For a compare of the server now (before) with the editor (after): sets the
// origin of each difference from the editor's own changes (baseline ->
// editor) and the server's (baseline -> server now). A difference whose
// object (by path, either path of a move) appears only among the server's
// changes is the server's; among both, a conflict; else the editor's.
void MarkOrigins(AddressSpaceDifferences& saveDifferences, const AddressSpaceDifferences& editorChanges,
                 const AddressSpaceDifferences& serverChanges);
