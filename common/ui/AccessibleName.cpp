#include "common/ui/AccessibleName.h"

#include <commctrl.h>
#include <oleacc.h>

#include <memory>

#include "common/ui/AnnotatedAccessible.h"
#include "common/ui/ControlHook.h"

namespace CL {

namespace {

constexpr UINT_PTR kHookKind = 0x4E414D45;   // 'NAME'

// What a control says of itself, kept with the control until it is
// destroyed. The accessible objects handed out hold it weakly: a screen
// reader keeps them after the window is gone, and they then answer that
// they are disconnected.
class Annotation final : public IControlHandler, public std::enable_shared_from_this<Annotation> {
public:
    std::wstring name;
    HWND label = nullptr;
    std::wstring description;

    bool OnMessage(HWND control, UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override
    {
        // lParam is a 32-bit object ID, sign-extended or not.
        if (message != WM_GETOBJECT || static_cast<LONG>(static_cast<DWORD>(lParam)) != OBJID_CLIENT)
            return false;
        const std::weak_ptr<Annotation> self = weak_from_this();
        IAccessible* object = CAnnotatedAccessible::Create(
            control, self,
            [self] {
                const auto annotation = self.lock();
                return annotation ? annotation->Name() : std::wstring();
            },
            [self] {
                const auto annotation = self.lock();
                return annotation ? annotation->description : std::wstring();
            });
        if (!object)
            return false;
        *result = ::LresultFromObject(__uuidof(IAccessible), wParam, object);
        object->Release();
        return true;
    }

    // The label's text, or the name when there is no label or it is empty.
    std::wstring Name() const
    {
        if (!label || !::IsWindow(label))
            return name;
        const std::wstring text = LabelText();
        return text.empty() ? name : text;
    }

private:
    std::wstring LabelText() const
    {
        const int length = ::GetWindowTextLengthW(label);
        std::wstring text(static_cast<size_t>(length) + 1, L'\0');
        text.resize(static_cast<size_t>(::GetWindowTextW(label, text.data(), length + 1)));
        const bool noPrefix = (::GetWindowLongW(label, GWL_STYLE) & SS_NOPREFIX) != 0 &&
                              ClassIs(label, L"Static");
        return noPrefix ? text : CAccessibleName::DrawnText(text);
    }

    static bool ClassIs(HWND window, const wchar_t* name)
    {
        wchar_t className[64] = {};
        ::GetClassNameW(window, className, 64);
        return ::lstrcmpiW(className, name) == 0;
    }
};

// The control's annotation, made and put in front of the control on first use.
std::shared_ptr<Annotation> AnnotationOf(HWND control)
{
    if (!control)
        return nullptr;
    if (auto existing = std::static_pointer_cast<Annotation>(CControlHook::Find(control, kHookKind)))
        return existing;
    auto annotation = std::make_shared<Annotation>();
    return CControlHook::Set(control, kHookKind, annotation) ? annotation : nullptr;
}

bool IsNamedByLabel(HWND control)
{
    wchar_t name[64] = {};
    ::GetClassNameW(control, name, 64);
    for (const wchar_t* named : {L"Edit", WC_COMBOBOXW, WC_LISTVIEWW, WC_TREEVIEWW, DATETIMEPICK_CLASSW,
                                 WC_LISTBOXW})
        if (::lstrcmpiW(name, named) == 0)
            return true;
    return false;
}

// A static with text, or a check box or radio button: a control's label.
bool IsLabel(HWND window)
{
    if (::GetWindowTextLengthW(window) == 0)
        return false;
    wchar_t name[64] = {};
    ::GetClassNameW(window, name, 64);
    const LONG style = ::GetWindowLongW(window, GWL_STYLE);
    if (::lstrcmpiW(name, L"Static") == 0)
        return (style & SS_TYPEMASK) <= SS_RIGHT || (style & SS_TYPEMASK) == SS_LEFTNOWORDWRAP;
    if (::lstrcmpiW(name, L"Button") != 0)
        return false;
    const LONG type = style & BS_TYPEMASK;
    return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_3STATE || type == BS_AUTO3STATE ||
           type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}

} // namespace

void CAccessibleName::Set(HWND control, const std::wstring& name)
{
    if (const auto annotation = AnnotationOf(control)) {
        annotation->name = name;
        annotation->label = nullptr;
    }
}

void CAccessibleName::SetLabel(HWND control, HWND label, const std::wstring& whenEmpty)
{
    if (const auto annotation = AnnotationOf(control)) {
        annotation->label = label;
        annotation->name = whenEmpty;
    }
}

void CAccessibleName::SetDescription(HWND control, const std::wstring& description)
{
    if (const auto annotation = AnnotationOf(control))
        annotation->description = description;
}

void CAccessibleName::SetFromLabels(HWND window)
{
    HWND before = nullptr;
    for (HWND child = ::GetWindow(window, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        const bool named = CControlHook::Find(child, kHookKind) != nullptr;
        if (before && !named && IsNamedByLabel(child) && IsLabel(before))
            SetLabel(child, before);
        before = child;
    }
}

std::wstring CAccessibleName::DrawnText(const std::wstring& text)
{
    std::wstring drawn;
    drawn.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&' && i + 1 < text.size())
            ++i;
        drawn += text[i];
    }
    return drawn;
}

} // namespace CL
