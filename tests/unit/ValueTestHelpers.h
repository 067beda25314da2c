#pragma once
// Helpers shared by the value tests: building arrays, reading them back, and
// checking a CException's code and text.
#include <gtest/gtest.h>

#include <windows.h>
#include <oleauto.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "common/Exception.h"
#include "common/SafeArray.h"
#include "common/Variant.h"

namespace ValueTest {

// A VT_ARRAY | elementType variant holding the given element images.
template <typename T>
CL::CVariant MakeArray(VARTYPE elementType, const std::vector<T>& elements)
{
    SAFEARRAY* psa = ::SafeArrayCreateVector(elementType, 0, static_cast<ULONG>(elements.size()));
    EXPECT_NE(psa, nullptr);
    if (!elements.empty()) {
        void* data = nullptr;
        EXPECT_EQ(::SafeArrayAccessData(psa, &data), S_OK);
        EXPECT_EQ(psa->cbElements, sizeof(T));
        std::memcpy(data, elements.data(), elements.size() * sizeof(T));
        ::SafeArrayUnaccessData(psa);
    }
    CL::CVariant v;
    v.vt = static_cast<VARTYPE>(VT_ARRAY | elementType);
    v.parray = psa;
    return v;
}

inline CL::CVariant MakeStringArray(const std::vector<std::wstring>& elements)
{
    SAFEARRAY* psa = ::SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(elements.size()));
    EXPECT_NE(psa, nullptr);
    for (LONG i = 0; i < static_cast<LONG>(elements.size()); ++i) {
        BSTR b = ::SysAllocStringLen(elements[i].data(), static_cast<UINT>(elements[i].size()));
        EXPECT_EQ(::SafeArrayPutElement(psa, &i, b), S_OK);
        ::SysFreeString(b);
    }
    CL::CVariant v;
    v.vt = VT_ARRAY | VT_BSTR;
    v.parray = psa;
    return v;
}

// The elements of a one-dimensional array as images of T.
template <typename T>
std::vector<T> ArrayElements(const VARIANT& v)
{
    std::vector<T> out;
    if (!(v.vt & VT_ARRAY) || !v.parray)
        return out;
    EXPECT_EQ(::SafeArrayGetDim(v.parray), 1u);
    EXPECT_EQ(v.parray->cbElements, sizeof(T));
    out.resize(v.parray->rgsabound[0].cElements);
    if (!out.empty()) {
        void* data = nullptr;
        EXPECT_EQ(::SafeArrayAccessData(v.parray, &data), S_OK);
        std::memcpy(out.data(), data, out.size() * sizeof(T));
        ::SafeArrayUnaccessData(v.parray);
    }
    return out;
}

inline std::vector<std::wstring> StringElements(const VARIANT& v)
{
    std::vector<std::wstring> out;
    for (BSTR b : ArrayElements<BSTR>(v))
        out.emplace_back(b ? std::wstring(b, ::SysStringLen(b)) : std::wstring());
    return out;
}

inline std::wstring BstrText(const VARIANT& v)
{
    EXPECT_EQ(v.vt, VT_BSTR);
    return v.vt == VT_BSTR && v.bstrVal ? std::wstring(v.bstrVal, ::SysStringLen(v.bstrVal))
                                        : std::wstring();
}

// Runs f and returns the CException it throws; fails the test when it
// throws nothing or something else.
inline CL::CException CaughtException(const std::function<void()>& f)
{
    try {
        f();
    } catch (const CL::CException& e) {
        return e;
    } catch (...) {
        ADD_FAILURE() << "threw something other than CException";
        return CL::CException(S_OK, L"<other exception>");
    }
    ADD_FAILURE() << "threw nothing";
    return CL::CException(S_OK, L"<nothing thrown>");
}

inline unsigned Hex(HRESULT hr)
{
    return static_cast<unsigned>(hr);
}

} // namespace ValueTest

#define EXPECT_CEXCEPTION(statement, code, text)                                            \
    do {                                                                                    \
        const CL::CException caught_ = ::ValueTest::CaughtException([&] { statement; });    \
        EXPECT_EQ(::ValueTest::Hex(caught_.Error()), ::ValueTest::Hex(code));               \
        EXPECT_EQ(caught_.Source(), std::wstring(text));                                   \
    } while (0)
