// The value cache: attaching and releasing byte arrays, decoding records and
// variant blocks with every check, walking a cache, and the writer, against
// hand-written golden bytes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ValueTestHelpers.h"
#include "common/DiagnosticLog.h"
#include "common/Util_Variant.h"
#include "common/historian/var_length_container.h"

using CL::CDecodedRecord;
using CL::CVariant;
using CL::var_length_container;
using namespace ValueTest;

namespace {

// --- Golden run: twelve records written byte by byte from the record
// layout (time, quality, 16-byte variant image, payload), not by the writer.
const std::vector<BYTE> kGoldenRun = {
    // 1: time 45000.5, quality 0x00C0, VT_R8 1.5
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF8, 0x3F,
    // 2: time 45001.25, quality 0x0018, VT_I4 -2
    0x00, 0x00, 0x00, 0x00, 0x28, 0xF9, 0xE5, 0x40,  0x18, 0x00,
    0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0xFE, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00,
    // 3: time -1.25, quality 0x00C0, VT_BSTR "A\u00e9": L = 6 (two characters and the terminator)
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF4, 0xBF,  0xC0, 0x00,
    0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x06, 0x00, 0x00, 0x00,  0x41, 0x00, 0xE9, 0x00, 0x00, 0x00,
    // 4: time 0.0, quality 0, VT_BSTR "": L = 2, just the terminator
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00,
    0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x02, 0x00, 0x00, 0x00,  0x00, 0x00,
    // 5: time 45000.5, quality 0x00C0, VT_ARRAY | VT_I2 {1, -1}: element type, N = 2, S = 4, data
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x02, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x02, 0x00,  0x02, 0x00, 0x00, 0x00,  0x04, 0x00, 0x00, 0x00,  0x01, 0x00, 0xFF, 0xFF,
    // 6: VT_ARRAY | VT_BSTR {"x", ""}: element type, N = 2, then two string entries
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x08, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x08, 0x00,  0x02, 0x00, 0x00, 0x00,
    0x04, 0x00, 0x00, 0x00,  0x78, 0x00, 0x00, 0x00,
    0x02, 0x00, 0x00, 0x00,  0x00, 0x00,
    // 7: VT_ARRAY | VT_BSTR {}: 22 bytes of block
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x08, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x08, 0x00,  0x00, 0x00, 0x00, 0x00,
    // 8: VT_ARRAY | VT_R8 {}: 26 bytes of block, S = 0
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x05, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x05, 0x00,  0x00, 0x00, 0x00, 0x00,  0x00, 0x00, 0x00, 0x00,
    // 9: VT_BOOL VARIANT_TRUE
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x0B, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // 10: VT_UI8 18446744073709551615
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x15, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
    // 11: VT_CY 1.2345 (12345 ten-thousandths)
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x39, 0x30, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // 12: VT_I1 -128
    0x00, 0x00, 0x00, 0x00, 0x10, 0xF9, 0xE5, 0x40,  0xC0, 0x00,
    0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
};
constexpr uint32_t kGoldenCount = 12;
constexpr size_t kGoldenRecordSizes[kGoldenCount] = {26, 26, 36, 32, 40, 46, 32, 36, 26, 26, 26, 26};

// A variant with every byte zero, so that its reserved words are known.
CVariant Zeroed(VARTYPE vt)
{
    CVariant v;
    std::memset(static_cast<VARIANT*>(&v), 0, sizeof(VARIANT));
    v.vt = vt;
    return v;
}

// The values of the golden run, as the writer is given them.
std::vector<CVariant> GoldenValues()
{
    std::vector<CVariant> values;
    CVariant v = Zeroed(VT_R8);
    v.dblVal = 1.5;
    values.push_back(v);
    v = Zeroed(VT_I4);
    v.lVal = -2;
    values.push_back(v);
    v = Zeroed(VT_EMPTY);
    v.vt = VT_BSTR;
    v.bstrVal = ::SysAllocString(L"A\u00e9");
    values.push_back(v);
    v.Clear();
    v = Zeroed(VT_EMPTY);
    v.vt = VT_BSTR;
    v.bstrVal = ::SysAllocString(L"");
    values.push_back(v);
    v.Clear();
    for (CVariant array : {MakeArray<SHORT>(VT_I2, {1, -1}), MakeStringArray({L"x", L""}),
                           MakeStringArray({}), MakeArray<double>(VT_R8, {})}) {
        CVariant z = Zeroed(VT_EMPTY);
        z.vt = array.vt;
        z.parray = array.Detach().parray;
        values.push_back(z);
    }
    v = Zeroed(VT_BOOL);
    v.boolVal = VARIANT_TRUE;
    values.push_back(v);
    v = Zeroed(VT_UI8);
    v.ullVal = 18446744073709551615ull;
    values.push_back(v);
    v = Zeroed(VT_CY);
    v.cyVal.int64 = 12345;
    values.push_back(v);
    v = Zeroed(VT_I1);
    v.cVal = -128;
    values.push_back(v);
    return values;
}

const double kGoldenTimes[kGoldenCount] = {45000.5, 45001.25, -1.25, 0.0, 45000.5, 45000.5,
                                           45000.5, 45000.5, 45000.5, 45000.5, 45000.5, 45000.5};
const WORD kGoldenQualities[kGoldenCount] = {0xC0, 0x18, 0xC0, 0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0};

// A VT_UI1 array of the given bytes, with `spare` more bytes of `fill`.
SAFEARRAY* ByteArray(const std::vector<BYTE>& bytes, size_t spare = 0, BYTE fill = 0xEE)
{
    SAFEARRAY* psa = ::SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size() + spare));
    EXPECT_NE(psa, nullptr);
    void* data = nullptr;
    EXPECT_EQ(::SafeArrayAccessData(psa, &data), S_OK);
    if (!bytes.empty())
        std::memcpy(data, bytes.data(), bytes.size());
    std::memset(static_cast<BYTE*>(data) + bytes.size(), fill, spare);
    ::SafeArrayUnaccessData(psa);
    return psa;
}

std::vector<CDecodedRecord> ReadAll(const var_length_container& cache)
{
    std::vector<CDecodedRecord> records;
    for (auto cursor = cache.Records(); !cursor.AtEnd();) {
        records.emplace_back();
        cursor.Next(records.back());
    }
    return records;
}

std::vector<BYTE> UsedBytes(const var_length_container& cache)
{
    return std::vector<BYTE>(cache.Data(), cache.Data() + cache.UsedSize());
}

// A variant block: 16-byte image with the given type, then the payload.
std::vector<BYTE> Block(VARTYPE vt, const std::vector<BYTE>& payload = {}, uint64_t inlineValue = 0)
{
    std::vector<BYTE> block(16, 0);
    std::memcpy(block.data(), &vt, 2);
    std::memcpy(block.data() + 8, &inlineValue, 8);
    block.insert(block.end(), payload.begin(), payload.end());
    return block;
}

std::vector<BYTE> U32(uint32_t value)
{
    return {static_cast<BYTE>(value), static_cast<BYTE>(value >> 8), static_cast<BYTE>(value >> 16),
            static_cast<BYTE>(value >> 24)};
}

std::vector<BYTE> Cat(std::initializer_list<std::vector<BYTE>> parts)
{
    std::vector<BYTE> out;
    for (const auto& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

size_t Read(const std::vector<BYTE>& block, CVariant& dest)
{
    return CL::ReadValue(block.data(), block.size(), dest);
}

std::string LogFileText()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    CL::DiagnosticLog& log = CL::DiagnosticLog::Instance();
    std::ifstream in(std::filesystem::path(log.FileName(now, log.FileCounter())), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace

// --- golden bytes -------------------------------------------------------

TEST(VarLengthContainer, GoldenRunHasTheRecordSizesOfTheLayout)
{
    size_t total = 0;
    for (size_t size : kGoldenRecordSizes)
        total += size;
    EXPECT_EQ(total, kGoldenRun.size());
}

TEST(VarLengthContainer, ReaderDecodesTheHandWrittenGoldenRun)
{
    var_length_container cache(ByteArray(kGoldenRun, 100), static_cast<uint32_t>(kGoldenRun.size()),
                               kGoldenCount);
    const std::vector<CDecodedRecord> records = ReadAll(cache);
    ASSERT_EQ(records.size(), kGoldenCount);
    for (uint32_t i = 0; i < kGoldenCount; ++i) {
        EXPECT_EQ(records[i].time, kGoldenTimes[i]) << i;
        EXPECT_EQ(records[i].quality, kGoldenQualities[i]) << i;
    }
    EXPECT_EQ(records[0].value.vt, VT_R8);
    EXPECT_EQ(records[0].value.dblVal, 1.5);
    EXPECT_EQ(records[1].value.vt, VT_I4);
    EXPECT_EQ(records[1].value.lVal, -2);
    EXPECT_EQ(BstrText(records[2].value), L"A\u00e9");
    EXPECT_EQ(BstrText(records[3].value), L"");
    EXPECT_EQ(records[4].value.vt, VT_ARRAY | VT_I2);
    EXPECT_EQ(ArrayElements<SHORT>(records[4].value), (std::vector<SHORT>{1, -1}));
    EXPECT_EQ(records[5].value.vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(StringElements(records[5].value), (std::vector<std::wstring>{L"x", L""}));
    EXPECT_EQ(records[6].value.vt, VT_ARRAY | VT_BSTR);
    EXPECT_TRUE(StringElements(records[6].value).empty());
    EXPECT_EQ(records[7].value.vt, VT_ARRAY | VT_R8);
    EXPECT_TRUE(ArrayElements<double>(records[7].value).empty());
    EXPECT_EQ(records[8].value.vt, VT_BOOL);
    EXPECT_EQ(records[8].value.boolVal, VARIANT_TRUE);
    EXPECT_EQ(records[9].value.vt, VT_UI8);
    EXPECT_EQ(records[9].value.ullVal, 18446744073709551615ull);
    EXPECT_EQ(records[10].value.vt, VT_CY);
    EXPECT_EQ(records[10].value.cyVal.int64, 12345);
    EXPECT_EQ(records[11].value.vt, VT_I1);
    EXPECT_EQ(records[11].value.cVal, -128);
}

TEST(VarLengthContainer, WriterProducesTheHandWrittenGoldenBytes)
{
    const std::vector<CVariant> values = GoldenValues();
    ASSERT_EQ(values.size(), kGoldenCount);
    var_length_container cache;
    for (uint32_t i = 0; i < kGoldenCount; ++i) {
        cache.Append(kGoldenTimes[i], kGoldenQualities[i], values[i]);
        EXPECT_EQ(var_length_container::RecordSize(values[i]), kGoldenRecordSizes[i]) << i;
    }
    EXPECT_EQ(cache.ValueCount(), kGoldenCount);
    EXPECT_EQ(cache.UsedSize(), kGoldenRun.size());
    EXPECT_EQ(UsedBytes(cache), kGoldenRun);
}

TEST(VarLengthContainer, DecodeRecordReportsTheBytesOfEachGoldenRecord)
{
    size_t offset = 0;
    CDecodedRecord record;
    for (size_t size : kGoldenRecordSizes) {
        EXPECT_EQ(var_length_container::DecodeRecord(kGoldenRun.data() + offset, kGoldenRun.size() - offset,
                                                     record),
                  size);
        offset += size;
    }
}

TEST(VariantBlock, WriterKeepsTheReservedWordsAndNoPointer)
{
    CVariant v = Zeroed(VT_EMPTY);
    v.vt = VT_BSTR;
    v.wReserved1 = 0x1111;
    v.wReserved2 = 0x2222;
    v.wReserved3 = 0x3333;
    v.bstrVal = ::SysAllocString(L"p");
    std::vector<BYTE> out(CL::ValueSize(v));
    ASSERT_EQ(CL::WriteValue(v, out.data()), out.size());
    const std::vector<BYTE> expected = {0x08, 0x00, 0x11, 0x11, 0x22, 0x22, 0x33, 0x33,
                                        0, 0, 0, 0, 0, 0, 0, 0,
                                        0x04, 0x00, 0x00, 0x00, 0x70, 0x00, 0x00, 0x00};
    EXPECT_EQ(out, expected);
}

TEST(VariantBlock, WriterWritesOnlyTheValuesOwnInlineBytes)
{
    CVariant v = Zeroed(VT_I2);
    v.llVal = 0x7777777777777777ll;   // stale bytes beyond the 2-byte value
    v.iVal = 0x0102;
    std::vector<BYTE> out(16);
    ASSERT_EQ(CL::WriteValue(v, out.data()), 16u);
    EXPECT_EQ(out, (std::vector<BYTE>{0x02, 0, 0, 0, 0, 0, 0, 0, 0x02, 0x01, 0, 0, 0, 0, 0, 0}));
}

TEST(VariantBlock, ReaderIgnoresReservedWordsAndTheStoredPointerWord)
{
    std::vector<BYTE> block = Block(VT_BSTR, Cat({U32(4), {0x41, 0x00, 0x00, 0x00}}), 0xDEADBEEFCAFEBABEull);
    block[2] = 0x55;
    block[7] = 0x66;
    CVariant v;
    EXPECT_EQ(Read(block, v), block.size());
    EXPECT_EQ(BstrText(v), L"A");
}

// --- edge cases of the stored format -------------------------------------

TEST(VarLengthContainer, UsedSizeZeroYieldsNoRecordsWhateverTheCapacity)
{
    var_length_container cache(ByteArray({}, 65536, 0x05), 0, 0);
    EXPECT_EQ(cache.CacheSize(), 65536u);
    EXPECT_TRUE(cache.Records().AtEnd());
    EXPECT_TRUE(ReadAll(cache).empty());
}

TEST(VarLengthContainer, SpareBytesAfterTheUsedSizeAreNeverRead)
{
    // Spare bytes of a bad type (0x09 0x00 = VT_DISPATCH) would fail if read.
    var_length_container cache(ByteArray(kGoldenRun, 300, 0x09), static_cast<uint32_t>(kGoldenRun.size()),
                               kGoldenCount);
    EXPECT_EQ(ReadAll(cache).size(), kGoldenCount);
}

TEST(VarLengthContainer, CursorNeverReadsPastTheUsedBytes)
{
    // The used bytes end right at a page that cannot be read.
    SYSTEM_INFO si;
    ::GetSystemInfo(&si);
    const size_t page = si.dwPageSize;
    BYTE* base = static_cast<BYTE*>(::VirtualAlloc(nullptr, 2 * page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    ASSERT_NE(base, nullptr);
    DWORD old = 0;
    ASSERT_TRUE(::VirtualProtect(base + page, page, PAGE_NOACCESS, &old));
    BYTE* data = base + page - kGoldenRun.size();
    std::memcpy(data, kGoldenRun.data(), kGoldenRun.size());
    size_t count = 0;
    CDecodedRecord record;
    for (CL::CRecordCursor cursor(data, 0, static_cast<uint32_t>(kGoldenRun.size())); !cursor.AtEnd(); ++count)
        cursor.Next(record);
    EXPECT_EQ(count, kGoldenCount);
    record.value.Clear();
    ::VirtualFree(base, 0, MEM_RELEASE);
}

TEST(VarLengthContainer, RecordRunningPastTheUsedSizeFailsWithErrorInStream)
{
    // Used size cuts the last record short; the bytes beyond it are not taken.
    var_length_container cache(ByteArray(kGoldenRun, 0), static_cast<uint32_t>(kGoldenRun.size() - 1),
                               kGoldenCount);
    CDecodedRecord record;
    auto cursor = cache.Records();
    for (uint32_t i = 0; i + 1 < kGoldenCount; ++i)
        cursor.Next(record);
    const uint32_t before = cursor.Offset();
    EXPECT_CEXCEPTION(cursor.Next(record), 0x80070057, L"Error in stream");
    EXPECT_EQ(cursor.Offset(), before) << "a failed step does not advance";
}

TEST(VariantBlock, EmptyStringIsStoredWithLengthTwoAndReadsBackEmpty)
{
    const CVariant empty(L"");
    std::vector<BYTE> out(CL::ValueSize(empty));
    ASSERT_EQ(out.size(), 22u);
    CL::WriteValue(empty, out.data());
    EXPECT_EQ(std::vector<BYTE>(out.begin() + 16, out.end()), (std::vector<BYTE>{2, 0, 0, 0, 0, 0}));
    CVariant back;
    EXPECT_EQ(Read(out, back), 22u);
    EXPECT_EQ(back.vt, VT_BSTR);
    EXPECT_NE(back.bstrVal, nullptr);
    EXPECT_EQ(::SysStringLen(back.bstrVal), 0u);
}

TEST(VariantBlock, NullStringIsStoredAsAnEmptyString)
{
    CVariant v;
    v.vt = VT_BSTR;
    v.bstrVal = nullptr;
    std::vector<BYTE> out(CL::ValueSize(v));
    EXPECT_EQ(CL::WriteValue(v, out.data()), 22u);
    CVariant back;
    Read(out, back);
    EXPECT_EQ(BstrText(back), L"");
}

TEST(VariantBlock, StringOfNCharactersHasLengthTwoNPlusTwo)
{
    const CVariant v(L"abcde");
    std::vector<BYTE> out(CL::ValueSize(v));
    EXPECT_EQ(out.size(), 16u + 4u + 12u);
    CL::WriteValue(v, out.data());
    EXPECT_EQ(std::vector<BYTE>(out.begin() + 16, out.begin() + 20), U32(12));
}

TEST(VariantBlock, StringReadsTheFirstLMinusTwoHalvesCharacters)
{
    // L = 7: (7 - 2) / 2 = 2 characters; the entry still takes 4 + 7 bytes.
    const std::vector<BYTE> block = Block(VT_BSTR, Cat({U32(7), {0x61, 0, 0x62, 0, 0x63, 0, 0}}));
    CVariant v;
    EXPECT_EQ(Read(block, v), 16u + 4u + 7u);
    EXPECT_EQ(BstrText(v), L"ab");
}

TEST(VariantBlock, StringWithoutTerminatorStillReadsItsCharacters)
{
    const std::vector<BYTE> block = Block(VT_BSTR, Cat({U32(4), {0x61, 0, 0x62, 0}}));
    CVariant v;
    EXPECT_EQ(Read(block, v), 24u);
    EXPECT_EQ(BstrText(v), L"a");
}

TEST(VariantBlock, EmptyStringArrayTakesExactly22Bytes)
{
    const CVariant v = MakeStringArray({});
    EXPECT_EQ(CL::ValueSize(v), 22u);
    const std::vector<BYTE> block = Block(VT_ARRAY | VT_BSTR, Cat({{0x08, 0x00}, U32(0)}));
    CVariant back;
    EXPECT_EQ(Read(block, back), 22u);
    EXPECT_EQ(back.vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(back.parray->rgsabound[0].cElements, 0u);
}

TEST(VariantBlock, EmptyNumberArrayTakes26BytesWithSizeZero)
{
    const CVariant v = MakeArray<LONG>(VT_I4, {});
    std::vector<BYTE> out(CL::ValueSize(v));
    ASSERT_EQ(out.size(), 26u);
    CL::WriteValue(v, out.data());
    EXPECT_EQ(std::vector<BYTE>(out.begin() + 16, out.end()),
              Cat({{0x03, 0x00}, U32(0), U32(0)}));
    CVariant back;
    EXPECT_EQ(Read(out, back), 26u);
    EXPECT_EQ(back.vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(back.parray->rgsabound[0].cElements, 0u);
}

TEST(VariantBlock, DecodedArrayIsOneDimensionalWithLowerBoundZero)
{
    const std::vector<BYTE> block = Block(VT_ARRAY | VT_I4, Cat({{0x03, 0x00}, U32(2), U32(8), U32(7), U32(9)}));
    CVariant v;
    EXPECT_EQ(Read(block, v), 34u);
    EXPECT_EQ(::SafeArrayGetDim(v.parray), 1u);
    LONG lower = -1;
    ::SafeArrayGetLBound(v.parray, 1, &lower);
    EXPECT_EQ(lower, 0);
    EXPECT_EQ(ArrayElements<LONG>(v), (std::vector<LONG>{7, 9}));
}

TEST(VariantBlock, SizeThatIsNotNTimesTheElementSizeFailsWithErrorInStream)
{
    for (uint32_t size : {0u, 7u, 9u, 16u}) {
        const std::vector<BYTE> block =
            Block(VT_ARRAY | VT_I4, Cat({{0x03, 0x00}, U32(2), U32(size), std::vector<BYTE>(16, 0)}));
        CVariant v;
        EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
    }
}

TEST(VariantBlock, ElementDataPastTheAvailableBytesFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_ARRAY | VT_I4, Cat({{0x03, 0x00}, U32(2), U32(8), U32(1)}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
}

TEST(VariantBlock, StringLengthPastTheAvailableBytesFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_BSTR, Cat({U32(6), {0x61, 0, 0x62, 0}}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
    EXPECT_TRUE(v.vt == VT_BSTR || v.vt == VT_EMPTY);
    if (v.vt == VT_BSTR) {
        EXPECT_EQ(v.bstrVal, nullptr) << "never the writer's pointer";
    }
}

TEST(VariantBlock, StringEntryWithoutRoomForItsLengthFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_BSTR, {0x02, 0x00, 0x00});
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
}

TEST(VariantBlock, StringLengthBelowTwoFailsWithErrorInStream)
{
    for (uint32_t length : {0u, 1u}) {
        const std::vector<BYTE> block = Block(VT_BSTR, Cat({U32(length), {0, 0}}));
        CVariant v;
        EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
    }
}

TEST(VariantBlock, StringLengthNearFourGigabytesFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_BSTR, Cat({U32(0xFFFFFFFFu), {0, 0}}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
}

TEST(VariantBlock, StringArrayEntryPastTheAvailableBytesFailsAndKeepsNoStrayPointer)
{
    const std::vector<BYTE> block =
        Block(VT_ARRAY | VT_BSTR, Cat({{0x08, 0x00}, U32(2), U32(4), {0x61, 0, 0, 0}, U32(40), {0, 0}}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
    v.Clear();   // the partly filled array is released without harm
    EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST(VariantBlock, StringCountThatCannotFitFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_ARRAY | VT_BSTR, Cat({{0x08, 0x00}, U32(0xFFFFFFFFu), U32(2), {0, 0}}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
}

TEST(VariantBlock, HugeNumberCountFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_ARRAY | VT_R8, Cat({{0x05, 0x00}, U32(0x20000000u), U32(0)}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
}

TEST(VariantBlock, ArrayHeaderCutShortFailsWithErrorInStream)
{
    const std::vector<BYTE> full = Block(VT_ARRAY | VT_I1, Cat({{0x10, 0x00}, U32(1), U32(1), {0x05}}));
    for (size_t size = 16; size < full.size(); ++size) {
        CVariant v;
        SCOPED_TRACE(size);
        EXPECT_CEXCEPTION(CL::ReadValue(full.data(), size, v), 0x80070057, L"Error in stream");
    }
    CVariant v;
    EXPECT_EQ(Read(full, v), full.size());
}

TEST(VariantBlock, StoredElementTypeOtherThanTheArraysFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_ARRAY | VT_I4, Cat({{0x09, 0x00}, U32(1), U32(4), U32(1)}));
    CVariant v;
    EXPECT_CEXCEPTION(Read(block, v), 0x80070057, L"Error in stream");
}

TEST(VariantBlock, BlockShorterThanSixteenBytesFailsWithErrorInStream)
{
    const std::vector<BYTE> block = Block(VT_R8);
    for (size_t size = 0; size < 16; ++size) {
        CVariant v;
        SCOPED_TRACE(size);
        EXPECT_CEXCEPTION(CL::ReadValue(block.data(), size, v), 0x80070057, L"Error in stream");
    }
}

TEST(VariantBlock, DispatchTypeFailsWithUnsupportedFormatAndLeavesTheDestinationEmpty)
{
    const std::vector<BYTE> block = Block(VT_DISPATCH, {}, 0x1234567812345678ull);
    CVariant v(L"previous");
    EXPECT_CEXCEPTION(Read(block, v), 0x80028019, L"Error in stream");
    EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST(VariantBlock, EveryTypeOutsideTheStoredListFailsWithUnsupportedFormat)
{
    for (VARTYPE vt : std::initializer_list<VARTYPE>{VT_EMPTY, VT_NULL, VT_ERROR, VT_VARIANT, VT_UNKNOWN, VT_DECIMAL, VT_RECORD,
                       VARTYPE(VT_BYREF | VT_I4), VARTYPE(VT_VECTOR | VT_I4), VARTYPE(VT_ARRAY | VT_VARIANT),
                       VARTYPE(VT_ARRAY | VT_DISPATCH), VARTYPE(VT_ARRAY | VT_BYREF | VT_I4), VARTYPE(0x8003),
                       VARTYPE(0x2000), VARTYPE(0xFFFF), VARTYPE(VT_ARRAY | VT_DECIMAL)}) {
        const std::vector<BYTE> block = Block(vt, std::vector<BYTE>(40, 0));
        CVariant v;
        SCOPED_TRACE(vt);
        EXPECT_CEXCEPTION(Read(block, v), 0x80028019, L"Error in stream");
        EXPECT_EQ(v.vt, VT_EMPTY) << vt;
    }
}

TEST(VariantBlock, StorableTypesAreTheListedScalarsStringAndTheirArrays)
{
    const VARTYPE storable[] = {VT_I1, VT_I2, VT_I4, VT_I8, VT_UI1, VT_UI2, VT_UI4, VT_UI8,
                                VT_INT, VT_UINT, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_BSTR};
    unsigned count = 0;
    for (unsigned vt = 0; vt <= 0xFFFF; ++vt)
        count += CL::IsStorableType(static_cast<VARTYPE>(vt)) ? 1 : 0;
    EXPECT_EQ(count, 32u);
    for (VARTYPE vt : storable) {
        EXPECT_TRUE(CL::IsStorableType(vt)) << vt;
        EXPECT_TRUE(CL::IsStorableType(VT_ARRAY | vt)) << vt;
    }
}

TEST(VariantBlock, ElementSizesAreThoseOfTheAutomationTypes)
{
    EXPECT_EQ(CL::StoredElementSize(VT_I1), 1u);
    EXPECT_EQ(CL::StoredElementSize(VT_UI1), 1u);
    EXPECT_EQ(CL::StoredElementSize(VT_I2), 2u);
    EXPECT_EQ(CL::StoredElementSize(VT_UI2), 2u);
    EXPECT_EQ(CL::StoredElementSize(VT_BOOL), 2u);
    EXPECT_EQ(CL::StoredElementSize(VT_I4), 4u);
    EXPECT_EQ(CL::StoredElementSize(VT_UI4), 4u);
    EXPECT_EQ(CL::StoredElementSize(VT_INT), 4u);
    EXPECT_EQ(CL::StoredElementSize(VT_UINT), 4u);
    EXPECT_EQ(CL::StoredElementSize(VT_R4), 4u);
    EXPECT_EQ(CL::StoredElementSize(VT_I8), 8u);
    EXPECT_EQ(CL::StoredElementSize(VT_UI8), 8u);
    EXPECT_EQ(CL::StoredElementSize(VT_R8), 8u);
    EXPECT_EQ(CL::StoredElementSize(VT_CY), 8u);
    EXPECT_EQ(CL::StoredElementSize(VT_DATE), 8u);
    EXPECT_EQ(CL::StoredElementSize(VT_BSTR), 0u);
    EXPECT_EQ(CL::StoredElementSize(VT_VARIANT), 0u);
    // The platform's arrays agree.
    for (VARTYPE vt : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_BOOL, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_R4,
                       VT_I8, VT_UI8, VT_R8, VT_CY, VT_DATE}) {
        CL::UniqueSafeArray psa(::SafeArrayCreateVector(vt, 0, 1));
        ASSERT_TRUE(psa) << vt;
        EXPECT_EQ(psa.get()->cbElements, CL::StoredElementSize(vt)) << vt;
    }
}

TEST(VariantBlock, DecodingClearsThePreviousValueFirst)
{
    CVariant v = MakeStringArray({L"old", L"values"});
    CVariant image = Zeroed(VT_I4);
    image.lVal = 5;
    std::vector<BYTE> block(16);
    CL::WriteValue(image, block.data());
    EXPECT_EQ(Read(block, v), 16u);
    EXPECT_EQ(v.vt, VT_I4);
    EXPECT_EQ(v.lVal, 5);
}

TEST(VariantBlock, DestinationThatCannotBeClearedFailsWithTheClearText)
{
    VARIANT bad;
    ::VariantInit(&bad);
    bad.vt = 0x0FFF;   // no such type: VariantClear refuses it
    const std::vector<BYTE> block = Block(VT_I4);
    const CL::CException e = CaughtException([&] { CL::ReadValue(block.data(), block.size(), bad); });
    EXPECT_TRUE(FAILED(e.Error()));
    EXPECT_EQ(e.Source(), L"::VariantClear (&rvDest)");
}

TEST(VarLengthContainer, RecordShorterThanTenBytesFailsWithInvalidArgumentAndNoText)
{
    CDecodedRecord record;
    for (size_t size = 0; size < 10; ++size)
        EXPECT_CEXCEPTION(var_length_container::DecodeRecord(kGoldenRun.data(), size, record), 0x80070057, L"");
}

TEST(VarLengthContainer, RecordWithTenBytesFailsInItsBlock)
{
    CDecodedRecord record;
    EXPECT_CEXCEPTION(var_length_container::DecodeRecord(kGoldenRun.data(), 10, record), 0x80070057,
                      L"Error in stream");
}

// --- attach and release ---------------------------------------------------

TEST(VarLengthContainer, AttachKeepsSizesAndLocksTheArray)
{
    SAFEARRAY* psa = ByteArray(kGoldenRun, 10);
    var_length_container cache(psa, 26, 1);
    EXPECT_EQ(cache.Array(), psa);
    EXPECT_EQ(cache.CacheSize(), kGoldenRun.size() + 10);
    EXPECT_EQ(cache.UsedSize(), 26u);
    EXPECT_EQ(cache.ValueCount(), 1u);
    EXPECT_NE(cache.Data(), nullptr);
    EXPECT_EQ(Hex(::SafeArrayDestroy(psa)), Hex(DISP_E_ARRAYISLOCKED)) << "locked for the cache's life";
}

TEST(VarLengthContainer, TwoDimensionalByteArrayIsRefusedBeforeDecoding)
{
    SAFEARRAYBOUND bounds[2] = {{4, 0}, {4, 0}};
    CL::UniqueSafeArray psa(::SafeArrayCreate(VT_UI1, 2, bounds));
    var_length_container cache;
    EXPECT_CEXCEPTION(cache.Attach(psa.get(), 0, 0), 0x80004005, L"wrong safe array");
    EXPECT_EQ(cache.Array(), nullptr);
}

TEST(VarLengthContainer, ArrayOfAnotherElementTypeIsRefused)
{
    for (VARTYPE vt : {VT_I1, VT_I2, VT_BSTR, VT_VARIANT}) {
        CL::UniqueSafeArray psa(::SafeArrayCreateVector(vt, 0, 8));
        var_length_container cache;
        SCOPED_TRACE(vt);
        EXPECT_CEXCEPTION(cache.Attach(psa.get(), 0, 0), 0x80004005, L"wrong safe array vartype");
    }
}

TEST(VarLengthContainer, ArrayWithoutElementTypeFailsWithTheVartypeCall)
{
    SAFEARRAY* raw = nullptr;
    ASSERT_EQ(::SafeArrayAllocDescriptor(1, &raw), S_OK);
    raw->cbElements = 1;
    raw->rgsabound[0].cElements = 4;
    ASSERT_EQ(::SafeArrayAllocData(raw), S_OK);
    CL::UniqueSafeArray psa(raw);
    VARTYPE vt = VT_EMPTY;
    const HRESULT expected = ::SafeArrayGetVartype(raw, &vt);
    ASSERT_TRUE(FAILED(expected));
    var_length_container cache;
    EXPECT_CEXCEPTION(cache.Attach(raw, 0, 0), expected, L"::SafeArrayGetVartype (psa, &vt)");
}

TEST(VarLengthContainer, UsedSizeAboveTheCapacityIsRefused)
{
    CL::UniqueSafeArray psa(ByteArray({1, 2, 3}));
    var_length_container cache;
    EXPECT_CEXCEPTION(cache.Attach(psa.get(), 4, 0), 0x80004005, L"used size is more than cache size");
    EXPECT_NO_THROW(cache.Attach(psa.release(), 3, 0));
}

TEST(VarLengthContainer, ArrayThatCannotBeLockedFailsWithTheAccessCall)
{
    CL::UniqueSafeArray psa(ByteArray({1, 2, 3}));
    // Fill the lock count to its limit so that one more lock fails.
    unsigned locks = 0;
    while (SUCCEEDED(::SafeArrayLock(psa.get())) && locks < 70000)
        ++locks;
    void* data = nullptr;
    const HRESULT expected = ::SafeArrayAccessData(psa.get(), &data);
    ASSERT_TRUE(FAILED(expected));
    var_length_container cache;
    EXPECT_CEXCEPTION(cache.Attach(psa.get(), 0, 0), expected,
                      L"::SafeArrayAccessData (m_psa, (void**) &m_pbData)");
    EXPECT_EQ(cache.Array(), nullptr);
    while (locks--)
        ::SafeArrayUnlock(psa.get());
}

TEST(VarLengthContainer, ReleaseZeroesEveryField)
{
    var_length_container cache(ByteArray(kGoldenRun), static_cast<uint32_t>(kGoldenRun.size()), kGoldenCount);
    cache.Release();
    EXPECT_EQ(cache.Array(), nullptr);
    EXPECT_EQ(cache.Data(), nullptr);
    EXPECT_EQ(cache.CacheSize(), 0u);
    EXPECT_EQ(cache.UsedSize(), 0u);
    EXPECT_EQ(cache.ValueCount(), 0u);
    EXPECT_NO_THROW(cache.Release());
}

TEST(VarLengthContainer, ReleaseThatCannotUnlockThrowsTheUnaccessCall)
{
    SAFEARRAY* psa = ByteArray(kGoldenRun);
    var_length_container cache(psa, 0, 0);
    ASSERT_EQ(::SafeArrayUnaccessData(psa), S_OK);   // someone took the cache's lock away
    const HRESULT expected = E_UNEXPECTED;
    EXPECT_CEXCEPTION(cache.Release(), expected, L"::SafeArrayUnaccessData (m_psa)");
    ::SafeArrayLock(psa);   // give the lock back so that the cache can end cleanly
}

TEST(VarLengthContainer, ReleaseThatCannotDestroyThrowsTheDestroyCallAndCanBeRepeated)
{
    SAFEARRAY* psa = ByteArray(kGoldenRun);
    var_length_container cache(psa, 0, 0);
    ASSERT_EQ(::SafeArrayLock(psa), S_OK);   // another holder
    EXPECT_CEXCEPTION(cache.Release(), DISP_E_ARRAYISLOCKED, L"::SafeArrayDestroy (m_psa)");
    ASSERT_EQ(::SafeArrayUnlock(psa), S_OK);
    EXPECT_NO_THROW(cache.Release());
    EXPECT_EQ(cache.Array(), nullptr);
}

TEST(VarLengthContainer, EmptyCacheReleaseOnlyZeroesTheCounts)
{
    var_length_container cache;
    EXPECT_NO_THROW(cache.Release());
    EXPECT_EQ(cache.UsedSize(), 0u);
    EXPECT_EQ(cache.ValueCount(), 0u);
}

TEST(VarLengthContainer, DestructorNeverThrowsAndLogsItsMarker)
{
    const size_t before = LogFileText().size();
    SAFEARRAY* psa = ByteArray(kGoldenRun);
    {
        var_length_container cache(psa, 0, 0);
        ASSERT_EQ(::SafeArrayLock(psa), S_OK);   // the destroy in the destructor fails
    }
    const std::string added = LogFileText().substr(before);
    EXPECT_NE(added.find("[0]  [var_length_container, 59]\r\n"), std::string::npos) << added;
    ::SafeArrayUnlock(psa);
    EXPECT_EQ(::SafeArrayDestroy(psa), S_OK);
}

TEST(VarLengthContainer, DetachHandsTheUnlockedArrayToTheCaller)
{
    SAFEARRAY* psa = ByteArray(kGoldenRun);
    var_length_container cache(psa, 26, 1);
    CL::UniqueSafeArray back(cache.Detach());
    EXPECT_EQ(back.get(), psa);
    EXPECT_EQ(cache.Array(), nullptr);
    EXPECT_EQ(cache.UsedSize(), 0u);
    EXPECT_EQ(::SafeArrayDestroy(back.release()), S_OK) << "no lock left behind";
}

TEST(VarLengthContainer, MovedCacheOwnsTheArray)
{
    var_length_container a(ByteArray(kGoldenRun), static_cast<uint32_t>(kGoldenRun.size()), kGoldenCount);
    var_length_container b(std::move(a));
    EXPECT_EQ(a.Array(), nullptr);
    EXPECT_EQ(ReadAll(b).size(), kGoldenCount);
    var_length_container c;
    c = std::move(b);
    EXPECT_EQ(b.Array(), nullptr);
    EXPECT_EQ(ReadAll(c).size(), kGoldenCount);
}

TEST(VarLengthContainer, AttachingAgainReleasesThePreviousArray)
{
    var_length_container cache(ByteArray(kGoldenRun), 26, 1);
    SAFEARRAY* second = ByteArray(kGoldenRun, 4);
    cache.Attach(second, 52, 2);
    EXPECT_EQ(cache.Array(), second);
    EXPECT_EQ(ReadAll(cache).size(), 2u);
}

// --- the writer -----------------------------------------------------------

TEST(VarLengthContainer, AppendGrowsTheArrayAndKeepsEarlierRecords)
{
    var_length_container cache;
    CVariant v = Zeroed(VT_I4);
    for (LONG i = 0; i < 1000; ++i) {
        v.lVal = i;
        cache.Append(45000.0 + i, 192, v);
        ASSERT_LE(cache.UsedSize(), cache.CacheSize());
    }
    EXPECT_EQ(cache.UsedSize(), 26000u);
    EXPECT_EQ(cache.ValueCount(), 1000u);
    const std::vector<CDecodedRecord> records = ReadAll(cache);
    ASSERT_EQ(records.size(), 1000u);
    for (LONG i = 0; i < 1000; ++i) {
        EXPECT_EQ(records[i].value.lVal, i);
        EXPECT_EQ(records[i].time, 45000.0 + i);
        EXPECT_EQ(records[i].quality, 192);
    }
}

TEST(VarLengthContainer, FirstAppendCreatesTheSmallestArray)
{
    var_length_container cache;
    cache.Append(1.0, 0, CVariant(L"x"));
    EXPECT_EQ(cache.CacheSize(), var_length_container::kMinimumCapacity);
    VARTYPE vt = VT_EMPTY;
    EXPECT_EQ(::SafeArrayGetVartype(cache.Array(), &vt), S_OK);
    EXPECT_EQ(vt, VT_UI1);
}

TEST(VarLengthContainer, AppendAfterAttachAddsAtTheUsedSizeOverSpareBytes)
{
    var_length_container cache(ByteArray(kGoldenRun, 64, 0xAB), static_cast<uint32_t>(kGoldenRun.size()),
                               kGoldenCount);
    CVariant v = Zeroed(VT_R4);
    v.fltVal = 2.5f;
    cache.Append(7.0, 3, v);
    EXPECT_EQ(cache.CacheSize(), kGoldenRun.size() + 64) << "it fitted in the spare room";
    const std::vector<CDecodedRecord> records = ReadAll(cache);
    ASSERT_EQ(records.size(), kGoldenCount + 1);
    EXPECT_EQ(records.back().value.fltVal, 2.5f);
    EXPECT_EQ(records.back().quality, 3);
}

TEST(VarLengthContainer, ReserveKeepsTheUsedBytes)
{
    var_length_container cache(ByteArray(kGoldenRun), static_cast<uint32_t>(kGoldenRun.size()), kGoldenCount);
    cache.Reserve(100000);
    EXPECT_EQ(cache.CacheSize(), 100000u);
    EXPECT_EQ(UsedBytes(cache), kGoldenRun);
    cache.Reserve(10);
    EXPECT_EQ(cache.CacheSize(), 100000u) << "never shrinks";
}

TEST(VarLengthContainer, AppendOfAnUnsupportedValueLeavesTheCacheUnchanged)
{
    var_length_container cache;
    cache.Append(1.0, 0, CVariant(L"x"));
    const std::vector<BYTE> before = UsedBytes(cache);
    CVariant bad;
    bad.vt = VT_NULL;
    EXPECT_CEXCEPTION(cache.Append(2.0, 0, bad), 0x80028019, L"WriteValue: unsupported variant type");
    CVariant twoD;
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    twoD.parray = ::SafeArrayCreate(VT_I4, 2, bounds);
    twoD.vt = VT_ARRAY | VT_I4;
    EXPECT_CEXCEPTION(cache.Append(2.0, 0, twoD), 0x80070057,
                      L"WriteValue: not a one-dimensional array of the variant's element type");
    CVariant mislabelled = MakeArray<SHORT>(VT_I2, {1});
    mislabelled.vt = VT_ARRAY | VT_I4;
    EXPECT_CEXCEPTION(cache.Append(2.0, 0, mislabelled), 0x80070057,
                      L"WriteValue: not a one-dimensional array of the variant's element type");
    mislabelled.vt = VT_ARRAY | VT_I2;
    EXPECT_EQ(cache.ValueCount(), 1u);
    EXPECT_EQ(UsedBytes(cache), before);
}

TEST(VarLengthContainer, ArrayWithNonZeroLowerBoundIsStoredFromZero)
{
    SAFEARRAYBOUND bound{2, 10};
    CVariant v;
    v.parray = ::SafeArrayCreate(VT_I4, 1, &bound);
    v.vt = VT_ARRAY | VT_I4;
    for (LONG i = 10; i < 12; ++i) {
        LONG value = i * 3;
        ::SafeArrayPutElement(v.parray, &i, &value);
    }
    var_length_container cache;
    cache.Append(1.0, 0, v);
    const std::vector<CDecodedRecord> records = ReadAll(cache);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(ArrayElements<LONG>(records[0].value), (std::vector<LONG>{30, 33}));
}

TEST(VarLengthContainer, DetachedArrayAttachesAgainAsStoredInTheDatabase)
{
    var_length_container writer;
    const std::vector<CVariant> values = GoldenValues();
    for (uint32_t i = 0; i < kGoldenCount; ++i)
        writer.Append(kGoldenTimes[i], kGoldenQualities[i], values[i]);
    const uint32_t used = writer.UsedSize();
    const uint32_t count = writer.ValueCount();
    var_length_container reader(writer.Detach(), used, count);
    EXPECT_EQ(UsedBytes(reader), kGoldenRun);
    EXPECT_EQ(ReadAll(reader).size(), kGoldenCount);
}
