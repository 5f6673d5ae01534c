#include <gtest/gtest.h>

#include <cstdlib>

#include "ui/taskpane/glyph_canvas.h"
#include "ui/taskpane/task_icons.h"

namespace regvex::ui::taskpane {
namespace {

std::uint8_t Channel(std::uint32_t pixel, int shift) {
    return static_cast<std::uint8_t>(pixel >> shift);
}

GlyphImage Paint(int size, const GlyphShape& shape, Rgba color = {0, 0, 255, 255}) {
    GlyphCanvas canvas(size);
    canvas.Fill(shape, color);
    return canvas.Image();
}

TEST(GlyphCanvas, CoversEachPixelByTheShareOfItsArea) {
    struct Case {
        const char* what;
        int size;
        GlyphShape shape;
        int x;
        int y;
        int alpha;
    };
    const Case cases[] = {
        {"inside a circle", 16, glyph::Circle(8, 8, 4), 8, 8, 255},
        {"outside a circle", 16, glyph::Circle(8, 8, 4), 1, 1, 0},
        {"half a pixel", 16, glyph::RoundRect(0, 0, 8.5f, 16, 0), 8, 3, 128},
        {"a quarter of a pixel", 16, glyph::RoundRect(0, 0, 8.5f, 8.5f, 0), 8, 8, 64},
        {"scaled to 32 pixels: inside", 32, glyph::RoundRect(0, 0, 8, 16, 0), 15, 4, 255},
        {"scaled to 32 pixels: outside", 32, glyph::RoundRect(0, 0, 8, 16, 0), 16, 4, 0},
        {"rounded corner cut off", 16, glyph::RoundRect(0, 0, 16, 16, 6), 0, 0, 0},
        {"rounded corner's straight edge kept", 16, glyph::RoundRect(0, 0, 16, 16, 6), 0, 8, 255},
        {"ring's hole", 16, glyph::Ring(8, 8, 7, 4), 8, 8, 0},
        {"ring's band", 16, glyph::Ring(8, 8, 7, 4), 2, 8, 255},
        {"line's middle", 16, glyph::Line(2, 8, 14, 8, 4), 8, 7, 255},
        {"beyond a line's round end", 16, glyph::Line(2, 8, 14, 8, 2), 15, 8, 0},
        {"triangle inside", 16, glyph::Polygon({{0, 0}, {16, 0}, {0, 16}}), 3, 3, 255},
        {"triangle outside", 16, glyph::Polygon({{0, 0}, {16, 0}, {0, 16}}), 12, 12, 0},
        {"either part of a union", 16,
         glyph::Union({glyph::Circle(3, 3, 2), glyph::Circle(13, 13, 2)}), 12, 12, 255},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Paint(c.size, c.shape).Alpha(c.x, c.y), c.alpha) << c.what;
    }
}

TEST(GlyphCanvas, ArcsRunClockwiseFromTheirFirstAngle) {
    // 0 degrees points right, 90 down, as on the screen.
    struct Case {
        float from;
        float to;
        int x;
        int y;
        bool covered;
    };
    const Case cases[] = {
        {0, 90, 14, 9, true},                              // right, just below the axis
        {0, 90, 9, 14, true},                              // bottom
        {0, 90, 1, 8, false},                              // left
        {0, 90, 8, 1, false},                              // top
        {300, 60, 14, 8, true},                            // across 0
        {300, 60, 1, 8, false},   {180, 360, 8, 1, true},  // the upper half
        {180, 360, 8, 14, false},
    };
    for (const Case& c : cases) {
        const GlyphImage image = Paint(16, glyph::Arc(8, 8, 7.5f, 5.5f, c.from, c.to));
        EXPECT_EQ(image.Alpha(c.x, c.y) > 0, c.covered)
            << c.from << ".." << c.to << " at " << c.x << "," << c.y;
    }
}

TEST(GlyphCanvas, PaintsOverWithPremultipliedAlpha) {
    GlyphCanvas canvas(4);
    const GlyphShape all = glyph::RoundRect(0, 0, 16, 16, 0);
    canvas.Fill(all, {0, 0, 255, 255});
    canvas.Fill(all, {255, 0, 0, 128});
    const std::uint32_t pixel = canvas.Image().At(1, 1);
    EXPECT_EQ(Channel(pixel, 24), 255);
    EXPECT_EQ(Channel(pixel, 16), 128);  // red
    EXPECT_EQ(Channel(pixel, 8), 0);
    EXPECT_EQ(Channel(pixel, 0), 127);  // blue

    GlyphCanvas clear(4);
    clear.Fill(all, {255, 255, 255, 128});
    const std::uint32_t half = clear.Image().At(0, 0);
    EXPECT_EQ(Channel(half, 24), 128);
    EXPECT_EQ(Channel(half, 16), 128) << "colours are stored premultiplied";
}

TEST(TaskIcons, EveryIconIsPaintedAndDiffersFromTheOthers) {
    for (int size : {16, 24}) {
        std::vector<GlyphImage> icons;
        for (int icon = 0; icon < kTaskIconCount; ++icon) {
            icons.push_back(RenderTaskIcon(icon, size));
            const GlyphImage& image = icons.back();
            ASSERT_EQ(image.size, size);
            int opaque = 0;
            for (int y = 0; y < size; ++y) {
                for (int x = 0; x < size; ++x) {
                    const std::uint32_t pixel = image.At(x, y);
                    const int alpha = Channel(pixel, 24);
                    opaque += alpha == 255 ? 1 : 0;
                    // Premultiplied: no channel brighter than the pixel is opaque.
                    ASSERT_LE(Channel(pixel, 16), alpha) << icon << " at " << x << "," << y;
                    ASSERT_LE(Channel(pixel, 8), alpha) << icon << " at " << x << "," << y;
                    ASSERT_LE(Channel(pixel, 0), alpha) << icon << " at " << x << "," << y;
                }
            }
            EXPECT_GT(opaque, size * size / 12) << "icon " << icon << " is too faint";
            EXPECT_LT(opaque, size * size) << "icon " << icon << " fills its whole square";
        }
        for (int a = 0; a < kTaskIconCount; ++a) {
            for (int b = a + 1; b < kTaskIconCount; ++b) {
                EXPECT_NE(icons[static_cast<std::size_t>(a)].pixels,
                          icons[static_cast<std::size_t>(b)].pixels)
                    << a << " and " << b;
            }
        }
    }
}

TEST(TaskIcons, UnknownNumbersGiveAnEmptyPicture) {
    for (int icon : {-1, static_cast<int>(kTaskIconCount), 1000}) {
        const GlyphImage image = RenderTaskIcon(icon, 16);
        for (std::uint32_t pixel : image.pixels) {
            ASSERT_EQ(pixel, 0u) << icon;
        }
    }
}

TEST(TaskIcons, CollapsedChevronIsTheExpandedOneUpsideDown) {
    const ChevronColors colors{{255, 255, 255, 255}, {90, 120, 200, 255}, {20, 40, 120, 255}};
    for (int size : {16, 19}) {
        const GlyphImage up = RenderChevron(size, true, colors);
        const GlyphImage down = RenderChevron(size, false, colors);
        ASSERT_NE(up.pixels, down.pixels);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                for (int shift : {0, 8, 16, 24}) {
                    ASSERT_LE(std::abs(Channel(up.At(x, y), shift) -
                                       Channel(down.At(x, size - 1 - y), shift)),
                              2)
                        << size << ": " << x << "," << y;
                }
            }
        }
    }
}

}  // namespace
}  // namespace regvex::ui::taskpane
