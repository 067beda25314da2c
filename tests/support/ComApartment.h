#pragma once
// The multithreaded COM apartment for the life of the object, as the control
// panel enters it at start-up (its settings file goes through MSXML).
#include <windows.h>
#include <objbase.h>

namespace test {

class ComApartment {
public:
    ComApartment() : m_hr(::CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~ComApartment()
    {
        if (SUCCEEDED(m_hr))
            ::CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    HRESULT m_hr;
};

} // namespace test
