#pragma once
// CDummyWnd: the control panel's hidden top-level window. It owns the tray
// icon and its menu and every window that the menu opens.
#include "app/MenuFlags.h"
#include "common/Window.h"

class CDummyWnd : public CL::CWindow {
public:
    static constexpr wchar_t kClassName[] = L"MorvaneGuiTrayWindow";

    explicit CDummyWnd(const CL::MenuFlags& flags);
    const CL::MenuFlags& Flags() const { return m_flags; }

protected:
    const wchar_t* ClassName() const override { return kClassName; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    LRESULT OnCreate();
    void OnDestroy();
    void OnClose();

    CL::MenuFlags m_flags;
};
