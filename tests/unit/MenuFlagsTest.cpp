#include <gtest/gtest.h>

#include "TestSupport.h"
#include "app/Application.h"
#include "app/MenuFlags.h"

namespace {
CL::MenuFlags Parse(std::initializer_list<const wchar_t*> args)
{
    std::vector<const wchar_t*> argv = {L"C:\\Prog\\MorvaneGui.exe"};
    argv.insert(argv.end(), args.begin(), args.end());
    CL::MenuFlags flags;
    CL::ApplyMenuSwitches(static_cast<int>(argv.size()), argv.data(), flags);
    return flags;
}
bool AllShown(const CL::MenuFlags& f)
{
    return f.ShowAddressSpace && f.ShowHdaExplorer && f.ShowOptions && f.ShowAbout && f.ServerPresent;
}
} // namespace

TEST(MenuSwitches, NoArgumentsShowEverything)
{
    EXPECT_TRUE(AllShown(Parse({})));
}

TEST(MenuSwitches, EachSwitchClearsItsOwnFlag)
{
    auto f = Parse({L"noas"});
    EXPECT_FALSE(f.ShowAddressSpace);
    EXPECT_TRUE(f.ShowHdaExplorer && f.ShowOptions && f.ShowAbout && f.ServerPresent);
    f = Parse({L"nohda"});
    EXPECT_FALSE(f.ShowHdaExplorer);
    EXPECT_TRUE(f.ShowAddressSpace && f.ShowOptions && f.ShowAbout);
    f = Parse({L"noopt"});
    EXPECT_FALSE(f.ShowOptions);
    EXPECT_TRUE(f.ShowAddressSpace && f.ShowHdaExplorer && f.ShowAbout);
    f = Parse({L"noabout"});
    EXPECT_FALSE(f.ShowAbout);
    EXPECT_TRUE(f.ShowAddressSpace && f.ShowHdaExplorer && f.ShowOptions);
}

TEST(MenuSwitches, SwitchesIgnoreLetterCase)
{
    EXPECT_FALSE(Parse({L"NOHDA"}).ShowHdaExplorer);
    EXPECT_FALSE(Parse({L"NoAs"}).ShowAddressSpace);
    EXPECT_FALSE(Parse({L"NOOPT"}).ShowOptions);
}

TEST(MenuSwitches, OnlyWholeArgumentsCount)
{
    EXPECT_TRUE(AllShown(Parse({L"nohda2", L"/noas", L"-noopt", L"noabout=1", L"xnoas", L"no as"})));
}

TEST(MenuSwitches, ProgramPathIsNeverASwitch)
{
    const wchar_t* argv[] = {L"noas"};
    CL::MenuFlags flags;
    CL::ApplyMenuSwitches(1, argv, flags);
    EXPECT_TRUE(AllShown(flags));
}

TEST(MenuSwitches, SeveralSwitchesTogetherAndUnknownOnesIgnored)
{
    const auto f = Parse({L"verbose", L"noopt", L"NOABOUT", L"whatever"});
    EXPECT_FALSE(f.ShowOptions);
    EXPECT_FALSE(f.ShowAbout);
    EXPECT_TRUE(f.ShowAddressSpace && f.ShowHdaExplorer && f.ServerPresent);
}

TEST(MenuSwitches, CommandLineIsSplitLikeTheShellDoes)
{
    CL::MenuFlags flags;
    CL::ApplyCommandLineSwitches(L"\"C:\\Program Files\\MorvaneGui.exe\" NOHDA \"noas\" noopt2", flags);
    EXPECT_FALSE(flags.ShowHdaExplorer);
    EXPECT_FALSE(flags.ShowAddressSpace);
    EXPECT_TRUE(flags.ShowOptions);
}

TEST(ServerPresence, MissingServerClearsFourFlagsAndKeepsTheExplorer)
{
    CL::MenuFlags flags;
    CL::ApplyServerPresence(false, flags);
    EXPECT_FALSE(flags.ShowAddressSpace);
    EXPECT_FALSE(flags.ShowOptions);
    EXPECT_FALSE(flags.ShowAbout);
    EXPECT_FALSE(flags.ServerPresent);
    EXPECT_TRUE(flags.ShowHdaExplorer);
}

TEST(ServerPresence, MissingServerKeepsTheExplorerHiddenByItsSwitch)
{
    auto flags = Parse({L"nohda"});
    CL::ApplyServerPresence(false, flags);
    EXPECT_FALSE(flags.ShowHdaExplorer);
}

TEST(ServerPresence, PresentServerChangesNothing)
{
    auto flags = Parse({L"noopt"});
    CL::ApplyServerPresence(true, flags);
    EXPECT_FALSE(flags.ShowOptions);
    EXPECT_TRUE(flags.ShowAddressSpace && flags.ShowAbout && flags.ServerPresent);
}

TEST(ServerPresence, AFileOrAFolderNamedMorvaneExeCountsAsPresent)
{
    test::TempDir dir;
    EXPECT_FALSE(CL::ServerExecutableExists(dir.File(L"Morvane.exe")));
    ::CreateDirectoryW(dir.File(L"Morvane.exe").c_str(), nullptr);
    EXPECT_TRUE(CL::ServerExecutableExists(dir.File(L"Morvane.exe")));
    test::TempDir dir2;
    test::WriteFileBytes(dir2.File(L"Morvane.exe"), "MZ");
    EXPECT_TRUE(CL::ServerExecutableExists(dir2.File(L"Morvane.exe")));
}

TEST(InstanceMutex, NameIsTheServiceNameFollowedByMutex)
{
    EXPECT_EQ(CL::InstanceMutexName(L"Morvane"), L"MorvaneMutex");
    EXPECT_EQ(CL::InstanceMutexName(L"Plant7"), L"Plant7Mutex");
}
