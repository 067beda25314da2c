// Entry point of every test program.
#include <gtest/gtest.h>

#include "addressspace/EditorLayout.h"
#include "common/ChangeJournal.h"
#include "common/RegistryKey.h"

namespace {

// Every test starts without the editor layout that an earlier test's editor
// left in the registry, and the program leaves none behind: a test that
// resized the editor must not change the window the next one opens.
class EditorLayoutReset : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo&) override { Reset(); }
    void OnTestProgramEnd(const testing::UnitTest&) override { Reset(); }

private:
    static void Reset()
    {
        try {
            CL::CRegistryKey::Delete(HKEY_CURRENT_USER, CEditorLayout::DefaultKey());
        } catch (...) {
            ADD_FAILURE() << "the editor layout of an earlier test could not be deleted";
        }
    }
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
    testing::UnitTest::GetInstance()->listeners().Append(new EditorLayoutReset);
    return RUN_ALL_TESTS();
}
