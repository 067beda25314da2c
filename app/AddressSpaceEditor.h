#pragma once
// CAddressSpaceEditor: the real address space editor as the tray window sees
// it (CL::IAddressSpaceEditor). It owns the editor frame (CMainFrame) with
// its document, loads the server's address space before the window opens,
// gives the frame's accelerators to the program's message loop, and connects
// the frame's "About" and historical data commands to the app's windows.
#include <memory>

#include "addressspace/ChangeRecorder.h"
#include "addressspace/MainFrm.h"
#include "app/AddressSpaceEditorPart.h"
#include "app/HistoricalDataHook.h"
#include "app/MessageLoop.h"

namespace CL {

class CHistorian;

class CAddressSpaceEditor : public IAddressSpaceEditor, private IMessageFilter {
public:
    explicit CAddressSpaceEditor(CHistorian& historian, CAddressSpaceExchange exchange = InstalledServerExchange());

    // The exchange with the server of this installation: the service named
    // by the ServiceName setting at each call, the exchange file of the
    // program's folder.
    static CAddressSpaceExchange InstalledServerExchange();
    ~CAddressSpaceEditor() override;

    CMainFrame& Frame() { return m_frame; }
    // The versions and journal entries of this editor's Saves.
    CChangeRecorder& Recorder() { return *m_recorder; }
    // Replaces what opens the historical data window of an item.
    void SetHistoricalDataOpener(HistoricalDataOpener opener);

    HWND Window() const override;
    bool PrepareOpen() override;
    bool Create() override;
    void ReloadFromFile() override;
    void RestoreVersion(const std::wstring& file) override;
    void CompareWithVersion(const std::wstring& file) override;
    void CompareVersionWithServer(HWND owner, const std::wstring& file) override;
    void CompareVersions(HWND owner, const std::wstring& older, const std::wstring& newer) override;

private:
    bool PreTranslateMessage(MSG& msg) override;

    CHistorian& m_historian;
    CMainFrame m_frame;
    std::shared_ptr<CChangeRecorder> m_recorder;
    CMessageLoop* m_loop = nullptr;
};

} // namespace CL
