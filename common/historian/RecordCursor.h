#pragma once
// A forward cursor over the item value records of a buffer, and the decoded
// form of one record. The buffer's layout is described with
// var_length_container (var_length_container.h).
#include <windows.h>
#include <oleauto.h>

#include <cstdint>

#include "common/Variant.h"

namespace CL {

// One decoded item value record. Reuse one object across a walk: decoding
// clears the previous value first, so scalars cost no allocation.
struct CDecodedRecord {
    double time = 0.0;   // OLE automation date, UTC
    CVariant value;
    WORD quality = 0;
};

// A forward cursor over the records of a buffer: (data, offset, end).
class CRecordCursor {
public:
    CRecordCursor(const BYTE* data, uint32_t offset, uint32_t end) noexcept
        : m_data(data), m_offset(offset), m_end(end)
    {
    }
    // True when the offset has reached the end (the used size).
    bool AtEnd() const noexcept { return m_offset >= m_end; }
    // Decodes the record at the offset with (end - offset) bytes available
    // and advances past it. Throws CException; the offset then stays put.
    void Next(CDecodedRecord& record);
    uint32_t Offset() const noexcept { return m_offset; }

private:
    const BYTE* m_data;
    uint32_t m_offset;
    uint32_t m_end;
};

} // namespace CL
