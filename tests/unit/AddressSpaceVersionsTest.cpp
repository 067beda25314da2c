// The kept versions of the address space: names from the UTC time, a second
// version of one second numbered, newest first, the retention rule, and the
// control panel's own retention setting; then the change recorder over the
// exchange with a stopped server: the loaded address space kept before the
// first Save, each Save's address space kept, a change made elsewhere kept
// and named, and one journal entry per Save.
#include <gtest/gtest.h>

#include <string>

#include "addressspace/AddressSpaceExchange.h"
#include "addressspace/AddressSpaceVersions.h"
#include "addressspace/ChangeRecorder.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "addressspace/VersionRetention.h"
#include "addressspace/OPCItem.h"
#include "common/Text.h"
#include "common/ChangeJournal.h"
#include "common/FileBytes.h"
#include "common/RegistryKey.h"
#include "support/ComApartment.h"
#include "support/TestSupport.h"

namespace {

SYSTEMTIME At(WORD hour, WORD minute, WORD second)
{
    SYSTEMTIME time = {};
    time.wYear = 2026;
    time.wMonth = 11;
    time.wDay = 23;
    time.wHour = hour;
    time.wMinute = minute;
    time.wSecond = second;
    return time;
}

std::wstring NameOf(const std::wstring& path)
{
    return path.substr(path.find_last_of(L'\\') + 1);
}

// One key per test process: CTest runs tests of other processes at the same
// time, and a key they shared would let one test's setting reach another.
const std::wstring kRetentionKey = L"Software\\MorvaneTests\\VersionRetention" + std::to_wstring(::GetCurrentProcessId());

struct RetentionKey {
    RetentionKey() { CL::CRegistryKey::Delete(HKEY_CURRENT_USER, kRetentionKey.c_str()); }
    ~RetentionKey() { CL::CRegistryKey::Delete(HKEY_CURRENT_USER, kRetentionKey.c_str()); }
};

std::string SpaceWithItem(const std::string& name)
{
    return "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"" + name +
           "\" CanonicalDataType=\"3\"><Value>7</Value></Item></Morvane_OPCDAAddressSpace>";
}

} // namespace

TEST(AddressSpaceVersions, NamedWithTheUtcTimeBesideTheExchangeFile)
{
    test::TempDir dir;
    CAddressSpaceVersions versions(dir.File(L"DefaultAddressSpace.xml"));
    EXPECT_EQ(versions.Folder(), dir.File(L"AddressSpaceVersions\\"));
    const std::wstring kept = versions.KeepAt("<a/>", At(9, 5, 7));
    EXPECT_EQ(kept, dir.File(L"AddressSpaceVersions\\DefaultAddressSpace.2026_11_23-09_05_07.xml"));
    EXPECT_EQ(test::ReadFileBytes(kept), "<a/>");
    // The same second again: numbered, never overwritten.
    const std::wstring second = versions.KeepAt("<b/>", At(9, 5, 7));
    EXPECT_EQ(NameOf(second), L"DefaultAddressSpace.2026_11_23-09_05_07_2.xml");
    EXPECT_EQ(test::ReadFileBytes(kept), "<a/>");
}

TEST(AddressSpaceVersions, ListsNewestFirst)
{
    test::TempDir dir;
    CAddressSpaceVersions versions(dir.File(L"DefaultAddressSpace.xml"));
    EXPECT_TRUE(versions.List().empty());
    EXPECT_EQ(versions.Newest(), L"");
    versions.KeepAt("1", At(10, 0, 0));
    versions.KeepAt("3", At(12, 0, 0));
    versions.KeepAt("2", At(11, 0, 0));
    versions.KeepAt("3b", At(12, 0, 0));
    std::vector<std::wstring> names;
    for (const std::wstring& path : versions.List())
        names.push_back(NameOf(path));
    EXPECT_EQ(names, (std::vector<std::wstring>{L"DefaultAddressSpace.2026_11_23-12_00_00_2.xml",
                                                 L"DefaultAddressSpace.2026_11_23-12_00_00.xml",
                                                 L"DefaultAddressSpace.2026_11_23-11_00_00.xml",
                                                 L"DefaultAddressSpace.2026_11_23-10_00_00.xml"}));
    EXPECT_EQ(test::ReadFileBytes(versions.Newest()), "3b");
}

TEST(AddressSpaceVersions, RetentionRemovesOnlyTheOldestBeyondTheNumberKept)
{
    test::TempDir dir;
    CAddressSpaceVersions versions(dir.File(L"DefaultAddressSpace.xml"));
    for (WORD minute = 0; minute < 6; ++minute)
        versions.KeepAt(std::to_string(minute), At(8, minute, 0));
    // Another file in the folder is not a version and stays.
    test::WriteFileBytes(versions.Folder() + L"notes.txt", "x");
    EXPECT_TRUE(versions.ApplyRetention(0).empty());   // 0 keeps all
    EXPECT_EQ(versions.List().size(), 6u);
    const std::vector<std::wstring> removed = versions.ApplyRetention(4);
    ASSERT_EQ(removed.size(), 2u);
    EXPECT_EQ(NameOf(removed[0]), L"DefaultAddressSpace.2026_11_23-08_01_00.xml");
    EXPECT_EQ(NameOf(removed[1]), L"DefaultAddressSpace.2026_11_23-08_00_00.xml");
    EXPECT_EQ(versions.List().size(), 4u);
    EXPECT_EQ(test::ReadFileBytes(versions.List().back()), "2");
    EXPECT_TRUE(test::FileExists(versions.Folder() + L"notes.txt"));
}

TEST(VersionRetention, DefaultsToFiftyAndKeepsItsOwnSetting)
{
    RetentionKey clean;
    CVersionRetention retention(HKEY_CURRENT_USER, kRetentionKey.c_str());
    EXPECT_EQ(retention.Kept(), 50u);
    retention.SetKept(7);
    EXPECT_EQ(CVersionRetention(HKEY_CURRENT_USER, kRetentionKey.c_str()).Kept(), 7u);
    retention.SetKept(0);
    EXPECT_EQ(retention.Kept(), 0u);
    EXPECT_EQ(CVersionRetention::Describe(0), L"every version");
    EXPECT_EQ(CVersionRetention::Describe(50), L"the newest 50 versions");
}

// The recorder on the exchange with a server whose service does not exist
// (a stopped server: Save only writes the file).
class ChangeRecorderTest : public testing::Test {
protected:
    ChangeRecorderTest()
        : journal(dir.File(L"ChangeJournal.csv"), nullptr),
          exchange([] { return std::wstring(L"MvNoSuchServiceForVersions"); }, dir.File(L"DefaultAddressSpace.xml"))
    {
        retention.SetKept(50);
        recorder = std::make_shared<CChangeRecorder>(exchange.ExchangeFile(), journal, retention);
        exchange.SetObserver(recorder);
        test::WriteFileBytes(exchange.ExchangeFile(), SpaceWithItem("Loaded"));
    }

    void AddItem(const std::wstring& name)
    {
        auto item = CL::CSmartPtr<COPCItem>::Make(1, 0, false, WORD(192), VARTYPE(VT_I4), nullptr);
        item->Rename(name.c_str());
        document.Model()->RootBranch()->AddItem(item);
        document.SetDirty();
    }

    test::ComApartment com;   // the address space files go through MSXML
    RetentionKey clean;
    test::TempDir dir;
    CVersionRetention retention{HKEY_CURRENT_USER, kRetentionKey.c_str()};
    CL::CChangeJournal journal;
    CAddressSpaceExchange exchange;
    std::shared_ptr<CChangeRecorder> recorder;
    CAddressSpaceDocument document;
};

TEST_F(ChangeRecorderTest, FirstSaveKeepsTheLoadedAndTheSavedAddressSpace)
{
    ASSERT_TRUE(exchange.LoadFromServer(document));
    EXPECT_TRUE(recorder->Versions().List().empty());   // a load alone keeps nothing
    AddItem(L"Added");
    exchange.SaveToServer(document);
    const std::vector<std::wstring> versions = recorder->Versions().List();
    ASSERT_EQ(versions.size(), 2u);
    EXPECT_EQ(test::ReadFileBytes(versions[1]), SpaceWithItem("Loaded"));
    EXPECT_EQ(test::ReadFileBytes(versions[0]), test::ReadFileBytes(exchange.ExchangeFile()));

    const std::vector<CL::CJournalEntry> entries = journal.ReadAll();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Address space saved");
    EXPECT_EQ(entries[0].file, versions[0]);
    EXPECT_EQ(entries[0].previousFile, versions[1]);
    EXPECT_EQ(entries[0].details,
              L"Saved to " + exchange.ExchangeFile() + L". 1 added, 0 removed, 0 changed, 0 moved.");

    // A second Save keeps only what it writes; its previous is the first's.
    AddItem(L"Second");
    exchange.SaveToServer(document);
    const std::vector<std::wstring> after = recorder->Versions().List();
    ASSERT_EQ(after.size(), 3u);
    const std::vector<CL::CJournalEntry> both = journal.ReadAll();
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[1].file, after[0]);
    EXPECT_EQ(both[1].previousFile, versions[0]);
}

TEST_F(ChangeRecorderTest, ChangeMadeElsewhereIsKeptAndNamed)
{
    ASSERT_TRUE(exchange.LoadFromServer(document));
    // Another control panel writes the exchange file a second later.
    ::Sleep(20);
    test::WriteFileBytes(exchange.ExchangeFile(), SpaceWithItem("Elsewhere"));
    HANDLE file = ::CreateFileW(exchange.ExchangeFile().c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, 0, nullptr);
    FILETIME later;
    ::GetSystemTimeAsFileTime(&later);
    later.dwHighDateTime += 1;
    ::SetFileTime(file, nullptr, nullptr, &later);
    ::CloseHandle(file);

    AddItem(L"Mine");
    exchange.SaveToServer(document);
    const std::vector<std::wstring> versions = recorder->Versions().List();
    ASSERT_EQ(versions.size(), 3u);
    EXPECT_EQ(test::ReadFileBytes(versions[2]), SpaceWithItem("Loaded"));
    EXPECT_EQ(test::ReadFileBytes(versions[1]), SpaceWithItem("Elsewhere"));
    const CL::CJournalEntry entry = journal.ReadAll().at(0);
    EXPECT_EQ(entry.previousFile, versions[1]);
    EXPECT_NE(entry.details.find(L"changed elsewhere"), std::wstring::npos) << CL::Narrow(entry.details);
}

TEST_F(ChangeRecorderTest, RetentionRunsAfterEverySave)
{
    retention.SetKept(2);
    ASSERT_TRUE(exchange.LoadFromServer(document));
    for (int i = 0; i < 3; ++i) {
        AddItem(L"Item" + std::to_wstring(i));
        exchange.SaveToServer(document);
        ::Sleep(1100);   // a version per second
    }
    const std::vector<std::wstring> versions = recorder->Versions().List();
    ASSERT_EQ(versions.size(), 2u);
    EXPECT_EQ(test::ReadFileBytes(versions[0]), test::ReadFileBytes(exchange.ExchangeFile()));
    const std::vector<CL::CJournalEntry> entries = journal.ReadAll();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_NE(entries[2].details.find(L"old version(s) removed (keeping the newest 2 versions)"), std::wstring::npos)
        << CL::Narrow(entries[2].details);
}

TEST_F(ChangeRecorderTest, VersionThatCannotBeKeptDoesNotStopTheSave)
{
    // A file where the folder should be.
    test::WriteFileBytes(dir.File(L"AddressSpaceVersions"), "in the way");
    std::vector<std::wstring> warnings;
    journal.SetWarningPresenter([&warnings](const std::wstring& text) { warnings.push_back(text); });
    ASSERT_TRUE(exchange.LoadFromServer(document));
    AddItem(L"Added");
    EXPECT_NO_THROW(exchange.SaveToServer(document));
    EXPECT_FALSE(document.IsDirty());
    EXPECT_NE(test::ReadFileBytes(exchange.ExchangeFile()).find("Added"), std::string::npos);
    ASSERT_FALSE(warnings.empty());
    EXPECT_NE(warnings[0].find(L"a version of it could not be kept"), std::wstring::npos);
    EXPECT_EQ(journal.ReadAll().size(), 1u);
}
