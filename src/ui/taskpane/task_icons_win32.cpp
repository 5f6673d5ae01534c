#include "ui/taskpane/task_icons_win32.h"

#include <cstring>
#include <vector>

#include "ui/base/gdi_win32.h"

namespace regvex::ui::taskpane {

using handles::UniqueBitmap;
using handles::UniqueDc;
using handles::UniqueImageList;

namespace {

// Monochrome, rows padded to 16 bits; set bits are transparent.
UniqueBitmap CreateMaskBitmap(const GlyphImage& glyph) {
    const int row_bytes = (glyph.size + 15) / 16 * 2;
    std::vector<BYTE> bits(
        static_cast<std::size_t>(row_bytes) * static_cast<std::size_t>(glyph.size), 0);
    for (int y = 0; y < glyph.size; ++y) {
        for (int x = 0; x < glyph.size; ++x) {
            if (glyph.Alpha(x, y) < 128) {
                bits[static_cast<std::size_t>(y * row_bytes + x / 8)] |=
                    static_cast<BYTE>(0x80 >> (x % 8));
            }
        }
    }
    return UniqueBitmap(CreateBitmap(glyph.size, glyph.size, 1, 1, bits.data()));
}

}  // namespace

UniqueBitmap CreateGlyphBitmap(const GlyphImage& glyph) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = glyph.size;
    info.bmiHeader.biHeight = -glyph.size;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    UniqueBitmap bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (bitmap && bits != nullptr) {
        std::memcpy(bits, glyph.pixels.data(), glyph.pixels.size() * sizeof(glyph.pixels[0]));
    }
    return bitmap;
}

UniqueImageList CreateTaskIconImageList(int size) {
    UniqueImageList list(ImageList_Create(size, size, ILC_COLOR32 | ILC_MASK, kTaskIconCount, 0));
    if (!list) {
        return list;
    }
    ImageList_SetBkColor(list.get(), CLR_NONE);
    for (int icon = 0; icon < kTaskIconCount; ++icon) {
        const GlyphImage glyph = RenderTaskIcon(icon, size);
        const UniqueBitmap color = CreateGlyphBitmap(glyph);
        const UniqueBitmap mask = CreateMaskBitmap(glyph);
        ImageList_Add(list.get(), color.get(), mask.get());
    }
    return list;
}

void DrawGlyph(HDC dc, int x, int y, const GlyphImage& glyph) {
    const UniqueBitmap bitmap = CreateGlyphBitmap(glyph);
    const UniqueDc source(CreateCompatibleDC(dc));
    if (!bitmap || !source) {
        return;
    }
    const SelectIn select(source.get(), bitmap.get());
    BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    AlphaBlend(dc, x, y, glyph.size, glyph.size, source.get(), 0, 0, glyph.size, glyph.size, blend);
}

}  // namespace regvex::ui::taskpane
