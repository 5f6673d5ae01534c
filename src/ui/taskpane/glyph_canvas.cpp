#include "ui/taskpane/glyph_canvas.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace regvex::ui::taskpane {

namespace glyph {

GlyphShape Circle(float cx, float cy, float radius) {
    return [=](float x, float y) {
        const float dx = x - cx;
        const float dy = y - cy;
        return dx * dx + dy * dy <= radius * radius;
    };
}

GlyphShape Ring(float cx, float cy, float outer, float inner) {
    return [=](float x, float y) {
        const float dx = x - cx;
        const float dy = y - cy;
        const float d2 = dx * dx + dy * dy;
        return d2 <= outer * outer && d2 >= inner * inner;
    };
}

GlyphShape Arc(float cx, float cy, float outer, float inner, float from_degrees, float to_degrees) {
    const auto normal = [](float degrees) {
        const float turned = std::fmod(degrees, 360.0f);
        return turned < 0 ? turned + 360.0f : turned;
    };
    const float from = normal(from_degrees);
    float span = normal(to_degrees - from_degrees);
    if (span == 0.0f && to_degrees != from_degrees) {
        span = 360.0f;
    }
    const GlyphShape ring = Ring(cx, cy, outer, inner);
    return [=](float x, float y) {
        if (!ring(x, y)) {
            return false;
        }
        const float angle = std::atan2(y - cy, x - cx) * 180.0f / std::numbers::pi_v<float>;
        return normal(angle - from) <= span;
    };
}

GlyphShape Line(float x0, float y0, float x1, float y1, float width) {
    const float dx = x1 - x0;
    const float dy = y1 - y0;
    const float length2 = dx * dx + dy * dy;
    const float half = width / 2;
    return [=](float x, float y) {
        float t = length2 > 0 ? ((x - x0) * dx + (y - y0) * dy) / length2 : 0.0f;
        t = std::clamp(t, 0.0f, 1.0f);
        const float ex = x - (x0 + t * dx);
        const float ey = y - (y0 + t * dy);
        return ex * ex + ey * ey <= half * half;
    };
}

GlyphShape RoundRect(float left, float top, float right, float bottom, float radius) {
    return [=](float x, float y) {
        if (x < left || x > right || y < top || y > bottom) {
            return false;
        }
        // Inside unless in a corner square and outside that corner's circle.
        const float cx = std::clamp(x, left + radius, right - radius);
        const float cy = std::clamp(y, top + radius, bottom - radius);
        const float dx = x - cx;
        const float dy = y - cy;
        return dx * dx + dy * dy <= radius * radius;
    };
}

GlyphShape Polygon(std::vector<Point> corners) {
    return [corners = std::move(corners)](float x, float y) {
        // Even-odd rule: count the edges that a ray to the right crosses.
        bool inside = false;
        for (std::size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
            const Point& a = corners[i];
            const Point& b = corners[j];
            if ((a.y > y) != (b.y > y) && x < (b.x - a.x) * (y - a.y) / (b.y - a.y) + a.x) {
                inside = !inside;
            }
        }
        return inside;
    };
}

GlyphShape Union(std::initializer_list<GlyphShape> shapes) {
    return [parts = std::vector<GlyphShape>(shapes)](float x, float y) {
        return std::any_of(parts.begin(), parts.end(),
                           [&](const GlyphShape& part) { return part(x, y); });
    };
}

}  // namespace glyph

namespace {

// Samples per pixel along each axis: 16 levels of coverage are plenty for 16 pixels.
constexpr int kSamples = 4;
constexpr float kDesignSize = 16.0f;

}  // namespace

GlyphCanvas::GlyphCanvas(int size)
    : size_(std::max(size, 1)),
      pixels_(static_cast<std::size_t>(size_) * static_cast<std::size_t>(size_) * 4, 0.0f) {}

void GlyphCanvas::Fill(const GlyphShape& shape, Rgba color) {
    const float unit = kDesignSize / static_cast<float>(size_);
    const float alpha = static_cast<float>(color.a) / 255.0f;
    const float red = static_cast<float>(color.r) / 255.0f * alpha;
    const float green = static_cast<float>(color.g) / 255.0f * alpha;
    const float blue = static_cast<float>(color.b) / 255.0f * alpha;
    for (int py = 0; py < size_; ++py) {
        for (int px = 0; px < size_; ++px) {
            int inside = 0;
            for (int sy = 0; sy < kSamples; ++sy) {
                for (int sx = 0; sx < kSamples; ++sx) {
                    const float x =
                        (static_cast<float>(px) + (static_cast<float>(sx) + 0.5f) / kSamples) *
                        unit;
                    const float y =
                        (static_cast<float>(py) + (static_cast<float>(sy) + 0.5f) / kSamples) *
                        unit;
                    inside += shape(x, y) ? 1 : 0;
                }
            }
            if (inside == 0) {
                continue;
            }
            const float coverage = static_cast<float>(inside) / (kSamples * kSamples);
            const float keep = 1.0f - alpha * coverage;
            float* pixel =
                &pixels_[(static_cast<std::size_t>(py) * static_cast<std::size_t>(size_) +
                          static_cast<std::size_t>(px)) *
                         4];
            pixel[0] = red * coverage + pixel[0] * keep;
            pixel[1] = green * coverage + pixel[1] * keep;
            pixel[2] = blue * coverage + pixel[2] * keep;
            pixel[3] = alpha * coverage + pixel[3] * keep;
        }
    }
}

GlyphImage GlyphCanvas::Image() const {
    GlyphImage image;
    image.size = size_;
    image.pixels.resize(static_cast<std::size_t>(size_) * static_cast<std::size_t>(size_));
    const auto byte = [](float value) {
        return static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255.0f));
    };
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const float* pixel = &pixels_[i * 4];
        image.pixels[i] =
            byte(pixel[3]) << 24 | byte(pixel[0]) << 16 | byte(pixel[1]) << 8 | byte(pixel[2]);
    }
    return image;
}

}  // namespace regvex::ui::taskpane
