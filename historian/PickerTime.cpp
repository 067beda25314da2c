#include "historian/PickerTime.h"

#include <commctrl.h>
#include <oleauto.h>

#include "common/Exception.h"
#include "common/Util_Variant.h"

namespace CL {

void RegisterHistorianControlClasses()
{
    INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_DATE_CLASSES | ICC_LISTVIEW_CLASSES | ICC_BAR_CLASSES};
    ::InitCommonControlsEx(&classes);
}

void SetPickerFormat(HWND picker)
{
    ::SendMessageW(picker, DTM_SETFORMATW, 0, reinterpret_cast<LPARAM>(kDateTimePickerFormat));
}

void SetPickerDate(HWND picker, DATE date)
{
    SYSTEMTIME fields = DateToSystemTime(date);
    if (!::SendMessageW(picker, DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&fields)))
        throw CException(E_FAIL, L"DTM_SETSYSTEMTIME (GDT_VALID, &st)");
}

SYSTEMTIME GetPickerTime(HWND picker)
{
    SYSTEMTIME fields{};
    if (::SendMessageW(picker, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&fields)) != GDT_VALID)
        throw CException(E_FAIL, L"DTM_GETSYSTEMTIME (0, &st)");
    fields.wMilliseconds = 0;
    return fields;
}

DATE GetPickerDate(HWND picker)
{
    SYSTEMTIME fields = GetPickerTime(picker);
    DATE date = 0.0;
    if (!::SystemTimeToVariantTime(&fields, &date))
        throw CException(E_INVALIDARG, L"SystemTimeToVariantTime (&st, &date)");
    return date;
}

} // namespace CL
