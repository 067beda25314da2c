// The export's choice of format and the file written beside its target:
// the typed extension decides before the chosen file type, and nothing
// reaches the target before the end.
#include <gtest/gtest.h>

#include "common/Exception.h"
#include "common/ReplacingFile.h"
#include "historian/HistoryExporter.h"
#include "support/TestSupport.h"

namespace {

bool Exists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace

TEST(HistoryExporter, TheTypedExtensionDecidesBeforeTheFileType)
{
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values.CSV", 1), CL::ExportFormat::Csv);
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values.xml", CL::kExportFilterCsv), CL::ExportFormat::Xml);
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values.txt", CL::kExportFilterCsv), CL::ExportFormat::Csv);
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values.txt", 2), CL::ExportFormat::Xml);
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values", 1), CL::ExportFormat::Xml);
}

TEST(ReplacingFile, TheTargetChangesOnlyOnCommit)
{
    test::TempDir folder;
    const std::wstring target = folder.File(L"t.csv");
    {
        CL::CReplacingFile file(target, L"CreateFile (szFile)");
        file.Write("new");
        EXPECT_FALSE(Exists(target));
        EXPECT_TRUE(Exists(file.TemporaryPath()));
        file.Commit();
    }
    EXPECT_EQ(test::ReadFileBytes(target), "new");
    EXPECT_FALSE(Exists(target + L".saving"));
}

TEST(ReplacingFile, WithoutCommitNothingIsLeftAndTheTargetStaysAsItWas)
{
    test::TempDir folder;
    const std::wstring target = folder.File(L"t.csv");
    {
        CL::CReplacingFile first(target, L"CreateFile (szFile)");
        first.Write("old");
        first.Commit();
    }
    {
        CL::CReplacingFile second(target, L"CreateFile (szFile)");
        second.Write(std::string(3 << 20, 'x'));   // more than one buffer
    }
    EXPECT_EQ(test::ReadFileBytes(target), "old");
    EXPECT_FALSE(Exists(target + L".saving"));
}

TEST(ReplacingFile, AReadOnlyTargetIsRefusedBeforeAnythingIsWritten)
{
    test::TempDir folder;
    const std::wstring target = folder.File(L"t.csv");
    {
        CL::CReplacingFile file(target, L"CreateFile (szFile)");
        file.Commit();
    }
    ::SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_THROW(CL::CReplacingFile(target, L"CreateFile (szFile)"), CL::CException);
    EXPECT_FALSE(Exists(target + L".saving"));
    ::SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// A file of the user's that has the name a temporary file might take is
// never replaced nor deleted, whether the work is committed or abandoned.
TEST(ReplacingFile, AFileNamedLikeATemporaryFileIsNeverTouched)
{
    test::TempDir folder;
    const std::wstring target = folder.File(L"t.csv");
    const std::wstring users = target + L".saving";
    test::WriteFileBytes(users, "the user's");
    {
        CL::CReplacingFile file(target, L"CreateFile (szFile)");
        EXPECT_NE(file.TemporaryPath(), users);
        EXPECT_EQ(file.TemporaryPath().rfind(target, 0), 0u);   // beside the target
        file.Write("new");
        file.Commit();
    }
    {
        CL::CReplacingFile abandoned(target, L"CreateFile (szFile)");
        abandoned.Write("abandoned");
    }
    EXPECT_EQ(test::ReadFileBytes(target), "new");
    EXPECT_EQ(test::ReadFileBytes(users), "the user's");
}

TEST(ReplacingFile, TwoAtOnceBesideOneTargetTakeTwoNames)
{
    test::TempDir folder;
    const std::wstring target = folder.File(L"t.csv");
    CL::CReplacingFile first(target, L"CreateFile (szFile)");
    CL::CReplacingFile second(target, L"CreateFile (szFile)");
    EXPECT_NE(first.TemporaryPath(), second.TemporaryPath());
    EXPECT_TRUE(Exists(first.TemporaryPath()));
    EXPECT_TRUE(Exists(second.TemporaryPath()));
}
