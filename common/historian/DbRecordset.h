#pragma once
// IDbRecordset: a forward-only walk over the rows of one query.
//
// Field values come as VARIANTs of the same types from every backend:
// text VT_BSTR, floating-point numbers VT_R8, integers VT_I4 (wider integers
// that do not fit raise an overflow error), binary data VT_ARRAY | VT_UI1,
// SQL NULL VT_NULL. Failures are raised as _com_error with the database's
// own text (see DbError.h).
#include <windows.h>

#include <string_view>

#include "common/Variant.h"

namespace CL {

class IDbRecordset {
public:
    virtual ~IDbRecordset() = default;

    // True when the walk has passed the last row (at once for no rows).
    virtual bool IsEof() const = 0;
    // Moves to the next row.
    virtual void MoveNext() = 0;
    // The value of the named field (case-insensitive) in the current row.
    // The reference stays valid until the next MoveNext; the caller may take
    // the value out of it (for example detach a byte array without a copy).
    virtual CVariant& Field(std::wstring_view name) = 0;
    // Ends the walk; further calls are errors. The destructor closes too.
    virtual void Close() = 0;
};

} // namespace CL
