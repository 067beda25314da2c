#include "common/ui/Gdiplus.h"

#include "common/Exception.h"

namespace CL {

namespace {

// The process's GDI+ session: started by the constructor, shut down by the
// destructor when static objects are destroyed at exit.
class CGdiplusSession {
public:
    CGdiplusSession()
    {
        Gdiplus::GdiplusStartupInput input;
        m_status = Gdiplus::GdiplusStartup(&m_token, &input, nullptr);
    }
    ~CGdiplusSession()
    {
        if (m_status == Gdiplus::Ok)
            Gdiplus::GdiplusShutdown(m_token);
    }
    CGdiplusSession(const CGdiplusSession&) = delete;
    CGdiplusSession& operator=(const CGdiplusSession&) = delete;
    Gdiplus::Status Status() const { return m_status; }

private:
    ULONG_PTR m_token = 0;
    Gdiplus::Status m_status = Gdiplus::GenericError;
};

} // namespace

void EnsureGdiplus()
{
    static const CGdiplusSession session;
    if (session.Status() != Gdiplus::Ok)
        throw CException(E_FAIL, L"GdiplusStartup (&m_token, &input, nullptr)");
}

} // namespace CL
