// Names made unique on a level by a number.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "addressspace/NameNumbering.h"
#include "addressspace/NoCaseLess.h"

namespace {

CNameNumbering::Taken TakenOf(std::set<std::wstring, NoCaseLess> names)
{
    return [names](const std::wstring& name) { return names.count(name) != 0; };
}

} // namespace

TEST(NameNumbering, AFreeNameStaysAsItIs)
{
    EXPECT_EQ(CNameNumbering::NextFree(L"Speed", TakenOf({L"Count"})), L"Speed");
}

TEST(NameNumbering, ATakenNameGetsTheNextFreeNumberIgnoringCase)
{
    EXPECT_EQ(CNameNumbering::NextFree(L"Speed", TakenOf({L"speed"})), L"Speed_2");
    EXPECT_EQ(CNameNumbering::NextFree(L"Speed", TakenOf({L"Speed", L"SPEED_2"})), L"Speed_3");
    EXPECT_EQ(CNameNumbering::NextFree(L"Speed_2", TakenOf({L"Speed", L"Speed_2"})), L"Speed_3");
    EXPECT_EQ(CNameNumbering::NextFree(L"Motor7", TakenOf({L"Motor7"})), L"Motor7_2");
}

TEST(NameNumbering, CountingOnFromATrailingNumberSkipsTakenNames)
{
    EXPECT_EQ(CNameNumbering::CountOn(L"Motor7", 3, TakenOf({L"Motor7", L"motor9"})),
              (std::vector<std::wstring>{L"Motor8", L"Motor10", L"Motor11"}));
    EXPECT_EQ(CNameNumbering::CountOn(L"Pump007", 2, TakenOf({})), (std::vector<std::wstring>{L"Pump008", L"Pump009"}));
}

TEST(NameNumbering, ANameWithoutANumberCountsFromOneWithAnUnderscore)
{
    EXPECT_EQ(CNameNumbering::CountOn(L"Valve", 3, TakenOf({L"Valve", L"Valve_2"})),
              (std::vector<std::wstring>{L"Valve_1", L"Valve_3", L"Valve_4"}));
}
