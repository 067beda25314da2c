#include "common/historian/DbError.h"

#include <oleauto.h>

#include "common/Bstr.h"
#include "common/ComPtr.h"

namespace CL {

[[noreturn]] void ThrowDbError(HRESULT hr, const std::wstring& description,
                               const std::wstring& source)
{
    ComPtr<ICreateErrorInfo> create;
    if (SUCCEEDED(::CreateErrorInfo(create.ReleaseAndGetAddressOf()))) {
        CBstr text(description);
        CBstr origin(source);
        create->SetDescription(text.Get());
        create->SetSource(origin.Get());
        ComPtr<IErrorInfo> info;
        if (SUCCEEDED(create.QueryInterface(IID_IErrorInfo, info)))
            throw _com_error(hr, info.Detach());   // the error owns the reference
    }
    throw _com_error(hr);
}

std::wstring DbErrorDescription(const _com_error& error)
{
    const ComPtr<IErrorInfo> info = ComPtr<IErrorInfo>::Attach(error.ErrorInfo());
    if (!info)
        return std::wstring();
    CBstr text;
    if (FAILED(info->GetDescription(text.ReleaseAndGetAddressOf())))
        return std::wstring();
    return text.Str();
}

} // namespace CL
