#include <gtest/gtest.h>

#include <objbase.h>

#include <optional>

#include "SettingsFileXml.h"
#include "TestSupport.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "support/ProcessState.h"

namespace {

class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override { ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    void TearDown() override { ::CoUninitialize(); }
    std::wstring Path() const { return dir.File(L"Morvane.ini.xml"); }
    void Write(const std::string& xml) { test::WriteFileBytes(Path(), xml); }
    // Loads the file into s; the CException the load raised, if any.
    std::optional<CL::CException> LoadError(CSettings& s) const
    {
        try {
            LoadSettingsFrom(Path(), s);
        } catch (const CL::CException& e) {
            return e;
        }
        return std::nullopt;
    }
    test::TempDir dir;
};

std::wstring GuidText(const GUID& guid)
{
    wchar_t text[40];
    ::StringFromGUID2(guid, text, 40);
    return text;
}

// Every key, in the order the file lists them, with values other than the defaults.
const std::string kFullFile = test::SettingsFileXml({
    {"Title", "  Plant 7 &#9;"},
    {"CustomADOConnection", "true"},
    {"ADOConnection", " Provider=SQLOLEDB;Data Source=db "},
    {"StartCCM", "-1"},
    {"CCM", "ccm.exe"},
    {"StartEmpty", "True"},
    {"HDAServer_CLSID", "{00000000-0000-0000-0000-000000000000}"},
    {"DAServer_CLSID", "{11111111-2222-3333-4444-555555555555}"},
    {"AEServer_CLSID", "{AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE}"},
    {"ServiceName", "MorvaneTest"},
    {"MapItemsToFiles", "1"},
    {"EnableXmlDa", "false"},
    {"XmlDaPort", "9000"},
    {"CcmServer_CLSID", "{12345678-9ABC-DEF0-1234-56789ABCDEF0}"},
    {"EnableUa", "0"},
    {"UaPort", "-5"},
    {"TraceLevel", "4"},
    {"DbKeepAllValues", "FALSE"},
    {"DbKeepLastValues", "TRUE"},
    {"DbLastValues", "250"},
    {"DbKeepLastMinutesValues", "7"},
    {"DbLastMinutesValues", "60"},
    {"DbDeletePercent", "20"},
});

// kFullFile with one attribute (given with its leading space) left out.
std::string FullFileWithout(const std::string& attribute)
{
    std::string xml = kFullFile;
    const size_t at = xml.find(attribute);
    EXPECT_NE(at, std::string::npos) << attribute;
    return at == std::string::npos ? xml : xml.erase(at, attribute.size());
}

// kFullFile with the attribute text `from` replaced by `to`.
std::string FullFileWith(const std::string& from, const std::string& to)
{
    std::string xml = kFullFile;
    const size_t at = xml.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? xml : xml.replace(at, from.size(), to);
}

} // namespace

TEST_F(SettingsTest, DefaultsAreTheDocumentedValues)
{
    const CSettings s;
    EXPECT_EQ(s.Title, L"Varnel");
    EXPECT_FALSE(s.CustomADOConnection);
    EXPECT_EQ(s.ADOConnection, L"");
    EXPECT_FALSE(s.StartCCM);
    EXPECT_EQ(s.CCM, L"");
    EXPECT_FALSE(s.StartEmpty);
    EXPECT_EQ(s.ServiceName, L"Morvane");
    EXPECT_FALSE(s.MapItemsToFiles);
    EXPECT_TRUE(s.EnableXmlDa);
    EXPECT_EQ(s.XmlDaPort, 8082);
    EXPECT_TRUE(s.EnableUa);
    EXPECT_EQ(s.UaPort, 8083);
    EXPECT_EQ(s.TraceLevel, 1);
    EXPECT_TRUE(s.DbKeepAllValues);
    EXPECT_FALSE(s.DbKeepLastValues);
    EXPECT_EQ(s.DbLastValues, 1000);
    EXPECT_FALSE(s.DbKeepLastMinutesValues);
    EXPECT_EQ(s.DbLastMinutesValues, 1440);
    EXPECT_EQ(s.DbDeletePercent, 50);
    // Four distinct, non-null product class identifiers.
    const GUID ids[] = {s.HDAServer_CLSID, s.DAServer_CLSID, s.AEServer_CLSID, s.CcmServer_CLSID};
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(IsEqualGUID(ids[i], GUID_NULL));
        for (int j = i + 1; j < 4; ++j)
            EXPECT_FALSE(IsEqualGUID(ids[i], ids[j]));
    }
}

TEST_F(SettingsTest, MissingFileKeepsEveryDefault)
{
    CSettings s;
    LoadSettingsFrom(Path(), s);
    EXPECT_EQ(s.ServiceName, L"Morvane");
    EXPECT_EQ(s.Title, L"Varnel");
    EXPECT_EQ(s.DbDeletePercent, 50);
}

TEST_F(SettingsTest, FirstSaveCreatesTheFile)
{
    ASSERT_FALSE(test::FileExists(Path()));
    SaveSettingsTo(Path(), CSettings());
    EXPECT_TRUE(test::FileExists(Path()));
    CSettings s;
    s.ServiceName = L"changed";
    LoadSettingsFrom(Path(), s);
    EXPECT_EQ(s.ServiceName, L"Morvane");
}

TEST_F(SettingsTest, SavedFileIsOneElementWithEveryKeyInTableOrder)
{
    CSettings s;
    s.Title = L"T";
    SaveSettingsTo(Path(), s);
    const std::string xml = test::ReadFileBytes(Path());
    EXPECT_EQ(xml.find("<?xml"), std::string::npos) << "no XML declaration is written";
    EXPECT_EQ(xml.rfind("<Morvane_ini ", 0), 0u) << xml;
    size_t at = 0;
    for (const std::string& key : test::SettingsFileKeys()) {
        const size_t found = xml.find(std::string(" ") + key + "=\"", at);
        ASSERT_NE(found, std::string::npos) << key << " missing or out of order in " << xml;
        at = found + 1;
    }
    EXPECT_EQ(xml.find("<", 1), std::string::npos) << "a single element with no children";
}

TEST_F(SettingsTest, BooleansAreWrittenInOneFormAndIntegersInDecimal)
{
    CSettings s;
    s.CustomADOConnection = true;
    s.StartCCM = false;
    s.XmlDaPort = -17;
    SaveSettingsTo(Path(), s);
    const std::string xml = test::ReadFileBytes(Path());
    EXPECT_NE(xml.find(" CustomADOConnection=\"-1\""), std::string::npos) << xml;
    EXPECT_NE(xml.find(" StartCCM=\"0\""), std::string::npos) << xml;
    EXPECT_NE(xml.find(" XmlDaPort=\"-17\""), std::string::npos) << xml;
}

TEST_F(SettingsTest, GuidsAreWrittenInUpperCaseRegistryForm)
{
    CSettings s;
    ::CLSIDFromString(L"{abcdef01-2345-6789-abcd-ef0123456789}", &s.DAServer_CLSID);
    s.HDAServer_CLSID = GUID_NULL;
    SaveSettingsTo(Path(), s);
    const std::string xml = test::ReadFileBytes(Path());
    EXPECT_NE(xml.find(" DAServer_CLSID=\"{ABCDEF01-2345-6789-ABCD-EF0123456789}\""), std::string::npos) << xml;
    EXPECT_NE(xml.find(" HDAServer_CLSID=\"{00000000-0000-0000-0000-000000000000}\""), std::string::npos) << xml;
}

TEST_F(SettingsTest, EveryKeyIsReadFromAFullFile)
{
    Write(kFullFile);
    CSettings s;
    LoadSettingsFrom(Path(), s);
    EXPECT_EQ(s.Title, L"Plant 7");
    EXPECT_TRUE(s.CustomADOConnection);
    EXPECT_EQ(s.ADOConnection, L" Provider=SQLOLEDB;Data Source=db ") << "only Title is trimmed";
    EXPECT_TRUE(s.StartCCM);
    EXPECT_EQ(s.CCM, L"ccm.exe");
    EXPECT_TRUE(s.StartEmpty);
    EXPECT_TRUE(IsEqualGUID(s.HDAServer_CLSID, GUID_NULL));
    EXPECT_EQ(GuidText(s.DAServer_CLSID), L"{11111111-2222-3333-4444-555555555555}");
    EXPECT_EQ(GuidText(s.AEServer_CLSID), L"{AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE}");
    EXPECT_EQ(s.ServiceName, L"MorvaneTest");
    EXPECT_TRUE(s.MapItemsToFiles);
    EXPECT_FALSE(s.EnableXmlDa);
    EXPECT_EQ(s.XmlDaPort, 9000);
    EXPECT_EQ(GuidText(s.CcmServer_CLSID), L"{12345678-9ABC-DEF0-1234-56789ABCDEF0}");
    EXPECT_FALSE(s.EnableUa);
    EXPECT_EQ(s.UaPort, -5);
    EXPECT_EQ(s.TraceLevel, 4);
    EXPECT_FALSE(s.DbKeepAllValues);
    EXPECT_TRUE(s.DbKeepLastValues);
    EXPECT_EQ(s.DbLastValues, 250);
    EXPECT_TRUE(s.DbKeepLastMinutesValues) << "any nonzero integer is true";
    EXPECT_EQ(s.DbLastMinutesValues, 60);
    EXPECT_EQ(s.DbDeletePercent, 20);
}

TEST_F(SettingsTest, SaveThenLoadGivesTheSameRecord)
{
    Write(kFullFile);
    CSettings original;
    LoadSettingsFrom(Path(), original);
    const std::wstring copy = dir.File(L"copy.xml");
    SaveSettingsTo(copy, original);
    CSettings again;
    LoadSettingsFrom(copy, again);
    EXPECT_EQ(again.Title, original.Title);
    EXPECT_EQ(again.ADOConnection, original.ADOConnection);
    EXPECT_EQ(again.CustomADOConnection, original.CustomADOConnection);
    EXPECT_EQ(again.DbKeepLastMinutesValues, original.DbKeepLastMinutesValues);
    EXPECT_EQ(again.UaPort, original.UaPort);
    EXPECT_TRUE(IsEqualGUID(again.CcmServer_CLSID, original.CcmServer_CLSID));
    EXPECT_TRUE(IsEqualGUID(again.HDAServer_CLSID, GUID_NULL));
    // A second save of the reloaded record writes the same bytes.
    const std::wstring copy2 = dir.File(L"copy2.xml");
    SaveSettingsTo(copy2, again);
    EXPECT_EQ(test::ReadFileBytes(copy), test::ReadFileBytes(copy2));
}

TEST_F(SettingsTest, BooleansAreReadInEveryForm)
{
    struct Case {
        const char* text;
        bool expected;
    } cases[] = {{"true", true},   {"True", true},   {"TRUE", true}, {"false", false}, {"False", false},
                 {"FALSE", false}, {"-1", true},     {"0", false},   {"1", true},      {"42", true},
                 {"-7", true}};
    for (const Case& c : cases) {
        Write(FullFileWith("StartCCM=\"-1\"", std::string("StartCCM=\"") + c.text + "\""));
        CSettings s;
        s.StartCCM = !c.expected;
        LoadSettingsFrom(Path(), s);
        EXPECT_EQ(s.StartCCM, c.expected) << c.text;
    }
}

TEST_F(SettingsTest, RootElementOtherThanMorvaneIniRaisesAtTheFirstKey)
{
    Write(FullFileWith("<Morvane_ini ", "<Other_ini "));
    CSettings s;
    const auto error = LoadError(s);
    ASSERT_TRUE(error) << "no error raised";
    EXPECT_EQ(error->Error(), E_POINTER);
    EXPECT_NE(error->Source().find(L"Title"), std::wstring::npos) << "raised at the first key";
    EXPECT_EQ(s.Title, L"Varnel");
    EXPECT_EQ(s.ServiceName, L"Morvane");
}

TEST_F(SettingsTest, FileLackingDbDeletePercentReadsEverythingElseThenRaises)
{
    Write(FullFileWithout(" DbDeletePercent=\"20\""));
    CSettings s;
    const auto error = LoadError(s);
    ASSERT_TRUE(error) << "no error raised";
    EXPECT_NE(error->Source().find(L"DbDeletePercent"), std::wstring::npos);
    EXPECT_EQ(s.ServiceName, L"MorvaneTest");
    EXPECT_EQ(s.DbLastMinutesValues, 60);
    EXPECT_EQ(s.DbDeletePercent, 50);
}

TEST_F(SettingsTest, FileLackingATextKeyRaisesAtThatKey)
{
    Write(FullFileWithout(" CCM=\"ccm.exe\""));
    CSettings s;
    const auto error = LoadError(s);
    ASSERT_TRUE(error) << "no error raised";
    EXPECT_NE(error->Source().find(L"'CCM'"), std::wstring::npos) << CL::ToUtf8(error->Source());
    EXPECT_TRUE(s.StartCCM) << "the key before it was read";
    EXPECT_EQ(s.CCM, L"") << "the missing key keeps its default";
    EXPECT_FALSE(s.StartEmpty) << "the key after it was not read";
}

TEST_F(SettingsTest, FileLackingAGuidKeyRaisesAtThatKey)
{
    Write(FullFileWithout(" AEServer_CLSID=\"{AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE}\""));
    CSettings s;
    const auto error = LoadError(s);
    ASSERT_TRUE(error) << "no error raised";
    EXPECT_NE(error->Source().find(L"'AEServer_CLSID'"), std::wstring::npos) << CL::ToUtf8(error->Source());
    EXPECT_EQ(GuidText(s.DAServer_CLSID), L"{11111111-2222-3333-4444-555555555555}");
    EXPECT_TRUE(IsEqualGUID(s.AEServer_CLSID, CL::kDefaultAEServerClsid));
    EXPECT_EQ(s.ServiceName, L"Morvane");
}

TEST_F(SettingsTest, TextOutsideAsciiSurvivesSaveAndLoad)
{
    CSettings s;
    s.Title = L"\u00DCberwachung \u2013 Halle 7";
    s.CCM = L"C:\\Programme\\Pr\u00FCfung\\ccm.exe";
    SaveSettingsTo(Path(), s);
    CSettings read;
    LoadSettingsFrom(Path(), read);
    EXPECT_EQ(read.Title, s.Title);
    EXPECT_EQ(read.CCM, s.CCM);
}

TEST_F(SettingsTest, SaveOverAReadOnlyFileRaisesAccessDeniedAndKeepsTheFile)
{
    Write(kFullFile);
    ASSERT_TRUE(::SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_READONLY));
    CSettings s;
    s.Title = L"new";
    try {
        SaveSettingsTo(Path(), s);
        ADD_FAILURE() << "no error raised";
    } catch (const CL::CException& e) {
        EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x80070005ul) << "shown as the access-denied report";
    }
    ::SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(test::ReadFileBytes(Path()), kFullFile);
    EXPECT_FALSE(test::FileExists(Path() + L".saving")) << "no temporary file is left behind";
}

TEST_F(SettingsTest, WrongTypeRaisesAtThatKeyAfterTheEarlierKeys)
{
    Write(FullFileWith("TraceLevel=\"4\"", "TraceLevel=\"four\""));
    CSettings s;
    EXPECT_THROW(LoadSettingsFrom(Path(), s), CL::CException);
    EXPECT_EQ(s.UaPort, -5) << "keys before the bad one hold the file's values";
    EXPECT_EQ(s.TraceLevel, 1);
    EXPECT_EQ(s.DbDeletePercent, 50) << "keys after it keep their defaults";
    EXPECT_EQ(s.Title, L"  Plant 7 \t") << "the final trim does not happen";
}

TEST_F(SettingsTest, FileThatIsNotXmlKeepsTheDefaults)
{
    Write("this is not XML <Morvane_ini");
    CSettings s;
    EXPECT_NO_THROW(LoadSettingsFrom(Path(), s));
    EXPECT_EQ(s.ServiceName, L"Morvane");
}

TEST_F(SettingsTest, EmptyFileKeepsTheDefaults)
{
    Write("");
    CSettings s;
    EXPECT_NO_THROW(LoadSettingsFrom(Path(), s));
    EXPECT_EQ(s.Title, L"Varnel");
}

TEST_F(SettingsTest, UnparsableGuidIsNotDetected)
{
    Write(FullFileWith("{11111111-2222-3333-4444-555555555555}", "not a guid"));
    CSettings s;
    EXPECT_NO_THROW(LoadSettingsFrom(Path(), s));
    EXPECT_EQ(s.ServiceName, L"MorvaneTest");
}

TEST_F(SettingsTest, FailedSaveLeavesTheOldFileIntact)
{
    Write(kFullFile);
    // The settings file is held open by another program: the new file
    // written beside it cannot replace it, and it stays as it was.
    const HANDLE held = ::CreateFileW(Path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    CSettings s;
    s.Title = L"new";
    EXPECT_THROW(SaveSettingsTo(Path(), s), CL::CException);
    ::CloseHandle(held);
    EXPECT_EQ(test::ReadFileBytes(Path()), kFullFile);
}

TEST_F(SettingsTest, SaveIntoMissingFolderRaises)
{
    EXPECT_THROW(SaveSettingsTo(dir.File(L"missing\\Morvane.ini.xml"), CSettings()), CL::CException);
}

TEST_F(SettingsTest, BackupNameIsBuiltFromTheUtcTime)
{
    const SYSTEMTIME utc = {2024, 3, 4, 7, 14, 5, 9, 999};
    EXPECT_EQ(BackupSettingsFileName(utc), L"Morvane.ini.xml.2024_03_07-14_05_09");
}

TEST_F(SettingsTest, TwoBackupsInTheSameSecondShareOneNameAndTheSecondWins)
{
    const SYSTEMTIME first = {2024, 3, 4, 7, 14, 5, 9, 10};
    const SYSTEMTIME second = {2024, 3, 4, 7, 14, 5, 9, 990};
    ASSERT_EQ(BackupSettingsFileName(first), BackupSettingsFileName(second));
    const std::wstring path = dir.File(BackupSettingsFileName(first));
    CSettings a, b;
    a.Title = L"first";
    b.Title = L"second";
    SaveSettingsTo(path, a);
    SaveSettingsTo(path, b);
    CSettings read;
    LoadSettingsFrom(path, read);
    EXPECT_EQ(read.Title, L"second");
}

TEST_F(SettingsTest, BackupIsWrittenBesideTheExecutableFromTheRecord)
{
    const test::SettingsKeeper keepSettings;
    const CSettings saved = g_Settings;
    g_Settings.Title = L"backup check";
    SYSTEMTIME before;
    ::GetSystemTime(&before);
    const std::wstring path = BackupSettings();
    g_Settings = saved;
    EXPECT_EQ(path.rfind(test::ProgramFolder() + L"Morvane.ini.xml.", 0), 0u);
    CSettings read;
    LoadSettingsFrom(path, read);
    ::DeleteFileW(path.c_str());
    EXPECT_EQ(read.Title, L"backup check");
    EXPECT_EQ(path.substr(test::ProgramFolder().size() + 16, 5), CL::Format(L"%04u_", before.wYear));
}

TEST_F(SettingsTest, InstallationFolderPathIsTheExecutablesFolderJoinedWithTheName)
{
    EXPECT_EQ(GetInstallationFolderPath(L"Morvane.exe"), test::ProgramFolder() + L"Morvane.exe");
}

// The settings are saved beside the file under a name no file had: a file
// of the administrator's named like "<file>.saving" stays, and nothing but
// the two files is left in the folder.
TEST_F(SettingsTest, SavingLeavesAFileNamedLikeTheTemporaryFileAlone)
{
    const std::wstring users = Path() + L".saving";
    test::WriteFileBytes(users, "kept");
    SaveSettingsTo(Path(), CSettings());
    EXPECT_EQ(test::ReadFileBytes(users), "kept");
    int files = 0;
    WIN32_FIND_DATAW found = {};
    const HANDLE find = ::FindFirstFileW(dir.File(L"*").c_str(), &found);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            ++files;
    } while (::FindNextFileW(find, &found));
    ::FindClose(find);
    EXPECT_EQ(files, 2);
}
