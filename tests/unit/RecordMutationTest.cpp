// Robustness of the record reader: a deterministic stream of truncated,
// bit-flipped and length-corrupted runs. Each either decodes or raises
// CException with a code of the stored format; none crashes, leaks, or reads
// a byte past its buffer (every buffer ends right before a no-access page).
#include <gtest/gtest.h>

#include <windows.h>
#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "ValueTestHelpers.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/historian/var_length_container.h"

using CL::CDecodedRecord;
using CL::CVariant;
using CL::var_length_container;
using namespace ValueTest;

namespace {

// xorshift64*: the same sequence on every run and machine.
class Random {
public:
    explicit Random(uint64_t seed) : m_state(seed) {}
    uint64_t Next()
    {
        m_state ^= m_state >> 12;
        m_state ^= m_state << 25;
        m_state ^= m_state >> 27;
        return m_state * 2685821657736338717ull;
    }
    uint32_t Below(uint32_t n) { return static_cast<uint32_t>(Next() % n); }

private:
    uint64_t m_state;
};

// A run and the offsets of its 32-bit length fields (string lengths L,
// element counts N, element data sizes S) and of its type words.
struct BaseRun {
    std::vector<BYTE> bytes;
    std::vector<size_t> lengthFields;
    std::vector<size_t> typeFields;
};

// Finds the fields by walking the layout (the run is known to be valid).
void IndexFields(BaseRun& run)
{
    const BYTE* p = run.bytes.data();
    size_t offset = 0;
    auto u32 = [&](size_t at) {
        uint32_t v;
        std::memcpy(&v, p + at, 4);
        return v;
    };
    while (offset < run.bytes.size()) {
        const size_t block = offset + 10;
        VARTYPE vt;
        std::memcpy(&vt, p + block, 2);
        run.typeFields.push_back(block);
        size_t end = block + 16;
        if (vt == VT_BSTR) {
            run.lengthFields.push_back(end);
            end += 4 + u32(end);
        } else if (vt & VT_ARRAY) {
            run.typeFields.push_back(block + 16);
            run.lengthFields.push_back(block + 18);
            const uint32_t count = u32(block + 18);
            end = block + 22;
            if ((vt & 0xFFF) == VT_BSTR) {
                for (uint32_t i = 0; i < count; ++i) {
                    run.lengthFields.push_back(end);
                    end += 4 + u32(end);
                }
            } else {
                run.lengthFields.push_back(end);
                end += 4 + u32(end);
            }
        }
        offset = end;
    }
}

BaseRun MakeRun(const std::vector<CVariant>& values)
{
    var_length_container cache;
    double time = 45000.0;
    for (const CVariant& v : values)
        cache.Append(time += 0.001, 192, v);
    BaseRun run;
    run.bytes.assign(cache.Data(), cache.Data() + cache.UsedSize());
    IndexFields(run);
    return run;
}

CVariant Number(VARTYPE vt, LONGLONG image)
{
    CVariant v;
    v.vt = vt;
    v.llVal = image;
    return v;
}

std::vector<BaseRun> BaseRuns()
{
    std::vector<BaseRun> runs;
    runs.push_back(MakeRun({Number(VT_R8, 0x3FF8000000000000ll), Number(VT_I4, -2), CVariant(L"A\u00e9"),
                            CVariant(L""), MakeArray<SHORT>(VT_I2, {1, -1}), MakeStringArray({L"x", L""}),
                            MakeStringArray({}), MakeArray<double>(VT_R8, {}), Number(VT_BOOL, -1),
                            Number(VT_UI8, -1), Number(VT_CY, 12345), Number(VT_I1, -128)}));
    runs.push_back(MakeRun({MakeStringArray({L"alpha", L"", L"\u4e2d\u6587", L"gamma", L"delta"}),
                            MakeStringArray({L"one"}), CVariant(L"tail")}));
    runs.push_back(MakeRun({MakeArray<LONG>(VT_I4, {1, 2, 3, 4, 5, 6, 7, 8}),
                            MakeArray<double>(VT_DATE, {45000.5, 45001.5}),
                            MakeArray<BYTE>(VT_UI1, {1, 2, 3}), MakeArray<LONGLONG>(VT_I8, {-1, 0, 1}),
                            MakeArray<float>(VT_R4, {0.5f}), MakeArray<USHORT>(VT_BOOL, {0xFFFF, 0})}));
    std::vector<CVariant> scalars;
    for (VARTYPE vt : {VT_INT, VT_I1, VT_I2, VT_I4, VT_I8, VT_UINT, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_R4,
                       VT_R8, VT_CY, VT_DATE, VT_BOOL})
        scalars.push_back(Number(vt, 0x0102030405060708ll));
    runs.push_back(MakeRun(scalars));
    runs.push_back(MakeRun({CVariant(std::wstring(300, L'z')), MakeStringArray({std::wstring(100, L'q'), L"w"})}));
    return runs;
}

// Guarded memory: `size` bytes followed by a page that cannot be touched.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t size)
    {
        SYSTEM_INFO si;
        ::GetSystemInfo(&si);
        m_page = si.dwPageSize;
        m_size = (size + m_page - 1) / m_page * m_page;
        m_base = static_cast<BYTE*>(::VirtualAlloc(nullptr, m_size + m_page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old = 0;
        if (!m_base || !::VirtualProtect(m_base + m_size, m_page, PAGE_NOACCESS, &old))
            ADD_FAILURE() << "guarded buffer could not be set up";
    }
    ~GuardedBuffer() { ::VirtualFree(m_base, 0, MEM_RELEASE); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    // Copies the bytes so that their last one is the last readable byte.
    BYTE* Place(const std::vector<BYTE>& bytes, size_t length)
    {
        BYTE* start = m_base + m_size - length;
        if (length)
            std::memcpy(start, bytes.data(), length);
        return start;
    }

private:
    BYTE* m_base = nullptr;
    size_t m_size = 0;
    size_t m_page = 0;
};

struct Outcome {
    uint64_t decoded = 0;
    uint64_t records = 0;
    std::map<unsigned, uint64_t> codes;
    std::vector<std::wstring> strange;
};

// Decodes a whole run; records how it ended.
void Walk(const BYTE* data, size_t length, CDecodedRecord& record, Outcome& outcome)
{
    try {
        for (CL::CRecordCursor cursor(data, 0, static_cast<uint32_t>(length)); !cursor.AtEnd();) {
            cursor.Next(record);
            ++outcome.records;
        }
        ++outcome.decoded;
    } catch (const CL::CException& e) {
        const unsigned code = static_cast<unsigned>(e.Error());
        ++outcome.codes[code];
        const bool listed = (code == 0x80070057u && (e.Source() == L"Error in stream" || e.Source().empty())) ||
                            (code == 0x80028019u && e.Source() == L"Error in stream");
        if (!listed && outcome.strange.size() < 10)
            outcome.strange.push_back(e.Text());
    }
}

const uint32_t kInterestingLengths[] = {0, 1, 2, 3, 4, 5, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0xFFFFFFFEu,
                                        0x40000000u, 0x3FFFFFFFu, 0x00010000u};

// Applies one mutation chosen by the random stream; returns the length to decode.
size_t Mutate(const BaseRun& base, std::vector<BYTE>& bytes, Random& random)
{
    bytes = base.bytes;
    size_t length = bytes.size();
    const uint32_t kind = random.Below(5);
    if (kind == 0 || kind == 4) {                  // truncation
        length = random.Below(static_cast<uint32_t>(length) + 1);
    }
    if (kind == 1 || kind == 4) {                  // bit flips
        const uint32_t flips = 1 + random.Below(8);
        for (uint32_t i = 0; i < flips; ++i) {
            const uint32_t bit = random.Below(static_cast<uint32_t>(bytes.size() * 8));
            bytes[bit / 8] ^= static_cast<BYTE>(1u << (bit % 8));
        }
    }
    if (kind == 2 && !base.lengthFields.empty()) { // a length field corrupted
        const size_t at = base.lengthFields[random.Below(static_cast<uint32_t>(base.lengthFields.size()))];
        uint32_t value;
        std::memcpy(&value, bytes.data() + at, 4);
        switch (random.Below(4)) {
        case 0: value = kInterestingLengths[random.Below(std::size(kInterestingLengths))]; break;
        case 1: value += 1 + random.Below(8); break;
        case 2: value -= 1 + random.Below(8); break;
        default: value = static_cast<uint32_t>(random.Next()); break;
        }
        std::memcpy(bytes.data() + at, &value, 4);
    }
    if (kind == 3) {                               // a type word replaced
        const size_t at = base.typeFields[random.Below(static_cast<uint32_t>(base.typeFields.size()))];
        static const VARTYPE kTypes[] = {VT_BSTR, VT_ARRAY | VT_BSTR, VT_ARRAY | VT_I4, VT_ARRAY | VT_UI1,
                                         VT_R8, VT_I1, VT_DISPATCH, VT_EMPTY, VT_ARRAY | VT_R8, VT_DECIMAL};
        const VARTYPE vt = random.Below(3) == 0 ? static_cast<VARTYPE>(random.Next())
                                                : kTypes[random.Below(std::size(kTypes))];
        std::memcpy(bytes.data() + at, &vt, 2);
    }
    return length;
}

// Committed private memory of the process. PagefileUsage rather than
// PrivateUsage: Wine reports the latter as 0.
SIZE_T PrivateBytes()
{
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

Outcome RunMutations(const std::vector<BaseRun>& runs, uint64_t seed, uint32_t count)
{
    size_t largest = 0;
    for (const BaseRun& run : runs)
        largest = std::max(largest, run.bytes.size());
    GuardedBuffer guarded(largest);
    Random random(seed);
    std::vector<BYTE> bytes;
    CDecodedRecord record;
    Outcome outcome;
    for (uint32_t i = 0; i < count; ++i) {
        const BaseRun& base = runs[random.Below(static_cast<uint32_t>(runs.size()))];
        const size_t length = Mutate(base, bytes, random);
        Walk(guarded.Place(bytes, length), length, record, outcome);
    }
    return outcome;
}

} // namespace

TEST(RecordMutation, BaseRunsDecodeWhole)
{
    size_t lengthFields = 0;
    for (const BaseRun& run : BaseRuns()) {
        Outcome outcome;
        CDecodedRecord record;
        GuardedBuffer guarded(run.bytes.size());
        Walk(guarded.Place(run.bytes, run.bytes.size()), run.bytes.size(), record, outcome);
        EXPECT_EQ(outcome.decoded, 1u);
        EXPECT_FALSE(run.typeFields.empty());
        lengthFields += run.lengthFields.size();
    }
    EXPECT_GT(lengthFields, 20u);
}

TEST(RecordMutation, MillionCorruptedRunsDecodeOrFailWithAFormatCode)
{
    const std::vector<BaseRun> runs = BaseRuns();
    // Warm up the allocators and caches, then measure over the full run.
    RunMutations(runs, 1, 20000);
    const SIZE_T before = PrivateBytes();
    ASSERT_GT(before, 0u) << "the memory figure is available";
    const uint32_t kRuns = 1000000;
    Outcome outcome = RunMutations(runs, 0x5EED5EED12345678ull, kRuns);
    const SIZE_T after = PrivateBytes();

    uint64_t failed = 0;
    for (const auto& [code, n] : outcome.codes)
        failed += n;
    EXPECT_EQ(outcome.decoded + failed, kRuns);
    for (const auto& [code, n] : outcome.codes)
        EXPECT_TRUE(code == 0x80070057u || code == 0x80028019u) << std::hex << code << " x" << std::dec << n;
    for (const std::wstring& text : outcome.strange)
        ADD_FAILURE() << "unexpected failure: " << CL::Narrow(text);
    // Both outcomes occur in quantity: the stream exercises the reader.
    EXPECT_GT(outcome.decoded, kRuns / 20);
    EXPECT_GT(outcome.codes[0x80070057u], kRuns / 20);
    EXPECT_GT(outcome.codes[0x80028019u], kRuns / 20);
    // No growth that a leak per run would cause (1,000,000 runs: even one
    // lost string per hundred runs would add far more than this).
    const long long growth = static_cast<long long>(after) - static_cast<long long>(before);
    EXPECT_LT(growth, 4ll * 1024 * 1024) << "private bytes grew by " << growth;
    std::printf("decoded %llu runs (%llu records); E_INVALIDARG %llu, TYPE_E_UNSUPFORMAT %llu; memory growth %lld bytes\n",
                static_cast<unsigned long long>(outcome.decoded), static_cast<unsigned long long>(outcome.records),
                static_cast<unsigned long long>(outcome.codes[0x80070057u]),
                static_cast<unsigned long long>(outcome.codes[0x80028019u]),
                growth);
}
