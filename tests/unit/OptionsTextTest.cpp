// The texts the options dialogs read: signed decimal numbers and class
// identifiers in registry form; and the check of HKEY_CLASSES_ROOT\CLSID.
#include <gtest/gtest.h>
#include <windows.h>
#include <objbase.h>

#include "config/ClsidText.h"
#include "config/NumberText.h"
#include "config/Settings.h"

TEST(SignedDecimal, ReadsSignedNumbersWithSurroundingBlanks)
{
    long value = 0;
    EXPECT_TRUE(CL::ParseSignedDecimal(L"150", value));
    EXPECT_EQ(value, 150);
    EXPECT_TRUE(CL::ParseSignedDecimal(L"  -42 ", value));
    EXPECT_EQ(value, -42);
    EXPECT_TRUE(CL::ParseSignedDecimal(L"+7", value));
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(CL::ParseSignedDecimal(L"0", value));
    EXPECT_EQ(value, 0);
}

TEST(SignedDecimal, ReadsThe32BitLimitsAndNothingBeyond)
{
    long value = 0;
    EXPECT_TRUE(CL::ParseSignedDecimal(L"2147483647", value));
    EXPECT_EQ(value, 2147483647L);
    EXPECT_TRUE(CL::ParseSignedDecimal(L"-2147483648", value));
    EXPECT_EQ(value, -2147483647L - 1);
    value = 5;
    EXPECT_FALSE(CL::ParseSignedDecimal(L"2147483648", value));
    EXPECT_FALSE(CL::ParseSignedDecimal(L"-2147483649", value));
    EXPECT_EQ(value, 5) << "unchanged on failure";
}

TEST(SignedDecimal, RefusesTextThatIsNotANumber)
{
    long value = 5;
    for (const wchar_t* text : {L"", L"   ", L"12x", L"x12", L"1 2", L"0x10", L"1.5", L"-", L"+", L"--1"})
        EXPECT_FALSE(CL::ParseSignedDecimal(text, value));
    EXPECT_EQ(value, 5);
}

TEST(ClsidText, IsTheUpperCaseRegistryForm)
{
    EXPECT_EQ(CL::ClsidText(CL::kDefaultHDAServerClsid), L"{6E2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A01}");
    EXPECT_EQ(CL::ClsidText(GUID_NULL), L"{00000000-0000-0000-0000-000000000000}");
}

TEST(ClsidText, ParsesTheRegistryFormInEitherCase)
{
    GUID clsid = GUID_NULL;
    EXPECT_TRUE(CL::ParseClsid(L" {6e2d1a40-3b7c-4f8e-9a51-0c4d2b7e8a01} ", clsid));
    EXPECT_TRUE(::IsEqualGUID(clsid, CL::kDefaultHDAServerClsid));
}

TEST(ClsidText, RefusesEverythingElseIncludingProgramIdentifiers)
{
    GUID clsid = CL::kDefaultDAServerClsid;
    for (const wchar_t* text : {L"", L"6E2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A01", L"{6E2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A0}",
                                L"{6E2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A011}", L"{6E2D1A40+3B7C-4F8E-9A51-0C4D2B7E8A01}",
                                L"{GE2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A01}", L"Msxml2.DOMDocument.3.0"})
        EXPECT_FALSE(CL::ParseClsid(text, clsid));
    EXPECT_TRUE(::IsEqualGUID(clsid, CL::kDefaultDAServerClsid)) << "unchanged on failure";
}

TEST(ClsidText, NewClsidsAreFreshAndInRegistryForm)
{
    const std::wstring first = CL::NewClsidText();
    const std::wstring second = CL::NewClsidText();
    GUID parsed = GUID_NULL;
    EXPECT_TRUE(CL::ParseClsid(first, parsed));
    EXPECT_EQ(first, CL::ClsidText(parsed));
    EXPECT_NE(first, second);
}

TEST(ClsidText, RegisteredIsWhetherTheClassesRootHasTheKey)
{
    GUID clsid = GUID_NULL;
    ASSERT_EQ(::CoCreateGuid(&clsid), S_OK);
    const std::wstring key = L"CLSID\\" + CL::ClsidText(clsid);
    EXPECT_FALSE(CL::IsClsidRegistered(clsid));
    HKEY created = nullptr;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &created, nullptr),
              ERROR_SUCCESS);
    ::RegCloseKey(created);
    EXPECT_TRUE(CL::IsClsidRegistered(clsid));
    ::RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str());
    EXPECT_FALSE(CL::IsClsidRegistered(clsid));
}
