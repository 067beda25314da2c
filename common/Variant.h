#pragma once
// CL::CVariant: an owning VARIANT (VariantClear in the destructor, deep copy
// with VariantCopy). It is layout-compatible with VARIANT and can be passed
// wherever a VARIANT* is expected.
#include <windows.h>
#include <oleauto.h>

#include <string_view>

namespace CL {

class CVariant : public VARIANT {
public:
    CVariant() noexcept { ::VariantInit(this); }
    explicit CVariant(std::wstring_view text);
    CVariant(const CVariant& other);
    CVariant(const VARIANT& other);
    CVariant(CVariant&& other) noexcept;
    CVariant& operator=(const CVariant& other);
    CVariant& operator=(CVariant&& other) noexcept;
    ~CVariant() { ::VariantClear(this); }

    // A variant of one scalar type holding the value (VT_BOOL as
    // VARIANT_TRUE/VARIANT_FALSE).
    static CVariant Bool(bool value) noexcept;
    static CVariant I4(LONG value) noexcept;
    static CVariant I8(LONGLONG value) noexcept;
    static CVariant UI2(USHORT value) noexcept;
    static CVariant UI4(ULONG value) noexcept;
    static CVariant R4(float value) noexcept;
    static CVariant R8(double value) noexcept;

    void Clear() noexcept { ::VariantClear(this); }
    // Releases the current content and returns the VARIANT for an out parameter.
    VARIANT* ReleaseAndGetAddressOf() noexcept
    {
        ::VariantClear(this);
        return this;
    }
    // Hands the content to the caller, who must clear it; this one becomes VT_EMPTY.
    VARIANT Detach() noexcept;
};

} // namespace CL
