// The editor's history of edit commands: undo and redo order, the clean
// state, and commands that fail.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "addressspace/EditHistory.h"
#include "common/Exception.h"

namespace {

// Appends its letter to a shared text on Do, takes it off on Undo; fails
// when told to.
class AppendCommand : public CEditCommand {
public:
    AppendCommand(std::wstring& text, wchar_t letter, bool& fail) : m_text(text), m_letter(letter), m_fail(fail) {}
    void Do() override
    {
        if (m_fail)
            throw CL::CException(E_FAIL, L"AppendCommand::Do");
        m_text += m_letter;
    }
    void Undo() override
    {
        if (m_fail)
            throw CL::CException(E_FAIL, L"AppendCommand::Undo");
        m_text.pop_back();
    }
    std::wstring Description() const override { return std::wstring(L"Append ") + m_letter; }
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return nullptr; }

private:
    std::wstring& m_text;
    wchar_t m_letter;
    bool& m_fail;
};

class EditHistory : public testing::Test {
protected:
    void Run(wchar_t letter) { history.Execute(std::make_unique<AppendCommand>(text, letter, fail)); }

    std::wstring text;
    bool fail = false;
    CEditHistory history;
};

} // namespace

TEST_F(EditHistory, UndoAndRedoGoBackAndForthOneStepAtATime)
{
    Run(L'a');
    Run(L'b');
    Run(L'c');
    EXPECT_EQ(history.UndoDescription(), L"Append c");
    history.Undo();
    history.Undo();
    EXPECT_EQ(text, L"a");
    EXPECT_EQ(history.RedoDescription(), L"Append b");
    history.Redo();
    EXPECT_EQ(text, L"ab");
    EXPECT_EQ(history.UndoCount(), 2u);
    EXPECT_EQ(history.RedoCount(), 1u);
}

TEST_F(EditHistory, UndoAndRedoWithNothingToDoReturnNull)
{
    EXPECT_EQ(history.Undo(), nullptr);
    EXPECT_EQ(history.Redo(), nullptr);
    EXPECT_TRUE(history.UndoDescription().empty());
    EXPECT_TRUE(history.RedoDescription().empty());
}

TEST_F(EditHistory, ANewCommandDropsWhatCouldHaveBeenRedone)
{
    Run(L'a');
    Run(L'b');
    history.Undo();
    Run(L'x');
    EXPECT_EQ(text, L"ax");
    EXPECT_FALSE(history.CanRedo());
}

TEST_F(EditHistory, TheCleanStateIsTheStartUntilResetWithoutOne)
{
    EXPECT_TRUE(history.IsClean());
    Run(L'a');
    EXPECT_FALSE(history.IsClean());
    history.Undo();
    EXPECT_TRUE(history.IsClean());
    history.Reset(false);
    EXPECT_FALSE(history.IsClean());
    Run(L'b');
    history.Undo();
    EXPECT_FALSE(history.IsClean()) << "no state of this history matches the server";
}

TEST_F(EditHistory, ANewCommandAfterUndoingToTheStartKeepsTheStartClean)
{
    Run(L'a');
    history.Undo();
    Run(L'b');
    EXPECT_FALSE(history.IsClean());
    history.Undo();
    EXPECT_TRUE(history.IsClean());
}

TEST_F(EditHistory, AFailingDoRecordsNothing)
{
    Run(L'a');
    history.Undo();
    fail = true;
    EXPECT_THROW(Run(L'b'), CL::CException);
    EXPECT_EQ(history.UndoCount(), 0u);
    EXPECT_EQ(history.RedoCount(), 1u) << "the redo step stays";
    EXPECT_TRUE(history.IsClean());
}

TEST_F(EditHistory, AFailingUndoOrRedoLeavesTheCommandWhereItWas)
{
    Run(L'a');
    fail = true;
    EXPECT_THROW(history.Undo(), CL::CException);
    EXPECT_EQ(history.UndoCount(), 1u);
    fail = false;
    history.Undo();
    fail = true;
    EXPECT_THROW(history.Redo(), CL::CException);
    EXPECT_EQ(history.RedoCount(), 1u);
    EXPECT_EQ(text, L"");
}
