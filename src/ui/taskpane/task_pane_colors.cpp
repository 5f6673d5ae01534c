#include "ui/taskpane/task_pane_colors.h"

#include <algorithm>
#include <cmath>

namespace regvex::ui::taskpane {

namespace {

constexpr ColorRef kBlack = Rgb(0, 0, 0);
constexpr ColorRef kWhite = Rgb(255, 255, 255);
// Normal text against its background, as the accessibility guidelines ask.
constexpr double kReadable = 4.5;

std::uint8_t Channel(ColorRef color, int shift) {
    return static_cast<std::uint8_t>((color >> shift) & 0xFF);
}

double RelativeLuminance(ColorRef color) {
    const auto linear = [](std::uint8_t channel) {
        const double c = channel / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(Channel(color, 0)) + 0.7152 * linear(Channel(color, 8)) +
           0.0722 * linear(Channel(color, 16));
}

}  // namespace

ColorRef MixColor(ColorRef from, ColorRef to, double share) {
    share = std::clamp(share, 0.0, 1.0);
    const auto mix = [&](int shift) {
        const double a = Channel(from, shift);
        const double b = Channel(to, shift);
        return static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
    };
    return Rgb(mix(0), mix(8), mix(16));
}

double ContrastRatio(ColorRef a, ColorRef b) {
    const double la = RelativeLuminance(a);
    const double lb = RelativeLuminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

ColorRef WithContrast(ColorRef color, ColorRef against, double ratio) {
    if (ContrastRatio(color, against) >= ratio) {
        return color;
    }
    const ColorRef target =
        ContrastRatio(kBlack, against) >= ContrastRatio(kWhite, against) ? kBlack : kWhite;
    for (int step = 1; step <= 20; ++step) {
        const ColorRef moved = MixColor(color, target, step / 20.0);
        if (ContrastRatio(moved, against) >= ratio) {
            return moved;
        }
    }
    return target;
}

PanePalette MakePanePalette(const SystemColors& s) {
    PanePalette p{};
    p.pane_top = MixColor(s.window, s.highlight, 0.13);
    p.pane_bottom = MixColor(s.window, s.highlight, 0.32);
    p.body = MixColor(s.window, s.highlight, 0.04);
    p.body_edge = s.window;

    p.header_left = s.window;
    p.header_right = MixColor(s.window, s.highlight, 0.30);
    // Checked against the darker end too: a long caption reaches into it.
    p.caption = WithContrast(
        WithContrast(MixColor(s.highlight, s.window_text, 0.45), p.header_right, kReadable),
        p.header_left, kReadable);
    p.caption_hot = WithContrast(s.highlight, p.header_right, 3.0);

    p.special_caption = s.highlight_text;
    p.special_left =
        WithContrast(MixColor(s.highlight, kBlack, 0.08), p.special_caption, kReadable);
    p.special_caption_hot =
        WithContrast(MixColor(s.highlight_text, s.highlight, 0.2), p.special_left, 3.0);
    p.special_right = MixColor(s.highlight, s.window, 0.35);

    // A hot-track colour too pale to read gives way to the highlight's hue, so that links
    // still look like links rather than grey text.
    p.link = ContrastRatio(s.hot_track, p.body) >= kReadable
                 ? s.hot_track
                 : WithContrast(s.highlight, p.body, kReadable);
    p.link_hot = WithContrast(MixColor(p.link, s.highlight, 0.45), p.body, kReadable);
    p.plain_text = WithContrast(MixColor(s.window_text, s.window, 0.25), p.body, kReadable);
    return p;
}

}  // namespace regvex::ui::taskpane
