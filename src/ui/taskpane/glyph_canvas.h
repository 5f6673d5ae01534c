#pragma once
// A tiny anti-aliased painter for the pane's icons and chevrons, so that they are drawn at
// run time at any size, without image files and with soft edges that GDI cannot give.
// Shapes are described in a square of 16 units and scaled to the picture's size.

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <vector>

namespace regvex::ui::taskpane {

struct Rgba {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    std::uint8_t a = 255;
};

// A square picture in premultiplied BGRA, top row first: the memory layout of a 32-bit
// top-down device-independent bitmap.
struct GlyphImage {
    int size = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t At(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(size) +
                      static_cast<std::size_t>(x)];
    }
    std::uint8_t Alpha(int x, int y) const { return static_cast<std::uint8_t>(At(x, y) >> 24); }
};

// True for the points of the 16-unit square that belong to the shape.
using GlyphShape = std::function<bool(float x, float y)>;

namespace glyph {

GlyphShape Circle(float cx, float cy, float radius);
GlyphShape Ring(float cx, float cy, float outer, float inner);
// Part of a ring, clockwise on the screen from `from_degrees` to `to_degrees`; 0 points
// right and 90 down.
GlyphShape Arc(float cx, float cy, float outer, float inner, float from_degrees, float to_degrees);
// A straight stroke with round ends.
GlyphShape Line(float x0, float y0, float x1, float y1, float width);
GlyphShape RoundRect(float left, float top, float right, float bottom, float radius);
struct Point {
    float x;
    float y;
};
GlyphShape Polygon(std::vector<Point> corners);
GlyphShape Union(std::initializer_list<GlyphShape> shapes);

}  // namespace glyph

class GlyphCanvas {
  public:
    explicit GlyphCanvas(int size);

    // Paints the shape over what is there; each pixel is covered in proportion to the
    // share of its area inside the shape.
    void Fill(const GlyphShape& shape, Rgba color);
    GlyphImage Image() const;

  private:
    int size_;
    // Premultiplied red, green, blue and alpha per pixel, 0 to 1.
    std::vector<float> pixels_;
};

}  // namespace regvex::ui::taskpane
