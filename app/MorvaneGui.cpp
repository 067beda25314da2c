// Entry point of the control panel.
#include <windows.h>

#include "app/Application.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int)
{
    return CL::RunControlPanel(instance);
}
