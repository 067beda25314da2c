// Writer and reader together: every scalar and array type the item dialog
// offers keeps its boundary values, bit for bit, through a stored record.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "ValueTestHelpers.h"
#include "common/Util_Variant.h"
#include "common/historian/var_length_container.h"

using CL::CDecodedRecord;
using CL::CVariant;
using CL::var_length_container;
using namespace ValueTest;

namespace {

// The 16 scalar types of the item dialog, in its order; the other 16 entries
// are the same types with VT_ARRAY.
const VARTYPE kDialogScalarTypes[] = {VT_INT, VT_I1, VT_I2, VT_I4, VT_I8, VT_UINT, VT_UI1, VT_UI2,
                                      VT_UI4, VT_UI8, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_BSTR};

template <typename T>
uint64_t Image(T value)
{
    static_assert(sizeof(T) <= 8);
    uint64_t image = 0;
    std::memcpy(&image, &value, sizeof value);
    return image;
}

uint64_t DoubleWithPayload()
{
    return 0x7FF8000000001234ull;   // a quiet NaN carrying a payload
}

// Boundary values of a numeric type as 8-byte images (only the element's
// own bytes count).
std::vector<uint64_t> BoundaryImages(VARTYPE vt)
{
    using std::numeric_limits;
    switch (vt) {
    case VT_INT:
    case VT_I4:
        return {Image<INT32>(numeric_limits<INT32>::min()), Image<INT32>(numeric_limits<INT32>::max()), 0,
                Image<INT32>(-1)};
    case VT_I1:
        return {Image<signed char>(-128), Image<signed char>(127), 0, Image<signed char>(-1)};
    case VT_I2:
        return {Image<SHORT>(-32768), Image<SHORT>(32767), 0, Image<SHORT>(-1)};
    case VT_I8:
    case VT_CY:
        return {Image<LONGLONG>(numeric_limits<LONGLONG>::min()), Image<LONGLONG>(numeric_limits<LONGLONG>::max()),
                0, Image<LONGLONG>(-1)};
    case VT_UINT:
    case VT_UI4:
        return {0, Image<UINT32>(numeric_limits<UINT32>::max()), 1};
    case VT_UI1:
        return {0, Image<BYTE>(255), 1};
    case VT_UI2:
        return {0, Image<USHORT>(65535), 1};
    case VT_UI8:
        return {0, Image<ULONGLONG>(numeric_limits<ULONGLONG>::max()), 1};
    case VT_R4:
        return {Image<float>(numeric_limits<float>::max()), Image<float>(numeric_limits<float>::lowest()),
                Image<float>(numeric_limits<float>::min()), Image<float>(numeric_limits<float>::denorm_min()),
                Image<float>(0.0f), Image<float>(-0.0f), Image<float>(numeric_limits<float>::quiet_NaN()),
                Image<float>(numeric_limits<float>::infinity()), Image<float>(-numeric_limits<float>::infinity())};
    case VT_R8:
        return {Image<double>(numeric_limits<double>::max()), Image<double>(numeric_limits<double>::lowest()),
                Image<double>(numeric_limits<double>::min()), Image<double>(numeric_limits<double>::denorm_min()),
                Image<double>(0.0), Image<double>(-0.0), Image<double>(numeric_limits<double>::quiet_NaN()),
                DoubleWithPayload(), Image<double>(numeric_limits<double>::infinity()),
                Image<double>(-numeric_limits<double>::infinity())};
    case VT_DATE:
        return {Image<double>(-657434.0), Image<double>(2958465.999988426), Image<double>(0.0),
                Image<double>(-0.0), Image<double>(45000.5), Image<double>(numeric_limits<double>::quiet_NaN())};
    case VT_BOOL:
        return {Image<SHORT>(VARIANT_TRUE), Image<SHORT>(VARIANT_FALSE), Image<SHORT>(1)};
    default:
        ADD_FAILURE() << "no boundary values for " << vt;
        return {};
    }
}

const std::vector<std::wstring>& BoundaryStrings()
{
    static const std::vector<std::wstring> strings = {
        L"",
        L"a",
        L"Gr\u00fc\u00dfe \u4e2d\u6587 \U0001F600 \u0410\u0411",
        std::wstring(L"a\0b", 3),   // an embedded null keeps its place
        std::wstring(5000, L'\u00e9'),
    };
    return strings;
}

CVariant ScalarFromImage(VARTYPE vt, uint64_t image)
{
    CVariant v;
    v.vt = vt;
    std::memcpy(&v.llVal, &image, CL::StoredElementSize(vt));
    return v;
}

template <typename T>
CVariant ArrayOfImages(VARTYPE elementType, const std::vector<uint64_t>& images)
{
    std::vector<T> elements;
    for (uint64_t image : images) {
        T element{};
        std::memcpy(&element, &image, sizeof element);
        elements.push_back(element);
    }
    return MakeArray<T>(elementType, elements);
}

CVariant NumberArray(VARTYPE elementType, const std::vector<uint64_t>& images)
{
    switch (CL::StoredElementSize(elementType)) {
    case 1: return ArrayOfImages<BYTE>(elementType, images);
    case 2: return ArrayOfImages<USHORT>(elementType, images);
    case 4: return ArrayOfImages<UINT32>(elementType, images);
    default: return ArrayOfImages<ULONGLONG>(elementType, images);
    }
}

std::vector<BYTE> ArrayBytes(const VARIANT& v)
{
    const uint32_t size = CL::StoredElementSize(static_cast<VARTYPE>(v.vt & 0xFFF));
    std::vector<BYTE> bytes(static_cast<size_t>(v.parray->rgsabound[0].cElements) * size);
    if (!bytes.empty()) {
        void* data = nullptr;
        EXPECT_EQ(::SafeArrayAccessData(v.parray, &data), S_OK);
        std::memcpy(bytes.data(), data, bytes.size());
        ::SafeArrayUnaccessData(v.parray);
    }
    return bytes;
}

// Compares two values of a storable type bit for bit.
void ExpectSameValue(const VARIANT& expected, const VARIANT& actual)
{
    ASSERT_EQ(actual.vt, expected.vt) << CL::VarTypeToString(expected.vt);
    const VARTYPE vt = expected.vt;
    if (vt == VT_BSTR) {
        EXPECT_EQ(BstrText(actual), BstrText(expected));
    } else if (vt == (VT_ARRAY | VT_BSTR)) {
        EXPECT_EQ(StringElements(actual), StringElements(expected));
    } else if (vt & VT_ARRAY) {
        EXPECT_EQ(ArrayBytes(actual), ArrayBytes(expected)) << CL::VarTypeToString(vt);
        LONG lower = -1;
        ::SafeArrayGetLBound(actual.parray, 1, &lower);
        EXPECT_EQ(lower, 0);
        VARTYPE elementType = VT_EMPTY;
        EXPECT_EQ(::SafeArrayGetVartype(actual.parray, &elementType), S_OK);
        EXPECT_EQ(elementType, vt & 0xFFF);
    } else {
        EXPECT_EQ(std::memcmp(&actual.llVal, &expected.llVal, CL::StoredElementSize(vt)), 0)
            << CL::VarTypeToString(vt);
    }
}

// The values of one dialog type: boundary scalars, or arrays that are
// empty, of one element, and of all boundary values.
std::vector<CVariant> ValuesOf(VARTYPE vt)
{
    std::vector<CVariant> values;
    const VARTYPE base = static_cast<VARTYPE>(vt & 0xFFF);
    if (!(vt & VT_ARRAY)) {
        if (vt == VT_BSTR) {
            for (const std::wstring& s : BoundaryStrings())
                values.emplace_back(s);
        } else {
            for (uint64_t image : BoundaryImages(vt))
                values.push_back(ScalarFromImage(vt, image));
        }
        return values;
    }
    if (base == VT_BSTR) {
        values.push_back(MakeStringArray({}));
        values.push_back(MakeStringArray({L""}));
        values.push_back(MakeStringArray(BoundaryStrings()));
        return values;
    }
    const std::vector<uint64_t> images = BoundaryImages(base);
    values.push_back(NumberArray(base, {}));
    values.push_back(NumberArray(base, {images.front()}));
    values.push_back(NumberArray(base, images));
    return values;
}

std::vector<VARTYPE> DialogTypes(bool arrays)
{
    std::vector<VARTYPE> types;
    for (VARTYPE vt : kDialogScalarTypes)
        types.push_back(arrays ? static_cast<VARTYPE>(vt | VT_ARRAY) : vt);
    return types;
}

// Writes every value of the types into one cache, reads them back, and also
// through a copy that is attached afresh as a row read from the database.
void ExpectRoundTrip(const std::vector<VARTYPE>& types)
{
    const double times[] = {0.0, -0.0, -657434.0, 2958465.5, 45000.123456789,
                            std::numeric_limits<double>::quiet_NaN()};
    const WORD qualities[] = {0, 192, 0xFFFF, 0x18};
    std::vector<CVariant> written;
    var_length_container cache;
    size_t expectedUsed = 0;
    for (VARTYPE vt : types) {
        for (CVariant& v : ValuesOf(vt)) {
            const size_t n = written.size();
            cache.Append(times[n % 6], qualities[n % 4], v);
            expectedUsed += var_length_container::RecordSize(v);
            written.push_back(std::move(v));
        }
    }
    EXPECT_EQ(cache.ValueCount(), written.size());
    EXPECT_EQ(cache.UsedSize(), expectedUsed);

    CL::UniqueSafeArray copy;
    {
        SAFEARRAY* raw = nullptr;
        ASSERT_EQ(::SafeArrayCopy(cache.Array(), &raw), S_OK);
        copy.reset(raw);
    }
    var_length_container stored(copy.release(), cache.UsedSize(), cache.ValueCount());

    for (const var_length_container* reader : {&cache, &stored}) {
        CDecodedRecord record;
        size_t n = 0;
        for (auto cursor = reader->Records(); !cursor.AtEnd(); ++n) {
            cursor.Next(record);
            ASSERT_LT(n, written.size());
            EXPECT_EQ(std::memcmp(&record.time, &times[n % 6], sizeof(double)), 0) << n;
            EXPECT_EQ(record.quality, qualities[n % 4]) << n;
            ExpectSameValue(written[n], record.value);
        }
        EXPECT_EQ(n, written.size());
    }
}

} // namespace

TEST(ValueRoundTrip, ItemDialogOffersSixteenScalarAndSixteenArrayTypes)
{
    EXPECT_EQ(DialogTypes(false).size() + DialogTypes(true).size(), 32u);
    for (VARTYPE vt : DialogTypes(false)) {
        EXPECT_TRUE(CL::IsStorableType(vt)) << vt;
        EXPECT_TRUE(CL::IsStorableType(VT_ARRAY | vt)) << vt;
    }
}

TEST(ValueRoundTrip, EveryScalarTypeOfTheItemDialogKeepsItsBoundaryValues)
{
    ExpectRoundTrip(DialogTypes(false));
}

TEST(ValueRoundTrip, EveryArrayTypeOfTheItemDialogKeepsItsBoundaryValues)
{
    ExpectRoundTrip(DialogTypes(true));
}

TEST(ValueRoundTrip, EachDialogTypeAloneInItsOwnCache)
{
    for (bool arrays : {false, true}) {
        for (VARTYPE vt : DialogTypes(arrays)) {
            SCOPED_TRACE(CL::VarTypeToString(vt));
            ExpectRoundTrip({vt});
        }
    }
}

TEST(ValueRoundTrip, ValueTypedInTheDialogSurvivesStorage)
{
    const struct {
        const wchar_t* text;
        VARTYPE vt;
    } typed[] = {{L"-128", VT_I1},          {L"4294967295", VT_UI4}, {L"1.5", VT_R8},
                 {L"3.4e38", VT_R4},        {L"-1234.5678", VT_CY},
                 {L"true", VT_I4},          {L"Gr\u00fc\u00dfe", VT_BSTR},
                 {L"1\r\n2\r\n3", VT_ARRAY | VT_I4}, {L"a\r\n\r\nb", VT_ARRAY | VT_BSTR}};
    var_length_container cache;
    std::vector<CVariant> values;
    for (const auto& t : typed) {
        SCOPED_TRACE(t.text);
        ASSERT_NO_THROW(values.push_back(
            CL::StringToVariant(t.text, t.vt, CL::kLocaleSystemDefault, CL::kArraySeparator)));
        cache.Append(45000.0, 192, values.back());
    }
    CDecodedRecord record;
    auto cursor = cache.Records();
    for (const CVariant& v : values) {
        ASSERT_FALSE(cursor.AtEnd());
        cursor.Next(record);
        ExpectSameValue(v, record.value);
        EXPECT_EQ(CL::VariantToString(record.value, CL::kLocaleSystemDefault, CL::kArraySeparator),
                  CL::VariantToString(v, CL::kLocaleSystemDefault, CL::kArraySeparator));
    }
    EXPECT_TRUE(cursor.AtEnd());
}
