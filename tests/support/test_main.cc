// Entry point of every test program.
#include <gtest/gtest.h>

#include "addressspace/EditorLayout.h"
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

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new EditorLayoutReset);
    return RUN_ALL_TESTS();
}
