#pragma once
// The task pane's colours, made from the system's. Every text is kept readable on what it
// is drawn over, whatever the scheme: some schemes (Wine's own, among them) give the
// hot-track colour of links a pale grey that would vanish on the pane's light bodies.

#include "ui/base/services.h"

namespace regvex::ui::taskpane {

struct SystemColors {
    ColorRef window = Rgb(255, 255, 255);
    ColorRef window_text = Rgb(0, 0, 0);
    ColorRef highlight = Rgb(0, 120, 215);
    ColorRef highlight_text = Rgb(255, 255, 255);
    ColorRef hot_track = Rgb(0, 102, 204);
};

struct PanePalette {
    ColorRef pane_top;
    ColorRef pane_bottom;
    ColorRef body;
    ColorRef body_edge;
    // Caption bars run in a gradient from left to right; the caption is on the left.
    ColorRef header_left;
    ColorRef header_right;
    ColorRef caption;
    ColorRef caption_hot;
    ColorRef special_left;
    ColorRef special_right;
    ColorRef special_caption;
    ColorRef special_caption_hot;
    ColorRef link;
    ColorRef link_hot;
    ColorRef plain_text;
};

// `share` of the way from `from` to `to`, 0 to 1.
ColorRef MixColor(ColorRef from, ColorRef to, double share);

// The contrast ratio of two colours as the accessibility guidelines define it: 1 for the
// same luminance, 21 for black on white.
double ContrastRatio(ColorRef a, ColorRef b);

// `color` as it is when it contrasts with `against` by `ratio` or more; otherwise moved
// towards black or white, whichever is further from `against`, until it does.
ColorRef WithContrast(ColorRef color, ColorRef against, double ratio);

PanePalette MakePanePalette(const SystemColors& system);

}  // namespace regvex::ui::taskpane
