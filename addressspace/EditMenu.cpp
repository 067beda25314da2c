#include "addressspace/EditMenu.h"

#include "res/resource.h"

namespace {

// A name in a menu text shows its '&' as it is, not as a mnemonic.
std::wstring Escaped(const std::wstring& text)
{
    std::wstring escaped;
    escaped.reserve(text.size());
    for (wchar_t c : text) {
        if (c == L'&')
            escaped += L'&';
        escaped += c;
    }
    return escaped;
}

std::wstring EntryText(const wchar_t* verb, const std::wstring& description, const wchar_t* key)
{
    std::wstring text = verb;
    if (!description.empty())
        text += L" " + Escaped(description);
    return text + L"\t" + key;
}

void SetEntry(HMENU menu, UINT id, const std::wstring& text, bool enabled)
{
    if (::GetMenuState(menu, id, MF_BYCOMMAND) == static_cast<UINT>(-1))
        return;   // not this menu's entry
    ::ModifyMenuW(menu, id, MF_BYCOMMAND | MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED), id, text.c_str());
}

} // namespace

std::wstring CEditMenu::UndoText(const std::wstring& description)
{
    return EntryText(L"&Undo", description, L"Ctrl+Z");
}

std::wstring CEditMenu::RedoText(const std::wstring& description)
{
    return EntryText(L"&Redo", description, L"Ctrl+Y");
}

void CEditMenu::Update(HMENU menu, const CEditHistory& history)
{
    SetEntry(menu, ID_AS_EDIT_UNDO, UndoText(history.UndoDescription()), history.CanUndo());
    SetEntry(menu, ID_AS_EDIT_REDO, RedoText(history.RedoDescription()), history.CanRedo());
}
