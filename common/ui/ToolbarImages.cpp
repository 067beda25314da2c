#include "common/ui/ToolbarImages.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace CL {

namespace {

constexpr int kSmall = 16;   // sizes of the two standard sets
constexpr int kLarge = 24;

// One image as straight (not premultiplied) ARGB pixels, top row first.
using Pixels = std::vector<uint32_t>;

// A top-down 32-bit DIB section; bits receives its pixels.
UniqueGdiObject MakeDib(int width, int height, uint32_t** bits)
{
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    UniqueGdiObject bitmap(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    *bits = static_cast<uint32_t*>(pixels);
    return bitmap;
}

// A 32-bit DIB section selected into a memory DC for drawing.
class DibCanvas {
public:
    DibCanvas(int width, int height) : m_dc(::CreateCompatibleDC(nullptr))
    {
        m_bitmap = MakeDib(width, height, &m_bits);
        m_old = ::SelectObject(m_dc, m_bitmap.get());
    }
    DibCanvas(const DibCanvas&) = delete;
    DibCanvas& operator=(const DibCanvas&) = delete;
    ~DibCanvas()
    {
        ::SelectObject(m_dc, m_old);
        ::DeleteDC(m_dc);
    }
    bool Valid() const { return m_dc && m_bits; }
    HDC Dc() const { return m_dc; }
    uint32_t* Bits() const { return m_bits; }

private:
    HDC m_dc;
    UniqueGdiObject m_bitmap;
    uint32_t* m_bits = nullptr;
    HGDIOBJ m_old = nullptr;
};

// The standard images of one set as the toolbar control loads them, in a
// hidden toolbar that owns the list while it lives.
struct StandardSet {
    HWND toolbar = nullptr;
    HIMAGELIST list = nullptr;
    int viewOffset = 0;
    ~StandardSet()
    {
        if (toolbar)
            ::DestroyWindow(toolbar);
    }
};

void LoadStandard(StandardSet& set, int size)
{
    set.toolbar = ::CreateWindowExW(0, TOOLBARCLASSNAMEW, nullptr, WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                    ::GetModuleHandleW(nullptr), nullptr);
    if (!set.toolbar)
        return;
    ::SendMessageW(set.toolbar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    ::SendMessageW(set.toolbar, TB_SETBITMAPSIZE, 0, MAKELPARAM(size, size));
    const bool large = size == kLarge;
    TBADDBITMAP standard = {HINST_COMMCTRL, static_cast<UINT_PTR>(large ? IDB_STD_LARGE_COLOR : IDB_STD_SMALL_COLOR)};
    ::SendMessageW(set.toolbar, TB_ADDBITMAP, 0, reinterpret_cast<LPARAM>(&standard));
    TBADDBITMAP view = {HINST_COMMCTRL, static_cast<UINT_PTR>(large ? IDB_VIEW_LARGE_COLOR : IDB_VIEW_SMALL_COLOR)};
    set.viewOffset = static_cast<int>(::SendMessageW(set.toolbar, TB_ADDBITMAP, 0, reinterpret_cast<LPARAM>(&view)));
    set.list = reinterpret_cast<HIMAGELIST>(::SendMessageW(set.toolbar, TB_GETIMAGELIST, 0, 0));
}

// The image drawn once on black and once on white: where the two differ
// the image is transparent, by as much as they differ.
Pixels Capture(HIMAGELIST list, int index, int size)
{
    DibCanvas black(size, size), white(size, size);
    if (!black.Valid() || !white.Valid())
        return {};
    const size_t count = static_cast<size_t>(size) * size;
    std::fill_n(black.Bits(), count, 0x00000000u);
    std::fill_n(white.Bits(), count, 0x00FFFFFFu);
    ::ImageList_Draw(list, index, black.Dc(), 0, 0, ILD_NORMAL);
    ::ImageList_Draw(list, index, white.Dc(), 0, 0, ILD_NORMAL);
    ::GdiFlush();
    Pixels pixels(count);
    for (size_t i = 0; i < count; ++i) {
        const uint32_t onBlack = black.Bits()[i], onWhite = white.Bits()[i];
        const int alpha = 255 - std::clamp(static_cast<int>((onWhite >> 8) & 0xFF) -
                                               static_cast<int>((onBlack >> 8) & 0xFF), 0, 255);
        uint32_t pixel = static_cast<uint32_t>(alpha) << 24;
        for (int shift = 0; shift < 24; shift += 8) {
            const int premultiplied = static_cast<int>((onBlack >> shift) & 0xFF);
            const int straight = alpha ? std::min(255, premultiplied * 255 / alpha) : 0;
            pixel |= static_cast<uint32_t>(straight) << shift;
        }
        pixels[i] = pixel;
    }
    return pixels;
}

// Area-averaged resampling of a square image (weights by the overlap of
// each source pixel with the target pixel's footprint, colours weighted by
// their opacity).
Pixels Resample(const Pixels& source, int from, int to)
{
    Pixels target(static_cast<size_t>(to) * to, 0);
    const double step = static_cast<double>(from) / to;
    for (int ty = 0; ty < to; ++ty) {
        for (int tx = 0; tx < to; ++tx) {
            double sum[4] = {}, weightSum = 0;
            const double x0 = tx * step, x1 = x0 + step, y0 = ty * step, y1 = y0 + step;
            for (int sy = static_cast<int>(y0); sy < std::min(from, static_cast<int>(y1 + 0.999)); ++sy) {
                const double wy = std::min(y1, sy + 1.0) - std::max(y0, static_cast<double>(sy));
                for (int sx = static_cast<int>(x0); sx < std::min(from, static_cast<int>(x1 + 0.999)); ++sx) {
                    const double w = wy * (std::min(x1, sx + 1.0) - std::max(x0, static_cast<double>(sx)));
                    if (w <= 0)
                        continue;
                    const uint32_t p = source[static_cast<size_t>(sy) * from + sx];
                    const double a = (p >> 24) / 255.0;
                    for (int c = 0; c < 3; ++c)
                        sum[c] += w * a * ((p >> (8 * c)) & 0xFF);
                    sum[3] += w * a;
                    weightSum += w;
                }
            }
            if (weightSum <= 0 || sum[3] <= 0)
                continue;
            uint32_t pixel = static_cast<uint32_t>(std::lround(255 * sum[3] / weightSum)) << 24;
            for (int c = 0; c < 3; ++c)
                pixel |= static_cast<uint32_t>(std::clamp(std::lround(sum[c] / sum[3]), 0L, 255L)) << (8 * c);
            target[static_cast<size_t>(ty) * to + tx] = pixel;
        }
    }
    return target;
}

void AddImage(HIMAGELIST list, const Pixels& pixels, int size)
{
    if (pixels.size() != static_cast<size_t>(size) * size)
        return;
    uint32_t* bits = nullptr;
    const UniqueGdiObject bitmap = MakeDib(size, size, &bits);
    if (!bitmap || !bits)
        return;
    std::copy(pixels.begin(), pixels.end(), bits);
    ::ImageList_Add(list, static_cast<HBITMAP>(bitmap.get()), nullptr);
}

} // namespace

UniqueImageList CToolbarImages::Make(int size, int* viewOffset)
{
    const int from = size > kSmall ? kLarge : kSmall;
    StandardSet set;
    LoadStandard(set, from);
    if (!set.list)
        return UniqueImageList();
    const int count = ::ImageList_GetImageCount(set.list);
    UniqueImageList images(::ImageList_Create(size, size, ILC_COLOR32, count, 0));
    if (!images)
        return images;
    for (int index = 0; index < count; ++index) {
        const Pixels pixels = Capture(set.list, index, from);
        AddImage(images.get(), from == size ? pixels : Resample(pixels, from, size), size);
    }
    if (viewOffset)
        *viewOffset = set.viewOffset;
    return images;
}

} // namespace CL
