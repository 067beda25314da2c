// Entry point of every test program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "ProcessState.h"
#include "addressspace/EditorLayout.h"
#include "common/ChangeJournal.h"
#include "common/Exception.h"
#include "common/RegistryKey.h"
#include "common/Text.h"

namespace {

// Every test leaves the process as it found it. Before each test the state a
// test may change is noted (ProcessState); a test that leaves a difference
// fails, naming it, and the noted state is put back so that the tests after
// it are not misled too.
//
// The clipboard and the registry are shared with every program of the Wine
// session: they are compared only when MORVANE_CHECK_SHARED_STATE=1 says that
// this program runs alone (scripts/test-shuffled.sh), not beside the other
// test programs as under CTest.
//
// The editor writes its layout to the registry whenever it closes: that is
// the program's own record, deleted before and after every test, so that a
// test that resized the editor does not change the window the next one opens.
class TestIsolation : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo&) override
    {
        DeleteEditorLayout();
        m_before = test::ProcessState::Take(CheckShared());
    }

    void OnTestEnd(const testing::TestInfo&) override
    {
        DeleteEditorLayout();
        const std::vector<std::string> differences = m_before.Differences(test::ProcessState::Take(CheckShared()));
        if (differences.empty())
            return;
        std::string text = "The test left process-wide state changed:";
        for (const std::string& line : differences)
            text += "\n  " + line;
        ADD_FAILURE() << text;
        m_before.Restore();
    }

    void OnTestProgramEnd(const testing::UnitTest&) override { DeleteEditorLayout(); }

private:
    static bool CheckShared()
    {
        const char* value = std::getenv("MORVANE_CHECK_SHARED_STATE");
        return value && std::string(value) == "1";
    }

    // The test programs run side by side under CTest and share the key: a
    // delete can meet another program writing or deleting it at the same
    // moment, and is tried again.
    static void DeleteEditorLayout()
    {
        std::string error;
        for (int attempt = 0; attempt < 5; ++attempt) {
            try {
                CL::CRegistryKey::Delete(HKEY_CURRENT_USER, CEditorLayout::DefaultKey());
                return;
            } catch (const CL::CException& e) {
                error = CL::Narrow(e.Text());
            }
            ::Sleep(20);
        }
        ADD_FAILURE() << "the editor layout of an earlier test could not be deleted: " << error;
    }

    test::ProcessState m_before;
};

} // namespace

// The program's change journal lies beside the test program by default;
// the tests' changes go to a journal of this run in the temporary folder
// instead, removed at the end.
class TestJournal {
public:
    TestJournal()
    {
        wchar_t folder[MAX_PATH] = {};
        ::GetTempPathW(MAX_PATH, folder);
        m_path = std::wstring(folder) + L"MorvaneTestJournal-" + std::to_wstring(::GetCurrentProcessId()) + L".csv";
        CL::CChangeJournal::Instance().SetPath(m_path);
    }
    ~TestJournal() { ::DeleteFileW(m_path.c_str()); }

private:
    std::wstring m_path;
};

int main(int argc, char** argv)
{
    TestJournal journal;
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new TestIsolation);
    return RUN_ALL_TESTS();
}
