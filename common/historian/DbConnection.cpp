#include "common/historian/DbConnection.h"

#include <cwctype>

#include "common/Text.h"
#include "common/historian/AdoConnection.h"
#include "common/historian/OdbcConnection.h"

namespace CL {

bool IsOleDbConnectionString(std::wstring_view connectionString)
{
    constexpr std::wstring_view kProvider = L"Provider=";
    size_t start = 0;
    while (start < connectionString.size() && std::iswspace(connectionString[start]))
        ++start;
    return EqualsNoCase(connectionString.substr(start, kProvider.size()), kProvider);
}

std::unique_ptr<IDbConnection> OpenDbConnection(const std::wstring& connectionString)
{
    if (IsOleDbConnectionString(connectionString))
        return std::make_unique<CAdoConnection>(connectionString);
    return std::make_unique<COdbcConnection>(connectionString);
}

} // namespace CL
