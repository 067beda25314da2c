#include <gtest/gtest.h>

#include "common/Exception.h"

using CL::CException;
using CL::HResultFromWin32;

TEST(HResultFromWin32, PositiveErrorGetsWin32Facility)
{
    EXPECT_EQ(static_cast<unsigned long>(HResultFromWin32(5)), 0x80070005ul);
    EXPECT_EQ(static_cast<unsigned long>(HResultFromWin32(1060)), 0x80070424ul);
}

TEST(HResultFromWin32, OnlyLow16BitsOfLargeErrorsAreKept)
{
    EXPECT_EQ(static_cast<unsigned long>(HResultFromWin32(0x12345)), 0x80072345ul);
}

TEST(HResultFromWin32, ZeroStaysZero)
{
    EXPECT_EQ(HResultFromWin32(0), 0);
}

TEST(HResultFromWin32, NegativeValuesStayUnchanged)
{
    EXPECT_EQ(HResultFromWin32(-1), -1);
    EXPECT_EQ(static_cast<unsigned long>(HResultFromWin32(static_cast<long>(0x80004005ul))), 0x80004005ul);
}

TEST(CException, TextHoldsCodeSystemMessageAndSource)
{
    const CException e(static_cast<HRESULT>(0x80070005ul), L"hService.get()");
    EXPECT_EQ(e.Error(), static_cast<HRESULT>(0x80070005ul));
    EXPECT_EQ(e.Source(), L"hService.get()");
    ASSERT_FALSE(e.Message().empty());
    EXPECT_EQ(e.Message().back(), L'\n') << "the system text is kept whole, line break included";
    EXPECT_EQ(e.Text(), L"Exception CException: Error=0x80070005(" + e.Message() + L") Source='hService.get()'");
}

TEST(CException, UnknownCodeHasEmptyMessage)
{
    const CException e(static_cast<HRESULT>(0xA0DE1234ul), L"");
    EXPECT_TRUE(e.Message().empty());
    EXPECT_EQ(e.Text(), L"Exception CException: Error=0xA0DE1234() Source=''");
}

TEST(CException, CopyKeepsAllThreeFields)
{
    const CException original(E_POINTER, L"snapshot.get()");
    const CException copy(original);
    EXPECT_EQ(copy.Error(), original.Error());
    EXPECT_EQ(copy.Source(), original.Source());
    EXPECT_EQ(copy.Message(), original.Message());
}

TEST(CException, TextIsVirtual)
{
    struct Derived : CException {
        Derived() : CException(E_FAIL, L"x") {}
        std::wstring Text() const override { return L"derived"; }
    };
    const Derived d;
    const CException& base = d;
    EXPECT_EQ(base.Text(), L"derived");
}
