// A failed settings change that the administrator abandons (closes the
// dialog) leaves its backup of the settings in force before it. A retry of
// that change (the same settings) keeps that backup; any other change later
// in the session backs up the settings file it replaces, as on disk then.
#include <gtest/gtest.h>
#include <windows.h>

#include <memory>

#include "OptionsTestSupport.h"
#include "common/Exception.h"
#include "config/Settings.h"
#include "config/dlgOptions.h"
#include "res/resource.h"
#include "support/TestSupport.h"

namespace {

constexpr wchar_t kRestartQuestion[] =
    L"To apply new options the OPC server must be restarted (and all the OPC clients will be "
    L"disconnected).\r\n\r\nDo you want to continue?";

class OptionsApplyRetry : public testing::Test {
protected:
    void SetUp() override
    {
        g_Settings = CSettings();
        g_Settings.Title = L"Before";
        SaveSettingsTo(SettingsFile(), g_Settings);
    }
    void TearDown() override
    {
        dialog.reset();
        g_Settings = CSettings();
    }

    std::wstring SettingsFile() const { return folder.File(CL::kSettingsFileName); }
    std::wstring Exe() const { return L"\"" + folder.File(L"Morvane.exe") + L"\""; }
    static std::wstring TitleIn(const std::wstring& path)
    {
        CSettings settings;
        LoadSettingsFrom(path, settings);
        return settings.Title;
    }

    // A new dialog (the previous one abandoned) with this title; OK, Yes.
    std::vector<test::MessageBoxInfo> ChangeTitle(const wchar_t* title)
    {
        dialog = std::make_unique<CdlgOptions>(server, folder.Path());
        EXPECT_NE(dialog->Create(nullptr, IDD_OPTIONS), nullptr);
        test::SetItemText(*dialog, IDC_ED_TITLE, title);
        test::MessageBoxAnswerer answerer(
            [](const test::MessageBoxInfo& box) { return box.text == kRestartQuestion ? IDYES : IDOK; });
        test::Click(*dialog, IDOK);
        return answerer.Seen();
    }
    void FailOnRegister()
    {
        server.onCall = [this](const std::wstring& call) {
            if (call == L"run " + Exe() + L" /i")
                throw CL::CException(E_FAIL, L"test");
        };
    }

    test::ComApartment com;
    test::TempDir folder;
    test::FakeServerControl server{folder.Path()};
    std::unique_ptr<CdlgOptions> dialog;
};

} // namespace

// The failed change saved "After" before it failed: the next, other change
// replaces that file and backs it up, not the settings before the failure.
TEST_F(OptionsApplyRetry, AnotherChangeAfterAnAbandonedFailureBacksUpTheFileItReplaces)
{
    FailOnRegister();
    ChangeTitle(L"After");
    ASSERT_FALSE(dialog->Applied());
    const std::vector<std::wstring> first = test::BackupFiles(folder.Path());
    ASSERT_EQ(first.size(), 1u);
    ASSERT_EQ(TitleIn(SettingsFile()), L"After");

    server.onCall = nullptr;
    ::Sleep(1100);   // another second, another backup name
    ChangeTitle(L"Third");
    ASSERT_TRUE(dialog->Applied());
    EXPECT_NE(dialog->BackupPath(), first[0]);
    EXPECT_EQ(test::BackupFiles(folder.Path()).size(), 2u);
    EXPECT_EQ(TitleIn(dialog->BackupPath()), L"After") << "the file the change replaced";
    EXPECT_EQ(TitleIn(first[0]), L"Before");
    EXPECT_EQ(TitleIn(SettingsFile()), L"Third");
}

// The failed change could not save its file ("Before" stays on disk while
// the record holds "After"): the other change backs up what is on disk.
TEST_F(OptionsApplyRetry, AnotherChangeAfterAFailedSaveBacksUpWhatIsOnDisk)
{
    server.onCall = [this](const std::wstring& call) {
        if (call == L"run " + Exe() + L" /u" && ::DeleteFileW(SettingsFile().c_str()))
            ::CreateDirectoryW(SettingsFile().c_str(), nullptr);
    };
    ChangeTitle(L"After");
    ASSERT_FALSE(dialog->Applied());
    ASSERT_EQ(g_Settings.Title, L"After");
    const std::vector<std::wstring> first = test::BackupFiles(folder.Path());
    ASSERT_EQ(first.size(), 1u);
    ::RemoveDirectoryW(SettingsFile().c_str());
    g_Settings.Title = L"Before";   // what an administrator restored meanwhile
    SaveSettingsTo(SettingsFile(), g_Settings);
    g_Settings.Title = L"After";

    server.onCall = nullptr;
    ::Sleep(1100);
    ChangeTitle(L"Third");
    ASSERT_TRUE(dialog->Applied());
    EXPECT_NE(dialog->BackupPath(), first[0]);
    EXPECT_EQ(TitleIn(dialog->BackupPath()), L"Before");
}

// The same change made again in a new dialog is a retry: the backup of the
// settings in force before the first attempt stays the one named.
TEST_F(OptionsApplyRetry, TheSameChangeMadeAgainKeepsTheFirstBackup)
{
    FailOnRegister();
    ChangeTitle(L"After");
    const std::vector<std::wstring> first = test::BackupFiles(folder.Path());
    ASSERT_EQ(first.size(), 1u);
    server.onCall = nullptr;
    ::Sleep(1100);
    ChangeTitle(L"After");
    ASSERT_TRUE(dialog->Applied());
    EXPECT_EQ(dialog->BackupPath(), first[0]);
    EXPECT_EQ(test::BackupFiles(folder.Path()), first);
    EXPECT_EQ(TitleIn(first[0]), L"Before");
}
