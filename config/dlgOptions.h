#pragma once
// CdlgOptions: the modal "Options" dialog in which the administrator edits
// the server's settings. It works on its own copy of the settings record;
// OK checks the input, refuses class identifiers that other software has
// registered, asks whether the server may be restarted, and then applies the
// new settings (CSettingsApply: service stopped, server unregistered, backup
// written, settings saved, server registered, service started again).
#include <optional>
#include <string>

#include "common/Window.h"
#include "config/DbRetention.h"
#include "config/ServerControlPart.h"
#include "config/Settings.h"

class CdlgOptions : public CL::CDialog {
public:
    // installationFolder (ending with a backslash) holds Morvane.exe, the
    // settings file and its backups; by default the running program's folder.
    explicit CdlgOptions(CL::IServerControl& server, std::wstring installationFolder = DefaultFolder());

    INT_PTR DoModal(HWND owner);
    // Whether OK applied new settings, and where the previous ones were saved.
    bool Applied() const { return m_applied; }
    const std::wstring& BackupPath() const { return m_backupPath; }

    static std::wstring DefaultFolder();
    // The values the dialog opens with instead of the settings in force
    // (a backup being restored); call before DoModal.
    void SetInitialValues(const CSettings& values) { m_initial = values; }

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    // A value the dialog cannot take: the control to fix and the message.
    struct InputProblem {
        int control;
        std::wstring text;
    };
    // One of the DA, HDA and AE rows: the check box, the CLSID edit and its
    // "New" button, and the flag and key they stand for.
    struct ServerRow {
        int check;
        int edit;
        int newButton;
        bool CdlgOptions::*enabled;
        GUID CSettings::*clsid;
        const wchar_t* field;
    };
    static const ServerRow kServerRows[3];

    void Init();
    void OnBnClickedRbtInternaldb();
    void OnClickedDbOptions();
    void OnBnClickedEnableDA();
    void OnBnClickedEnableHDA();
    void OnBnClickedEnableAE();
    void OnBnClickedEnableXmlDa();
    void OnBnClickedEnableUa();
    void OnClickedNewDaClsid();
    void OnClickedNewHdaClsid();
    void OnClickedNewAeClsid();
    void OnClickedNewCcmClsid();
    void OnClickedDefaults();
    void OnClickedOK();
    void OnClickedCancel();

    // The dialog copy into the controls, and the enabling rules.
    void ShowValues();
    void EnableDependentControls();
    // The controls into `values` (a copy of the dialog's), or the first
    // value in screen order that cannot be right.
    std::optional<InputProblem> TakeValues(CSettings& values);
    std::optional<InputProblem> TakeServerClsids(CSettings& values);
    std::optional<InputProblem> TakePorts(CSettings& values);
    // The first changed class identifier (HDA, AE, DA, CCM) that is
    // registered on this machine.
    std::optional<InputProblem> FindClsidInUse(const CSettings& values) const;
    void Refuse(const InputProblem& problem);
    void FocusControl(int id);
    void SetNewClsid(int edit);
    void Apply(const CSettings& values);

    CL::IServerControl& m_server;
    std::wstring m_folder;
    CSettings m_values;
    std::optional<CSettings> m_initial;
    CDbRetention m_retention;
    bool m_daEnabled = true;
    bool m_hdaEnabled = true;
    bool m_aeEnabled = true;
    bool m_applied = false;
    std::wstring m_backupPath;
};
