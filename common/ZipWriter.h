#pragma once
// CZipWriter: a zip archive written as a stream, entry after entry, each
// entry deflated (zlib) as its bytes arrive, so that an entry of hundreds of
// megabytes never sits in memory. The sizes and checksum of an entry are not
// known before its end: they follow its data in a data descriptor and are
// repeated in the central directory that Close writes, as zip's streaming
// mode has them. Entries and the archive stay below 4 GB (no zip64); past
// that the writer throws CException.
#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/ReplacingFile.h"

namespace CL {

class CZipWriter {
public:
    explicit CZipWriter(CReplacingFile& file);
    ~CZipWriter();
    CZipWriter(const CZipWriter&) = delete;
    CZipWriter& operator=(const CZipWriter&) = delete;

    // Starts an entry of that name (ends the one before, if any).
    void BeginEntry(const std::string& name);
    // Adds bytes to the current entry.
    void Write(std::string_view bytes);
    // Ends the current entry.
    void EndEntry();
    // Ends the current entry and writes the central directory. The file is
    // committed by its owner afterwards.
    void Close();

private:
    struct Entry {
        std::string name;
        uint32_t crc = 0;
        uint64_t compressed = 0;
        uint64_t size = 0;
        uint64_t offset = 0;
    };
    class Deflater;

    void Emit(std::string_view bytes);
    void Deflate(std::string_view bytes, bool finish);

    CReplacingFile& m_file;
    std::unique_ptr<Deflater> m_deflater;
    std::vector<Entry> m_entries;
    bool m_open = false;
    uint64_t m_position = 0;
    uint16_t m_dosTime = 0;
    uint16_t m_dosDate = 0;
};

} // namespace CL
