#include "common/Util_Variant.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include "common/DiagnosticLog.h"
#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/SafeArray.h"
#include "common/Text.h"

namespace CL {

namespace {

// ---------------------------------------------------------------------------
// Type names

const wchar_t* BaseTypeName(unsigned base)
{
    switch (base) {
    case 0: return L"VT_EMPTY";
    case 1: return L"VT_NULL";
    case 2: return L"VT_I2";
    case 3: return L"VT_I4";
    case 4: return L"VT_R4";
    case 5: return L"VT_R8";
    case 6: return L"VT_CY";
    case 7: return L"VT_DATE";
    case 8: return L"VT_BSTR";
    case 10: return L"VT_ERROR";
    case 11: return L"VT_BOOL";
    case 12: return L"VT_VARIANT";
    case 14: return L"VT_DECIMAL";
    case 16: return L"VT_I1";
    case 17: return L"VT_UI1";
    case 18: return L"VT_UI2";
    case 19: return L"VT_UI4";
    case 20: return L"VT_I8";
    case 21: return L"VT_UI8";
    case 22: return L"VT_INT";
    case 23: return L"VT_UINT";
    case 24: return L"VT_VOID";
    case 27: return L"VT_SAFEARRAY";
    case 29: return L"VT_USERDEFINED";
    case 30: return L"VT_LPSTR";
    case 31: return L"VT_LPWSTR";
    case 36: return L"VT_RECORD";
    case 64: return L"VT_FILETIME";
    case 65: return L"VT_BLOB";
    case 66: return L"VT_STREAM";
    case 67: return L"VT_STORAGE";
    case 68: return L"VT_STREAMED_OBJECT";
    case 69: return L"VT_BLOB_OBJECT";
    case 71: return L"VT_CF";
    case 72: return L"VT_CLSID";
    default: return nullptr;
    }
}

// ---------------------------------------------------------------------------
// Numbers as text in the classic locale

// A double as an output stream with precision 15 writes it: at most 15
// significant digits, no trailing zeros, exponent form where %g chooses it.
std::wstring DoubleToText(double value)
{
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value,
                                      std::chars_format::general, 15);
    return std::wstring(buffer, result.ptr);
}

bool IsClassicSpace(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\v' || c == L'\f' || c == L'\r';
}

// Parses the whole text as a decimal floating-point number, "." as the
// point, leading white space and one sign allowed (as an input stream reads
// it). Left-over characters: DISP_E_TYPEMISMATCH; out of range, infinite or
// not a number: DISP_E_OVERFLOW.
HRESULT ParseClassicDouble(std::wstring_view text, double& value)
{
    size_t pos = 0;
    while (pos < text.size() && IsClassicSpace(text[pos]))
        ++pos;
    std::string narrow;
    narrow.reserve(text.size() - pos);
    for (size_t i = pos; i < text.size(); ++i) {
        if (text[i] > 0x7F)
            return DISP_E_TYPEMISMATCH;
        narrow.push_back(static_cast<char>(text[i]));
    }
    const char* first = narrow.data();
    const char* last = first + narrow.size();
    bool negative = false;
    if (first != last && (*first == '+' || *first == '-')) {
        negative = *first == '-';
        ++first;
    }
    // from_chars would take a second sign; the stream does not.
    if (first == last || *first == '+' || *first == '-')
        return DISP_E_TYPEMISMATCH;
    double parsed = 0.0;
    const auto result = std::from_chars(first, last, parsed, std::chars_format::general);
    if (result.ec == std::errc::invalid_argument)
        return DISP_E_TYPEMISMATCH;
    if (result.ptr != last)
        return DISP_E_TYPEMISMATCH;
    if (result.ec == std::errc::result_out_of_range || !std::isfinite(parsed))
        return DISP_E_OVERFLOW;
    value = negative ? -parsed : parsed;
    return S_OK;
}

std::wstring_view BstrView(BSTR text)
{
    return text ? std::wstring_view(text, ::SysStringLen(text)) : std::wstring_view();
}

bool IsUnsignedTarget(VARTYPE vt)
{
    return vt == VT_UI1 || vt == VT_UI2 || vt == VT_UI4 || vt == VT_UI8 || vt == VT_UINT;
}

// The range checks that the platform conversion would let through or wrap.
bool FailsRangeCheck(const VARIANT& src, VARTYPE vt)
{
    switch (vt) {
    case VT_I1:
        return (src.vt == VT_UI1 && src.bVal > 127) || (src.vt == VT_UI2 && src.uiVal > 127) ||
               (src.vt == VT_UI4 && src.ulVal > 127);
    case VT_I2:
        return (src.vt == VT_UI2 && src.uiVal > 32767) || (src.vt == VT_UI4 && src.ulVal > 32767);
    case VT_I4:
        return src.vt == VT_UI4 && src.ulVal >= 0x80000000ul;
    default:
        break;
    }
    if (IsUnsignedTarget(vt)) {
        return (src.vt == VT_I1 && src.cVal < 0) || (src.vt == VT_I2 && src.iVal < 0) ||
               (src.vt == VT_I4 && src.lVal < 0) || (src.vt == VT_I8 && src.llVal < 0);
    }
    return false;
}

// Replaces dest's content by a string; dest may have been the source.
HRESULT AssignText(VARIANT* dest, std::wstring_view text)
{
    BSTR b = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!b)
        return E_OUTOFMEMORY;
    const HRESULT hr = ::VariantClear(dest);
    if (FAILED(hr)) {
        ::SysFreeString(b);
        return hr;
    }
    dest->vt = VT_BSTR;
    dest->bstrVal = b;
    return S_OK;
}

HRESULT AssignBool(VARIANT* dest, bool value)
{
    const HRESULT hr = ::VariantClear(dest);
    if (FAILED(hr))
        return hr;
    dest->vt = VT_BOOL;
    dest->boolVal = value ? 1 : 0;   // 1, not VARIANT_TRUE: consumers test nonzero
    return S_OK;
}

HRESULT TextToReal(VARIANT* dest, std::wstring_view text, VARTYPE vt)
{
    double value = 0.0;
    const HRESULT parsed = ParseClassicDouble(text, value);
    if (FAILED(parsed))
        return parsed;
    if (vt == VT_R4 && std::fabs(value) > 3.4028234663852886e38)
        return DISP_E_OVERFLOW;
    const HRESULT hr = ::VariantClear(dest);
    if (FAILED(hr))
        return hr;
    if (vt == VT_R4) {
        dest->vt = VT_R4;
        dest->fltVal = static_cast<float>(value);
    } else {
        dest->vt = VT_R8;
        dest->dblVal = value;
    }
    return S_OK;
}

HRESULT ArrayToArray(VARIANT* dest, const VARIANT* src, VARTYPE vt)
{
    try {
        const std::wstring text = VariantToString(*src, kLocaleInvariant, kArraySeparator);
        CVariant converted = StringToVariant(text, vt, kLocaleInvariant, kArraySeparator);
        const HRESULT hr = ::VariantClear(dest);
        if (FAILED(hr))
            return hr;
        *dest = converted.Detach();
        return S_OK;
    } catch (const CException& e) {
        return e.Error();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

SAFEARRAY* ArrayOf(const VARIANT& value)
{
    if (value.vt & VT_BYREF)
        return value.pparray ? *value.pparray : nullptr;
    return value.parray;
}

// One element of a one-dimensional array as a variant of the element type.
CVariant ArrayElement(SAFEARRAY* psa, LONG index)
{
    CVariant v;
    VARTYPE elementType = VT_EMPTY;
    HRESULT hr = ::SafeArrayGetVartype(psa, &elementType);
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayGetVartype (rv.parray, &v.vt)");
    if (elementType == VT_VARIANT) {
        hr = ::SafeArrayGetElement(psa, &index, static_cast<VARIANT*>(&v));
    } else if (elementType == VT_DECIMAL) {
        DECIMAL d{};
        hr = ::SafeArrayGetElement(psa, &index, &d);
        if (SUCCEEDED(hr)) {
            v.decVal = d;
            v.vt = VT_DECIMAL;   // the decimal overlays the type word
        }
    } else if (elementType != VT_RECORD && psa->cbElements <= sizeof(v.llVal)) {
        // Fetched into a scratch word first so that a failure leaves v empty.
        LONGLONG scratch = 0;
        hr = ::SafeArrayGetElement(psa, &index, &scratch);
        if (SUCCEEDED(hr)) {
            std::memcpy(&v.llVal, &scratch, sizeof scratch);
            v.vt = elementType;
        }
    } else {
        throw CException(E_NOTIMPL, L"::SafeArrayGetVartype (rv.parray, &v.vt)");
    }
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayGetElement (rv.parray, &i, &v.bstrVal)");
    return v;
}

std::vector<std::wstring_view> SplitKeepingEmpty(std::wstring_view text, std::wstring_view separator)
{
    std::vector<std::wstring_view> pieces;
    if (text.empty())
        return pieces;
    if (separator.empty()) {
        pieces.push_back(text);
        return pieces;
    }
    size_t start = 0;
    for (;;) {
        const size_t found = text.find(separator, start);
        if (found == std::wstring_view::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, found - start));
        start = found + separator.size();
    }
}

CVariant TextToArray(std::wstring_view text, VARTYPE vt, LCID locale, std::wstring_view separator)
{
    const VARTYPE elementType = static_cast<VARTYPE>(vt & ~VT_ARRAY);
    const std::vector<std::wstring_view> pieces = SplitKeepingEmpty(text, separator);
    UniqueSafeArray array(::SafeArrayCreateVector(elementType, 0, static_cast<ULONG>(pieces.size())));
    if (!array)
        throw CException(E_INVALIDARG, L"::SafeArrayCreateVector (vt & ~VT_ARRAY, 0, pieces)");
    for (LONG iValIndex = 0; iValIndex < static_cast<LONG>(pieces.size()); ++iValIndex) {
        const std::wstring_view piece = pieces[static_cast<size_t>(iValIndex)];
        if (elementType == VT_BSTR) {
            const CBstr element(piece);
            const HRESULT hr = ::SafeArrayPutElement(array.get(), &iValIndex, element.Get());
            if (FAILED(hr))
                throw CException(hr, L"::SafeArrayPutElement (res.parray, &iValIndex, SysAllocString (*it))");
            continue;
        }
        CVariant v = StringToVariant(piece, elementType, locale, kArraySeparator);
        // "true"/"false" give a VT_BOOL whatever the element type; bring the
        // value to the element type so that the array holds a clean element.
        if (v.vt != elementType && elementType != VT_VARIANT) {
            const HRESULT hr = ::VariantChangeTypeEx(&v, &v, locale, kConversionFlags, elementType);
            if (FAILED(hr))
                throw CException(hr, L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
        }
        void* element = &v.bstrVal;
        if (elementType == VT_VARIANT)
            element = static_cast<VARIANT*>(&v);
        else if (elementType == VT_DECIMAL)
            element = &v.decVal;
        const HRESULT hr = ::SafeArrayPutElement(array.get(), &iValIndex, element);
        if (FAILED(hr))
            throw CException(hr, L"::SafeArrayPutElement (res.parray, &iValIndex, &(v.bstrVal))");
    }
    CVariant result;
    result.vt = vt;
    result.parray = array.release();
    return result;
}

// ---------------------------------------------------------------------------
// Calendar arithmetic (proleptic Gregorian, days relative to 1970-01-01)

constexpr long long kOleEpochUnixDay = -25569;   // 30 December 1899
constexpr double kOleDateMin = -657434.0;        // 1 January 100
constexpr double kOleDateEnd = 2958466.0;        // 1 January 10000
constexpr long long kMillisecondsPerDay = 86400000;

long long DaysFromCivil(long long y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

void CivilFromDays(long long z, long long& y, unsigned& m, unsigned& d)
{
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y = static_cast<long long>(yoe) + era * 400 + (m <= 2);
}

bool IsLeapYear(unsigned y)
{
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

unsigned DaysInMonth(unsigned y, unsigned m)
{
    static const unsigned days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && IsLeapYear(y) ? 29 : days[m - 1];
}

std::wstring FormatDate(DATE date, const wchar_t* format)
{
    const SYSTEMTIME st = DateToSystemTime(date);
    return Format(format, st.wDay, st.wMonth, st.wYear, st.wHour, st.wMinute, st.wSecond,
                  st.wMilliseconds);
}

// ---------------------------------------------------------------------------
// Variant block

// Bit n set: base type n may stand in a stored block.
constexpr uint32_t kStorableBaseTypes =
    (1u << VT_I2) | (1u << VT_I4) | (1u << VT_R4) | (1u << VT_R8) | (1u << VT_CY) |
    (1u << VT_DATE) | (1u << VT_BSTR) | (1u << VT_BOOL) | (1u << VT_I1) | (1u << VT_UI1) |
    (1u << VT_UI2) | (1u << VT_UI4) | (1u << VT_I8) | (1u << VT_UI8) | (1u << VT_INT) |
    (1u << VT_UINT);

// Bit n set: a variant of type n holds nothing to release, so clearing it is
// setting its type to VT_EMPTY (what VariantClear does for these types).
constexpr uint32_t kPlainTypes = (1u << VT_EMPTY) | (1u << VT_NULL) | (1u << VT_ERROR) |
                                 (kStorableBaseTypes & ~(1u << VT_BSTR));

constexpr size_t kArrayHeaderSize = kVariantImageSize + 2 + 4;   // element type, count
constexpr size_t kArrayDataOffset = kArrayHeaderSize + 4;          // byte size S
constexpr size_t kStringEntryHeader = 4;

static_assert(offsetof(VARIANT, llVal) == 8, "the inline value sits at offset 8");

[[noreturn]] void ThrowStreamError(HRESULT code)
{
    throw CException(code, L"Error in stream");
}

// Holds an array's data locked. A failing unlock does not undo the work
// already done: it is logged and reading goes on.
class DataLock {
public:
    DataLock(SAFEARRAY* psa, void** data) : m_psa(psa)
    {
        const HRESULT hr = ::SafeArrayAccessData(psa, data);
        if (FAILED(hr))
            throw CException(hr, L"::SafeArrayAccessData (psa, &pvData)");
    }
    ~DataLock()
    {
        if (SUCCEEDED(::SafeArrayUnaccessData(m_psa)))
            return;
        try {
            if (LogEnabled(1))
                Log(1, SourcePosition("Util_Variant", 326));
        } catch (...) {
            // A lost log line must not end the program.
        }
    }
    DataLock(const DataLock&) = delete;
    DataLock& operator=(const DataLock&) = delete;

private:
    SAFEARRAY* m_psa;
};

void ClearDestination(VARIANT& dest)
{
    if (dest.vt < 32 && (kPlainTypes >> dest.vt) & 1u) {
        dest.vt = VT_EMPTY;
        return;
    }
    const HRESULT hr = ::VariantClear(&dest);
    if (FAILED(hr))
        throw CException(hr, L"::VariantClear (&rvDest)");
}

uint32_t ReadU32(const BYTE* p)
{
    uint32_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

uint16_t ReadU16(const BYTE* p)
{
    uint16_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

// A string entry: 32-bit byte length L (terminator included), L bytes.
size_t ReadStringEntry(const BYTE* data, size_t available, BSTR& out)
{
    if (available < kStringEntryHeader)
        ThrowStreamError(E_INVALIDARG);
    const uint32_t length = ReadU32(data);
    if (length < 2 || static_cast<uint64_t>(length) + kStringEntryHeader > available)
        ThrowStreamError(E_INVALIDARG);
    const UINT characters = (length - 2) / 2;
    BSTR text = ::SysAllocStringLen(nullptr, characters);
    if (!text)
        throw CException(E_OUTOFMEMORY, L"SysAllocStringLen");
    std::memcpy(text, data + kStringEntryHeader, characters * sizeof(OLECHAR));
    out = text;
    return kStringEntryHeader + length;
}

SAFEARRAY* CreateVector(VARTYPE elementType, uint32_t count)
{
    SAFEARRAY* psa = ::SafeArrayCreateVector(elementType, 0, count);
    if (!psa)
        throw CException(E_OUTOFMEMORY, L"::SafeArrayCreateVector (vt, 0, N)");
    return psa;
}

size_t ReadArray(const BYTE* data, size_t available, VARIANT& dest)
{
    if (available < kArrayHeaderSize)
        ThrowStreamError(E_INVALIDARG);
    const VARTYPE elementType = static_cast<VARTYPE>(dest.vt & 0xFFF);
    const uint32_t count = ReadU32(data + kVariantImageSize + 2);
    if (ReadU16(data + kVariantImageSize) != elementType)
        ThrowStreamError(E_INVALIDARG);
    if (elementType == VT_BSTR) {
        // Every entry takes at least its length word: refuse counts that
        // cannot fit before allocating for them.
        if (count > (available - kArrayHeaderSize) / kStringEntryHeader)
            ThrowStreamError(E_INVALIDARG);
        dest.parray = CreateVector(VT_BSTR, count);
        void* elements = nullptr;
        DataLock lock(dest.parray, &elements);
        size_t offset = kArrayHeaderSize;
        for (uint32_t i = 0; i < count; ++i)
            offset += ReadStringEntry(data + offset, available - offset, static_cast<BSTR*>(elements)[i]);
        return offset;
    }
    if (available < kArrayDataOffset)
        ThrowStreamError(E_INVALIDARG);
    const uint32_t size = ReadU32(data + kArrayHeaderSize);
    if (static_cast<uint64_t>(count) * StoredElementSize(elementType) != size ||
        static_cast<uint64_t>(size) + kArrayDataOffset > available)
        ThrowStreamError(E_INVALIDARG);
    dest.parray = CreateVector(elementType, count);
    if (size != 0) {
        void* elements = nullptr;
        DataLock lock(dest.parray, &elements);
        std::memcpy(elements, data + kArrayDataOffset, size);
    }
    return kArrayDataOffset + size;
}

// --- writing ---

size_t StringEntrySize(BSTR text)
{
    return kStringEntryHeader + (static_cast<size_t>(::SysStringLen(text)) + 1) * sizeof(OLECHAR);
}

BYTE* WriteStringEntry(BYTE* out, BSTR text)
{
    const UINT characters = ::SysStringLen(text);
    const uint32_t length = (characters + 1) * sizeof(OLECHAR);
    std::memcpy(out, &length, sizeof length);
    out += kStringEntryHeader;
    if (characters)
        std::memcpy(out, text, characters * sizeof(OLECHAR));
    out += characters * sizeof(OLECHAR);
    out[0] = 0;
    out[1] = 0;
    return out + 2;
}

// The value's array after checking that it can be stored as it is.
SAFEARRAY* StorableArray(const VARIANT& value)
{
    SAFEARRAY* psa = value.parray;
    const VARTYPE elementType = static_cast<VARTYPE>(value.vt & 0xFFF);
    VARTYPE arrayType = VT_EMPTY;
    const uint32_t elementSize =
        elementType == VT_BSTR ? sizeof(BSTR) : StoredElementSize(elementType);
    if (!psa || ::SafeArrayGetDim(psa) != 1 || FAILED(::SafeArrayGetVartype(psa, &arrayType)) ||
        arrayType != elementType || psa->cbElements != elementSize)
        throw CException(E_INVALIDARG,
                         L"WriteValue: not a one-dimensional array of the variant's element type");
    return psa;
}

void CheckStorableType(VARTYPE vt)
{
    if (!IsStorableType(vt))
        throw CException(TYPE_E_UNSUPFORMAT, L"WriteValue: unsupported variant type");
}

} // namespace

// ---------------------------------------------------------------------------

std::wstring VarTypeToString(VARTYPE vt)
{
    const unsigned base = vt & 0xFFF;
    const wchar_t* name = BaseTypeName(base);
    std::wstring text = name ? std::wstring(name) : Format(L"Unknown (%d)", static_cast<int>(base));
    if (vt & VT_VECTOR)
        text += L" | VT_VECTOR";
    if (vt & VT_ARRAY)
        text += L" | VT_ARRAY";
    if (vt & VT_RESERVED)
        text += L" | VT_RESERVED";
    return text;
}

HRESULT EnhVariantChangeType(VARIANT* dest, const VARIANT* src, LCID locale, USHORT flags, VARTYPE vt)
{
    if (!dest || !src)
        return E_INVALIDARG;
    if (src->vt == vt)
        return dest == src ? S_OK : ::VariantCopy(dest, const_cast<VARIANT*>(src));
    if (src->vt == VT_EMPTY)
        return E_INVALIDARG;
    if (src->vt == VT_BSTR && src->bstrVal) {
        const std::wstring_view text = BstrView(src->bstrVal);
        if (EqualsNoCase(text, L"false"))
            return AssignBool(dest, false);
        if (EqualsNoCase(text, L"true"))
            return AssignBool(dest, true);
    }
    if (FailsRangeCheck(*src, vt))
        return DISP_E_TYPEMISMATCH;
    if (vt == VT_BSTR && (src->vt == VT_R4 || src->vt == VT_R8)) {
        const double value = src->vt == VT_R4 ? static_cast<double>(src->fltVal) : src->dblVal;
        return AssignText(dest, DoubleToText(value));
    }
    if ((vt == VT_R8 || vt == VT_R4) && src->vt == VT_BSTR)
        return TextToReal(dest, BstrView(src->bstrVal), vt);
    if ((src->vt & VT_ARRAY) && (vt & VT_ARRAY))
        return ArrayToArray(dest, src, vt);
    return ::VariantChangeTypeEx(dest, const_cast<VARIANT*>(src), locale, flags, vt);
}

std::wstring VariantToString(const VARIANT& rv, LCID locale, std::wstring_view separator)
{
    if (!(rv.vt & VT_ARRAY)) {
        if (rv.vt == VT_EMPTY)
            return std::wstring();
        CVariant v;
        const HRESULT hr = EnhVariantChangeType(&v, &rv, locale, kConversionFlags, VT_BSTR);
        if (FAILED(hr))
            throw CException(hr, L"EnhVariantChangeType (&v, &rv, locale, 0x02, VT_BSTR)");
        return std::wstring(BstrView(v.vt == VT_BSTR ? v.bstrVal : nullptr));
    }
    SAFEARRAY* psa = ArrayOf(rv);
    if (!psa)
        throw CException(E_INVALIDARG, L"rv.parray");
    if (::SafeArrayGetDim(psa) != 1)
        throw CException(E_NOTIMPL, L"::SafeArrayGetDim (rv.parray) != 1");
    LONG lower = 0;
    LONG upper = -1;
    HRESULT hr = ::SafeArrayGetLBound(psa, 1, &lower);
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayGetLBound (rv.parray, 1, &lBound)");
    hr = ::SafeArrayGetUBound(psa, 1, &upper);
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayGetUBound (rv.parray, 1, &uBound)");
    std::wstring text;
    for (long long i = lower; i <= upper; ++i) {
        const CVariant v = ArrayElement(psa, static_cast<LONG>(i));
        const std::wstring element = VariantToString(v, locale, kArraySeparator);
        if (!text.empty())
            text.append(separator);
        text += element;
    }
    return text;
}

CVariant StringToVariant(std::wstring_view text, VARTYPE vt, LCID locale, std::wstring_view separator)
{
    if (text.empty()) {
        if (vt == VT_EMPTY)
            return CVariant();
        if (!(vt & 0x8))
            throw CException(E_INVALIDARG, L"Empty string.");
    }
    if (vt & VT_ARRAY)
        return TextToArray(text, vt, locale, separator);
    CVariant res(text);
    const HRESULT hr = EnhVariantChangeType(&res, &res, locale, kConversionFlags, vt);
    if (FAILED(hr))
        throw CException(hr, L"EnhVariantChangeType (&res, &res, locale, 0x02, vt)");
    return res;
}

SYSTEMTIME DateToSystemTime(DATE date)
{
    if (!(date >= kOleDateMin && date < kOleDateEnd))
        throw CException(E_INVALIDARG, L"DateToSystemTime (date)");
    // The whole part counts days; the fraction is the time of day, also for
    // dates before 1899 (-1.25 is 29 December 1899, 06:00).
    const double whole = std::trunc(date);
    long long day = static_cast<long long>(whole);
    long long ms = std::llround(std::fabs(date - whole) * static_cast<double>(kMillisecondsPerDay));
    if (ms >= kMillisecondsPerDay) {
        if (day + 1 < static_cast<long long>(kOleDateEnd)) {
            ms -= kMillisecondsPerDay;
            ++day;
        } else {
            ms = kMillisecondsPerDay - 1;
        }
    }
    long long year = 0;
    unsigned month = 0;
    unsigned dayOfMonth = 0;
    const long long unixDay = day + kOleEpochUnixDay;
    CivilFromDays(unixDay, year, month, dayOfMonth);
    SYSTEMTIME st{};
    st.wYear = static_cast<WORD>(year);
    st.wMonth = static_cast<WORD>(month);
    st.wDay = static_cast<WORD>(dayOfMonth);
    st.wDayOfWeek = static_cast<WORD>(((unixDay % 7) + 11) % 7);   // 1970-01-01 was a Thursday
    st.wHour = static_cast<WORD>(ms / 3600000);
    st.wMinute = static_cast<WORD>(ms / 60000 % 60);
    st.wSecond = static_cast<WORD>(ms / 1000 % 60);
    st.wMilliseconds = static_cast<WORD>(ms % 1000);
    return st;
}

DATE SystemTimeToDate(const SYSTEMTIME& t)
{
    if (t.wYear < 100 || t.wYear > 9999 || t.wMonth < 1 || t.wMonth > 12 || t.wDay < 1 ||
        t.wDay > DaysInMonth(t.wYear, t.wMonth) || t.wHour > 23 || t.wMinute > 59 ||
        t.wSecond > 59 || t.wMilliseconds > 999)
        throw CException(E_INVALIDARG, L"SystemTimeToDate (time)");
    const long long day = DaysFromCivil(t.wYear, t.wMonth, t.wDay) - kOleEpochUnixDay;
    const long long ms = ((t.wHour * 60LL + t.wMinute) * 60 + t.wSecond) * 1000 + t.wMilliseconds;
    const double fraction = static_cast<double>(ms) / static_cast<double>(kMillisecondsPerDay);
    return day < 0 ? static_cast<double>(day) - fraction : static_cast<double>(day) + fraction;
}

std::wstring DateToString(DATE date)
{
    return FormatDate(date, L"%02u:%02u:%04u - %02u:%02u:%02u:%03u");
}

std::wstring DateToExportString(DATE date)
{
    return FormatDate(date, L"%02u:%02u:%04u %02u:%02u:%02u:%03u");
}

bool IsStorableType(VARTYPE vt)
{
    const unsigned base = vt & static_cast<VARTYPE>(~VT_ARRAY);
    return base < 32 && ((kStorableBaseTypes >> base) & 1u);
}

uint32_t StoredElementSize(VARTYPE elementType)
{
    switch (elementType) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
        return 8;
    default:
        return 0;
    }
}

size_t ReadValue(const BYTE* data, size_t available, VARIANT& rvDest)
{
    ClearDestination(rvDest);
    if (available < kVariantImageSize)
        ThrowStreamError(E_INVALIDARG);
    const VARTYPE vt = ReadU16(data);
    if (!IsStorableType(vt))
        ThrowStreamError(TYPE_E_UNSUPFORMAT);   // rvDest stays VT_EMPTY
    std::memcpy(&rvDest, data, kVariantImageSize);
    if (vt == VT_BSTR) {
        rvDest.bstrVal = nullptr;   // the stored word held a pointer of the writer
        return kVariantImageSize +
               ReadStringEntry(data + kVariantImageSize, available - kVariantImageSize, rvDest.bstrVal);
    }
    if (!(vt & VT_ARRAY))
        return kVariantImageSize;
    rvDest.parray = nullptr;
    return ReadArray(data, available, rvDest);
}

size_t ValueSize(const VARIANT& value)
{
    CheckStorableType(value.vt);
    uint64_t size = kVariantImageSize;
    if (value.vt == VT_BSTR) {
        size += StringEntrySize(value.bstrVal);
    } else if (value.vt & VT_ARRAY) {
        SAFEARRAY* psa = StorableArray(value);
        const uint32_t count = psa->rgsabound[0].cElements;
        const VARTYPE elementType = static_cast<VARTYPE>(value.vt & 0xFFF);
        if (elementType == VT_BSTR) {
            size = kArrayHeaderSize;
            void* elements = nullptr;
            DataLock lock(psa, &elements);
            for (uint32_t i = 0; i < count; ++i)
                size += StringEntrySize(static_cast<BSTR*>(elements)[i]);
        } else {
            size = kArrayDataOffset + static_cast<uint64_t>(count) * StoredElementSize(elementType);
        }
    }
    if (size > 0xFFFFFFFFull)
        throw CException(E_INVALIDARG, L"WriteValue: value too large for a stored record");
    return static_cast<size_t>(size);
}

size_t WriteValue(const VARIANT& value, BYTE* out)
{
    CheckStorableType(value.vt);
    const VARTYPE vt = value.vt;
    // The image: vt and reserved words as they are, the inline word with the
    // value's own bytes only; strings and arrays keep no pointer.
    std::memcpy(out, &value, 8);
    std::memset(out + 8, 0, 8);
    if (vt != VT_BSTR && !(vt & VT_ARRAY)) {
        std::memcpy(out + 8, &value.llVal, StoredElementSize(vt));
        return kVariantImageSize;
    }
    if (vt == VT_BSTR) {
        BYTE* end = WriteStringEntry(out + kVariantImageSize, value.bstrVal);
        return static_cast<size_t>(end - out);
    }
    SAFEARRAY* psa = StorableArray(value);
    const VARTYPE elementType = static_cast<VARTYPE>(vt & 0xFFF);
    const uint32_t count = psa->rgsabound[0].cElements;
    std::memcpy(out + kVariantImageSize, &elementType, sizeof elementType);
    std::memcpy(out + kVariantImageSize + 2, &count, sizeof count);
    void* elements = nullptr;
    DataLock lock(psa, &elements);
    if (elementType == VT_BSTR) {
        BYTE* p = out + kArrayHeaderSize;
        for (uint32_t i = 0; i < count; ++i)
            p = WriteStringEntry(p, static_cast<BSTR*>(elements)[i]);
        return static_cast<size_t>(p - out);
    }
    const uint32_t size = count * StoredElementSize(elementType);
    std::memcpy(out + kArrayHeaderSize, &size, sizeof size);
    if (size)
        std::memcpy(out + kArrayDataOffset, elements, size);
    return kArrayDataOffset + size;
}

} // namespace CL
