#pragma once
// CDummyWnd: the control panel's hidden top-level window. It owns the tray
// icon and its menu and every window that the menu opens. The address space
// editor, the database explorer and the options dialog are handed in as
// parts; the tray window keeps them for its whole life.
#include <functional>
#include <memory>
#include <string>

#include "app/AddressSpaceEditorPart.h"
#include "app/ChangeHistoryActions.h"
#include "app/DatabaseExplorerPart.h"
#include "app/MenuFlags.h"
#include "app/OptionsDialogPart.h"
#include "common/Handle.h"
#include "common/Window.h"

class CDummyWnd : public CL::CWindow {
public:
    // Other programs find the running control panel by this class. WM_CLOSE
    // sent to the window ends the program as "Exit" does, without its
    // question: that is how the setup closes it before replacing or removing
    // the program.
    static constexpr wchar_t kClassName[] = L"MorvaneGuiTrayWindow";
    static constexpr UINT kTrayIconId = 1234;
    static constexpr UINT kShellNoteMessage = WM_USER + 1;

    explicit CDummyWnd(const CL::MenuFlags& flags);
    ~CDummyWnd() override;
    const CL::MenuFlags& Flags() const { return m_flags; }

    void SetAddressSpaceEditor(std::unique_ptr<CL::IAddressSpaceEditor> editor);
    void SetDatabaseExplorer(std::unique_ptr<CL::IDatabaseExplorer> explorer);
    void SetOptionsDialog(std::unique_ptr<CL::IOptionsDialog> options);
    // Runs after the options dialog applied new settings (the historian is
    // configured anew from them).
    void SetSettingsAppliedHandler(std::function<void()> handler);

    // The change history over the owner window (from the editor's and the
    // explorer's menus), with its restores served by this window's editor
    // and options dialog (DummyWndChangeHistory.cpp).
    void OpenChangeHistory(HWND owner);
    // The actions the change history gets from this window.
    CL::ChangeHistoryActions HistoryActions();

    // The tray menu as a right-click shows it: menu 203 loaded, the server
    // caption set to the status asked now, the entries of cleared flags
    // removed. The tracked popup is GetSubMenu(menu, 0). Failures throw.
    CL::UniqueMenu BuildTrayMenu() const;
    // "OPC Server (Running)", "OPC Server (Stopped)", or "OPC Server" when
    // the service's state cannot be read.
    static std::wstring ServerStatusCaption();
    // The tray icon's tip: the Title setting and " OPC Server Control Panel",
    // at most 127 characters.
    static std::wstring TrayTip();
    // The icon the tray shows: the program's icon at the small icon size of
    // the system metrics (the notification area's size at the system DPI).
    HICON TrayIcon() const { return m_trayIcon.get(); }

protected:
    const wchar_t* ClassName() const override { return kClassName; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    LRESULT OnCreate();
    void OnDestroy();
    void OnClose();
    void OnShellNote(LPARAM lParam);
    void OnCommand(WORD id);
    void ShowTrayMenu();
    void OnControl();
    void OnMnDBExplorer();
    void OnMnOptions();
    // The options rule (refused while the editor is open) around a run of
    // the dialog; after new settings: the editor's reload and the handler.
    bool RunOptions(const std::function<bool()>& run);
    // Opens the editor, or raises it when open; false when it is not open
    // afterwards (the user declined the load, or it failed and was shown).
    bool ShowEditor();
    void OnMnAbout();
    void OnMnStartServer();
    void OnMnStopServer();
    void OnShutdown();
    int Ask(const wchar_t* text, const wchar_t* title);
    void Inform(const wchar_t* text, const wchar_t* title);

    std::unique_ptr<CL::IAddressSpaceEditor> m_wndMain;
    std::unique_ptr<CL::IDatabaseExplorer> m_explorer;
    std::unique_ptr<CL::IOptionsDialog> m_options;
    std::function<void()> m_settingsApplied;
    CL::MenuFlags m_flags;
    CL::UniqueIcon m_trayIcon;
};
