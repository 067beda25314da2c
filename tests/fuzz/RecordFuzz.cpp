#include "RecordFuzz.h"

#include <cstring>

#include "common/Variant.h"
#include "common/historian/HistorianItem.h"
#include "common/historian/HistorianValues.h"
#include "common/historian/var_length_container.h"

namespace fuzz {

namespace {

const uint32_t kOddLengths[] = {0,           1,           2,           3,          4,          0x7FFFFFFFu,
                                0x80000000u, 0xFFFFFFFFu, 0xFFFFFFFEu, 0x40000000u, 0x00010000u};

CL::CVariant Number(VARTYPE vt, LONGLONG image)
{
    CL::CVariant v;
    v.vt = vt;
    v.llVal = image;
    return v;
}

CL::CVariant Strings(const std::vector<std::wstring>& texts)
{
    CL::CVariant v;
    v.vt = VT_ARRAY | VT_BSTR;
    v.parray = ::SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
    for (LONG i = 0; i < static_cast<LONG>(texts.size()); ++i) {
        BSTR text = ::SysAllocString(texts[i].c_str());
        ::SafeArrayPutElement(v.parray, &i, text);
        ::SysFreeString(text);
    }
    return v;
}

CL::CVariant Doubles(const std::vector<double>& values)
{
    CL::CVariant v;
    v.vt = VT_ARRAY | VT_R8;
    v.parray = ::SafeArrayCreateVector(VT_R8, 0, static_cast<ULONG>(values.size()));
    for (LONG i = 0; i < static_cast<LONG>(values.size()); ++i)
        ::SafeArrayPutElement(v.parray, &i, const_cast<double*>(&values[i]));
    return v;
}

std::string Run(const std::vector<CL::CVariant>& values)
{
    CL::var_length_container cache;
    double time = 45000.0;
    for (const CL::CVariant& value : values)
        cache.Append(time += 0.001, 192, value);
    return std::string(reinterpret_cast<const char*>(cache.Data()), cache.UsedSize());
}

// A byte array holding the bytes (and `spare` bytes more), as a row's field.
SAFEARRAY* ByteArray(const std::string& bytes, size_t spare, bool wrongShape)
{
    if (wrongShape) {
        SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(bytes.size() + 1), 0}, {2, 0}};
        return ::SafeArrayCreate(VT_UI1, 2, bounds);
    }
    SAFEARRAY* psa = ::SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size() + spare));
    void* data = nullptr;
    if (psa && SUCCEEDED(::SafeArrayAccessData(psa, &data))) {
        std::memcpy(data, bytes.data(), bytes.size());
        ::SafeArrayUnaccessData(psa);
    }
    return psa;
}

} // namespace

CRecordFuzz::CRecordFuzz()
{
    m_bases.push_back(Run({Number(VT_R8, 0x3FF8000000000000ll), Number(VT_I4, -2), CL::CVariant(L"A\u00e9"),
                           CL::CVariant(L""), Strings({L"x", L""}), Strings({}), Doubles({}), Number(VT_BOOL, -1),
                           Number(VT_UI8, -1), Number(VT_CY, 12345), Number(VT_I1, -128)}));
    m_bases.push_back(Run({Strings({L"alpha", L"", L"\u4e2d\u6587"}), Doubles({45000.5, 1e308, -0.0}),
                           Number(VT_DATE, 0x7FF0000000000000ll), CL::CVariant(std::wstring(300, L'z'))}));
}

void CRecordFuzz::Mutate(CFuzzRandom& random, uint32_t& usedSize, uint32_t& valueCount)
{
    const size_t mutations = 1 + random.Below(3);
    for (size_t i = 0; i < mutations && !m_input.empty(); ++i) {
        const size_t at = random.Below(m_input.size());
        switch (random.Below(6)) {
        case 0: m_input.resize(random.Below(m_input.size() + 1)); break;
        case 1: m_input[at] ^= static_cast<char>(1u << random.Below(8)); break;
        case 2: {
            const uint32_t length = kOddLengths[random.Below(std::size(kOddLengths))];
            if (at + 4 <= m_input.size())
                std::memcpy(&m_input[at], &length, 4);
            break;
        }
        case 3: {
            const uint16_t vt = static_cast<uint16_t>(random.OneIn(2) ? random.Next() : 0x2000 | random.Below(80));
            if (at + 2 <= m_input.size())
                std::memcpy(&m_input[at], &vt, 2);
            break;
        }
        case 4: m_input.insert(at, m_input.substr(random.Below(m_input.size()), 1 + random.Below(40))); break;
        default: usedSize = random.OneIn(2) ? kOddLengths[random.Below(std::size(kOddLengths))]
                                            : static_cast<uint32_t>(random.Below(m_input.size() + 64));
        }
    }
    if (random.OneIn(16))
        valueCount = static_cast<uint32_t>(random.Next());
}

void CRecordFuzz::RunOne(CFuzzRandom& random, LoaderCounts& counts)
{
    m_input = m_bases[random.Below(m_bases.size())];
    uint32_t usedSize = static_cast<uint32_t>(m_input.size());
    uint32_t valueCount = 1;
    Mutate(random, usedSize, valueCount);
    if (usedSize == m_input.size() && !random.OneIn(4))
        usedSize = static_cast<uint32_t>(m_input.size());
    SAFEARRAY* psa = ByteArray(m_input, random.OneIn(4) ? random.Below(64) : 0, random.OneIn(64));
    try {
        CL::var_length_container cache(psa, usedSize, valueCount);
        psa = nullptr;   // the cache owns the array now
        CL::CHistorianValues values;
        CL::AppendRecordsInRange(cache, false, 0, false, 0, false, 0, values);
        if (values.times.size() != values.values.size() || values.times.size() != values.qualities.size())
            counts.Violation("the lists of a read row differ in length");
        ++counts.loaded;
    } catch (...) {
        const std::string kind = CaughtKind();
        ++counts.refused;
        ++counts.errors[kind];
        if (kind != "CException 0x80070057" && kind != "CException 0x80028019" && kind != "CException 0x80004005")
            counts.Violation("refused with " + kind);
    }
    if (psa)
        ::SafeArrayDestroy(psa);
}

} // namespace fuzz
