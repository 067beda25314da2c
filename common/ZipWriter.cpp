#include "common/ZipWriter.h"

#include <zlib.h>

#include "common/Exception.h"

namespace CL {

namespace {

constexpr uint32_t kLocalHeader = 0x04034b50;
constexpr uint32_t kDataDescriptor = 0x08074b50;
constexpr uint32_t kCentralHeader = 0x02014b50;
constexpr uint32_t kEndOfDirectory = 0x06054b50;
constexpr uint16_t kVersion = 20;          // 2.0: deflate
constexpr uint16_t kFlagDescriptor = 0x0008;
constexpr uint16_t kFlagUtf8 = 0x0800;
constexpr uint16_t kDeflated = 8;
constexpr uint64_t kLimit = 0xFFFFFFFFull;
constexpr size_t kChunk = 1 << 16;

void Put16(std::string& out, uint16_t v)
{
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>(v >> 8);
}

void Put32(std::string& out, uint32_t v)
{
    Put16(out, static_cast<uint16_t>(v & 0xFFFF));
    Put16(out, static_cast<uint16_t>(v >> 16));
}

void CheckLimit(uint64_t value)
{
    if (value > kLimit)
        throw CException(E_FAIL, L"The workbook grows past 4 GB, more than a zip archive without zip64 holds.");
}

} // namespace

// The zlib stream of the entry being written: raw deflate (the zip headers
// carry what zlib's own header would), fastest level: the parts are XML
// text, which even the fastest level packs tenfold.
class CZipWriter::Deflater {
public:
    Deflater()
    {
        if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
            throw CException(E_OUTOFMEMORY, L"deflateInit2");
    }
    ~Deflater() { deflateEnd(&stream); }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    void Reset()
    {
        if (deflateReset(&stream) != Z_OK)
            throw CException(E_FAIL, L"deflateReset");
    }

    z_stream stream = {};
    char out[kChunk];
};

CZipWriter::CZipWriter(CReplacingFile& file) : m_file(file), m_deflater(std::make_unique<Deflater>())
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    m_dosTime = static_cast<uint16_t>((now.wHour << 11) | (now.wMinute << 5) | (now.wSecond / 2));
    m_dosDate = static_cast<uint16_t>(((now.wYear - 1980) << 9) | (now.wMonth << 5) | now.wDay);
}

CZipWriter::~CZipWriter() = default;

void CZipWriter::Emit(std::string_view bytes)
{
    m_file.Write(bytes);
    m_position += bytes.size();
    CheckLimit(m_position);
}

void CZipWriter::BeginEntry(const std::string& name)
{
    if (m_open)
        EndEntry();
    Entry entry;
    entry.name = name;
    entry.offset = m_position;
    std::string header;
    Put32(header, kLocalHeader);
    Put16(header, kVersion);
    Put16(header, kFlagDescriptor | kFlagUtf8);
    Put16(header, kDeflated);
    Put16(header, m_dosTime);
    Put16(header, m_dosDate);
    Put32(header, 0);   // checksum and sizes: in the data descriptor
    Put32(header, 0);
    Put32(header, 0);
    Put16(header, static_cast<uint16_t>(name.size()));
    Put16(header, 0);
    header += name;
    Emit(header);
    m_entries.push_back(std::move(entry));
    m_deflater->Reset();
    m_open = true;
}

void CZipWriter::Deflate(std::string_view bytes, bool finish)
{
    z_stream& z = m_deflater->stream;
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    z.avail_in = static_cast<uInt>(bytes.size());
    Entry& entry = m_entries.back();
    int status = Z_OK;
    do {
        z.next_out = reinterpret_cast<Bytef*>(m_deflater->out);
        z.avail_out = kChunk;
        status = deflate(&z, finish ? Z_FINISH : Z_NO_FLUSH);
        if (status == Z_STREAM_ERROR)
            throw CException(E_FAIL, L"deflate");
        const size_t produced = kChunk - z.avail_out;
        entry.compressed += produced;
        Emit(std::string_view(m_deflater->out, produced));
    } while (z.avail_out == 0 || (finish && status != Z_STREAM_END));
}

void CZipWriter::Write(std::string_view bytes)
{
    if (!m_open)
        throw CException(E_UNEXPECTED, L"CZipWriter::Write without an entry");
    Entry& entry = m_entries.back();
    // zlib counts in 32-bit lengths: large writes go in pieces.
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, 1u << 30);
        entry.crc = static_cast<uint32_t>(crc32(entry.crc, reinterpret_cast<const Bytef*>(piece.data()),
                                                static_cast<uInt>(piece.size())));
        entry.size += piece.size();
        CheckLimit(entry.size);
        Deflate(piece, false);
        bytes.remove_prefix(piece.size());
    }
}

void CZipWriter::EndEntry()
{
    if (!m_open)
        return;
    Deflate({}, true);
    m_open = false;
    const Entry& entry = m_entries.back();
    std::string descriptor;
    Put32(descriptor, kDataDescriptor);
    Put32(descriptor, entry.crc);
    Put32(descriptor, static_cast<uint32_t>(entry.compressed));
    Put32(descriptor, static_cast<uint32_t>(entry.size));
    Emit(descriptor);
}

void CZipWriter::Close()
{
    EndEntry();
    const uint64_t start = m_position;
    std::string directory;
    for (const Entry& entry : m_entries) {
        Put32(directory, kCentralHeader);
        Put16(directory, kVersion);
        Put16(directory, kVersion);
        Put16(directory, kFlagDescriptor | kFlagUtf8);
        Put16(directory, kDeflated);
        Put16(directory, m_dosTime);
        Put16(directory, m_dosDate);
        Put32(directory, entry.crc);
        Put32(directory, static_cast<uint32_t>(entry.compressed));
        Put32(directory, static_cast<uint32_t>(entry.size));
        Put16(directory, static_cast<uint16_t>(entry.name.size()));
        Put16(directory, 0);   // extra field
        Put16(directory, 0);   // comment
        Put16(directory, 0);   // disk
        Put16(directory, 0);   // internal attributes
        Put32(directory, 0);   // external attributes
        Put32(directory, static_cast<uint32_t>(entry.offset));
        directory += entry.name;
    }
    const uint16_t count = static_cast<uint16_t>(m_entries.size());
    Emit(directory);
    std::string end;
    Put32(end, kEndOfDirectory);
    Put16(end, 0);
    Put16(end, 0);
    Put16(end, count);
    Put16(end, count);
    Put32(end, static_cast<uint32_t>(directory.size()));
    Put32(end, static_cast<uint32_t>(start));
    Put16(end, 0);
    Emit(end);
}

} // namespace CL
