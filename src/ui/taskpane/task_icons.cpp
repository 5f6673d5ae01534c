#include "ui/taskpane/task_icons.h"

#include <cmath>
#include <numbers>

namespace regvex::ui::taskpane {

namespace {

using glyph::Arc;
using glyph::Circle;
using glyph::Line;
using glyph::Polygon;
using glyph::Ring;
using glyph::RoundRect;
using glyph::Union;

constexpr Rgba kWhite{255, 255, 255, 255};
constexpr Rgba kBlue{44, 110, 204, 255};
constexpr Rgba kBlueEdge{26, 76, 158, 255};
constexpr Rgba kRed{226, 56, 48, 255};
constexpr Rgba kRedEdge{158, 28, 24, 255};
constexpr Rgba kGreen{38, 154, 62, 255};
constexpr Rgba kSlate{84, 100, 128, 255};
constexpr Rgba kPaper{252, 253, 255, 255};

// A check box's frame and its white inside.
void Box(GlyphCanvas& canvas) {
    canvas.Fill(RoundRect(1.5f, 2.5f, 13.5f, 14.5f, 2.4f), kSlate);
    canvas.Fill(RoundRect(2.7f, 3.7f, 12.3f, 13.3f, 1.4f), kPaper);
    // A faint shade along the inside top, as a sunken box has.
    canvas.Fill(RoundRect(2.7f, 3.7f, 12.3f, 5.0f, 1.2f), Rgba{84, 100, 128, 40});
}

// A round badge with a dark rim, as the information and help signs are drawn.
void Badge(GlyphCanvas& canvas, Rgba face, Rgba edge) {
    canvas.Fill(Circle(8, 8, 7.4f), edge);
    canvas.Fill(Circle(8, 8, 6.5f), face);
    // Light from the top left.
    canvas.Fill(Arc(8, 8, 5.8f, 4.6f, 195, 255), Rgba{255, 255, 255, 90});
}

void Magnifier(GlyphCanvas& canvas) {
    canvas.Fill(Line(10.2f, 10.2f, 14.0f, 14.0f, 3.4f), Rgba{92, 66, 44, 255});
    canvas.Fill(Line(9.0f, 9.0f, 10.6f, 10.6f, 2.2f), kSlate);
    canvas.Fill(Circle(6.5f, 6.5f, 4.3f), Rgba{196, 226, 255, 220});
    canvas.Fill(Arc(6.5f, 6.5f, 3.4f, 2.3f, 190, 265), Rgba{255, 255, 255, 230});
    canvas.Fill(Ring(6.5f, 6.5f, 5.6f, 4.1f), kBlueEdge);
}

void Cross(GlyphCanvas& canvas) {
    const auto cross = [](float width) {
        return Union(
            {Line(3.8f, 3.8f, 12.2f, 12.2f, width), Line(12.2f, 3.8f, 3.8f, 12.2f, width)});
    };
    canvas.Fill(cross(4.4f), kRedEdge);
    canvas.Fill(cross(2.6f), kRed);
}

// A stroke arrow around a circle, turning back (anticlockwise) as an undo does.
void CircularArrow(GlyphCanvas& canvas) {
    constexpr float cx = 8.0f;
    constexpr float cy = 8.4f;
    constexpr float outer = 6.2f;
    constexpr float inner = 3.9f;
    constexpr float head_angle = 196.0f;
    canvas.Fill(Arc(cx, cy, outer, inner, head_angle + 6, 128), kBlue);
    const float theta = head_angle * std::numbers::pi_v<float> / 180.0f;
    const float mid = (outer + inner) / 2;
    const float px = cx + mid * std::cos(theta);
    const float py = cy + mid * std::sin(theta);
    // Heading anticlockwise, and outwards from the centre.
    const float dx = std::sin(theta);
    const float dy = -std::cos(theta);
    const float nx = std::cos(theta);
    const float ny = std::sin(theta);
    constexpr float half = 3.4f;
    canvas.Fill(Polygon({{px + dx * 3.6f, py + dy * 3.6f},
                         {px - dx * 0.6f + nx * half, py - dy * 0.6f + ny * half},
                         {px - dx * 0.6f - nx * half, py - dy * 0.6f - ny * half}}),
                kBlue);
}

void NoEntry(GlyphCanvas& canvas) {
    canvas.Fill(Circle(8, 8, 7.4f), kRedEdge);
    canvas.Fill(Circle(8, 8, 6.5f), kRed);
    canvas.Fill(Arc(8, 8, 5.8f, 4.6f, 195, 255), Rgba{255, 255, 255, 80});
    canvas.Fill(RoundRect(3.4f, 6.7f, 12.6f, 9.3f, 0.7f), kWhite);
}

void Info(GlyphCanvas& canvas) {
    Badge(canvas, kBlue, kBlueEdge);
    canvas.Fill(Circle(8, 4.7f, 1.3f), kWhite);
    canvas.Fill(RoundRect(6.9f, 6.6f, 9.1f, 12.4f, 0.5f), kWhite);
}

void Question(GlyphCanvas& canvas) {
    Badge(canvas, kBlue, kBlueEdge);
    canvas.Fill(Union({Arc(8, 6.0f, 3.1f, 1.4f, 170, 410), Line(9.4f, 7.4f, 8.0f, 8.9f, 1.7f),
                       Line(8.0f, 8.9f, 8.0f, 9.6f, 1.7f)}),
                kWhite);
    canvas.Fill(Circle(8, 12.0f, 1.1f), kWhite);
}

void Document(GlyphCanvas& canvas) {
    canvas.Fill(
        Polygon({{2.5f, 1.0f}, {10.0f, 1.0f}, {13.5f, 4.5f}, {13.5f, 15.0f}, {2.5f, 15.0f}}),
        kSlate);
    canvas.Fill(Polygon({{3.5f, 2.0f}, {9.6f, 2.0f}, {12.5f, 4.9f}, {12.5f, 14.0f}, {3.5f, 14.0f}}),
                kPaper);
    canvas.Fill(Polygon({{9.3f, 1.5f}, {13.0f, 5.2f}, {9.3f, 5.2f}}), Rgba{176, 190, 212, 255});
    const Rgba lines{96, 140, 210, 255};
    canvas.Fill(RoundRect(5.0f, 7.0f, 11.0f, 8.0f, 0.4f), lines);
    canvas.Fill(RoundRect(5.0f, 9.3f, 11.0f, 10.3f, 0.4f), lines);
    canvas.Fill(RoundRect(5.0f, 11.6f, 9.0f, 12.6f, 0.4f), lines);
}

void Copyright(GlyphCanvas& canvas) {
    canvas.Fill(Circle(8, 8, 7.2f), kPaper);
    canvas.Fill(Ring(8, 8, 7.4f, 6.0f), kSlate);
    canvas.Fill(Arc(8, 8, 3.8f, 2.3f, 45, 315), kSlate);
}

void Building(GlyphCanvas& canvas) {
    const Rgba wall{104, 128, 164, 255};
    const Rgba wing{148, 168, 198, 255};
    const Rgba lit{255, 226, 128, 255};
    canvas.Fill(RoundRect(10.0f, 6.0f, 15.2f, 15.0f, 0.6f), wing);
    canvas.Fill(RoundRect(1.5f, 1.5f, 11.0f, 15.0f, 0.8f), wall);
    canvas.Fill(RoundRect(1.5f, 1.5f, 11.0f, 2.6f, 0.5f), kSlate);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            const float left = 3.0f + static_cast<float>(column) * 2.7f;
            const float top = 3.8f + static_cast<float>(row) * 2.5f;
            if (row == 3 && column == 1) {
                continue;  // the door goes there
            }
            canvas.Fill(RoundRect(left, top, left + 1.6f, top + 1.5f, 0.2f), lit);
        }
    }
    for (int row = 0; row < 3; ++row) {
        const float top = 7.8f + static_cast<float>(row) * 2.4f;
        canvas.Fill(RoundRect(12.0f, top, 13.6f, top + 1.4f, 0.2f), kWhite);
    }
    canvas.Fill(RoundRect(5.4f, 11.6f, 7.2f, 15.0f, 0.3f), Rgba{52, 60, 80, 255});
}

void ThumbUp(GlyphCanvas& canvas) {
    const Rgba hand{59, 89, 152, 255};
    canvas.Fill(RoundRect(0.8f, 7.0f, 4.0f, 15.2f, 0.7f), Rgba{40, 62, 110, 255});
    canvas.Fill(Polygon({{5.0f, 7.4f},
                         {7.9f, 2.6f},
                         {8.6f, 1.2f},
                         {9.8f, 1.4f},
                         {10.4f, 2.8f},
                         {9.6f, 6.2f},
                         {13.8f, 6.2f},
                         {15.2f, 7.5f},
                         {14.6f, 10.6f},
                         {13.6f, 14.6f},
                         {12.4f, 15.2f},
                         {5.0f, 15.2f}}),
                hand);
    const Rgba crease{255, 255, 255, 150};
    canvas.Fill(Line(11.6f, 8.9f, 14.4f, 8.9f, 0.7f), crease);
    canvas.Fill(Line(11.4f, 11.3f, 14.0f, 11.3f, 0.7f), crease);
    canvas.Fill(Line(11.2f, 13.5f, 13.5f, 13.5f, 0.7f), crease);
}

}  // namespace

GlyphImage RenderTaskIcon(int icon, int size) {
    GlyphCanvas canvas(size);
    switch (icon) {
        case kIconScan:
            Magnifier(canvas);
            break;
        case kIconCheckAll:
            Box(canvas);
            canvas.Fill(
                Union({Line(4.4f, 8.6f, 7.2f, 11.4f, 2.6f), Line(7.2f, 11.4f, 14.2f, 2.2f, 2.6f)}),
                kGreen);
            break;
        case kIconUncheck:
            Box(canvas);
            break;
        case kIconDelete:
            Cross(canvas);
            break;
        case kIconRestore:
            CircularArrow(canvas);
            break;
        case kIconIgnore:
            NoEntry(canvas);
            break;
        case kIconInfo:
            Info(canvas);
            break;
        case kIconVersion:
            Document(canvas);
            break;
        case kIconCopyright:
            Copyright(canvas);
            break;
        case kIconCompany:
            Building(canvas);
            break;
        case kIconAbout:
            Question(canvas);
            break;
        case kIconLike:
            ThumbUp(canvas);
            break;
        default:
            break;
    }
    return canvas.Image();
}

GlyphImage RenderChevron(int size, bool expanded, const ChevronColors& colors) {
    GlyphCanvas canvas(size);
    canvas.Fill(Circle(8, 8, 7.6f), colors.edge);
    canvas.Fill(Circle(8, 8, 6.7f), colors.face);
    // Two arrows, drawn pointing up and turned over for a collapsed group.
    const auto y = [expanded](float up) { return expanded ? up : 16.0f - up; };
    const auto arrow = [&](float apex) {
        return Union({Line(5.0f, y(apex + 2.9f), 8.0f, y(apex), 1.5f),
                      Line(8.0f, y(apex), 11.0f, y(apex + 2.9f), 1.5f)});
    };
    canvas.Fill(Union({arrow(4.7f), arrow(8.3f)}), colors.arrows);
    return canvas.Image();
}

}  // namespace regvex::ui::taskpane
