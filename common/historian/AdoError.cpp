#include "common/historian/AdoError.h"

#include <comdef.h>

#include <string>

#include "common/Bstr.h"
#include "common/ComPtr.h"
#include "common/Variant.h"
#include "common/historian/DbError.h"

namespace CL {

namespace {

// The provider's messages, one per line.
std::wstring ErrorsCollectionText(_ADOConnection* connection)
{
    std::wstring text;
    if (!connection)
        return text;
    ComPtr<ADOErrors> errors;
    long count = 0;
    if (FAILED(connection->get_Errors(errors.ReleaseAndGetAddressOf())) || !errors ||
        FAILED(errors->get_Count(&count)))
        return text;
    for (long i = 0; i < count; ++i) {
        CVariant index = CVariant::I4(i);
        ComPtr<ADOError> error;
        CBstr description;
        if (FAILED(errors->get_Item(index, error.ReleaseAndGetAddressOf())) || !error ||
            FAILED(error->get_Description(description.ReleaseAndGetAddressOf())))
            continue;
        if (!text.empty())
            text += L"\n";
        text += description.Str();
    }
    return text;
}

} // namespace

void CheckAdo(HRESULT hr, _ADOConnection* connection, const wchar_t* call)
{
    if (SUCCEEDED(hr))
        return;
    IErrorInfo* info = nullptr;
    if (::GetErrorInfo(0, &info) == S_OK && info)
        throw _com_error(hr, info);   // takes the reference
    ThrowDbError(hr, ErrorsCollectionText(connection), call);
}

} // namespace CL
