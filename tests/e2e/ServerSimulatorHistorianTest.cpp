// The server simulator's historian side: with a database named in its
// settings it appends runs of simulated values of the items marked for
// archiving to HistoricData, which CHistorian reads back like the server's
// own rows. Real SQLite files through ODBC, the simulator as a real service.
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/historian/Historian.h"
#include "support/HistorianTestDb.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "tools/server-sim/SimFiles.h"

using namespace std::chrono_literals;

namespace {

// One item of a test address space.
struct TestItem {
    std::string name;
    unsigned canonicalDataType;
    const char* archive;   // the Archive attribute's text, nullptr: none
};

std::string ItemElement(const TestItem& item)
{
    std::string element = "<Item Name=\"" + item.name + "\" CanonicalDataType=\"" +
                          std::to_string(item.canonicalDataType) +
                          "\" Quality=\"192\" Writable=\"-1\" Readable=\"-1\" ScanRate=\"1000\"";
    if (item.archive)
        element += std::string(" Archive=\"") + item.archive + "\"";
    return element + " ValueTime=\"0\"/>";
}

// An address space with the items of Plant.Line1 in a branch and the others
// at the top level.
std::string AddressSpace(const std::vector<TestItem>& line1, const std::vector<TestItem>& top)
{
    std::string xml = "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Branch Name=\"Line1\">";
    for (const TestItem& item : line1)
        xml += ItemElement(item);
    xml += "</Branch></Branch>";
    for (const TestItem& item : top)
        xml += ItemElement(item);
    return xml + "</Morvane_OPCDAAddressSpace>";
}

const std::vector<TestItem> kLine1 = {
    {"Speed", VT_R8, "-1"},
    {"Count", VT_I4, "true"},
    {"Running", VT_BOOL, "-1"},
    {"Setpoint", VT_R8, "0"},     // not archived
    {"Comment", VT_BSTR, nullptr},  // not archived: no Archive attribute
};
const std::vector<TestItem> kTop = {
    {"Batch", VT_BSTR, "-1"},
    {"Stamp", VT_DATE, "-1"},
    {"Levels", VT_ARRAY | VT_I4, "-1"},
    {"Names", VT_ARRAY | VT_BSTR, "-1"},
};

// The archived items of kLine1 and kTop by item ID, in the database's order.
const std::map<std::wstring, VARTYPE> kArchived = {
    {L"Batch", VT_BSTR},
    {L"Levels", VT_ARRAY | VT_I4},
    {L"Names", VT_ARRAY | VT_BSTR},
    {L"Plant.Line1.Count", VT_I4},
    {L"Plant.Line1.Running", VT_BOOL},
    {L"Plant.Line1.Speed", VT_R8},
    {L"Stamp", VT_DATE},
};

uint64_t Ticks(const FILETIME& time)
{
    return (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

FILETIME NowFileTime()
{
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return now;
}

constexpr uint64_t kTicksPerMs = 10000;

// A simulator installed with the given database in its settings, periodic
// runs off unless the test says otherwise, and the address space written.
struct ArchivingServer {
    explicit ArchivingServer(const std::wstring& connection, const std::string& addressSpace,
                             unsigned intervalMs = 0, bool customConnection = true)
        : server(Options(connection, customConnection))
    {
        server.SetKnob(sim::kKnobArchiveIntervalMs, intervalMs);
        server.WriteExchangeFile(addressSpace);
    }

    static test::SimulatedServer::Options Options(const std::wstring& connection, bool customConnection)
    {
        test::SimulatedServer::Options options;
        options.servicePrefix = L"MvArchive";
        options.adoConnection = connection;
        options.customConnection = customConnection;
        return options;
    }

    bool WaitForRun(unsigned run, std::chrono::milliseconds timeout = 20s) const
    {
        return server.WaitForEvent("archive run #" + std::to_string(run) + " done", timeout);
    }

    // Starts the service and waits for the given archive run to be done.
    bool StartAndWaitForRun(unsigned run) { return server.Start() && WaitForRun(run); }

    // Stops the service; a failure unless the stop was done within two seconds.
    void StopPromptly()
    {
        const auto start = std::chrono::steady_clock::now();
        ASSERT_TRUE(server.Stop());
        const auto took = std::chrono::steady_clock::now() - start;
        EXPECT_LT(took, 2s) << std::chrono::duration_cast<std::chrono::milliseconds>(took).count() << " ms";
    }

    test::SimulatedServer server;
};

// A historian on the test database, configured as the control panel does
// for a custom connection without retention.
class HistorianOn : public CL::CHistorian {
public:
    explicit HistorianOn(const test::HistorianTestDb& db)
    {
        Configure(db.ConnectionString(), kNoLimit, kNoLimit, 0);
    }
};

CL::CHistorianValues ReadAll(CL::CHistorian& historian, const std::wstring& itemId)
{
    CL::CHistorianValues values;
    historian.ReadRange(itemId, false, 0.0, false, 0.0, 0, values);
    return values;
}

std::map<std::wstring, long> SummaryCounts(CL::CHistorian& historian)
{
    std::map<std::wstring, long> counts;
    for (const CL::CHistorianSummaryEntry& entry : historian.ReadSummary())
        counts[entry.itemId] = entry.valueCount;
    return counts;
}

void ExpectStrictlyIncreasing(const CL::CHistorianValues& values)
{
    for (size_t i = 1; i < values.Size(); ++i)
        EXPECT_LT(Ticks(values.times[i - 1]), Ticks(values.times[i])) << "value " << i;
}

} // namespace

TEST(ServerSimulatorHistorian, ArchivesOneRunOfEachArchivedItemAtStart)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));

    EXPECT_TRUE(sim.server.HasEvent("archiving on, 7 items"));
    EXPECT_TRUE(sim.server.HasEvent("archived Plant.Line1.Speed 5 values"));
    EXPECT_TRUE(sim.server.HasEvent("archived Names 5 values"));
    EXPECT_EQ(sim.server.EventsStartingWith("archived ").size(), 7u);

    HistorianOn historian(db);
    std::map<std::wstring, long> expected;
    for (const auto& [id, type] : kArchived)
        expected[id] = 5;
    EXPECT_EQ(SummaryCounts(historian), expected);
    for (const auto& [id, type] : kArchived)
        EXPECT_EQ(db.RowCount(id), 1) << CL::Narrow(id);
}

TEST(ServerSimulatorHistorian, ArchivedValuesHaveTheCanonicalTypeOfTheirItem)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));

    HistorianOn historian(db);
    for (const auto& [id, type] : kArchived) {
        const CL::CHistorianValues values = ReadAll(historian, id);
        ASSERT_EQ(values.Size(), 5u) << CL::Narrow(id);
        for (const CL::CVariant& value : values.values)
            EXPECT_EQ(value.vt, type) << CL::Narrow(id) << " holds " << CL::Narrow(CL::VarTypeToString(value.vt));
    }
}

TEST(ServerSimulatorHistorian, ArchivedValuesVaryLikeProcessValues)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    HistorianOn historian(db);

    // A ramp of integers from 0, toggling booleans, a counter in strings.
    const CL::CHistorianValues count = ReadAll(historian, L"Plant.Line1.Count");
    ASSERT_EQ(count.Size(), 5u);
    for (size_t i = 0; i < 5; ++i)
        EXPECT_EQ(count.values[i].lVal, static_cast<LONG>(i));
    const CL::CHistorianValues running = ReadAll(historian, L"Plant.Line1.Running");
    ASSERT_EQ(running.Size(), 5u);
    for (size_t i = 0; i < 5; ++i)
        EXPECT_EQ(running.values[i].boolVal, i % 2 ? VARIANT_TRUE : VARIANT_FALSE);
    const CL::CHistorianValues batch = ReadAll(historian, L"Batch");
    ASSERT_EQ(batch.Size(), 5u);
    EXPECT_EQ(CL::VariantToString(batch.values[3], CL::kLocaleInvariant, CL::kArraySeparator), L"Sample 3");

    // A sine between 10 and 90 that does change.
    const CL::CHistorianValues speed = ReadAll(historian, L"Plant.Line1.Speed");
    ASSERT_EQ(speed.Size(), 5u);
    for (const CL::CVariant& v : speed.values) {
        EXPECT_GE(v.dblVal, 10.0);
        EXPECT_LE(v.dblVal, 90.0);
    }
    EXPECT_NE(speed.values[0].dblVal, speed.values[4].dblVal);

    // Arrays of three elements; a date item holds its own time stamp.
    const CL::CHistorianValues names = ReadAll(historian, L"Names");
    ASSERT_EQ(names.Size(), 5u);
    EXPECT_EQ(CL::VariantToString(names.values[1], CL::kLocaleInvariant, CL::kArraySeparator),
              L"Sample 1\r\nSample 2\r\nSample 3");
    const CL::CHistorianValues stamp = ReadAll(historian, L"Stamp");
    ASSERT_EQ(stamp.Size(), 5u);
    SYSTEMTIME fields = CL::DateToSystemTime(stamp.values[2].date);
    FILETIME asFileTime;
    ASSERT_TRUE(::SystemTimeToFileTime(&fields, &asFileTime));
    EXPECT_EQ(Ticks(asFileTime), Ticks(stamp.times[2]));
}

TEST(ServerSimulatorHistorian, TimesAreUtcAtRegularStepsEndingNow)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop));
    const uint64_t before = Ticks(NowFileTime());
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    const uint64_t after = Ticks(NowFileTime());

    HistorianOn historian(db);
    const CL::CHistorianValues speed = ReadAll(historian, L"Plant.Line1.Speed");
    ASSERT_EQ(speed.Size(), 5u);
    ExpectStrictlyIncreasing(speed);
    // Without periodic runs the values lie one second apart; the last one
    // was taken while the simulator ran.
    for (size_t i = 1; i < 5; ++i)
        EXPECT_NEAR(static_cast<double>(Ticks(speed.times[i]) - Ticks(speed.times[i - 1])), 1000.0 * kTicksPerMs,
                    2.0 * kTicksPerMs);
    EXPECT_GE(Ticks(speed.times[4]) + 2 * kTicksPerMs, before);
    EXPECT_LE(Ticks(speed.times[4]), after + 2 * kTicksPerMs);
}

TEST(ServerSimulatorHistorian, EveryTenthValueFromTheEighthIsUncertain)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop));
    sim.server.SetKnob(sim::kKnobArchiveValues, 20);
    ASSERT_TRUE(sim.StartAndWaitForRun(1));

    HistorianOn historian(db);
    for (const auto& [id, type] : kArchived) {
        const CL::CHistorianValues values = ReadAll(historian, id);
        ASSERT_EQ(values.Size(), 20u) << CL::Narrow(id);
        for (size_t i = 0; i < 20; ++i)
            EXPECT_EQ(values.qualities[i], i % 10 == 7 ? 64 : 192) << CL::Narrow(id) << " value " << i;
    }
}

TEST(ServerSimulatorHistorian, ItemsNotMarkedForArchivingNeverAppear)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop), 200);
    ASSERT_TRUE(sim.StartAndWaitForRun(3));

    EXPECT_EQ(db.RowCount(L"Plant.Line1.Setpoint"), 0);
    EXPECT_EQ(db.RowCount(L"Plant.Line1.Comment"), 0);
    EXPECT_EQ(db.RowCount(L"Setpoint"), 0);
    HistorianOn historian(db);
    for (const CL::CHistorianSummaryEntry& entry : historian.ReadSummary())
        EXPECT_EQ(kArchived.count(entry.itemId), 1u) << CL::Narrow(entry.itemId);
    EXPECT_TRUE(sim.server.EventsStartingWith("archived Plant.Line1.Setpoint").empty());
}

TEST(ServerSimulatorHistorian, Code128AfterAChangedAddressSpaceArchivesTheNewItem)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace({{"Speed", VT_R8, "-1"}}, {}));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    EXPECT_EQ(db.RowCount(L"Plant.Line1.Temperature"), 0);

    sim.server.WriteExchangeFile(AddressSpace({{"Speed", VT_R8, "-1"}, {"Temperature", VT_R4, "-1"}}, {}));
    ASSERT_TRUE(sim.server.Control(128));
    ASSERT_TRUE(sim.WaitForRun(2));

    EXPECT_TRUE(sim.server.HasEvent("archiving on, 2 items"));
    EXPECT_TRUE(sim.server.HasEvent("archived Plant.Line1.Temperature 5 values"));
    HistorianOn historian(db);
    const std::map<std::wstring, long> expected = {{L"Plant.Line1.Speed", 10}, {L"Plant.Line1.Temperature", 5}};
    EXPECT_EQ(SummaryCounts(historian), expected);
    const CL::CHistorianValues temperature = ReadAll(historian, L"Plant.Line1.Temperature");
    ASSERT_EQ(temperature.Size(), 5u);
    EXPECT_EQ(temperature.values[0].vt, VT_R4);
    // The second run of the old item follows its first one.
    const CL::CHistorianValues speed = ReadAll(historian, L"Plant.Line1.Speed");
    ASSERT_EQ(speed.Size(), 10u);
    ExpectStrictlyIncreasing(speed);
}

TEST(ServerSimulatorHistorian, Code128WithAMalformedFileKeepsArchivingTheItemsHeld)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace({{"Speed", VT_R8, "-1"}}, {}));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    sim.server.WriteExchangeFile("<Morvane_OPCDAAddressSpace");
    ASSERT_TRUE(sim.server.Control(128));
    ASSERT_TRUE(sim.WaitForRun(2));
    EXPECT_TRUE(sim.server.HasEvent("load failed #2 not well-formed"));
    EXPECT_EQ(db.RowCount(L"Plant.Line1.Speed"), 2);
}

TEST(ServerSimulatorHistorian, PeriodicRunsContinueEachItemsValues)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop), 250);
    ASSERT_TRUE(sim.StartAndWaitForRun(4));

    HistorianOn historian(db);
    const CL::CHistorianValues count = ReadAll(historian, L"Plant.Line1.Count");
    ASSERT_GE(count.Size(), 20u);
    ExpectStrictlyIncreasing(count);
    // The ramp goes on from run to run instead of starting again.
    for (size_t i = 0; i < count.Size(); ++i)
        EXPECT_EQ(count.values[i].lVal, static_cast<LONG>(i % 100)) << "value " << i;
    // Periodic runs of 5 values every 250 ms: 50 ms steps.
    EXPECT_NEAR(static_cast<double>(Ticks(count.times[1]) - Ticks(count.times[0])), 50.0 * kTicksPerMs,
                2.0 * kTicksPerMs);
}

TEST(ServerSimulatorHistorian, PeriodicRunsStartWhenTheIntervalKnobIsSet)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace({{"Speed", VT_R8, "-1"}}, {}));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    ::Sleep(1500);
    EXPECT_FALSE(sim.server.HasEvent("archive run #2 done"));   // interval 0: no periodic runs

    sim.server.SetKnob(sim::kKnobArchiveIntervalMs, 200);
    EXPECT_TRUE(sim.WaitForRun(3));
}

TEST(ServerSimulatorHistorian, CreatesTheTableWhenTheDatabaseHasNone)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite, false);
    ArchivingServer sim(db.ConnectionString(), AddressSpace({{"Speed", VT_R8, "-1"}}, {}));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    EXPECT_EQ(db.RowCount(L"Plant.Line1.Speed"), 1);
}

TEST(ServerSimulatorHistorian, ArchivesNothingWithoutCustomConnectionSet)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop), 200, false);
    ASSERT_TRUE(sim.server.Start());
    ASSERT_TRUE(sim.server.WaitForLoadCount(1));
    EXPECT_TRUE(sim.server.WaitForEvent("archiving off, no database in the settings"));
    ::Sleep(1000);
    EXPECT_EQ(db.RowCount(), 0);
    EXPECT_TRUE(sim.server.EventsStartingWith("archive").empty());   // no runs, nothing archived
}

TEST(ServerSimulatorHistorian, ItemOfATypeThatCannotBeStoredIsLoggedAndTheOthersAreArchived)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(),
                        AddressSpace({{"Odd", VT_VARIANT, "-1"}, {"Speed", VT_R8, "-1"}}, {}));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    const std::vector<std::string> failed = sim.server.EventsStartingWith("archive failed Plant.Line1.Odd: ");
    ASSERT_EQ(failed.size(), 1u);
    EXPECT_NE(failed[0].find("VT_VARIANT"), std::string::npos) << failed[0];
    EXPECT_EQ(db.RowCount(L"Plant.Line1.Odd"), 0);
    EXPECT_EQ(db.RowCount(L"Plant.Line1.Speed"), 1);
}

TEST(ServerSimulatorHistorian, DatabaseThatCannotBeOpenedIsLoggedAndTheServiceRunsOn)
{
    test::ComScope com;
    test::TempDir folder;
    const std::wstring unreachable =
        L"Driver={SQLite3};Database=" + test::HostPath(folder.File(L"missing")) + L"/no/such/folder/Historian.db;";
    ArchivingServer sim(unreachable, AddressSpace(kLine1, kTop), 200);
    ASSERT_TRUE(sim.server.Start());
    ASSERT_TRUE(test::WaitUntil([&] { return !sim.server.EventsStartingWith("archive run #2 failed: ").empty(); },
                                20s));
    const std::vector<std::string> failed = sim.server.EventsStartingWith("archive run #1 failed: ");
    ASSERT_EQ(failed.size(), 1u);
    EXPECT_NE(failed[0].find("_com_error"), std::string::npos) << failed[0];
    EXPECT_TRUE(sim.server.EventsStartingWith("archived ").empty());

    // The service still answers its control codes and stops.
    EXPECT_EQ(sim.server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    ASSERT_TRUE(sim.server.Control(129));
    EXPECT_TRUE(sim.server.WaitForEvent("wrote " + std::to_string(AddressSpace(kLine1, kTop).size()) + " bytes"));
    ASSERT_TRUE(sim.server.Control(128));
    EXPECT_TRUE(sim.server.WaitForLoadCount(2));
    EXPECT_TRUE(sim.server.Stop());
}

TEST(ServerSimulatorHistorian, StopsPromptlyWhileTheTimerRuns)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop), 60000);
    ASSERT_TRUE(sim.StartAndWaitForRun(1));

    ASSERT_NO_FATAL_FAILURE(sim.StopPromptly());
    EXPECT_TRUE(sim.server.WaitForEvent("stopped"));
    EXPECT_FALSE(sim.server.HasEvent("archive run #2 done"));
}

TEST(ServerSimulatorHistorian, StopsPromptlyWithFrequentRuns)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop), 50);
    ASSERT_TRUE(sim.StartAndWaitForRun(3));

    ASSERT_NO_FATAL_FAILURE(sim.StopPromptly());
    // Nothing is archived after the service reported that it stopped.
    const long rows = db.RowCount();
    ::Sleep(500);
    EXPECT_EQ(db.RowCount(), rows);
}

TEST(ServerSimulatorHistorian, ArchivesIntoPostgreSql)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::PostgreSql);
    ArchivingServer sim(db.ConnectionString(), AddressSpace(kLine1, kTop));
    ASSERT_TRUE(sim.StartAndWaitForRun(1));
    ASSERT_TRUE(sim.server.Control(128));
    ASSERT_TRUE(sim.WaitForRun(2));

    HistorianOn historian(db);
    std::map<std::wstring, long> expected;
    for (const auto& [id, type] : kArchived)
        expected[id] = 10;
    EXPECT_EQ(SummaryCounts(historian), expected);
    const CL::CHistorianValues names = ReadAll(historian, L"Names");
    ASSERT_EQ(names.Size(), 10u);
    EXPECT_EQ(names.values[9].vt, VT_ARRAY | VT_BSTR);
    ExpectStrictlyIncreasing(names);
}
