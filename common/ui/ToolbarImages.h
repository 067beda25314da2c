#pragma once
// CToolbarImages: the common controls' standard toolbar images (STD_* and
// VIEW_* indices) in an image list of any size, so that a toolbar shows
// them at its DPI's size instead of stretching 16-pixel images. The images
// are taken from the larger standard set at or above the wanted size and
// resampled by area averaging with their transparency kept.
#include <windows.h>
#include <commctrl.h>

#include "common/Handle.h"

namespace CL {

struct ImageListTraits {
    using Type = HIMAGELIST;
    static Type Invalid() { return nullptr; }
    static void Close(Type list) { ::ImageList_Destroy(list); }
};
using UniqueImageList = UniqueHandle<ImageListTraits>;

class CToolbarImages {
public:
    // The STD_* images followed by the VIEW_* images, size x size pixels
    // each, 32 bits with transparency. viewOffset receives the index of
    // the first VIEW_* image. An empty list when the system has none.
    static UniqueImageList Make(int size, int* viewOffset);
};

} // namespace CL
