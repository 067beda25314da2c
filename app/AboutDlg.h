#pragma once
// CAboutDlg: the modal About box of the tray menu. It shows the Title-based
// heading and the product version from the executable's own version
// resource.
#include <string>

#include "common/Window.h"

class CAboutDlg : public CL::CDialog {
public:
    INT_PTR DoModal(HWND owner);

    // Product name and version from the running executable's version
    // resource; strings whose value is missing stay unchanged. Returns true.
    static bool GetProductInfo(std::wstring& name, std::wstring& version);
    // The same from any executable file.
    static bool GetProductInfoFrom(const std::wstring& path, std::wstring& name, std::wstring& version);

    // "<Title> OPC Server Control Panel" and "Version: <product version>".
    static std::wstring HeadingText();
    static std::wstring VersionText(const std::wstring& version);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    void OnCloseCmd(WORD id);
};
