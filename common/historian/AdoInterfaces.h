#pragma once
// The ADO interfaces from the platform's adoint.h, and the class and
// interface identifiers this program creates them with.
//
// With NTDDI_VERSION below Windows 8 (the build sets 0x06010000) the header
// declares the ADO 2.x interfaces, whose identifiers every Windows version
// and Wine accept; the newer ones are unknown to Wine (E_NOINTERFACE).
// That branch of the header forward-declares its coclasses by a bare typedef
// name ("Connection;"), which C++ rejects; declaring the classes by their own
// names, as done here, is the same declaration in a form C++ accepts.
#include <windows.h>
#include <oleauto.h>

#define __Connection_FWD_DEFINED__
#define __Record_FWD_DEFINED__
#define __Stream_FWD_DEFINED__
#define __Command_FWD_DEFINED__
#define __Recordset_FWD_DEFINED__
#define __Parameter_FWD_DEFINED__
#define Connection class ADOConnection
#define Record class ADORecord
#define Stream class ADOStream
#define Command class ADOCommand
#define Recordset class ADORecordset
#define Parameter class ADOParameter
#include <adoint.h>
#undef Connection
#undef Record
#undef Stream
#undef Command
#undef Recordset
#undef Parameter

namespace CL {

// ADODB.Connection and ADODB.Recordset.
inline constexpr CLSID kClsidAdoConnection = {0x00000514, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
inline constexpr CLSID kClsidAdoRecordset = {0x00000535, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
// _Connection and _Recordset of ADO 2.x.
inline constexpr IID kIidAdoConnection = {0x00000550, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
inline constexpr IID kIidAdoRecordset = {0x00000556, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};

} // namespace CL
