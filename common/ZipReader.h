#pragma once
// CZipReader: the entries of a zip archive held in memory (a workbook), read
// through its central directory. Entries are stored or deflated (zlib);
// an entry is inflated as it is read, never beyond a limit given by the
// caller, so that a small archive that claims or inflates to gigabytes (a
// zip bomb) is refused early instead of filling memory. Encrypted entries,
// other methods and zip64 archives are refused with a reason. Every refusal
// is a CException whose text says what is wrong with the file.
#include <windows.h>
#include <objidl.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/ComPtr.h"

namespace CL {

class CZipReader {
public:
    struct Entry {
        std::string name;
        uint16_t flags = 0;
        uint16_t method = 0;
        uint32_t crc = 0;
        uint64_t compressed = 0;
        uint64_t size = 0;
        uint64_t offset = 0;   // of the local header
    };

    // Reads the central directory. bytes must outlive the reader.
    explicit CZipReader(std::string_view bytes);

    const std::vector<Entry>& Entries() const { return m_entries; }
    // The entry of that name (ignoring letter case, as package part names
    // compare), or null.
    const Entry* Find(std::string_view name) const;

    // The whole entry, inflated; throws when it inflates past limit bytes or
    // is damaged (a checksum that does not match included).
    std::string Read(const Entry& entry, uint64_t limit) const;
    // The entry as a stream that inflates as it is read (for a SAX parser);
    // a read past limit bytes or of damaged data fails, and the reason is
    // then given by StreamError.
    ComPtr<IStream> OpenStream(const Entry& entry, uint64_t limit) const;
    static std::wstring StreamError(IStream* stream);

    // The entry's compressed bytes (where its data starts in the archive).
    std::string_view RawData(const Entry& entry) const;

private:
    std::string_view m_bytes;
    std::vector<Entry> m_entries;
};

} // namespace CL
