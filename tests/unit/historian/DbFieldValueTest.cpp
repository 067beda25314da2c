// The one set of field types both connection backends hand up.
#include <gtest/gtest.h>

#include <comdef.h>

#include "common/historian/DbFieldValue.h"

namespace {

CL::CVariant Normalized(CL::CVariant value)
{
    CL::NormalizeFieldValue(value, L"f");
    return value;
}

} // namespace

TEST(DbFieldValue, SmallAndUnsignedIntegersBecomeVtI4)
{
    CL::CVariant v;
    v.vt = VT_I2;
    v.iVal = -7;
    CL::CVariant n = Normalized(v);
    EXPECT_EQ(n.vt, VT_I4);
    EXPECT_EQ(n.lVal, -7);
    v.vt = VT_UI4;
    v.ulVal = 0x7FFFFFFF;
    n = Normalized(v);
    EXPECT_EQ(n.vt, VT_I4);
    EXPECT_EQ(n.lVal, 0x7FFFFFFF);
    v.vt = VT_I8;
    v.llVal = 123456;
    n = Normalized(v);
    EXPECT_EQ(n.vt, VT_I4);
    EXPECT_EQ(n.lVal, 123456);
}

TEST(DbFieldValue, WholeDecimalBecomesVtI4AndFractionalDecimalVtR8)
{
    CL::CVariant v;
    ::VarDecFromI4(42, &v.decVal);
    v.vt = VT_DECIMAL;
    CL::CVariant n = Normalized(v);
    EXPECT_EQ(n.vt, VT_I4);
    EXPECT_EQ(n.lVal, 42);
    ::VarDecFromR8(2.5, &v.decVal);
    v.vt = VT_DECIMAL;
    n = Normalized(v);
    EXPECT_EQ(n.vt, VT_R8);
    EXPECT_EQ(n.dblVal, 2.5);
}

TEST(DbFieldValue, SinglesAndCurrencyBecomeVtR8)
{
    CL::CVariant v;
    v.vt = VT_R4;
    v.fltVal = 0.5f;
    CL::CVariant n = Normalized(v);
    EXPECT_EQ(n.vt, VT_R8);
    EXPECT_EQ(n.dblVal, 0.5);
}

TEST(DbFieldValue, IntegerBeyond32BitsIsAnOverflowError)
{
    CL::CVariant v;
    v.vt = VT_I8;
    v.llVal = 0x100000000ll;
    try {
        CL::NormalizeFieldValue(v, L"d");
        ADD_FAILURE() << "no error";
    } catch (const _com_error& e) {
        EXPECT_EQ(static_cast<unsigned long>(e.Error()), static_cast<unsigned long>(DISP_E_OVERFLOW));
    }
}

TEST(DbFieldValue, EmptyBecomesNullAndOtherTypesStay)
{
    EXPECT_EQ(Normalized(CL::CVariant()).vt, VT_NULL);
    const CL::CVariant text = Normalized(CL::CVariant(std::wstring_view(L"x")));
    ASSERT_EQ(text.vt, VT_BSTR);
    EXPECT_STREQ(text.bstrVal, L"x");
    CL::CVariant real;
    real.vt = VT_R8;
    real.dblVal = 1.25;
    EXPECT_EQ(Normalized(real).dblVal, 1.25);
}
