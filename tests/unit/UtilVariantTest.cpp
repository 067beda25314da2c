// Type names, EnhVariantChangeType, VariantToString, StringToVariant.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ValueTestHelpers.h"
#include "common/Util_Variant.h"

using CL::CVariant;
using CL::EnhVariantChangeType;
using CL::StringToVariant;
using CL::VariantToString;
using CL::VarTypeToString;
using namespace ValueTest;

namespace {

constexpr LCID kSystem = 0x0800;
constexpr LCID kInvariant = 0x007F;
constexpr LCID kGerman = 0x0407;   // decimal comma
constexpr USHORT kFlags = 0x02;
const wchar_t* const kCrLf = L"\r\n";

CVariant Scalar(VARTYPE vt, LONGLONG image)
{
    CVariant v;
    v.vt = vt;
    v.llVal = image;
    return v;
}

HRESULT Change(CVariant& dest, const CVariant& src, VARTYPE vt, LCID locale = kSystem)
{
    return EnhVariantChangeType(&dest, &src, locale, kFlags, vt);
}

std::wstring R8Text(double d)
{
    CVariant out;
    EXPECT_EQ(Change(out, CL::CVariant::R8(d), VT_BSTR), S_OK);
    return BstrText(out);
}

} // namespace

// --- VarTypeToString ------------------------------------------------------

TEST(VarTypeToString, NamesEveryListedBaseType)
{
    const struct {
        VARTYPE vt;
        const wchar_t* name;
    } table[] = {
        {0, L"VT_EMPTY"},    {1, L"VT_NULL"},         {2, L"VT_I2"},        {3, L"VT_I4"},
        {4, L"VT_R4"},       {5, L"VT_R8"},           {6, L"VT_CY"},        {7, L"VT_DATE"},
        {8, L"VT_BSTR"},     {10, L"VT_ERROR"},       {11, L"VT_BOOL"},     {12, L"VT_VARIANT"},
        {14, L"VT_DECIMAL"}, {16, L"VT_I1"},          {17, L"VT_UI1"},      {18, L"VT_UI2"},
        {19, L"VT_UI4"},     {20, L"VT_I8"},          {21, L"VT_UI8"},      {22, L"VT_INT"},
        {23, L"VT_UINT"},    {24, L"VT_VOID"},        {27, L"VT_SAFEARRAY"}, {29, L"VT_USERDEFINED"},
        {30, L"VT_LPSTR"},   {31, L"VT_LPWSTR"},      {36, L"VT_RECORD"},   {64, L"VT_FILETIME"},
        {65, L"VT_BLOB"},    {66, L"VT_STREAM"},      {67, L"VT_STORAGE"},  {68, L"VT_STREAMED_OBJECT"},
        {69, L"VT_BLOB_OBJECT"}, {71, L"VT_CF"},      {72, L"VT_CLSID"},
    };
    for (const auto& row : table)
        EXPECT_EQ(VarTypeToString(row.vt), row.name) << row.vt;
}

TEST(VarTypeToString, OtherBaseValuesReadUnknownWithTheirNumber)
{
    for (VARTYPE vt : {9, 13, 15, 25, 26, 28, 32, 35, 37, 38, 63, 70, 73, 100, 0xFFF})
        EXPECT_EQ(VarTypeToString(vt), L"Unknown (" + std::to_wstring(vt) + L")");
}

TEST(VarTypeToString, DispatchAndUnknownInterfacesReadUnknown)
{
    EXPECT_EQ(VarTypeToString(VT_DISPATCH), L"Unknown (9)");
    EXPECT_EQ(VarTypeToString(VT_UNKNOWN), L"Unknown (13)");
}

TEST(VarTypeToString, ArrayFlagIsAppended)
{
    EXPECT_EQ(VarTypeToString(0x2011), L"VT_UI1 | VT_ARRAY");
    EXPECT_EQ(VarTypeToString(8200), L"VT_BSTR | VT_ARRAY");
}

TEST(VarTypeToString, FlagsAreAppendedVectorArrayReservedInThatOrder)
{
    EXPECT_EQ(VarTypeToString(0x1003), L"VT_I4 | VT_VECTOR");
    EXPECT_EQ(VarTypeToString(0x8003), L"VT_I4 | VT_RESERVED");
    EXPECT_EQ(VarTypeToString(0xB003), L"VT_I4 | VT_VECTOR | VT_ARRAY | VT_RESERVED");
    EXPECT_EQ(VarTypeToString(0xA009), L"Unknown (9) | VT_ARRAY | VT_RESERVED");
}

TEST(VarTypeToString, ByReferenceBitAddsNothing)
{
    EXPECT_EQ(VarTypeToString(0x4003), L"VT_I4");
    EXPECT_EQ(VarTypeToString(0x6008), L"VT_BSTR | VT_ARRAY");
}

// --- EnhVariantChangeType -------------------------------------------------

TEST(EnhVariantChangeType, MissingPointerIsInvalidArgument)
{
    CVariant v = Scalar(VT_I4, 1);
    EXPECT_EQ(Hex(EnhVariantChangeType(nullptr, &v, kSystem, kFlags, VT_I4)), 0x80070057u);
    EXPECT_EQ(Hex(EnhVariantChangeType(&v, nullptr, kSystem, kFlags, VT_I4)), 0x80070057u);
}

TEST(EnhVariantChangeType, SameTypeCopiesTheSource)
{
    const CVariant src(L"text");
    CVariant dest = Scalar(VT_I4, 5);
    EXPECT_EQ(Change(dest, src, VT_BSTR), S_OK);
    EXPECT_EQ(BstrText(dest), L"text");
    EXPECT_NE(dest.bstrVal, src.bstrVal) << "a deep copy";
}

TEST(EnhVariantChangeType, SameTypeSameObjectLeavesTheValue)
{
    CVariant v(L"same");
    const BSTR before = v.bstrVal;
    EXPECT_EQ(EnhVariantChangeType(&v, &v, kSystem, kFlags, VT_BSTR), S_OK);
    EXPECT_EQ(v.bstrVal, before);
    EXPECT_EQ(BstrText(v), L"same");
}

TEST(EnhVariantChangeType, EmptySourceIsInvalidArgument)
{
    const CVariant empty;
    CVariant dest;
    EXPECT_EQ(Hex(Change(dest, empty, VT_I4)), 0x80070057u);
    EXPECT_EQ(Hex(Change(dest, empty, VT_BSTR)), 0x80070057u);
}

TEST(EnhVariantChangeType, EmptySourceToEmptyIsACopy)
{
    const CVariant empty;
    CVariant dest = Scalar(VT_I4, 3);
    EXPECT_EQ(Change(dest, empty, VT_EMPTY), S_OK);
    EXPECT_EQ(dest.vt, VT_EMPTY);
}

TEST(EnhVariantChangeType, TrueTextForAnIntegerGivesBoolOfValueOne)
{
    CVariant dest;
    EXPECT_EQ(Change(dest, CVariant(L"TRUE"), VT_I4), S_OK);
    EXPECT_EQ(dest.vt, VT_BOOL);
    EXPECT_EQ(dest.boolVal, 1) << "1, not VARIANT_TRUE";
}

TEST(EnhVariantChangeType, TrueAndFalseInAnyLetterCaseGiveBoolWhateverTheTarget)
{
    for (VARTYPE vt : {VT_R8, VT_R4, VT_UI1, VT_BOOL, VT_DATE, VT_I8}) {
        CVariant dest;
        EXPECT_EQ(Change(dest, CVariant(L"tRuE"), vt), S_OK);
        EXPECT_EQ(dest.vt, VT_BOOL);
        EXPECT_EQ(dest.boolVal, 1);
        EXPECT_EQ(Change(dest, CVariant(L"FaLsE"), vt), S_OK);
        EXPECT_EQ(dest.vt, VT_BOOL);
        EXPECT_EQ(dest.boolVal, 0);
    }
}

TEST(EnhVariantChangeType, TrueTextConvertedInPlaceBecomesBool)
{
    CVariant v(L"true");
    EXPECT_EQ(EnhVariantChangeType(&v, &v, kSystem, kFlags, VT_I2), S_OK);
    EXPECT_EQ(v.vt, VT_BOOL);
    EXPECT_EQ(v.boolVal, 1);
}

TEST(EnhVariantChangeType, TrueWithSurroundingTextIsNotTheBooleanWord)
{
    CVariant dest;
    EXPECT_EQ(Hex(Change(dest, CVariant(L"truex"), VT_R8)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Hex(Change(dest, CVariant(L"true "), VT_R8)), Hex(DISP_E_TYPEMISMATCH));
}

TEST(EnhVariantChangeType, UnsignedAbove127ToI1IsATypeMismatch)
{
    CVariant dest;
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI1, 128), VT_I1)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI2, 200), VT_I1)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI4, 0xFFFFFFFF), VT_I1)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Change(dest, Scalar(VT_UI1, 127), VT_I1), S_OK);
    EXPECT_EQ(dest.vt, VT_I1);
    EXPECT_EQ(dest.cVal, 127);
}

TEST(EnhVariantChangeType, UnsignedAbove32767ToI2IsATypeMismatch)
{
    CVariant dest;
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI2, 32768), VT_I2)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI4, 40000), VT_I2)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Change(dest, Scalar(VT_UI2, 32767), VT_I2), S_OK);
    EXPECT_EQ(dest.iVal, 32767);
}

TEST(EnhVariantChangeType, FourThousandMillionAsUI4ToI4IsATypeMismatch)
{
    CVariant dest;
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI4, 4000000000LL), VT_I4)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_UI4, 0x80000000LL), VT_I4)), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(Change(dest, Scalar(VT_UI4, 0x7FFFFFFF), VT_I4), S_OK);
    EXPECT_EQ(dest.lVal, 0x7FFFFFFF);
}

TEST(EnhVariantChangeType, MinusOneAsI2ToUI2IsATypeMismatch)
{
    CVariant dest;
    EXPECT_EQ(Hex(Change(dest, Scalar(VT_I2, 0xFFFF), VT_UI2)), Hex(DISP_E_TYPEMISMATCH));
}

TEST(EnhVariantChangeType, NegativeSignedToAnyUnsignedIsATypeMismatch)
{
    const CVariant negatives[] = {Scalar(VT_I1, 0xFF), Scalar(VT_I2, 0x8000), Scalar(VT_I4, 0xFFFFFFFF),
                                  Scalar(VT_I8, -1)};
    for (const CVariant& src : negatives) {
        for (VARTYPE vt : {VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT}) {
            CVariant dest;
            EXPECT_EQ(Hex(Change(dest, src, vt)), Hex(DISP_E_TYPEMISMATCH)) << src.vt << " to " << vt;
        }
    }
}

TEST(EnhVariantChangeType, ZeroSignedToUnsignedPasses)
{
    CVariant dest;
    EXPECT_EQ(Change(dest, Scalar(VT_I4, 0), VT_UI4), S_OK);
    EXPECT_EQ(dest.vt, VT_UI4);
    EXPECT_EQ(dest.ulVal, 0u);
}

TEST(EnhVariantChangeType, DoubleToTextHasAtMost15SignificantDigits)
{
    EXPECT_EQ(R8Text(1.5), L"1.5");
    EXPECT_EQ(R8Text(0.1), L"0.1");
    EXPECT_EQ(R8Text(1.0 / 3.0), L"0.333333333333333");
    EXPECT_EQ(R8Text(123456789012345678.0), L"1.23456789012346e+17");
    EXPECT_EQ(R8Text(1e20), L"1e+20");
    EXPECT_EQ(R8Text(1e-7), L"1e-07");
    EXPECT_EQ(R8Text(100.0), L"100");
    EXPECT_EQ(R8Text(-2.25), L"-2.25");
    EXPECT_EQ(R8Text(0.0), L"0");
    EXPECT_EQ(R8Text(-0.0), L"-0");
}

TEST(EnhVariantChangeType, FloatPointOneIsWidenedBeforeWriting)
{
    CVariant out;
    EXPECT_EQ(Change(out, CL::CVariant::R4(0.1f), VT_BSTR), S_OK);
    EXPECT_EQ(BstrText(out), L"0.100000001490116");
}

TEST(EnhVariantChangeType, DoubleToTextIgnoresTheLocale)
{
    CVariant out;
    EXPECT_EQ(Change(out, CL::CVariant::R8(1.5), VT_BSTR, kGerman), S_OK);
    EXPECT_EQ(BstrText(out), L"1.5");
}

TEST(EnhVariantChangeType, TextToDoubleUsesThePointWhateverTheLocale)
{
    for (LCID locale : {kSystem, kInvariant, kGerman}) {
        CVariant out;
        EXPECT_EQ(Change(out, CVariant(L"1.5"), VT_R8, locale), S_OK);
        EXPECT_EQ(out.vt, VT_R8);
        EXPECT_EQ(out.dblVal, 1.5);
    }
}

TEST(EnhVariantChangeType, TextWithCommaToDoubleIsATypeMismatch)
{
    CVariant out;
    EXPECT_EQ(Hex(Change(out, CVariant(L"1,5"), VT_R8, kGerman)), Hex(DISP_E_TYPEMISMATCH));
}

TEST(EnhVariantChangeType, LeftOverCharactersAfterADoubleAreATypeMismatch)
{
    for (const wchar_t* text : {L"1.5x", L"1.5 ", L"abc", L"", L"-", L"+-1", L"1e", L"0x10", L"1.5\u00e9"}) {
        CVariant out;
        EXPECT_EQ(Hex(Change(out, CVariant(text), VT_R8)), Hex(DISP_E_TYPEMISMATCH)) << text;
    }
}

TEST(EnhVariantChangeType, DoubleTextMayHaveLeadingBlanksSignAndExponent)
{
    const struct {
        const wchar_t* text;
        double value;
    } cases[] = {{L"  2.5", 2.5}, {L"+3", 3.0}, {L"-1e3", -1000.0}, {L".5", 0.5}, {L"5.", 5.0},
                 {L"1.7976931348623157e308", 1.7976931348623157e308}, {L"-0", -0.0}};
    for (const auto& c : cases) {
        CVariant out;
        EXPECT_EQ(Change(out, CVariant(c.text), VT_R8), S_OK) << c.text;
        EXPECT_EQ(out.dblVal, c.value) << c.text;
    }
}

TEST(EnhVariantChangeType, DoubleOutOfRangeInfiniteOrNaNIsAnOverflow)
{
    for (const wchar_t* text : {L"1e400", L"-1e400", L"inf", L"-infinity", L"nan"}) {
        CVariant out;
        EXPECT_EQ(Hex(Change(out, CVariant(text), VT_R8)), Hex(DISP_E_OVERFLOW)) << text;
    }
}

TEST(EnhVariantChangeType, NullStringToDoubleIsATypeMismatch)
{
    CVariant src;
    src.vt = VT_BSTR;
    src.bstrVal = nullptr;
    CVariant out;
    EXPECT_EQ(Hex(Change(out, src, VT_R8)), Hex(DISP_E_TYPEMISMATCH));
}

TEST(EnhVariantChangeType, FloatTextAboveFloatRangeIsAnOverflow)
{
    CVariant out;
    EXPECT_EQ(Hex(Change(out, CVariant(L"3.5e38"), VT_R4)), Hex(DISP_E_OVERFLOW));
    EXPECT_EQ(Hex(Change(out, CVariant(L"-3.5e38"), VT_R4)), Hex(DISP_E_OVERFLOW));
    EXPECT_EQ(Change(out, CVariant(L"3.4e38"), VT_R4), S_OK);
    EXPECT_EQ(out.vt, VT_R4);
    EXPECT_EQ(out.fltVal, 3.4e38f);
    EXPECT_EQ(Change(out, CVariant(L"3.4028234663852886e38"), VT_R4), S_OK);
    EXPECT_EQ(out.fltVal, std::numeric_limits<float>::max());
}

TEST(EnhVariantChangeType, FloatTextWithCommaIsATypeMismatch)
{
    CVariant out;
    EXPECT_EQ(Hex(Change(out, CVariant(L"1,5"), VT_R4)), Hex(DISP_E_TYPEMISMATCH));
}

TEST(EnhVariantChangeType, ArrayToArrayGoesThroughText)
{
    const CVariant ints = MakeArray<LONG>(VT_I4, {1, -2, 3});
    CVariant out;
    EXPECT_EQ(Change(out, ints, VT_ARRAY | VT_R8), S_OK);
    EXPECT_EQ(out.vt, VT_ARRAY | VT_R8);
    EXPECT_EQ(ArrayElements<double>(out), (std::vector<double>{1.0, -2.0, 3.0}));

    const CVariant doubles = MakeArray<double>(VT_R8, {0.5, 2.0});
    EXPECT_EQ(Change(out, doubles, VT_ARRAY | VT_BSTR), S_OK);
    EXPECT_EQ(StringElements(out), (std::vector<std::wstring>{L"0.5", L"2"}));
}

TEST(EnhVariantChangeType, ArrayToArrayFailureReturnsTheElementStatus)
{
    const CVariant texts = MakeStringArray({L"1", L"x"});
    CVariant out;
    EXPECT_EQ(Hex(Change(out, texts, VT_ARRAY | VT_I4)), Hex(DISP_E_TYPEMISMATCH));
}

TEST(EnhVariantChangeType, ArrayToArrayInPlaceReplacesTheArray)
{
    CVariant v = MakeArray<SHORT>(VT_I2, {7, 8});
    EXPECT_EQ(EnhVariantChangeType(&v, &v, kSystem, kFlags, VT_ARRAY | VT_I4), S_OK);
    EXPECT_EQ(v.vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(ArrayElements<LONG>(v), (std::vector<LONG>{7, 8}));
}

TEST(EnhVariantChangeType, OtherConversionsAreThePlatforms)
{
    CVariant out;
    EXPECT_EQ(Change(out, Scalar(VT_I4, 42), VT_BSTR), S_OK);
    EXPECT_EQ(BstrText(out), L"42");
    CVariant b;
    b.vt = VT_BOOL;
    b.boolVal = VARIANT_TRUE;
    EXPECT_EQ(Change(out, b, VT_BSTR), S_OK);
    EXPECT_EQ(BstrText(out), L"True");
    EXPECT_EQ(Change(out, CVariant(L"42"), VT_UI2), S_OK);
    EXPECT_EQ(out.vt, VT_UI2);
    EXPECT_EQ(out.uiVal, 42);
    EXPECT_EQ(Hex(Change(out, CVariant(L"70000"), VT_UI2)), Hex(DISP_E_OVERFLOW));
}

// --- VariantToString ------------------------------------------------------

TEST(VariantToString, EmptyValueGivesEmptyText)
{
    EXPECT_EQ(VariantToString(CVariant(), kSystem, kCrLf), L"");
}

TEST(VariantToString, ScalarsConvertToText)
{
    EXPECT_EQ(VariantToString(Scalar(VT_I4, -17), kSystem, kCrLf), L"-17");
    EXPECT_EQ(VariantToString(CL::CVariant::R8(0.25), kSystem, kCrLf), L"0.25");
    EXPECT_EQ(VariantToString(CVariant(L"x\u00e4\u4e2d"), kSystem, kCrLf), L"x\u00e4\u4e2d");
}

TEST(VariantToString, BooleansReadTrueAndFalse)
{
    CVariant b;
    b.vt = VT_BOOL;
    b.boolVal = VARIANT_FALSE;
    EXPECT_EQ(VariantToString(b, kSystem, kCrLf), L"False");
    b.boolVal = VARIANT_TRUE;
    EXPECT_EQ(VariantToString(b, kSystem, kCrLf), L"True");
}

TEST(VariantToString, BoolOfValueOneReadsTrue)
{
    const CVariant b = StringToVariant(L"true", VT_BOOL, kSystem, kCrLf);
    EXPECT_EQ(b.boolVal, 1);
    EXPECT_EQ(VariantToString(b, kSystem, kCrLf), L"True");
}

TEST(VariantToString, FailureCarriesStatusAndConversionText)
{
    CVariant nullValue;
    nullValue.vt = VT_NULL;
    const CL::CException e = CaughtException([&] { VariantToString(nullValue, kSystem, kCrLf); });
    EXPECT_TRUE(FAILED(e.Error()));
    EXPECT_EQ(e.Source(), L"EnhVariantChangeType (&v, &rv, locale, 0x02, VT_BSTR)");
}

TEST(VariantToString, ArrayGivesOneElementPerLine)
{
    EXPECT_EQ(VariantToString(MakeArray<LONG>(VT_I4, {1, 2, 3}), kSystem, kCrLf), L"1\r\n2\r\n3");
    EXPECT_EQ(VariantToString(MakeStringArray({L"a", L"b c"}), kSystem, kCrLf), L"a\r\nb c");
}

TEST(VariantToString, ArrayJoinsWithTheGivenSeparator)
{
    EXPECT_EQ(VariantToString(MakeArray<LONG>(VT_I4, {1, 2}), kSystem, L";"), L"1;2");
}

TEST(VariantToString, EmptyFirstElementLeavesNoEmptyLine)
{
    EXPECT_EQ(VariantToString(MakeStringArray({L"", L"x"}), kSystem, kCrLf), L"x");
    EXPECT_EQ(VariantToString(MakeStringArray({L"", L"", L"x"}), kSystem, kCrLf), L"x");
}

TEST(VariantToString, EmptyElementAfterTextKeepsItsLine)
{
    EXPECT_EQ(VariantToString(MakeStringArray({L"x", L"", L"y"}), kSystem, kCrLf), L"x\r\n\r\ny");
    EXPECT_EQ(VariantToString(MakeStringArray({L"x", L""}), kSystem, kCrLf), L"x\r\n");
}

TEST(VariantToString, EmptyArrayGivesEmptyText)
{
    EXPECT_EQ(VariantToString(MakeArray<LONG>(VT_I4, {}), kSystem, kCrLf), L"");
    EXPECT_EQ(VariantToString(MakeStringArray({}), kSystem, kCrLf), L"");
}

TEST(VariantToString, ArrayElementsFollowTheDoubleRule)
{
    EXPECT_EQ(VariantToString(MakeArray<float>(VT_R4, {0.1f, 2.0f}), kSystem, kCrLf),
              L"0.100000001490116\r\n2");
}

TEST(VariantToString, ArrayWithNonZeroLowerBoundReadsFromItsLowerBound)
{
    SAFEARRAYBOUND bound{3, 5};
    SAFEARRAY* psa = ::SafeArrayCreate(VT_I2, 1, &bound);
    ASSERT_NE(psa, nullptr);
    for (LONG i = 5; i < 8; ++i) {
        SHORT value = static_cast<SHORT>(i * 10);
        ASSERT_EQ(::SafeArrayPutElement(psa, &i, &value), S_OK);
    }
    CVariant v;
    v.vt = VT_ARRAY | VT_I2;
    v.parray = psa;
    EXPECT_EQ(VariantToString(v, kSystem, kCrLf), L"50\r\n60\r\n70");
}

TEST(VariantToString, ArrayOfVariantsConvertsEachElement)
{
    SAFEARRAY* psa = ::SafeArrayCreateVector(VT_VARIANT, 0, 3);
    ASSERT_NE(psa, nullptr);
    CVariant items[] = {Scalar(VT_I4, 4), CVariant(L"four"), CL::CVariant::R8(4.5)};
    for (LONG i = 0; i < 3; ++i)
        ASSERT_EQ(::SafeArrayPutElement(psa, &i, &items[i]), S_OK);
    CVariant v;
    v.vt = VT_ARRAY | VT_VARIANT;
    v.parray = psa;
    EXPECT_EQ(VariantToString(v, kSystem, kCrLf), L"4\r\nfour\r\n4.5");
}

TEST(VariantToString, TwoDimensionalArrayCannotBeShown)
{
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    CVariant v;
    v.parray = ::SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(v.parray, nullptr);
    v.vt = VT_ARRAY | VT_I4;
    const CL::CException e = CaughtException([&] { VariantToString(v, kSystem, kCrLf); });
    EXPECT_EQ(Hex(e.Error()), 0x80004001u);
}

TEST(VariantToString, ByReferenceArrayIsRead)
{
    CVariant inner = MakeArray<LONG>(VT_I4, {9, 8});
    SAFEARRAY* psa = inner.parray;
    VARIANT ref;
    ::VariantInit(&ref);
    ref.vt = VT_ARRAY | VT_I4 | VT_BYREF;
    ref.pparray = &psa;
    EXPECT_EQ(VariantToString(ref, kSystem, kCrLf), L"9\r\n8");
}

// --- StringToVariant ------------------------------------------------------

TEST(StringToVariant, EmptyTextForAnIntegerFailsWithEmptyString)
{
    EXPECT_CEXCEPTION(StringToVariant(L"", VT_I4, kSystem, kCrLf), 0x80070057, L"Empty string.");
}

TEST(StringToVariant, EmptyTextForEmptyTypeGivesEmptyVariant)
{
    const CVariant v = StringToVariant(L"", VT_EMPTY, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST(StringToVariant, EmptyTextForAStringGivesAnEmptyString)
{
    const CVariant v = StringToVariant(L"", VT_BSTR, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_BSTR);
    EXPECT_EQ(BstrText(v), L"");
}

TEST(StringToVariant, EmptyTextRuleIsABitTestNotAStringCheck)
{
    // Types without bit 0x8 stop at "Empty string.".
    for (VARTYPE vt : {VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE, VT_I1, VT_UI1, VT_UI2, VT_UI4,
                       VT_I8, VT_UI8, VT_INT, VT_UINT}) {
        EXPECT_CEXCEPTION(StringToVariant(L"", vt, kSystem, kCrLf), 0x80070057, L"Empty string.");
    }
    // Types with bit 0x8 reach the conversion, which decides.
    const CL::CException e = CaughtException([] { StringToVariant(L"", VT_BOOL, kSystem, kCrLf); });
    EXPECT_NE(e.Source(), L"Empty string.");
    EXPECT_EQ(e.Source(), L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
    EXPECT_TRUE(FAILED(e.Error()));
}

TEST(StringToVariant, EmptyTextForAStringArrayGivesNoElements)
{
    const CVariant v = StringToVariant(L"", VT_ARRAY | VT_BSTR, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_ARRAY | VT_BSTR);
    EXPECT_TRUE(StringElements(v).empty());
}

TEST(StringToVariant, EmptyTextForAnIntegerArrayFailsWithEmptyString)
{
    EXPECT_CEXCEPTION(StringToVariant(L"", VT_ARRAY | VT_I4, kSystem, kCrLf), 0x80070057, L"Empty string.");
}

TEST(StringToVariant, TrueTypedForAnIntegerGivesBoolOfValueOne)
{
    const CVariant v = StringToVariant(L"TRUE", VT_I4, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_BOOL);
    EXPECT_EQ(v.boolVal, 1);
}

TEST(StringToVariant, PointDecimalParsesTheSameUnderAnyLocale)
{
    for (LCID locale : {kSystem, kInvariant, kGerman}) {
        const CVariant v = StringToVariant(L"1.5", VT_R8, locale, kCrLf);
        EXPECT_EQ(v.vt, VT_R8);
        EXPECT_EQ(v.dblVal, 1.5);
    }
}

TEST(StringToVariant, CommaDecimalFailsWithTypeMismatch)
{
    EXPECT_CEXCEPTION(StringToVariant(L"1,5", VT_R8, kSystem, kCrLf), DISP_E_TYPEMISMATCH,
                      L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
}

TEST(StringToVariant, FloatAboveRangeFailsWithOverflowJustBelowSucceeds)
{
    EXPECT_CEXCEPTION(StringToVariant(L"3.5e38", VT_R4, kSystem, kCrLf), DISP_E_OVERFLOW,
                      L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
    const CVariant v = StringToVariant(L"3.4e38", VT_R4, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_R4);
    EXPECT_EQ(v.fltVal, 3.4e38f);
}

TEST(StringToVariant, TextThatIsNoNumberFailsWithTheConversionText)
{
    const CL::CException e = CaughtException([] { StringToVariant(L"abc", VT_I4, kSystem, kCrLf); });
    EXPECT_EQ(Hex(e.Error()), Hex(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(e.Source(), L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
}

TEST(StringToVariant, TextForAStringKeepsItAsItIs)
{
    const std::wstring text = L" a\u00e9\u4e2d\U0001F600\r\nb ";
    EXPECT_EQ(BstrText(StringToVariant(text, VT_BSTR, kSystem, kCrLf)), text);
}

TEST(StringToVariant, IntegerTypesTakeTheirRange)
{
    const CVariant i1 = StringToVariant(L"-128", VT_I1, kSystem, kCrLf);
    EXPECT_EQ(i1.vt, VT_I1);
    EXPECT_EQ(i1.cVal, -128);
    const CVariant ui8 = StringToVariant(L"18446744073709551615", VT_UI8, kSystem, kCrLf);
    EXPECT_EQ(ui8.vt, VT_UI8);
    EXPECT_EQ(ui8.ullVal, 18446744073709551615ull);
    EXPECT_CEXCEPTION(StringToVariant(L"256", VT_UI1, kSystem, kCrLf), DISP_E_OVERFLOW,
                      L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
}

TEST(StringToVariant, EmptyLineBetweenTwoLinesGivesAnEmptyMiddleString)
{
    const CVariant v = StringToVariant(L"a\r\n\r\nb", VT_ARRAY | VT_BSTR, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(StringElements(v), (std::vector<std::wstring>{L"a", L"", L"b"}));
}

TEST(StringToVariant, ThreeLinesGiveAThreeElementIntegerArray)
{
    const CVariant v = StringToVariant(L"1\r\n2\r\n3", VT_ARRAY | VT_I4, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(ArrayElements<LONG>(v), (std::vector<LONG>{1, 2, 3}));
    EXPECT_EQ(::SafeArrayGetDim(v.parray), 1u);
    LONG lower = -1;
    ::SafeArrayGetLBound(v.parray, 1, &lower);
    EXPECT_EQ(lower, 0);
}

TEST(StringToVariant, TextEndingInSeparatorGivesAnEmptyLastElement)
{
    EXPECT_EQ(StringElements(StringToVariant(L"a\r\n", VT_ARRAY | VT_BSTR, kSystem, kCrLf)),
              (std::vector<std::wstring>{L"a", L""}));
    EXPECT_CEXCEPTION(StringToVariant(L"1\r\n", VT_ARRAY | VT_I4, kSystem, kCrLf), 0x80070057,
                      L"Empty string.");
}

TEST(StringToVariant, LoneLineBreakCharactersDoNotSplit)
{
    EXPECT_EQ(StringElements(StringToVariant(L"a\nb\rc", VT_ARRAY | VT_BSTR, kSystem, kCrLf)),
              (std::vector<std::wstring>{L"a\nb\rc"}));
}

TEST(StringToVariant, ArraySplitsAtTheGivenSeparator)
{
    EXPECT_EQ(StringElements(StringToVariant(L"1.5;;2", VT_ARRAY | VT_BSTR, kSystem, L";")),
              (std::vector<std::wstring>{L"1.5", L"", L"2"}));
    EXPECT_EQ(ArrayElements<double>(StringToVariant(L"1.5;2", VT_ARRAY | VT_R8, kSystem, L";")),
              (std::vector<double>{1.5, 2.0}));
}

TEST(StringToVariant, ElementThatFailsStopsTheArrayWithItsStatus)
{
    EXPECT_CEXCEPTION(StringToVariant(L"1\r\nx", VT_ARRAY | VT_I4, kSystem, kCrLf), DISP_E_TYPEMISMATCH,
                      L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
    EXPECT_CEXCEPTION(StringToVariant(L"1\r\n\r\n2", VT_ARRAY | VT_I4, kSystem, kCrLf), 0x80070057,
                      L"Empty string.");
}

TEST(StringToVariant, BooleanWordsInANumberArrayBecomeOneAndZero)
{
    EXPECT_EQ(ArrayElements<LONG>(StringToVariant(L"true\r\nFALSE\r\n5", VT_ARRAY | VT_I4, kSystem, kCrLf)),
              (std::vector<LONG>{1, 0, 5}));
}

TEST(StringToVariant, BooleanArrayHoldsTheFlagValues)
{
    const CVariant v = StringToVariant(L"True\r\n0", VT_ARRAY | VT_BOOL, kSystem, kCrLf);
    EXPECT_EQ(v.vt, VT_ARRAY | VT_BOOL);
    const std::vector<VARIANT_BOOL> values = ArrayElements<VARIANT_BOOL>(v);
    ASSERT_EQ(values.size(), 2u);
    EXPECT_NE(values[0], 0);
    EXPECT_EQ(values[1], 0);
}

TEST(StringToVariant, ArrayTextRoundTripsThroughVariantToString)
{
    const std::wstring text = L"1.5\r\n-2\r\n1e+20";
    const CVariant v = StringToVariant(text, VT_ARRAY | VT_R8, kSystem, kCrLf);
    EXPECT_EQ(VariantToString(v, kSystem, kCrLf), text);
}
