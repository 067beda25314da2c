// GetProductInfo reads the product name and version from an executable's
// version resource. The odd resources (none at all, a translation block that
// is too short, a missing value) are written into copies of an executable
// with the system's resource updater.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/AboutDlg.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "version.h"

namespace {

// ---- a version resource, block by block -------------------------------------

void Pad(std::string& bytes)
{
    while (bytes.size() % 4)
        bytes.push_back('\0');
}

void AppendWide(std::string& bytes, const std::wstring& text)
{
    for (wchar_t c : text) {
        bytes.push_back(static_cast<char>(c & 0xFF));
        bytes.push_back(static_cast<char>((c >> 8) & 0xFF));
    }
    bytes.append(2, '\0');
}

void PutWord(std::string& bytes, size_t at, size_t value)
{
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>((value >> 8) & 0xFF);
}

// One block: length, value length, type, key, value, children.
std::string Block(const std::wstring& key, const std::string& value, size_t valueLength, bool text,
                  const std::vector<std::string>& children = {})
{
    std::string bytes(6, '\0');
    AppendWide(bytes, key);
    Pad(bytes);
    bytes += value;
    for (const std::string& child : children) {
        Pad(bytes);
        bytes += child;
    }
    PutWord(bytes, 0, bytes.size());
    PutWord(bytes, 2, valueLength);
    PutWord(bytes, 4, text ? 1 : 0);
    return bytes;
}

std::string StringValue(const std::wstring& key, const std::wstring& value)
{
    std::string bytes;
    AppendWide(bytes, value);
    return Block(key, bytes, value.size() + 1, true);
}

struct Resource {
    std::string translation = std::string("\x09\x04\xb0\x04", 4);   // 0x0409, 1200
    size_t translationLength = 4;   // the length the block declares
    std::wstring table = L"040904b0";
    bool withName = true;
    std::wstring name = L"Crafted Product";
    std::wstring version = L"3.1.4.15";
};

std::string VersionResource(const Resource& r)
{
    VS_FIXEDFILEINFO fixed = {};
    fixed.dwSignature = 0xFEEF04BD;
    fixed.dwStrucVersion = 0x00010000;
    const std::string fixedBytes(reinterpret_cast<const char*>(&fixed), sizeof fixed);

    std::vector<std::string> strings;
    if (r.withName)
        strings.push_back(StringValue(L"ProductName", r.name));
    strings.push_back(StringValue(L"ProductVersion", r.version));
    const std::string table = Block(r.table, "", 0, true, strings);
    const std::string stringInfo = Block(L"StringFileInfo", "", 0, true, {table});
    const std::string var = Block(L"Translation", r.translation, r.translationLength, false);
    const std::string varInfo = Block(L"VarFileInfo", "", 0, true, {var});
    return Block(L"VS_VERSION_INFO", fixedBytes, fixedBytes.size(), false, {stringInfo, varInfo});
}

// A copy of an executable without a version resource (the simulator), with
// the given version resource written into it.
std::wstring ExecutableWith(const test::TempDir& dir, const std::string& resource)
{
    const std::wstring path = dir.File(L"Crafted.exe");
    test::CopyFileOrFail(test::ServerSimulatorPath(), path);
    HANDLE update = ::BeginUpdateResourceW(path.c_str(), FALSE);
    EXPECT_NE(update, nullptr) << "BeginUpdateResourceW, error " << ::GetLastError();
    std::string data = resource;
    EXPECT_TRUE(::UpdateResourceW(update, RT_VERSION, MAKEINTRESOURCEW(1), MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL),
                                  data.data(), static_cast<DWORD>(data.size())));
    EXPECT_TRUE(::EndUpdateResourceW(update, FALSE)) << "EndUpdateResourceW, error " << ::GetLastError();
    return path;
}

} // namespace

TEST(ProductInfo, ControlPanelExecutableCarriesTheBuildsProductNameAndVersion)
{
    std::wstring name;
    std::wstring version;
    EXPECT_TRUE(CAboutDlg::GetProductInfoFrom(test::ControlPanelPath(), name, version));
    EXPECT_EQ(name, L"Varnel OPC Server Engine");
    EXPECT_EQ(version, MORVANE_VERSION_WTEXT);
}

TEST(ProductInfo, ExecutableWithoutVersionResourceLeavesBothStringsUnchanged)
{
    DWORD handle = 0;
    ASSERT_EQ(::GetFileVersionInfoSizeW(test::ServerSimulatorPath().c_str(), &handle), 0u);
    std::wstring name = L"before";
    std::wstring version;
    EXPECT_TRUE(CAboutDlg::GetProductInfoFrom(test::ServerSimulatorPath(), name, version));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(version, L"");
    EXPECT_EQ(CAboutDlg::VersionText(version), L"Version: ");
}

TEST(ProductInfo, CraftedResourceIsReadWithItsFirstTranslation)
{
    test::TempDir dir;
    const std::wstring exe = ExecutableWith(dir, VersionResource(Resource{}));
    std::wstring name;
    std::wstring version;
    EXPECT_TRUE(CAboutDlg::GetProductInfoFrom(exe, name, version));
    EXPECT_EQ(name, L"Crafted Product");
    EXPECT_EQ(version, L"3.1.4.15");
}

TEST(ProductInfo, TranslationShorterThanFourBytesLeavesBothStringsEmpty)
{
    // The block declares 2 bytes; the bytes after them would name the
    // string table that exists, but must not be used.
    Resource r;
    r.translationLength = 2;
    test::TempDir dir;
    const std::wstring exe = ExecutableWith(dir, VersionResource(r));
    std::wstring name;
    std::wstring version;
    EXPECT_TRUE(CAboutDlg::GetProductInfoFrom(exe, name, version));
    EXPECT_EQ(name, L"");
    EXPECT_EQ(version, L"");
}

TEST(ProductInfo, MissingValueLeavesItsStringUnchanged)
{
    Resource r;
    r.withName = false;
    test::TempDir dir;
    const std::wstring exe = ExecutableWith(dir, VersionResource(r));
    std::wstring name = L"kept";
    std::wstring version;
    EXPECT_TRUE(CAboutDlg::GetProductInfoFrom(exe, name, version));
    EXPECT_EQ(name, L"kept");
    EXPECT_EQ(version, L"3.1.4.15");
}

TEST(ProductInfo, StringTableIsChosenByLanguageAndCodePageInLowerCaseHex)
{
    Resource r;
    r.translation = std::string("\x07\x04\xe4\x04\x09\x04\xb0\x04", 8);   // 0407/04e4 first, 0409/04b0
    r.translationLength = 8;
    r.table = L"040704e4";
    r.version = L"7.0.0.1";
    test::TempDir dir;
    const std::wstring exe = ExecutableWith(dir, VersionResource(r));
    std::wstring name;
    std::wstring version;
    CAboutDlg::GetProductInfoFrom(exe, name, version);
    EXPECT_EQ(version, L"7.0.0.1");
}

TEST(ProductInfo, VersionTextIsVersionFollowedByTheProductVersion)
{
    EXPECT_EQ(CAboutDlg::VersionText(L"8.6.0.978"), L"Version: 8.6.0.978");
}
