// The resources built into MorvaneGui.exe: the icon, the manifest that asks
// for administrator rights and common controls 6, and the version block.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/Text.h"
#include "resource.h"
#include "version.h"

namespace {

class ProgramResources : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_module = ::LoadLibraryExW(Exe().c_str(), nullptr,
                                    LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
        ASSERT_NE(m_module, nullptr) << "error " << ::GetLastError();
    }
    void TearDown() override
    {
        if (m_module)
            ::FreeLibrary(m_module);
    }
    static std::wstring Exe() { return test::ProgramFolder() + L"MorvaneGui.exe"; }

    std::string ResourceBytes(const wchar_t* type, WORD id) const
    {
        HRSRC found = ::FindResourceW(m_module, MAKEINTRESOURCEW(id), type);
        if (!found)
            return std::string();
        HGLOBAL loaded = ::LoadResource(m_module, found);
        const char* data = static_cast<const char*>(::LockResource(loaded));
        return data ? std::string(data, ::SizeofResource(m_module, found)) : std::string();
    }

    HMODULE m_module = nullptr;
};

std::wstring VersionString(const std::vector<char>& block, const wchar_t* name)
{
    void* value = nullptr;
    UINT length = 0;
    const std::wstring query = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
    if (!::VerQueryValueW(block.data(), query.c_str(), &value, &length) || !value)
        return std::wstring();
    return static_cast<const wchar_t*>(value);
}

} // namespace

TEST_F(ProgramResources, IconIs201)
{
    EXPECT_EQ(IDI_MAIN, 201);
    EXPECT_FALSE(ResourceBytes(RT_GROUP_ICON, IDI_MAIN).empty());
    HICON icon = static_cast<HICON>(::LoadImageW(m_module, MAKEINTRESOURCEW(IDI_MAIN), IMAGE_ICON, 16, 16, 0));
    EXPECT_NE(icon, nullptr);
    if (icon)
        ::DestroyIcon(icon);
}

TEST_F(ProgramResources, ManifestRequiresAdministratorAndCommonControls6)
{
    const std::string manifest = ResourceBytes(RT_MANIFEST, 1);
    ASSERT_FALSE(manifest.empty()) << "no manifest with id 1";
    EXPECT_NE(manifest.find("level=\"requireAdministrator\""), std::string::npos) << manifest;
    const size_t controls = manifest.find("name=\"Microsoft.Windows.Common-Controls\"");
    ASSERT_NE(controls, std::string::npos) << manifest;
    EXPECT_NE(manifest.find("version=\"6.0.0.0\"", controls), std::string::npos) << manifest;
}

TEST_F(ProgramResources, VersionBlockNamesTheProductAndTheBuildVersion)
{
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(Exe().c_str(), &ignored);
    ASSERT_GT(size, 0u);
    std::vector<char> block(size);
    ASSERT_TRUE(::GetFileVersionInfoW(Exe().c_str(), 0, size, block.data()));
    EXPECT_EQ(VersionString(block, L"ProductName"), CL::Widen(MORVANE_PRODUCT_NAME));
    EXPECT_EQ(VersionString(block, L"ProductVersion"), MORVANE_VERSION_WTEXT);

    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(::VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    EXPECT_EQ(HIWORD(fixed->dwProductVersionMS), MORVANE_VERSION_MAJOR);
    EXPECT_EQ(LOWORD(fixed->dwProductVersionMS), MORVANE_VERSION_MINOR);
    EXPECT_EQ(HIWORD(fixed->dwProductVersionLS), MORVANE_VERSION_PATCH);
    EXPECT_EQ(LOWORD(fixed->dwProductVersionLS), MORVANE_VERSION_BUILD);
}
