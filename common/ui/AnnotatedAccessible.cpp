#include "common/ui/AnnotatedAccessible.h"

#include <utility>

namespace CL {

IAccessible* CAnnotatedAccessible::Create(HWND window, std::weak_ptr<const void> owner, TextSource name,
                                          TextSource description)
{
    ComPtr<IAccessible> system;
    // __uuidof: the IID_IAccessible of MinGW's static oleacc library is not
    // the interface's ID.
    if (FAILED(::CreateStdAccessibleObject(window, OBJID_CLIENT, __uuidof(IAccessible),
                                           reinterpret_cast<void**>(system.ReleaseAndGetAddressOf()))) ||
        !system)
        return nullptr;
    return new CAnnotatedAccessible(window, std::move(owner), std::move(system), std::move(name),
                                    std::move(description));
}

CAnnotatedAccessible::CAnnotatedAccessible(HWND window, std::weak_ptr<const void> owner, ComPtr<IAccessible> system,
                                           TextSource name, TextSource description)
    : m_window(window),
      m_owner(std::move(owner)),
      m_system(std::move(system)),
      m_name(std::move(name)),
      m_description(std::move(description))
{
}

bool CAnnotatedAccessible::Gone() const
{
    return m_owner.expired() || !::IsWindow(m_window);
}

HRESULT CAnnotatedAccessible::Disconnected(BSTR* text)
{
    if (text)
        *text = nullptr;
    return RPC_E_DISCONNECTED;
}

bool CAnnotatedAccessible::IsSelf(const VARIANT& child)
{
    return child.vt == VT_I4 && child.lVal == CHILDID_SELF;
}

HRESULT CAnnotatedAccessible::Answer(const TextSource& source, BSTR* text)
{
    if (!text)
        return E_POINTER;
    *text = nullptr;
    const std::wstring value = source ? source() : std::wstring();
    if (value.empty())
        return S_FALSE;
    *text = ::SysAllocStringLen(value.data(), static_cast<UINT>(value.size()));
    return *text ? S_OK : E_OUTOFMEMORY;
}

// --- IUnknown ------------------------------------------------------------------

STDMETHODIMP CAnnotatedAccessible::QueryInterface(REFIID riid, void** object)
{
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (riid == __uuidof(IUnknown) || riid == __uuidof(IDispatch) || riid == __uuidof(IAccessible))
        *object = static_cast<IAccessible*>(this);
    else if (riid == __uuidof(IOleWindow))
        *object = static_cast<IOleWindow*>(this);
    else
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CAnnotatedAccessible::AddRef()
{
    return static_cast<ULONG>(::InterlockedIncrement(&m_refCount));
}

STDMETHODIMP_(ULONG) CAnnotatedAccessible::Release()
{
    const LONG count = ::InterlockedDecrement(&m_refCount);
    if (count == 0)
        delete this;
    return static_cast<ULONG>(count);
}

// --- IDispatch -----------------------------------------------------------------

STDMETHODIMP CAnnotatedAccessible::GetTypeInfoCount(UINT* count)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->GetTypeInfoCount(count);
}

STDMETHODIMP CAnnotatedAccessible::GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->GetTypeInfo(index, lcid, info);
}

STDMETHODIMP CAnnotatedAccessible::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->GetIDsOfNames(riid, names, count, lcid, ids);
}

STDMETHODIMP CAnnotatedAccessible::Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                          VARIANT* result, EXCEPINFO* exception, UINT* argError)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->Invoke(id, riid, lcid, flags, params, result, exception, argError);
}

// --- IAccessible: own texts ----------------------------------------------------

STDMETHODIMP CAnnotatedAccessible::get_accName(VARIANT child, BSTR* name)
{
    if (Gone())
        return Disconnected(name);
    if (IsSelf(child)) {
        const HRESULT own = Answer(m_name, name);
        if (own != S_FALSE)
            return own;
    }
    return m_system->get_accName(child, name);
}

STDMETHODIMP CAnnotatedAccessible::get_accDescription(VARIANT child, BSTR* description)
{
    if (Gone())
        return Disconnected(description);
    if (IsSelf(child)) {
        const HRESULT own = Answer(m_description, description);
        if (own != S_FALSE)
            return own;
    }
    return m_system->get_accDescription(child, description);
}

// --- IAccessible: the system's answers -----------------------------------------

STDMETHODIMP CAnnotatedAccessible::get_accParent(IDispatch** parent)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accParent(parent);
}

STDMETHODIMP CAnnotatedAccessible::get_accChildCount(long* count)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accChildCount(count);
}

STDMETHODIMP CAnnotatedAccessible::get_accChild(VARIANT child, IDispatch** dispatch)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accChild(child, dispatch);
}

STDMETHODIMP CAnnotatedAccessible::get_accValue(VARIANT child, BSTR* value)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accValue(child, value);
}

STDMETHODIMP CAnnotatedAccessible::get_accRole(VARIANT child, VARIANT* role)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accRole(child, role);
}

STDMETHODIMP CAnnotatedAccessible::get_accState(VARIANT child, VARIANT* state)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accState(child, state);
}

STDMETHODIMP CAnnotatedAccessible::get_accHelp(VARIANT child, BSTR* help)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accHelp(child, help);
}

STDMETHODIMP CAnnotatedAccessible::get_accHelpTopic(BSTR* file, VARIANT child, long* topic)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accHelpTopic(file, child, topic);
}

STDMETHODIMP CAnnotatedAccessible::get_accKeyboardShortcut(VARIANT child, BSTR* shortcut)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accKeyboardShortcut(child, shortcut);
}

STDMETHODIMP CAnnotatedAccessible::get_accFocus(VARIANT* child)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accFocus(child);
}

STDMETHODIMP CAnnotatedAccessible::get_accSelection(VARIANT* children)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accSelection(children);
}

STDMETHODIMP CAnnotatedAccessible::get_accDefaultAction(VARIANT child, BSTR* action)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->get_accDefaultAction(child, action);
}

STDMETHODIMP CAnnotatedAccessible::accSelect(long flags, VARIANT child)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->accSelect(flags, child);
}

STDMETHODIMP CAnnotatedAccessible::accLocation(long* left, long* top, long* width, long* height, VARIANT child)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->accLocation(left, top, width, height, child);
}

STDMETHODIMP CAnnotatedAccessible::accNavigate(long direction, VARIANT start, VARIANT* end)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->accNavigate(direction, start, end);
}

STDMETHODIMP CAnnotatedAccessible::accHitTest(long left, long top, VARIANT* child)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->accHitTest(left, top, child);
}

STDMETHODIMP CAnnotatedAccessible::accDoDefaultAction(VARIANT child)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->accDoDefaultAction(child);
}

STDMETHODIMP CAnnotatedAccessible::put_accName(VARIANT child, BSTR name)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->put_accName(child, name);
}

STDMETHODIMP CAnnotatedAccessible::put_accValue(VARIANT child, BSTR value)
{
    if (Gone())
        return RPC_E_DISCONNECTED;
    return m_system->put_accValue(child, value);
}

// --- IOleWindow ----------------------------------------------------------------

STDMETHODIMP CAnnotatedAccessible::GetWindow(HWND* window)
{
    if (!window)
        return E_POINTER;
    *window = nullptr;
    if (Gone())
        return RPC_E_DISCONNECTED;
    *window = m_window;
    return S_OK;
}

STDMETHODIMP CAnnotatedAccessible::ContextSensitiveHelp(BOOL)
{
    return E_NOTIMPL;
}

} // namespace CL
