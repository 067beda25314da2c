#pragma once
// The value cache: the in-memory form of one stored run of item values (the
// ItemValues column of HistoricData). It owns a one-dimensional byte array
// (VT_ARRAY | VT_UI1), keeps it locked for its whole life, and knows how many
// of its bytes are used and how many records those bytes hold.
//
// Item value record (little-endian, back to back from offset 0, no padding):
//   offset 0  8 bytes  time     OLE automation date (double), UTC
//   offset 8  2 bytes  quality  OPC quality word
//   offset 10          value    a variant block (see ReadValue in Util_Variant.h)
//
// Reading:
//   CL::var_length_container cache(psa, usedSize, valueCount);  // takes psa
//   CL::CDecodedRecord record;
//   for (auto cursor = cache.Records(); !cursor.AtEnd();) {
//       cursor.Next(record);            // throws CException on a format fault
//       use(record.time, record.quality, record.value);
//   }
//
// Writing (the exact inverse; the array grows when a record does not fit):
//   CL::var_length_container cache;
//   cache.Append(time, 192, value);
//   store(cache.Array(), cache.UsedSize(), cache.ValueCount());
#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <cstdint>

#include "common/Variant.h"
#include "common/historian/RecordCursor.h"

namespace CL {

class var_length_container {
public:
    // The smallest array the writer creates, and its growth factor.
    static constexpr uint32_t kMinimumCapacity = 256;

    // An empty cache: no array, all sizes zero.
    var_length_container() noexcept = default;
    // Attach (below).
    var_length_container(SAFEARRAY* psa, uint32_t usedSize, uint32_t valueCount);
    var_length_container(var_length_container&& other) noexcept;
    var_length_container& operator=(var_length_container&& other) noexcept;
    var_length_container(const var_length_container&) = delete;
    var_length_container& operator=(const var_length_container&) = delete;
    // Releases the array; never throws: a failure is logged at level 0.
    ~var_length_container();

    // Takes ownership of psa and locks it, after these checks, in order
    // (each throws CException; on a throw the caller keeps psa):
    //   one dimension                 else 0x80004005 "wrong safe array"
    //   SafeArrayGetVartype succeeds  else its code "::SafeArrayGetVartype (psa, &vt)"
    //   element type VT_UI1           else 0x80004005 "wrong safe array vartype"
    //   usedSize <= element count     else 0x80004005 "used size is more than cache size"
    //   SafeArrayAccessData succeeds  else its code "::SafeArrayAccessData (m_psa, (void**) &m_pbData)"
    // A cache that already holds an array releases it first (so after a
    // failed check it is empty).
    void Attach(SAFEARRAY* psa, uint32_t usedSize, uint32_t valueCount);

    // Unlocks and destroys the array; every field becomes zero. Throws
    // CException "::SafeArrayUnaccessData (m_psa)" or "::SafeArrayDestroy (m_psa)".
    // Without an array only the used size and value count are zeroed.
    void Release();

    // Unlocks the array and hands it to the caller, who must destroy it;
    // the cache becomes empty. Throws like Release.
    SAFEARRAY* Detach();

    // The owned array (locked); copy it with SafeArrayCopy to store it.
    SAFEARRAY* Array() const noexcept { return m_psa; }
    const BYTE* Data() const noexcept { return m_pbData; }
    uint32_t CacheSize() const noexcept { return m_nCacheSize; }
    uint32_t UsedSize() const noexcept { return m_nUsedSize; }
    uint32_t ValueCount() const noexcept { return m_nValCount; }

    // A cursor over the used bytes.
    CRecordCursor Records() const noexcept { return CRecordCursor(m_pbData, 0, m_nUsedSize); }

    // Appends one record at the used size; grows the array first when the
    // record does not fit in the spare room (to at least twice the capacity,
    // kMinimumCapacity at the least). Throws CException for a value that
    // cannot be stored (WriteValue) or when the cache would pass 4 GiB;
    // the cache is then unchanged.
    void Append(DATE time, WORD quality, const VARIANT& value);

    // Makes sure the capacity is at least `capacity` bytes (creating the
    // array when there is none), keeping the used bytes.
    void Reserve(uint32_t capacity);

    // Bytes one record of this value takes, and writing it to out (which
    // must have room for them); return the bytes written. For writers that
    // fill their own buffers. Throw like WriteValue.
    static size_t RecordSize(const VARIANT& value);
    static size_t WriteRecord(BYTE* out, DATE time, WORD quality, const VARIANT& value);

    // Decodes the record at data with `available` bytes; returns the bytes
    // it took. Fewer than 10 bytes: CException(0x80070057) with an empty
    // text; the value's faults are those of ReadValue.
    static size_t DecodeRecord(const BYTE* data, size_t available, CDecodedRecord& record);

private:
    void Zero() noexcept;

    SAFEARRAY* m_psa = nullptr;
    BYTE* m_pbData = nullptr;
    uint32_t m_nCacheSize = 0;
    uint32_t m_nUsedSize = 0;
    uint32_t m_nValCount = 0;
};

} // namespace CL
