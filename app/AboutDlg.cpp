#include "app/AboutDlg.h"

#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "res/resource.h"

namespace {

// One string value of the version resource's string table for this
// language and code page; false when it is missing.
bool QueryString(std::vector<BYTE>& block, WORD language, WORD codePage, const wchar_t* key, std::wstring& value)
{
    const std::wstring path = CL::Format(L"\\StringFileInfo\\%04x%04x\\%ls", language, codePage, key);
    void* text = nullptr;
    UINT length = 0;
    if (!::VerQueryValueW(block.data(), path.c_str(), &text, &length) || !text)
        return false;
    value = static_cast<const wchar_t*>(text);
    return true;
}

} // namespace

INT_PTR CAboutDlg::DoModal(HWND owner)
{
    return CL::CDialog::DoModal(owner, IDD_ABOUTBOX);
}

bool CAboutDlg::GetProductInfo(std::wstring& name, std::wstring& version)
{
    wchar_t path[260] = {};
    if (!::GetModuleFileNameW(nullptr, path, 260))
        return true;
    return GetProductInfoFrom(path, name, version);
}

bool CAboutDlg::GetProductInfoFrom(const std::wstring& path, std::wstring& name, std::wstring& version)
{
    DWORD handle = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &handle);
    if (size == 0)
        return true;   // no version resource
    std::vector<BYTE> block(size + 1);
    if (!::GetFileVersionInfoW(path.c_str(), 0, size, block.data()))
        return true;

    void* translation = nullptr;
    UINT length = 0;
    if (!::VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation", &translation, &length) || length < 4)
        return true;
    const WORD* pair = static_cast<const WORD*>(translation);
    QueryString(block, pair[0], pair[1], L"ProductName", name);
    QueryString(block, pair[0], pair[1], L"ProductVersion", version);
    return true;
}

std::wstring CAboutDlg::HeadingText()
{
    return g_Settings.Title + L" OPC Server Control Panel";
}

std::wstring CAboutDlg::VersionText(const std::wstring& version)
{
    return L"Version: " + version;
}

BOOL CAboutDlg::OnInitDialog()
{
    Log(3, "CAboutDlg::OnInitDialog [AboutDlg, 29]");
    CL::RunReported([this] {
        const HICON icon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
        std::wstring name;
        std::wstring version;
        GetProductInfo(name, version);
        ::SetDlgItemTextW(Hwnd(), IDC_ABOUT_TITLE, HeadingText().c_str());
        ::SetDlgItemTextW(Hwnd(), IDC_ABOUT_VERSION, VersionText(version).c_str());
    });
    return TRUE;
}

bool CAboutDlg::OnCommand(WORD id, WORD /*code*/, HWND /*control*/)
{
    if (id == IDOK || id == IDCANCEL) {
        OnCloseCmd(id);
        return true;
    }
    return false;
}

void CAboutDlg::OnCloseCmd(WORD id)
{
    Log(3, "CAboutDlg::OnCloseCmd [AboutDlg, 59]");
    CL::RunReported([this, id] { EndDialog(id); });
}
