#include "common/historian/RecordCursor.h"

#include "common/historian/var_length_container.h"

namespace CL {

void CRecordCursor::Next(CDecodedRecord& record)
{
    m_offset += static_cast<uint32_t>(
        var_length_container::DecodeRecord(m_data + m_offset, m_end - m_offset, record));
}

} // namespace CL
