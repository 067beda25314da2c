#pragma once
// Item values as automation variants: the display names of variant types,
// the conversions between values and text that every dialog, file and
// export goes through, the time texts, and the binary form of one value
// (the "variant block") inside a stored item value record.
//
// Conversions that fail raise CL::CException with the status code and the
// text of the failing step; EnhVariantChangeType returns its status instead.
#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/Variant.h"

namespace CL {

// Locales the callers pass: values typed or shown in dialogs and exports use
// the system default, the array-to-array round trip uses the invariant one.
inline constexpr LCID kLocaleSystemDefault = 0x0800;
inline constexpr LCID kLocaleInvariant = 0x007F;
// The conversion flags every caller passes (VARIANT_ALPHABOOL: booleans as words).
inline constexpr USHORT kConversionFlags = 0x02;
// The text between array elements: one element per line.
inline constexpr wchar_t kArraySeparator[] = L"\r\n";

// "VT_UI1 | VT_ARRAY" and so on; unknown base types read "Unknown (<n>)".
std::wstring VarTypeToString(VARTYPE vt);

// VariantChangeTypeEx with this program's overrides: "true"/"false" text
// becomes a VT_BOOL of value 1/0, unsigned/signed range checks, doubles as
// text with 15 significant digits, text to VT_R8/VT_R4 in the classic
// locale, array to array through text. dest may be src. Returns the status.
HRESULT EnhVariantChangeType(VARIANT* dest, const VARIANT* src, LCID locale, USHORT flags,
                             VARTYPE vt);

// The value as text; a one-dimensional array gives one element per
// separator-joined piece. Throws CException.
std::wstring VariantToString(const VARIANT& value, LCID locale, std::wstring_view separator);

// A new variant of type vt made from text; for an array type the text is
// split at every separator. Throws CException.
CVariant StringToVariant(std::wstring_view text, VARTYPE vt, LCID locale,
                         std::wstring_view separator);

// Time texts of an OLE automation date (fields day, month, year first).
// Throw CException(E_INVALIDARG) for a date outside the automation range
// (years 100 to 9999) or not a number.
//   DateToString:        "%02u:%02u:%04u - %02u:%02u:%02u:%03u" (lists)
//   DateToExportString:  "%02u:%02u:%04u %02u:%02u:%02u:%03u"   (XML export)
std::wstring DateToString(DATE date);
std::wstring DateToExportString(DATE date);
// Calendar fields of an OLE automation date, milliseconds rounded to the
// nearest; the day of week is filled in. Throws like DateToString.
SYSTEMTIME DateToSystemTime(DATE date);
// The inverse: calendar fields (milliseconds included) to an OLE date.
// Throws CException(E_INVALIDARG) for fields the automation date cannot hold.
DATE SystemTimeToDate(const SYSTEMTIME& time);
// Display format of the date-and-time pickers (DTM_SETFORMATW).
inline constexpr wchar_t kDateTimePickerFormat[] = L"dd.MM.yyyy - HH:mm:ss";

// --- The variant block: one value in binary form -------------------------
//
// Layout (little-endian): the 16-byte image of an automation variant (vt,
// three reserved words, the 8-byte inline value), then for VT_BSTR a string
// entry (32-bit byte length L including the terminating null, L bytes of
// UTF-16LE), for an array the element type (16 bits), the element count N
// (32 bits) and either N string entries or a 32-bit byte size S = N * element
// size followed by S bytes of element data. Pointers never enter the stream:
// the inline word of strings and arrays is written as zero and ignored on
// reading. The image is the same for 32-bit and 64-bit builds.

inline constexpr size_t kVariantImageSize = 16;

// True for the types a block may hold: VT_I1, VT_I2, VT_I4, VT_I8, VT_UI1,
// VT_UI2, VT_UI4, VT_UI8, VT_INT, VT_UINT, VT_R4, VT_R8, VT_CY, VT_DATE,
// VT_BOOL, VT_BSTR, and VT_ARRAY combined with any of them.
bool IsStorableType(VARTYPE vt);

// Size in bytes of one element of a storable array element type as the
// automation types have it (1, 2, 4 or 8; VT_BOOL 2, VT_CY and VT_DATE 8);
// 0 for VT_BSTR and for every type a block cannot hold.
uint32_t StoredElementSize(VARTYPE elementType);

// Decodes the block at data, of which `available` bytes may be read, into
// dest (cleared first). Returns the bytes the block took. Throws CException:
//   0x80070057 "Error in stream"  block or a payload runs past `available`,
//                                 S is not N * element size, a string length
//                                 is below 2, or the stored element type is
//                                 not the array's
//   0x80028019 "Error in stream"  the type is not storable (dest left empty)
//   the code of VariantClear with "::VariantClear (&rvDest)"
// On a failure dest holds either nothing or a partly filled value that the
// caller's VariantClear releases; it never holds a pointer from the stream.
size_t ReadValue(const BYTE* data, size_t available, VARIANT& dest);

// Bytes WriteValue will write for this value. Throws CException for a value
// that cannot be stored (see WriteValue).
size_t ValueSize(const VARIANT& value);

// Writes the block of value to out, which must have room for
// ValueSize(value) bytes; returns the bytes written. The reserved words are
// copied as the variant has them; inline bytes beyond the value's own width
// are written as zero. Throws CException:
//   0x80028019 "WriteValue: unsupported variant type" for a type that is not storable
//   0x80070057 "WriteValue: not a one-dimensional array of the variant's element type"
//   0x80070057 "WriteValue: value too large for a stored record" past 4 GiB
size_t WriteValue(const VARIANT& value, BYTE* out);

} // namespace CL
