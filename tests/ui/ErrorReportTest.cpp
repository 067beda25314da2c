// The error report shows real message boxes; a watcher thread reads and
// answers them.
#include <gtest/gtest.h>

#include <comdef.h>
#include <oleauto.h>

#include <stdexcept>

#include "TestSupport.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"

namespace {

bool VistaOrLater() { return true; }
bool OlderThanVista() { return false; }

class ErrorReportTest : public ::testing::Test {
protected:
    void TearDown() override { CL::SetWindowsVersionProbe(nullptr); }

    template <typename Throw>
    test::MessageBoxInfo Report(Throw&& thrower)
    {
        test::MessageBoxAnswerer answerer;
        CL::RunReported(thrower);
        const auto seen = answerer.Seen();
        EXPECT_EQ(seen.size(), 1u) << "exactly one box per report";
        return seen.empty() ? test::MessageBoxInfo{} : seen.front();
    }
};

const HRESULT kAccessDenied = static_cast<HRESULT>(0x80070005ul);

} // namespace

TEST_F(ErrorReportTest, AccessDeniedOnVistaOrLaterShowsTheRunAsAdministratorBox)
{
    CL::SetWindowsVersionProbe(&VistaOrLater);
    const auto box = Report([] { throw CL::CException(kAccessDenied, L"hSCM.get()"); });
    EXPECT_EQ(box.title, L"Exception");
    EXPECT_EQ(box.text, std::wstring(L"Access denied.\n\nPlease, close the application and 'Run as administrator' "
                                     L"or contact ") + CL::kSupportEmail + L".");
}

TEST_F(ErrorReportTest, AccessDeniedOnAnOlderSystemShowsTheExceptionsOwnText)
{
    CL::SetWindowsVersionProbe(&OlderThanVista);
    const CL::CException e(kAccessDenied, L"hSCM.get()");
    const auto box = Report([&] { throw e; });
    EXPECT_EQ(box.title, L"CException");
    EXPECT_EQ(box.text, e.Text());
}

TEST_F(ErrorReportTest, TheRealVersionProbeSeesThisSystemAsVistaOrLater)
{
    const auto box = Report([] { throw CL::CException(kAccessDenied, L"x"); });
    EXPECT_EQ(box.title, L"Exception");
}

TEST_F(ErrorReportTest, OtherCExceptionShowsItsText)
{
    const CL::CException e(E_POINTER, L"snapshot.get()");
    const auto box = Report([&] { throw e; });
    EXPECT_EQ(box.title, L"CException");
    EXPECT_EQ(box.text, e.Text());
    EXPECT_NE(box.text.find(L"Source='snapshot.get()'"), std::wstring::npos);
}

TEST_F(ErrorReportTest, ComErrorShowsDescriptionSourceMessageAndCode)
{
    ICreateErrorInfo* create = nullptr;
    ASSERT_HRESULT_SUCCEEDED(::CreateErrorInfo(&create));
    create->SetDescription(const_cast<LPOLESTR>(L"The table is locked"));
    create->SetSource(const_cast<LPOLESTR>(L"Historian.Db"));
    IErrorInfo* info = nullptr;
    create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info));
    create->Release();
    const auto box = Report([&] { throw _com_error(E_FAIL, info, false); });
    EXPECT_EQ(box.title, L"_com_error");
    EXPECT_EQ(box.text, L"The table is locked(Historian.Db) " + CL::ComErrorMessage(E_FAIL) + L"(0x80004005)");
}

TEST_F(ErrorReportTest, ComErrorWithoutErrorInfoFormatsAbsentTextsAsNull)
{
    const auto box = Report([] { throw _com_error(E_OUTOFMEMORY); });
    EXPECT_EQ(box.title, L"_com_error");
    EXPECT_EQ(box.text, L"(null)((null)) " + CL::ComErrorMessage(E_OUTOFMEMORY) + L"(0x8007000E)");
}

TEST_F(ErrorReportTest, HresultThrownAsLongShowsItInHex)
{
    const auto box = Report([] { throw static_cast<long>(0x80004005ul); });
    EXPECT_EQ(box.title, L"Error HRESULT");
    EXPECT_EQ(box.text, L"0x80004005");
}

TEST_F(ErrorReportTest, StdExceptionShowsWhat)
{
    const auto box = Report([] { throw std::runtime_error("disk full"); });
    EXPECT_EQ(box.title, L"std::exception");
    EXPECT_EQ(box.text, L"disk full");
}

TEST_F(ErrorReportTest, AnythingElseIsAnUnexpectedException)
{
    const auto box = Report([] { throw 42; });
    EXPECT_EQ(box.title, L"...");
    EXPECT_EQ(box.text, L"Unexpected exception");
}

TEST_F(ErrorReportTest, BoxHasNoOwnerAndOnlyAnOkButton)
{
    test::MessageBoxInfo box;
    HWND okButton = nullptr, owner = reinterpret_cast<HWND>(1), cancel = nullptr;
    std::thread watcher([&] {
        box = test::WaitForMessageBox(0, std::chrono::seconds(10));
        if (box.hwnd) {
            owner = ::GetWindow(box.hwnd, GW_OWNER);
            okButton = ::GetDlgItem(box.hwnd, IDOK);
            cancel = ::GetDlgItem(box.hwnd, IDCANCEL);
            test::ClickButton(box.hwnd, IDOK);
        }
    });
    CL::RunReported([] { throw CL::CException(E_FAIL, L"x"); });
    watcher.join();
    ASSERT_NE(box.hwnd, nullptr);
    EXPECT_EQ(owner, nullptr);
    EXPECT_NE(okButton, nullptr);
    EXPECT_EQ(cancel, nullptr);
}

TEST_F(ErrorReportTest, BoxShowsTheErrorIcon)
{
    HICON shown = nullptr;
    std::thread watcher([&] {
        const test::MessageBoxInfo box = test::WaitForMessageBox(0, std::chrono::seconds(10));
        if (!box.hwnd)
            return;
        // The icon's static control: id 20 on Windows, 0x440 in Wine.
        for (int id : {20, 0x440}) {
            if (HWND icon = ::GetDlgItem(box.hwnd, id)) {
                shown = reinterpret_cast<HICON>(::SendMessageW(icon, STM_GETICON, 0, 0));
                break;
            }
        }
        test::ClickButton(box.hwnd, IDOK);
    });
    CL::RunReported([] { throw std::runtime_error("x"); });
    watcher.join();
    EXPECT_NE(shown, nullptr);
    EXPECT_EQ(shown, ::LoadIconW(nullptr, IDI_HAND)) << "the error icon";
    EXPECT_NE(shown, ::LoadIconW(nullptr, IDI_ASTERISK));
}

TEST(ComErrorMessage, SystemTextLosesItsTrailingLineBreak)
{
    const std::wstring system = CL::SystemMessage(E_FAIL);
    ASSERT_GE(system.size(), 2u);
    ASSERT_EQ(system.back(), L'\n');
    std::wstring expected = system.substr(0, system.size() - 1);
    if (!expected.empty() && expected.back() == L'\r')
        expected.pop_back();
    EXPECT_EQ(CL::ComErrorMessage(E_FAIL), expected);
}

TEST(ComErrorMessage, DispatchRangeWithoutSystemTextIsAnIDispatchError)
{
    const HRESULT code = static_cast<HRESULT>(0x8004F123ul);
    ASSERT_TRUE(CL::SystemMessage(code).empty());
    EXPECT_EQ(CL::ComErrorMessage(code), L"IDispatch error #61219");   // 0xF123 - 0x200
}

TEST(ComErrorMessage, LowWord0200IsNotAnIDispatchError)
{
    const HRESULT code = static_cast<HRESULT>(0x80040200ul);
    ASSERT_TRUE(CL::SystemMessage(code).empty());
    EXPECT_EQ(CL::ComErrorMessage(code), L"Unknown error 0x80040200");
}

TEST(ComErrorMessage, CodeOutsideTheDispatchRangeWithoutTextIsUnknown)
{
    const HRESULT code = static_cast<HRESULT>(0xA0DE1234ul);
    ASSERT_TRUE(CL::SystemMessage(code).empty());
    EXPECT_EQ(CL::ComErrorMessage(code), L"Unknown error 0xA0DE1234");
}
