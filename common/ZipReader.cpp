#include "common/ZipReader.h"

#include <zlib.h>

#include <algorithm>
#include <atomic>

#include "common/Exception.h"
#include "common/Text.h"

namespace CL {

namespace {

constexpr uint32_t kLocalHeader = 0x04034b50;
constexpr uint32_t kCentralHeader = 0x02014b50;
constexpr uint32_t kEndOfDirectory = 0x06054b50;
constexpr size_t kEndSize = 22;
constexpr uint16_t kFlagEncrypted = 0x0001;
constexpr uint16_t kStored = 0;
constexpr uint16_t kDeflated = 8;
constexpr size_t kChunk = 1 << 16;
// Sheets pack about ten to a hundred times; deflate's most is about a
// thousand times. Past a megabyte, a part that unpacks 500 times its packed
// size is refused.
constexpr uint64_t kRatioFloor = 1u << 20;
constexpr uint64_t kBombRatio = 500;

[[noreturn]] void Refuse(const std::wstring& why)
{
    throw CException(E_INVALIDARG, why);
}

uint16_t Get16(std::string_view b, size_t at)
{
    if (at + 2 > b.size())
        Refuse(L"The file is truncated: its zip directory points past its end.");
    return static_cast<uint16_t>(static_cast<uint8_t>(b[at]) | (static_cast<uint8_t>(b[at + 1]) << 8));
}

uint32_t Get32(std::string_view b, size_t at)
{
    return Get16(b, at) | (static_cast<uint32_t>(Get16(b, at + 2)) << 16);
}

std::wstring EntryName(const CZipReader::Entry& entry)
{
    return FromUtf8(entry.name);
}

// Inflates one entry piece by piece, counting what it produced against the
// limit and checking the checksum at the end.
class Inflater {
public:
    Inflater(const CZipReader::Entry& entry, std::string_view data, uint64_t limit)
        : m_entry(entry), m_data(data), m_limit(limit)
    {
        if (entry.method == kDeflated && inflateInit2(&m_stream, -MAX_WBITS) != Z_OK)
            throw CException(E_OUTOFMEMORY, L"inflateInit2");
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
        m_stream.avail_in = static_cast<uInt>(data.size());
    }
    ~Inflater()
    {
        if (m_entry.method == kDeflated)
            inflateEnd(&m_stream);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    // Up to size bytes into out; 0 at the end. Throws on damage or the limit.
    size_t Next(char* out, size_t size)
    {
        if (m_done)
            return 0;
        size_t produced = 0;
        if (m_entry.method == kStored) {
            produced = std::min<size_t>(size, m_data.size() - m_storedAt);
            memcpy(out, m_data.data() + m_storedAt, produced);
            m_storedAt += produced;
            m_done = m_storedAt == m_data.size();
        } else {
            m_stream.next_out = reinterpret_cast<Bytef*>(out);
            m_stream.avail_out = static_cast<uInt>(size);
            const int status = inflate(&m_stream, Z_NO_FLUSH);
            produced = size - m_stream.avail_out;
            if (status == Z_STREAM_END)
                m_done = true;
            else if (status == Z_BUF_ERROR && m_stream.avail_in == 0)
                Refuse(Format(L"The part \"%ls\" is truncated.", EntryName(m_entry).c_str()));
            else if (status != Z_OK && status != Z_BUF_ERROR)
                Refuse(Format(L"The part \"%ls\" is damaged: its compressed data cannot be unpacked.",
                              EntryName(m_entry).c_str()));
        }
        m_total += produced;
        // A part that unpacks to far more than any sheet packs from (a
        // thousand times a megabyte, or past the caller's limit) is a bomb.
        if (m_total > m_limit || (m_total > kRatioFloor && m_total / kBombRatio > Consumed()))
            Refuse(Format(L"The part \"%ls\" unpacks to more than %llu MB: it is refused as a zip bomb.",
                          EntryName(m_entry).c_str(), static_cast<unsigned long long>(m_limit >> 20)));
        m_crc = static_cast<uint32_t>(crc32(m_crc, reinterpret_cast<const Bytef*>(out), static_cast<uInt>(produced)));
        if (m_done && (m_crc != m_entry.crc || m_total != m_entry.size))
            Refuse(Format(L"The part \"%ls\" is damaged: its checksum or size does not match.",
                          EntryName(m_entry).c_str()));
        if (!m_done && produced == 0)
            Refuse(Format(L"The part \"%ls\" is damaged.", EntryName(m_entry).c_str()));
        return produced;
    }

private:
    // The packed bytes read so far.
    uint64_t Consumed() const
    {
        return m_entry.method == kStored ? m_storedAt : m_data.size() - m_stream.avail_in;
    }

    const CZipReader::Entry& m_entry;
    std::string_view m_data;
    uint64_t m_limit;
    z_stream m_stream = {};
    size_t m_storedAt = 0;
    uint64_t m_total = 0;
    uint32_t m_crc = 0;
    bool m_done = false;
};

// IStream over an Inflater: what MSXML's SAX reader pulls a part through.
class InflateStream final : public IStream {
public:
    InflateStream(const CZipReader::Entry& entry, std::string_view data, uint64_t limit)
        : m_entry(entry), m_inflater(m_entry, data, limit)
    {
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        if (!out)
            return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_IStream || iid == IID_ISequentialStream) {
            *out = static_cast<IStream*>(this);
            AddRef();
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_refs; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_refs;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE Read(void* out, ULONG size, ULONG* read) override
    {
        ULONG done = 0;
        try {
            while (done < size) {
                const size_t got = m_inflater.Next(static_cast<char*>(out) + done, size - done);
                if (got == 0)
                    break;
                done += static_cast<ULONG>(got);
            }
        } catch (const CException& e) {
            m_error = e.Source();
            if (read)
                *read = 0;
            return E_FAIL;
        }
        if (read)
            *read = done;
        return done < size ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override { return STG_E_ACCESSDENIED; }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override
    {
        if (!stat)
            return E_POINTER;
        *stat = {};
        stat->type = STGTY_STREAM;
        stat->cbSize.QuadPart = m_entry.size;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

    const std::wstring& Error() const { return m_error; }

private:
    ~InflateStream() = default;

    std::atomic<ULONG> m_refs{1};
    CZipReader::Entry m_entry;
    Inflater m_inflater;
    std::wstring m_error;
};

} // namespace

CZipReader::CZipReader(std::string_view bytes) : m_bytes(bytes)
{
    if (bytes.size() < kEndSize)
        Refuse(L"The file is too short to be a workbook (a zip archive).");
    // The end record is the last thing in the file, before a comment of at
    // most 64 KB.
    size_t end = std::string_view::npos;
    const size_t lowest = bytes.size() > kEndSize + 0xFFFF ? bytes.size() - kEndSize - 0xFFFF : 0;
    for (size_t at = bytes.size() - kEndSize + 1; at-- > lowest;) {
        if (Get32(bytes, at) == kEndOfDirectory) {
            end = at;
            break;
        }
    }
    if (end == std::string_view::npos)
        Refuse(L"The file is not a zip archive, or it is truncated: its end record is missing.");
    const uint16_t count = Get16(bytes, end + 10);
    const uint32_t directorySize = Get32(bytes, end + 12);
    const uint32_t directoryOffset = Get32(bytes, end + 16);
    if (count == 0xFFFF || directoryOffset == 0xFFFFFFFF)
        Refuse(L"The file is a zip64 archive, which workbooks of this size never need.");
    if (static_cast<uint64_t>(directoryOffset) + directorySize > end)
        Refuse(L"The file is truncated or damaged: its zip directory lies outside the file.");
    size_t at = directoryOffset;
    for (uint16_t i = 0; i < count; ++i) {
        if (Get32(bytes, at) != kCentralHeader)
            Refuse(L"The file is damaged: its zip directory is broken.");
        Entry entry;
        entry.flags = Get16(bytes, at + 8);
        entry.method = Get16(bytes, at + 10);
        entry.crc = Get32(bytes, at + 16);
        entry.compressed = Get32(bytes, at + 20);
        entry.size = Get32(bytes, at + 24);
        const uint16_t nameLength = Get16(bytes, at + 28);
        const uint16_t extraLength = Get16(bytes, at + 30);
        const uint16_t commentLength = Get16(bytes, at + 32);
        entry.offset = Get32(bytes, at + 42);
        if (at + 46 + nameLength > bytes.size())
            Refuse(L"The file is truncated: its zip directory is cut off.");
        entry.name.assign(bytes.substr(at + 46, nameLength));
        at += 46 + static_cast<size_t>(nameLength) + extraLength + commentLength;
        m_entries.push_back(std::move(entry));
    }
}

const CZipReader::Entry* CZipReader::Find(std::string_view name) const
{
    for (const Entry& entry : m_entries) {
        if (entry.name.size() == name.size() &&
            std::equal(name.begin(), name.end(), entry.name.begin(), [](char a, char b) {
                return (a >= 'A' && a <= 'Z' ? a + 32 : a) == (b >= 'A' && b <= 'Z' ? b + 32 : b);
            }))
            return &entry;
    }
    return nullptr;
}

std::string_view CZipReader::RawData(const Entry& entry) const
{
    if (entry.flags & kFlagEncrypted)
        Refuse(L"The workbook is encrypted (protected by a password). Save it without a password and import it "
               L"again.");
    if (entry.method != kStored && entry.method != kDeflated)
        Refuse(Format(L"The part \"%ls\" is packed with method %u, which is not read (only stored and deflated).",
                      EntryName(entry).c_str(), entry.method));
    if (entry.size == 0xFFFFFFFF || entry.compressed == 0xFFFFFFFF || entry.offset == 0xFFFFFFFF)
        Refuse(L"The file is a zip64 archive, which workbooks of this size never need.");
    if (entry.offset + 30 > m_bytes.size() || Get32(m_bytes, entry.offset) != kLocalHeader)
        Refuse(Format(L"The file is truncated or damaged: the part \"%ls\" is missing.", EntryName(entry).c_str()));
    const size_t start = entry.offset + 30 + Get16(m_bytes, entry.offset + 26) + Get16(m_bytes, entry.offset + 28);
    if (start + entry.compressed > m_bytes.size())
        Refuse(Format(L"The file is truncated: the part \"%ls\" is cut off.", EntryName(entry).c_str()));
    return m_bytes.substr(start, entry.compressed);
}

std::string CZipReader::Read(const Entry& entry, uint64_t limit) const
{
    Inflater inflater(entry, RawData(entry), limit);
    std::string out;
    char buffer[kChunk];
    for (;;) {
        const size_t got = inflater.Next(buffer, sizeof buffer);
        if (got == 0)
            break;
        out.append(buffer, got);
    }
    return out;
}

ComPtr<IStream> CZipReader::OpenStream(const Entry& entry, uint64_t limit) const
{
    return ComPtr<IStream>::Attach(new InflateStream(entry, RawData(entry), limit));
}

std::wstring CZipReader::StreamError(IStream* stream)
{
    return stream ? static_cast<InflateStream*>(stream)->Error() : std::wstring();
}

} // namespace CL
