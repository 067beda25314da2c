#include "common/historian/var_length_container.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/SafeArray.h"
#include "common/Util_Variant.h"

namespace CL {

namespace {

constexpr size_t kRecordHeaderSize = 10;   // time (8) and quality (2)
constexpr uint64_t kMaximumCacheSize = 0xFFFFFFFFull;

} // namespace

var_length_container::var_length_container(SAFEARRAY* psa, uint32_t usedSize, uint32_t valueCount)
{
    Attach(psa, usedSize, valueCount);
}

var_length_container::var_length_container(var_length_container&& other) noexcept
    : m_psa(other.m_psa), m_pbData(other.m_pbData), m_nCacheSize(other.m_nCacheSize),
      m_nUsedSize(other.m_nUsedSize), m_nValCount(other.m_nValCount)
{
    other.Zero();
}

var_length_container& var_length_container::operator=(var_length_container&& other) noexcept
{
    if (this != &other) {
        var_length_container old(std::move(*this));
        m_psa = other.m_psa;
        m_pbData = other.m_pbData;
        m_nCacheSize = other.m_nCacheSize;
        m_nUsedSize = other.m_nUsedSize;
        m_nValCount = other.m_nValCount;
        other.Zero();
    }
    return *this;
}

var_length_container::~var_length_container()
{
    try {
        Release();
    } catch (...) {
        try {
            // The fixed marker by which this failure has always been known in the log.
            Log(0, SourcePosition("var_length_container", 59));
        } catch (...) {
        }
    }
}

void var_length_container::Attach(SAFEARRAY* psa, uint32_t usedSize, uint32_t valueCount)
{
    Release();
    if (!psa || ::SafeArrayGetDim(psa) != 1)
        throw CException(E_FAIL, L"wrong safe array");
    VARTYPE vt = VT_EMPTY;
    HRESULT hr = ::SafeArrayGetVartype(psa, &vt);
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayGetVartype (psa, &vt)");
    if (vt != VT_UI1)
        throw CException(E_FAIL, L"wrong safe array vartype");
    if (usedSize > psa->rgsabound[0].cElements)
        throw CException(E_FAIL, L"used size is more than cache size");
    void* data = nullptr;
    hr = ::SafeArrayAccessData(psa, &data);
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayAccessData (m_psa, (void**) &m_pbData)");
    m_psa = psa;
    m_pbData = static_cast<BYTE*>(data);
    m_nCacheSize = psa->rgsabound[0].cElements;
    m_nUsedSize = usedSize;
    m_nValCount = valueCount;
}

void var_length_container::Release()
{
    if (m_psa) {
        // m_pbData tells whether our lock is still held, so that a Release
        // repeated after a failed destroy does not unlock twice.
        if (m_pbData) {
            const HRESULT hr = ::SafeArrayUnaccessData(m_psa);
            if (FAILED(hr))
                throw CException(hr, L"::SafeArrayUnaccessData (m_psa)");
            m_pbData = nullptr;
        }
        const HRESULT hr = ::SafeArrayDestroy(m_psa);
        if (FAILED(hr))
            throw CException(hr, L"::SafeArrayDestroy (m_psa)");
    }
    Zero();
}

SAFEARRAY* var_length_container::Detach()
{
    SAFEARRAY* psa = m_psa;
    if (psa && m_pbData) {
        const HRESULT hr = ::SafeArrayUnaccessData(psa);
        if (FAILED(hr))
            throw CException(hr, L"::SafeArrayUnaccessData (m_psa)");
    }
    Zero();
    return psa;
}

void var_length_container::Zero() noexcept
{
    m_psa = nullptr;
    m_pbData = nullptr;
    m_nCacheSize = 0;
    m_nUsedSize = 0;
    m_nValCount = 0;
}

void var_length_container::Reserve(uint32_t capacity)
{
    if (m_pbData && capacity <= m_nCacheSize)
        return;
    UniqueSafeArray grown(::SafeArrayCreateVector(VT_UI1, 0, capacity));
    if (!grown)
        throw CException(E_OUTOFMEMORY, L"::SafeArrayCreateVector (VT_UI1, 0, capacity)");
    void* data = nullptr;
    HRESULT hr = ::SafeArrayAccessData(grown.get(), &data);
    if (FAILED(hr))
        throw CException(hr, L"::SafeArrayAccessData (m_psa, (void**) &m_pbData)");
    if (m_pbData && m_nUsedSize)
        std::memcpy(data, m_pbData, m_nUsedSize);
    const uint32_t usedSize = m_nUsedSize;
    const uint32_t valueCount = m_nValCount;
    try {
        Release();
    } catch (...) {
        ::SafeArrayUnaccessData(grown.get());
        throw;
    }
    m_psa = grown.release();
    m_pbData = static_cast<BYTE*>(data);
    m_nCacheSize = capacity;
    m_nUsedSize = usedSize;
    m_nValCount = valueCount;
}

void var_length_container::Append(DATE time, WORD quality, const VARIANT& value)
{
    const size_t size = RecordSize(value);
    const uint64_t needed = static_cast<uint64_t>(m_nUsedSize) + size;
    if (needed > kMaximumCacheSize)
        throw CException(E_OUTOFMEMORY, L"var_length_container::Append: cache would pass 4 GiB");
    if (!m_pbData || needed > m_nCacheSize) {
        const uint64_t grown = std::max<uint64_t>({needed, 2ull * m_nCacheSize, kMinimumCapacity});
        Reserve(static_cast<uint32_t>(std::min(grown, kMaximumCacheSize)));
    }
    WriteRecord(m_pbData + m_nUsedSize, time, quality, value);
    m_nUsedSize += static_cast<uint32_t>(size);
    ++m_nValCount;
}

size_t var_length_container::RecordSize(const VARIANT& value)
{
    return kRecordHeaderSize + ValueSize(value);
}

size_t var_length_container::WriteRecord(BYTE* out, DATE time, WORD quality, const VARIANT& value)
{
    std::memcpy(out, &time, sizeof time);
    std::memcpy(out + 8, &quality, sizeof quality);
    return kRecordHeaderSize + WriteValue(value, out + kRecordHeaderSize);
}

size_t var_length_container::DecodeRecord(const BYTE* data, size_t available, CDecodedRecord& record)
{
    if (available < kRecordHeaderSize)
        throw CException(E_INVALIDARG, L"");
    std::memcpy(&record.time, data, sizeof record.time);
    std::memcpy(&record.quality, data + 8, sizeof record.quality);
    return kRecordHeaderSize + ReadValue(data + kRecordHeaderSize, available - kRecordHeaderSize, record.value);
}

} // namespace CL
