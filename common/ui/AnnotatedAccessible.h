#pragma once
// CAnnotatedAccessible: the accessible object the system makes for a window
// (CreateStdAccessibleObject), with the window's own name and description
// in place of the ones the system guesses. Everything else (role, state,
// value, children, navigation) is the system's object answering.
//
// A screen reader may keep the object after the window is gone. The object
// holds what it reads from (the owner) weakly: once the owner is released
// or the window destroyed, every call answers RPC_E_DISCONNECTED, the
// answer that tells a client the object is gone.
#include <windows.h>
#include <oleacc.h>

#include <functional>
#include <memory>
#include <string>

#include "common/ComPtr.h"

namespace CL {

class CAnnotatedAccessible final : public IAccessible, public IOleWindow {
public:
    // Texts asked for when a client reads them; an empty text leaves the
    // system's answer.
    using TextSource = std::function<std::wstring()>;

    // The object for the window's client area, or nullptr when the system
    // has none; the reference is the caller's. The texts are read only
    // while the owner lives.
    static IAccessible* Create(HWND window, std::weak_ptr<const void> owner, TextSource name, TextSource description);

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IDispatch
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override;
    STDMETHODIMP GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                        EXCEPINFO* exception, UINT* argError) override;

    // IAccessible: the name and description of the window itself are its own
    STDMETHODIMP get_accName(VARIANT child, BSTR* name) override;
    STDMETHODIMP get_accDescription(VARIANT child, BSTR* description) override;
    // ... and the rest is the system's object.
    STDMETHODIMP get_accParent(IDispatch** parent) override;
    STDMETHODIMP get_accChildCount(long* count) override;
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** dispatch) override;
    STDMETHODIMP get_accValue(VARIANT child, BSTR* value) override;
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* role) override;
    STDMETHODIMP get_accState(VARIANT child, VARIANT* state) override;
    STDMETHODIMP get_accHelp(VARIANT child, BSTR* help) override;
    STDMETHODIMP get_accHelpTopic(BSTR* file, VARIANT child, long* topic) override;
    STDMETHODIMP get_accKeyboardShortcut(VARIANT child, BSTR* shortcut) override;
    STDMETHODIMP get_accFocus(VARIANT* child) override;
    STDMETHODIMP get_accSelection(VARIANT* children) override;
    STDMETHODIMP get_accDefaultAction(VARIANT child, BSTR* action) override;
    STDMETHODIMP accSelect(long flags, VARIANT child) override;
    STDMETHODIMP accLocation(long* left, long* top, long* width, long* height, VARIANT child) override;
    STDMETHODIMP accNavigate(long direction, VARIANT start, VARIANT* end) override;
    STDMETHODIMP accHitTest(long left, long top, VARIANT* child) override;
    STDMETHODIMP accDoDefaultAction(VARIANT child) override;
    STDMETHODIMP put_accName(VARIANT child, BSTR name) override;
    STDMETHODIMP put_accValue(VARIANT child, BSTR value) override;

    // IOleWindow: the window (WindowFromAccessibleObject asks for it)
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL enter) override;

private:
    CAnnotatedAccessible(HWND window, std::weak_ptr<const void> owner, ComPtr<IAccessible> system, TextSource name,
                         TextSource description);
    ~CAnnotatedAccessible() = default;

    // The window or the owner of the texts is gone.
    bool Gone() const;
    static HRESULT Disconnected(BSTR* text);
    static bool IsSelf(const VARIANT& child);
    // The source's text as a new BSTR; S_FALSE when it is empty.
    static HRESULT Answer(const TextSource& source, BSTR* text);

    LONG m_refCount = 1;
    HWND m_window;
    std::weak_ptr<const void> m_owner;
    ComPtr<IAccessible> m_system;
    TextSource m_name;
    TextSource m_description;
};

} // namespace CL
