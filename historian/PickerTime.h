#pragma once
// The date-and-time pickers of the historian dialogs: the display format
// "dd.MM.yyyy - HH:mm:ss", and OLE dates put in and read back to the second.
#include <windows.h>
#include <oleauto.h>

namespace CL {

// Registers the date-and-time picker and list view classes that the
// historian dialogs' templates use (once per process is enough; repeating it
// is harmless).
void RegisterHistorianControlClasses();

// Gives the picker the display format (DTM_SETFORMATW).
void SetPickerFormat(HWND picker);
// Puts the OLE date into the picker as calendar fields (DTM_SETSYSTEMTIME
// with a valid time). Throws CException for a date the calendar cannot hold.
void SetPickerDate(HWND picker, DATE date);
// The picker's time (DTM_GETSYSTEMTIME) to the second: a picker given a
// time with milliseconds keeps them, and they are forced to 0 here. Throws
// CException when the picker holds no valid time.
SYSTEMTIME GetPickerTime(HWND picker);
// GetPickerTime converted with SystemTimeToVariantTime.
DATE GetPickerDate(HWND picker);

} // namespace CL
