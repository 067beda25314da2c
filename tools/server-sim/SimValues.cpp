#include "SimValues.h"

#include <cmath>
#include <string>

#include "common/Exception.h"
#include "common/SafeArray.h"
#include "common/Util_Variant.h"

namespace sim {

namespace {

constexpr WORD kQualityGood = 192;
constexpr WORD kQualityUncertain = 64;

[[noreturn]] void ThrowUnsupported(VARTYPE vt)
{
    throw CL::CException(DISP_E_BADVARTYPE, L"no simulated values for " + CL::VarTypeToString(vt));
}

bool IsFloating(VARTYPE vt)
{
    return vt == VT_R4 || vt == VT_R8 || vt == VT_CY;
}

bool IsInteger(VARTYPE vt)
{
    switch (vt) {
    case VT_I1: case VT_I2: case VT_I4: case VT_I8: case VT_INT:
    case VT_UI1: case VT_UI2: case VT_UI4: case VT_UI8: case VT_UINT:
        return true;
    default:
        return false;
    }
}

// A number converted to the numeric type vt by the automation conversion.
CL::CVariant Number(double number, VARTYPE vt)
{
    CL::CVariant source;
    source.vt = VT_R8;
    source.dblVal = number;
    CL::CVariant result;
    const HRESULT hr = ::VariantChangeTypeEx(&result, &source, LOCALE_INVARIANT, 0, vt);
    if (FAILED(hr))
        throw CL::CException(hr, L"::VariantChangeTypeEx (&result, &source, LOCALE_INVARIANT, 0, vt)");
    return result;
}

CL::CVariant Scalar(VARTYPE vt, unsigned sample, DATE time)
{
    if (IsFloating(vt))
        return Number(50.0 + 40.0 * std::sin(0.4 * sample), vt);
    if (IsInteger(vt))
        return Number(static_cast<double>(sample % 100), vt);
    CL::CVariant value;
    switch (vt) {
    case VT_BOOL:
        value.vt = VT_BOOL;
        value.boolVal = sample % 2 ? VARIANT_TRUE : VARIANT_FALSE;
        return value;
    case VT_DATE:
        value.vt = VT_DATE;
        value.date = time;
        return value;
    case VT_BSTR:
        return CL::CVariant(L"Sample " + std::to_wstring(sample));
    default:
        ThrowUnsupported(vt);
    }
}

CL::CVariant Array(VARTYPE elementType, unsigned sample, DATE time)
{
    CL::UniqueSafeArray array(::SafeArrayCreateVector(elementType, 0, kSimulatedArrayLength));
    if (!array)
        throw CL::CException(E_OUTOFMEMORY, L"::SafeArrayCreateVector (elementType, 0, kSimulatedArrayLength)");
    for (LONG i = 0; i < static_cast<LONG>(kSimulatedArrayLength); ++i) {
        CL::CVariant element = Scalar(elementType, sample + static_cast<unsigned>(i), time);
        // A string element is handed over as its BSTR, any other as the
        // address of the variant's value (every union member starts there).
        void* data = elementType == VT_BSTR ? static_cast<void*>(element.bstrVal)
                                            : static_cast<void*>(&element.llVal);
        const HRESULT hr = ::SafeArrayPutElement(array.get(), &i, data);
        if (FAILED(hr))
            throw CL::CException(hr, L"::SafeArrayPutElement (array.get (), &i, data)");
    }
    CL::CVariant value;
    value.vt = static_cast<VARTYPE>(VT_ARRAY | elementType);
    value.parray = array.release();
    return value;
}

} // namespace

CL::CVariant SimulatedValue(VARTYPE vt, unsigned sample, DATE time)
{
    if (!CL::IsStorableType(vt))
        ThrowUnsupported(vt);
    if (vt & VT_ARRAY)
        return Array(static_cast<VARTYPE>(vt & VT_TYPEMASK), sample, time);
    return Scalar(vt, sample, time);
}

WORD SimulatedQuality(unsigned sample)
{
    return sample % 10 == 7 ? kQualityUncertain : kQualityGood;
}

} // namespace sim
