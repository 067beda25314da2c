// Configuring the historian from the settings, its folder and its default
// connection string, and the default Jet database, which Wine cannot open.
#include <gtest/gtest.h>

#include <comdef.h>

#include "app/HistorianSettings.h"
#include "common/historian/Historian.h"
#include "config/Settings.h"
#include "support/HistorianTestDb.h"
#include "support/TestSupport.h"

using CL::CHistorian;

namespace {

CSettings NotKeepingAll()
{
    CSettings settings;
    settings.DbKeepAllValues = false;
    settings.DbKeepLastValues = true;
    settings.DbLastValues = 500;
    settings.DbKeepLastMinutesValues = true;
    settings.DbLastMinutesValues = 90;
    settings.DbDeletePercent = 30;
    return settings;
}

} // namespace

TEST(HistorianConfigure, DefaultSettingsKeepAllValues)
{
    CHistorian historian;
    CL::ConfigureHistorian(historian, CSettings());
    EXPECT_EQ(historian.KeepLastValues(), 0x7FFFFFFF);
    EXPECT_EQ(historian.KeepLastMinutes(), 0x7FFFFFFF);
    EXPECT_EQ(historian.DeletePercent(), 50);
}

TEST(HistorianConfigure, LimitsComeFromTheSettingsWhenNotKeepingAll)
{
    CHistorian historian;
    CL::ConfigureHistorian(historian, NotKeepingAll());
    EXPECT_EQ(historian.KeepLastValues(), 500);
    EXPECT_EQ(historian.KeepLastMinutes(), 90);
    EXPECT_EQ(historian.DeletePercent(), 30);
}

TEST(HistorianConfigure, KeepAllValuesSwitchesBothLimitsOff)
{
    CSettings settings = NotKeepingAll();
    settings.DbKeepAllValues = true;
    CHistorian historian;
    CL::ConfigureHistorian(historian, settings);
    EXPECT_EQ(historian.KeepLastValues(), 0x7FFFFFFF);
    EXPECT_EQ(historian.KeepLastMinutes(), 0x7FFFFFFF);
}

TEST(HistorianConfigure, EachLimitNeedsItsOwnSwitch)
{
    CSettings settings = NotKeepingAll();
    settings.DbKeepLastValues = false;
    settings.DbKeepLastMinutesValues = false;
    CHistorian historian;
    CL::ConfigureHistorian(historian, settings);
    EXPECT_EQ(historian.KeepLastValues(), 0x7FFFFFFF);
    EXPECT_EQ(historian.KeepLastMinutes(), 0x7FFFFFFF);
}

TEST(HistorianConfigure, DatabaseFolderIsHistorianBesideTheExecutable)
{
    CHistorian historian;
    CL::ConfigureHistorian(historian, CSettings());
    EXPECT_EQ(historian.DatabaseFolder(), test::ProgramFolder() + L"Historian");
}

TEST(HistorianConfigure, WithoutCustomConnectionTheJetFileIsUsed)
{
    CSettings settings;
    settings.CustomADOConnection = false;
    settings.ADOConnection = L"Driver={SQLite3};Database=/tmp/ignored.db";
    CHistorian historian;
    CL::ConfigureHistorian(historian, settings);
    EXPECT_EQ(historian.ConnectionString(),
              L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + test::ProgramFolder() + L"Historian\\Historian.mdb");
}

TEST(HistorianConfigure, CustomConnectionIsUsedWhenSwitchedOn)
{
    CSettings settings;
    settings.CustomADOConnection = true;
    settings.ADOConnection = L"Provider=SQLOLEDB;Data Source=srv;Initial Catalog=Historian";
    CHistorian historian;
    CL::ConfigureHistorian(historian, settings);
    EXPECT_EQ(historian.ConnectionString(), L"Provider=SQLOLEDB;Data Source=srv;Initial Catalog=Historian");
}

TEST(HistorianConfigure, EmptyCustomConnectionFallsBackToTheJetFile)
{
    CHistorian historian;
    historian.Configure(L"", 1, 2, 3);
    EXPECT_EQ(historian.ConnectionString().rfind(L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=", 0), 0u);
}

// The Jet provider is a 32-bit Windows component; it does not exist under
// Wine, so the default database cannot be opened and ADO says so.
TEST(HistorianConfigure, UnavailableJetDatabaseRaisesComError)
{
    test::ComScope com;
    CHistorian historian;
    CL::ConfigureHistorian(historian, CSettings());
    EXPECT_THROW(historian.ReadSummary(), _com_error);
    EXPECT_THROW(historian.DeleteAll(), _com_error);
}
