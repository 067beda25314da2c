// The tray icon is the program's icon at the small icon size of the system
// metrics at the system's DPI (16 pixels at 96 dpi, 24 at 144 dpi), not a
// large icon the notification area shrinks.
#include <gtest/gtest.h>
#include <windows.h>

#include "app/DummyWnd.h"
#include "app/MenuFlags.h"
#include "common/ui/Dpi.h"

TEST(TrayIcon, HasTheSmallIconSizeOfTheSystemMetrics)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    ASSERT_NE(window.TrayIcon(), nullptr);
    ICONINFO info = {};
    ASSERT_TRUE(::GetIconInfo(window.TrayIcon(), &info));
    BITMAP bitmap = {};
    ::GetObjectW(info.hbmColor ? info.hbmColor : info.hbmMask, sizeof bitmap, &bitmap);
    if (info.hbmColor)
        ::DeleteObject(info.hbmColor);
    if (info.hbmMask)
        ::DeleteObject(info.hbmMask);
    const CL::CDpi dpi = CL::CDpi::Of(nullptr);
    EXPECT_EQ(bitmap.bmWidth, dpi.Metric(SM_CXSMICON));
    EXPECT_EQ(bitmap.bmWidth, ::MulDiv(16, dpi.Value(), 96)) << "at " << dpi.Value() << " dpi";
    ::DestroyWindow(window);
}
