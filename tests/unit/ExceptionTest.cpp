#include <gtest/gtest.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <functional>

#include "TestSupport.h"
#include "common/Exception.h"
#include "common/Text.h"

using CL::CException;
using CL::HResultFromWin32;

namespace {

// The bytes written to standard output while work() runs, taken from the
// descriptor itself (binary, so that nothing is translated on the way).
std::string CaptureStandardOutput(const std::function<void()>& work)
{
    test::TempDir dir;
    const std::wstring path = dir.File(L"stdout.txt");
    std::fflush(stdout);
    const int saved = _dup(_fileno(stdout));
    const int file = _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY, _S_IREAD | _S_IWRITE);
    _dup2(file, _fileno(stdout));
    _close(file);
    work();
    std::fflush(stdout);
    _dup2(saved, _fileno(stdout));
    _close(saved);
    return test::ReadFileBytes(path);
}

} // namespace

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

TEST(CException, PrintWritesALineBreakAndTheTextToStandardOutput)
{
    const CException e(static_cast<HRESULT>(0x80070005ul), L"snapshot.get()");
    ASSERT_FALSE(e.Message().empty());
    const std::string printed = CaptureStandardOutput([&] { e.Print(); });
    EXPECT_EQ(printed, "\nException CException: Error=0x80070005(" + CL::Narrow(e.Message()) +
                           ") Source='snapshot.get()'");
}

TEST(CException, PrintIsVirtual)
{
    struct Derived : CException {
        Derived() : CException(E_FAIL, L"x") {}
        void Print() const override { std::fputs("derived", stdout); }
    };
    const Derived d;
    const CException& base = d;
    EXPECT_EQ(CaptureStandardOutput([&] { base.Print(); }), "derived");
}
