#include "historian/TrendChart.h"

#include <commctrl.h>
#include <commdlg.h>
#include <windowsx.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "common/ui/AccessibleName.h"
#include "common/ui/Clipboard.h"
#include "common/ui/ContextMenuKeys.h"
#include "common/ui/FileDialog.h"
#include "common/ui/WaitCursor.h"
#include "res/resource.h"

namespace CL {

namespace {

constexpr double kWheelZoom = 0.8;     // one notch of the wheel: 80 % of the range
constexpr double kKeyZoom = 0.5;       // Up/+: half the range
constexpr double kKeyPan = 0.1;        // Left/Right: a tenth of the range
constexpr int kDragThreshold = 3;      // pixels a drag must move to count
constexpr UINT_PTR kToolId = 1;

const wchar_t kPromptMessage[] = L"Press \"Show data\" to draw the values of the time period.";
const wchar_t kNoValuesMessage[] = L"No values were retrieved: there is nothing to draw.";
const wchar_t kNotNumbersMessage[] =
    L"The values retrieved are not numbers (text or arrays): they are listed, not drawn.";

// A file name made of the item ID: characters a file name cannot hold
// become '_'.
std::wstring PictureFileName(const std::wstring& itemId)
{
    std::wstring name = itemId.empty() ? std::wstring(L"Chart") : itemId;
    for (wchar_t& c : name)
        if (c < 0x20 || std::wstring_view(L"\\/:*?\"<>|").find(c) != std::wstring_view::npos)
            c = L'_';
    return name + L".png";
}

CLSID PngEncoder()
{
    UINT count = 0, bytes = 0;
    if (Gdiplus::GetImageEncodersSize(&count, &bytes) != Gdiplus::Ok || bytes == 0)
        throw CException(E_FAIL, L"Gdiplus::GetImageEncodersSize (&count, &bytes)");
    std::vector<BYTE> buffer(bytes);
    auto* codecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (Gdiplus::GetImageEncoders(count, bytes, codecs) != Gdiplus::Ok)
        throw CException(E_FAIL, L"Gdiplus::GetImageEncoders (count, bytes, codecs)");
    for (UINT i = 0; i < count; ++i)
        if (codecs[i].MimeType && std::wstring_view(codecs[i].MimeType) == L"image/png")
            return codecs[i].Clsid;
    throw CException(REGDB_E_CLASSNOTREG, L"PngEncoder ()");
}

// A memory device context with a bitmap selected into it, both released
// by the destructor.
class CMemoryCanvas {
public:
    CMemoryCanvas(HDC like, int width, int height)
        : m_dc(::CreateCompatibleDC(like)), m_bitmap(::CreateCompatibleBitmap(like, width, height))
    {
        if (!m_dc || !m_bitmap)
            throw CException(E_OUTOFMEMORY, L"CreateCompatibleBitmap (hdc, cx, cy)");
        m_previous = ::SelectObject(m_dc, m_bitmap);
    }
    ~CMemoryCanvas()
    {
        if (m_previous)
            ::SelectObject(m_dc, m_previous);
        if (m_bitmap)
            ::DeleteObject(m_bitmap);
        if (m_dc)
            ::DeleteDC(m_dc);
    }
    CMemoryCanvas(const CMemoryCanvas&) = delete;
    CMemoryCanvas& operator=(const CMemoryCanvas&) = delete;

    HDC Dc() const { return m_dc; }
    // Hands the bitmap over (deselected); the caller owns it.
    HBITMAP Release()
    {
        ::SelectObject(m_dc, m_previous);
        m_previous = nullptr;
        return std::exchange(m_bitmap, nullptr);
    }

private:
    HDC m_dc;
    HBITMAP m_bitmap;
    HGDIOBJ m_previous = nullptr;
};

// The window's DC for measuring, released by the destructor.
class CWindowDc {
public:
    explicit CWindowDc(HWND hwnd) : m_hwnd(hwnd), m_dc(::GetDC(hwnd)) {}
    ~CWindowDc() { ::ReleaseDC(m_hwnd, m_dc); }
    CWindowDc(const CWindowDc&) = delete;
    CWindowDc& operator=(const CWindowDc&) = delete;
    HDC Dc() const { return m_dc; }

private:
    HWND m_hwnd;
    HDC m_dc;
};

} // namespace

CTrendChart::CTrendChart() : m_message(kPromptMessage) {}

CTrendChart::~CTrendChart()
{
    if (m_tooltip)
        ::DestroyWindow(m_tooltip);
}

void CTrendChart::PrepareClass(WNDCLASSEXW& wc) const
{
    wc.style = CS_DBLCLKS;
    wc.hbrBackground = nullptr;   // WM_ERASEBKGND does nothing: the paint covers all
}

HWND CTrendChart::Create(HWND parent, UINT id)
{
    const RECT place = {0, 0, 100, 100};
    if (!CreateEx(parent, L"Chart", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, WS_EX_CLIENTEDGE, &place,
                  reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id))))
        ThrowLastError(L"m_chart.Create (m_hWnd)");
    EnableContextMenuKeys(Hwnd());
    MakeRenderer();

    m_tooltip = ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP,
                                  CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, Hwnd(), nullptr,
                                  ModuleInstance(), nullptr);
    if (m_tooltip) {
        TTTOOLINFOW tool = {};
        tool.cbSize = sizeof tool;
        tool.uFlags = TTF_TRACK | TTF_ABSOLUTE;
        tool.hwnd = Hwnd();
        tool.uId = kToolId;
        tool.lpszText = const_cast<wchar_t*>(L"");
        ::SendMessageW(m_tooltip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
        ::SendMessageW(m_tooltip, TTM_SETMAXTIPWIDTH, 0, 600);
    }
    return Hwnd();
}

// --- data and view -------------------------------------------------------------

void CTrendChart::Clear(const std::wstring& itemId)
{
    m_itemId = itemId;
    m_series.Clear();
    m_message = kPromptMessage;
    m_wholeFrom = m_from = 0.0;
    m_wholeTo = m_to = 1.0;
    SetHover(CTrendSeries::npos, POINT{});
    UpdateCaption();
    Invalidate();
}

void CTrendChart::SetValues(std::shared_ptr<const CHistorianValues> values, const std::wstring& itemId)
{
    m_itemId = itemId;
    m_series.Assign(std::move(values));
    m_message = m_series.DeliveredCount() == 0 ? kNoValuesMessage : kNotNumbersMessage;
    if (m_series.Empty()) {
        m_wholeFrom = 0.0;
        m_wholeTo = 1.0;
    } else {
        // A little room either side, so that the first and last value are
        // not drawn on the plot's edges.
        const double first = m_series.Time(0);
        const double last = m_series.Time(m_series.Size() - 1);
        const double pad = last > first ? (last - first) * 0.02 : 60.0 / 86400.0;
        m_wholeFrom = first - pad;
        m_wholeTo = last + pad;
    }
    m_from = m_wholeFrom;
    m_to = m_wholeTo;
    SetHover(CTrendSeries::npos, POINT{});
    UpdateCaption();
    Invalidate();
}

void CTrendChart::SetView(double from, double to)
{
    const double whole = m_wholeTo - m_wholeFrom;
    double span = std::clamp(to - from, std::min(kMinSpan, whole), whole);
    const double middle = from / 2 + to / 2;
    from = middle - span / 2;
    from = std::clamp(from, m_wholeFrom, m_wholeTo - span);
    m_from = from;
    m_to = from + span;
    Invalidate();
}

void CTrendChart::ShowAll()
{
    SetView(m_wholeFrom, m_wholeTo);
}

void CTrendChart::ZoomTo(double from, double to)
{
    if (from > to)
        std::swap(from, to);
    SetView(from, to);
}

void CTrendChart::ZoomAround(double keep, double factor)
{
    const double whole = m_wholeTo - m_wholeFrom;
    const double span = std::clamp((m_to - m_from) * factor, std::min(kMinSpan, whole), whole);
    const double share = m_to > m_from ? (keep - m_from) / (m_to - m_from) : 0.5;
    const double from = keep - share * span;
    const double clamped = std::clamp(from, m_wholeFrom, m_wholeTo - span);
    m_from = clamped;
    m_to = clamped + span;
    Invalidate();
}

void CTrendChart::Pan(double fraction)
{
    const double span = m_to - m_from;
    const double from = std::clamp(m_from + fraction * span, m_wholeFrom, m_wholeTo - span);
    m_from = from;
    m_to = from + span;
    Invalidate();
}

void CTrendChart::UpdateCaption()
{
    // The window text says what the chart shows, for screen readers (a
    // custom control's name is its text) and for tools that read windows.
    std::wstring text = L"Chart";
    if (!m_series.Empty())
        text = Format(L"Chart of '%ls': %zu value(s) drawn, %zu NOT GOOD", m_itemId.c_str(), m_series.Size(),
                      m_series.BadCount());
    else if (!m_message.empty())
        text = L"Chart: " + m_message;
    if (!IsWindow())
        return;
    ::SetWindowTextW(Hwnd(), text.c_str());
    // Its description is what it notes under the title, or its message
    // when it draws no values.
    const std::wstring notes = m_series.NotesText();
    CAccessibleName::SetDescription(Hwnd(), !notes.empty() || !m_series.Empty() ? notes : m_message);
}

void CTrendChart::Invalidate()
{
    m_layoutValid = false;
    if (IsWindow())
        ::InvalidateRect(Hwnd(), nullptr, FALSE);
}

CTrendRenderer::Layout CTrendChart::CurrentLayout()
{
    if (!m_layoutValid && IsWindow() && m_renderer) {
        RECT client;
        ::GetClientRect(Hwnd(), &client);
        CWindowDc dc(Hwnd());
        Gdiplus::Graphics g(dc.Dc());
        m_layout = m_renderer->Arrange(g, Gdiplus::Rect(0, 0, client.right, client.bottom), m_series,
                                       MakeFrame(false));
        m_layoutValid = true;
    }
    return m_layout;
}

// --- hover ----------------------------------------------------------------------

std::wstring CTrendChart::HoverText() const
{
    if (m_hover >= m_series.Size())
        return std::wstring();
    std::wstring text = m_series.PointText(m_hover);
    const std::wstring notDrawn = m_series.NotDrawnText();
    if (!notDrawn.empty())
        text += L"\r\n" + notDrawn;
    return text;
}

void CTrendChart::SetHover(size_t point, POINT at)
{
    if (point == m_hover)
        return;
    m_hover = point;
    UpdateTooltip(at);
    if (IsWindow())
        ::InvalidateRect(Hwnd(), nullptr, FALSE);
}

void CTrendChart::UpdateTooltip(POINT at)
{
    if (!m_tooltip)
        return;
    TTTOOLINFOW tool = {};
    tool.cbSize = sizeof tool;
    tool.hwnd = Hwnd();
    tool.uId = kToolId;
    if (m_hover == CTrendSeries::npos) {
        ::SendMessageW(m_tooltip, TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&tool));
        return;
    }
    m_tipText = HoverText();
    tool.lpszText = m_tipText.data();
    ::SendMessageW(m_tooltip, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
    POINT screen = at;
    ::ClientToScreen(Hwnd(), &screen);
    ::SendMessageW(m_tooltip, TTM_TRACKPOSITION, 0, MAKELPARAM(screen.x + 16, screen.y + 16));
    ::SendMessageW(m_tooltip, TTM_TRACKACTIVATE, TRUE, reinterpret_cast<LPARAM>(&tool));
}

// --- painting --------------------------------------------------------------------

CTrendRenderer::Frame CTrendChart::MakeFrame(bool forPicture) const
{
    CTrendRenderer::Frame frame;
    frame.from = m_from;
    frame.to = m_to;
    frame.title = m_itemId;
    frame.message = m_message;
    if (!forPicture) {
        frame.focused = ::GetFocus() == Hwnd();
        frame.selecting = m_drag == Drag::Select && m_dragMoved;
        frame.selectFrom = m_selectFrom;
        frame.selectTo = m_selectTo;
        frame.hover = m_hover;
    }
    return frame;
}

void CTrendChart::Paint(HDC target, const RECT& client)
{
    const int width = std::max<int>(client.right - client.left, 1);
    const int height = std::max<int>(client.bottom - client.top, 1);
    CMemoryCanvas canvas(target, width, height);
    {
        Gdiplus::Graphics g(canvas.Dc());
        m_layout = m_renderer->Draw(g, Gdiplus::Rect(0, 0, width, height), m_series, MakeFrame(false));
        m_layoutValid = true;
    }
    ::BitBlt(target, client.left, client.top, width, height, canvas.Dc(), 0, 0, SRCCOPY);
}

void CTrendChart::OnPaint()
{
    PAINTSTRUCT ps;
    const HDC dc = ::BeginPaint(Hwnd(), &ps);
    try {
        RECT client;
        ::GetClientRect(Hwnd(), &client);
        if (m_renderer && client.right > 0 && client.bottom > 0)
            Paint(dc, client);
    } catch (...) {
        ::EndPaint(Hwnd(), &ps);
        throw;
    }
    ::EndPaint(Hwnd(), &ps);
}

void CTrendChart::OnPrintClient(HDC dc)
{
    RECT client;
    ::GetClientRect(Hwnd(), &client);
    if (m_renderer && client.right > 0 && client.bottom > 0)
        Paint(dc, client);
}

void CTrendChart::OnSize()
{
    m_layoutValid = false;
    ::InvalidateRect(Hwnd(), nullptr, FALSE);
}

SIZE CTrendChart::PictureSize() const
{
    RECT client = {};
    ::GetClientRect(Hwnd(), &client);
    // A hidden or squeezed chart still gives a readable picture.
    return SIZE{std::max<LONG>(client.right, 480), std::max<LONG>(client.bottom, 300)};
}

void CTrendChart::CopyToClipboard()
{
    const SIZE size = PictureSize();
    CWindowDc screen(Hwnd());
    CMemoryCanvas canvas(screen.Dc(), size.cx, size.cy);
    {
        Gdiplus::Graphics g(canvas.Dc());
        m_renderer->Draw(g, Gdiplus::Rect(0, 0, size.cx, size.cy), m_series, MakeFrame(true));
    }
    UniqueGdiObject bitmap(canvas.Release());
    CClipboard clipboard(Hwnd());
    if (!::EmptyClipboard())
        ThrowLastError(L"EmptyClipboard ()");
    if (!::SetClipboardData(CF_BITMAP, bitmap.get()))
        ThrowLastError(L"SetClipboardData (CF_BITMAP, hBitmap)");
    bitmap.release();   // the clipboard owns it now
}

void CTrendChart::SaveAsPng(const std::wstring& path)
{
    const SIZE size = PictureSize();
    CWindowDc screen(Hwnd());
    CMemoryCanvas canvas(screen.Dc(), size.cx, size.cy);
    {
        Gdiplus::Graphics g(canvas.Dc());
        m_renderer->Draw(g, Gdiplus::Rect(0, 0, size.cx, size.cy), m_series, MakeFrame(true));
    }
    const UniqueGdiObject bitmap(canvas.Release());
    Gdiplus::Bitmap picture(static_cast<HBITMAP>(bitmap.get()), nullptr);
    if (picture.GetLastStatus() != Gdiplus::Ok)
        throw CException(E_OUTOFMEMORY, L"Gdiplus::Bitmap (hBitmap, NULL)");
    const CLSID png = PngEncoder();
    if (picture.Save(path.c_str(), &png, nullptr) != Gdiplus::Ok)
        throw CException(E_FAIL, L"picture.Save (szFile, &pngEncoder)");
}

std::wstring CTrendChart::AskPngFile() const
{
    return CL::AskSaveFileName(::GetAncestor(Hwnd(), GA_ROOT), L"PNG Files (*.png)\0*.png\0All files (*.*)\0*.*\0",
                               L"png", PictureFileName(m_itemId));
}

// The renderer with the chart's font (at first the parent's) and the
// window's DPI; made again when the window layer hands the chart the font
// of a new DPI (WM_SETFONT), as it does to every control.
void CTrendChart::MakeRenderer()
{
    if (!m_font)
        m_font = reinterpret_cast<HFONT>(::SendMessageW(::GetParent(Hwnd()), WM_GETFONT, 0, 0));
    m_renderer = std::make_unique<CTrendRenderer>(m_font);
    m_renderer->SetDpi(CDpi::Of(Hwnd()).Value());
}

// --- messages --------------------------------------------------------------------

LRESULT CTrendChart::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    const POINT at = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    switch (message) {
    case WM_PAINT:
        RunReported([this] { OnPaint(); });
        return 0;
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(m_font);
    case WM_SETFONT:
        RunReported([&] {
            m_font = reinterpret_cast<HFONT>(wParam);
            MakeRenderer();
            m_layoutValid = false;
            if (LOWORD(lParam))
                ::InvalidateRect(Hwnd(), nullptr, FALSE);
        });
        return 0;
    case WM_PRINTCLIENT:
        RunReported([&] { OnPrintClient(reinterpret_cast<HDC>(wParam)); });
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        OnSize();
        return 0;
    case kDpiChangedAfterParent:
        RunReported([this] {
            MakeRenderer();
            OnSize();
        });
        return 0;
    case WM_GETDLGCODE:
        // While a drag is on, Esc cancels it instead of closing the dialog.
        return m_drag != Drag::None ? DLGC_WANTALLKEYS : DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        ::InvalidateRect(Hwnd(), nullptr, FALSE);
        return 0;
    case WM_LBUTTONDOWN:
        OnLButtonDown(at);
        return 0;
    case WM_LBUTTONUP:
        OnLButtonUp(at);
        return 0;
    case WM_LBUTTONDBLCLK:
        OnLButtonDblClk();
        return 0;
    case WM_RBUTTONDOWN:
        OnRButtonDown(at);
        return 0;
    case WM_RBUTTONUP:
        OnRButtonUp(at);
        return 0;
    case WM_MOUSEMOVE:
        OnMouseMove(at);
        return 0;
    case WM_MOUSELEAVE:
        OnMouseLeave();
        return 0;
    case WM_MOUSEWHEEL:
        OnMouseWheel(GET_WHEEL_DELTA_WPARAM(wParam), at);
        return 0;
    case WM_KEYDOWN:
        OnKeyDown(static_cast<UINT>(wParam));
        return 0;
    case WM_CONTEXTMENU:
        OnContextMenu(at);
        return 0;
    case WM_CAPTURECHANGED:
        OnCaptureChanged();
        return 0;
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case ID_TREND_SHOW_ALL: OnShowAll(); return 0;
        case ID_TREND_COPY: OnCopy(); return 0;
        case ID_TREND_SAVE_PNG: OnSavePng(); return 0;
        default: break;
        }
        break;
    default:
        break;
    }
    return DefaultProc(message, wParam, lParam);
}

void CTrendChart::OnLButtonDown(POINT at)
{
    Log(3, "CTrendChart::OnLButtonDown" + MV_POS());
    RunReported([&] {
        ::SetFocus(Hwnd());
        const CTrendRenderer::Layout layout = CurrentLayout();
        if (!layout.valid || at.x < layout.plot.X || at.x > layout.plot.GetRight())
            return;
        m_drag = Drag::Select;
        m_dragMoved = false;
        m_dragStart = at;
        m_selectFrom = m_selectTo = layout.TimeOfX(at.x);
        ::SetCapture(Hwnd());
    });
}

void CTrendChart::OnLButtonUp(POINT at)
{
    Log(3, "CTrendChart::OnLButtonUp" + MV_POS());
    RunReported([&] {
        if (m_drag != Drag::Select)
            return;
        const bool moved = std::abs(at.x - m_dragStart.x) >= kDragThreshold;
        const CTrendRenderer::Layout layout = CurrentLayout();
        const double end = layout.TimeOfX(std::clamp<double>(at.x, layout.plot.X, layout.plot.GetRight()));
        m_drag = Drag::None;
        if (::GetCapture() == Hwnd())
            ::ReleaseCapture();
        if (moved)
            ZoomTo(m_selectFrom, end);
        else
            Invalidate();
    });
}

void CTrendChart::OnLButtonDblClk()
{
    Log(3, "CTrendChart::OnLButtonDblClk" + MV_POS());
    RunReported([this] { ShowAll(); });
}

void CTrendChart::OnRButtonDown(POINT at)
{
    Log(3, "CTrendChart::OnRButtonDown" + MV_POS());
    RunReported([&] {
        ::SetFocus(Hwnd());
        m_drag = Drag::Pan;
        m_dragMoved = false;
        m_dragStart = at;
        m_panFrom = m_from;
        m_panTo = m_to;
        ::SetCapture(Hwnd());
    });
}

void CTrendChart::OnRButtonUp(POINT at)
{
    Log(3, "CTrendChart::OnRButtonUp" + MV_POS());
    RunReported([&] {
        const bool wasPan = m_drag == Drag::Pan;
        const bool moved = m_dragMoved;
        m_drag = Drag::None;
        if (::GetCapture() == Hwnd())
            ::ReleaseCapture();
        if (wasPan && !moved) {
            POINT screen = at;
            ::ClientToScreen(Hwnd(), &screen);
            OnContextMenu(screen);
        }
    });
}

void CTrendChart::OnMouseMove(POINT at)
{
    RunReported([&] {
        if (!m_tracking) {
            TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, Hwnd(), 0};
            m_tracking = ::TrackMouseEvent(&track) != FALSE;
        }
        const CTrendRenderer::Layout layout = CurrentLayout();
        if (!layout.valid)
            return;
        if (m_drag == Drag::Select) {
            m_dragMoved = m_dragMoved || std::abs(at.x - m_dragStart.x) >= kDragThreshold;
            m_selectTo = layout.TimeOfX(std::clamp<double>(at.x, layout.plot.X, layout.plot.GetRight()));
            ::InvalidateRect(Hwnd(), nullptr, FALSE);
        } else if (m_drag == Drag::Pan) {
            m_dragMoved = m_dragMoved || std::abs(at.x - m_dragStart.x) >= kDragThreshold;
            if (m_dragMoved) {
                // The time under the pointer at the press stays under it.
                const double shift = (at.x - m_dragStart.x) / static_cast<double>(layout.plot.Width) * (m_panTo - m_panFrom);
                const double span = m_panTo - m_panFrom;
                const double from = std::clamp(m_panFrom - shift, m_wholeFrom, m_wholeTo - span);
                m_from = from;
                m_to = from + span;
                Invalidate();
            }
        }
        const bool inside = at.x >= layout.plot.X && at.x <= layout.plot.GetRight() && at.y >= layout.plot.Y &&
                            at.y <= layout.plot.GetBottom();
        SetHover(inside && m_drag == Drag::None ? m_series.Nearest(layout.TimeOfX(at.x)) : CTrendSeries::npos, at);
        if (m_hover != CTrendSeries::npos)
            UpdateTooltip(at);   // follows the pointer
    });
}

void CTrendChart::OnMouseLeave()
{
    m_tracking = false;
    RunReported([this] { SetHover(CTrendSeries::npos, POINT{}); });
}

void CTrendChart::OnMouseWheel(short delta, POINT screen)
{
    Log(3, "CTrendChart::OnMouseWheel" + MV_POS());
    RunReported([&] {
        const CTrendRenderer::Layout layout = CurrentLayout();
        if (!layout.valid || delta == 0)
            return;
        POINT at = screen;
        ::ScreenToClient(Hwnd(), &at);
        // Zoom around the time under the pointer (the middle when the
        // pointer is off the plot).
        const bool inside = at.x >= layout.plot.X && at.x <= layout.plot.GetRight();
        const double keep = inside ? layout.TimeOfX(at.x) : (m_from + m_to) / 2;
        ZoomAround(keep, std::pow(kWheelZoom, delta / static_cast<double>(WHEEL_DELTA)));
    });
}

void CTrendChart::OnKeyDown(UINT key)
{
    Log(3, "CTrendChart::OnKeyDown" + MV_POS());
    RunReported([&] {
        const bool control = ::GetKeyState(VK_CONTROL) < 0;
        switch (key) {
        case VK_HOME: ShowAll(); break;
        case VK_LEFT: Pan(-kKeyPan); break;
        case VK_RIGHT: Pan(kKeyPan); break;
        case VK_UP:
        case VK_ADD:
        case VK_OEM_PLUS: ZoomAround((m_from + m_to) / 2, kKeyZoom); break;
        case VK_DOWN:
        case VK_SUBTRACT:
        case VK_OEM_MINUS: ZoomAround((m_from + m_to) / 2, 1 / kKeyZoom); break;
        case 'C':
            if (control)
                OnCopy();
            break;
        case VK_ESCAPE:
            if (m_drag != Drag::None && ::GetCapture() == Hwnd())
                ::ReleaseCapture();   // WM_CAPTURECHANGED ends the drag
            break;
        default: break;
        }
    });
}

void CTrendChart::OnContextMenu(POINT screen)
{
    Log(3, "CTrendChart::OnContextMenu" + MV_POS());
    RunReported([&] {
        if (screen.x == -1 && screen.y == -1) {
            // From the keyboard: at the chart's middle.
            RECT client;
            ::GetClientRect(Hwnd(), &client);
            screen = {client.right / 2, client.bottom / 2};
            ::ClientToScreen(Hwnd(), &screen);
        }
        UniqueMenu menu(::LoadMenuW(ModuleInstance(), MAKEINTRESOURCEW(IDR_TREND_CONTEXT)));
        if (!menu)
            ThrowLastError(L"LoadMenu (IDR_TREND_CONTEXT)");
        const UINT enabled = m_series.Empty() ? MF_GRAYED : MF_ENABLED;
        const HMENU popup = ::GetSubMenu(menu.get(), 0);
        ::EnableMenuItem(popup, ID_TREND_SHOW_ALL, MF_BYCOMMAND | enabled);
        ::TrackPopupMenu(popup, TPM_LEFTALIGN | TPM_RIGHTBUTTON, screen.x, screen.y, 0, Hwnd(), nullptr);
    });
}

void CTrendChart::OnCaptureChanged()
{
    if (m_drag != Drag::None) {
        m_drag = Drag::None;
        ::InvalidateRect(Hwnd(), nullptr, FALSE);
    }
}

void CTrendChart::OnShowAll()
{
    Log(3, "CTrendChart::OnShowAll" + MV_POS());
    RunReported([this] { ShowAll(); });
}

void CTrendChart::OnCopy()
{
    Log(3, "CTrendChart::OnCopy" + MV_POS());
    RunReported([this] {
        CWaitCursor wait;
        CopyToClipboard();
    });
}

void CTrendChart::OnSavePng()
{
    Log(3, "CTrendChart::OnSavePng" + MV_POS());
    RunReported([this] {
        const std::wstring path = AskPngFile();
        if (path.empty())
            return;
        CWaitCursor wait;
        SaveAsPng(path);
    });
}

} // namespace CL
