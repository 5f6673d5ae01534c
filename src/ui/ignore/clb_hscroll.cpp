#include "ui/ignore/clb_hscroll.h"

#include <cmath>
#include <limits>

namespace regvex::ui::ignore {

namespace {

// Conversions to a 32-bit integer round half to even and saturate rather than overflow.
std::int32_t ToInt32(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= static_cast<double>(std::numeric_limits<std::int32_t>::min()))) {
        return std::numeric_limits<std::int32_t>::min();
    }
    if (rounded > static_cast<double>(std::numeric_limits<std::int32_t>::max())) {
        return std::numeric_limits<std::int32_t>::max();
    }
    return static_cast<std::int32_t>(rounded);
}

}  // namespace

int HorizontalExtentPixels(std::int32_t width_twips, const ScrollMetrics& metrics) {
    const double twips_per_pixel = metrics.twips_per_pixel_x > 0 ? metrics.twips_per_pixel_x : 15;
    return ToInt32(static_cast<double>(width_twips) / twips_per_pixel +
                   metrics.vertical_scroll_width + 2);
}

void CLBHScroll::Init(ListBox& list) {
    list_ = &list;
    widest_twips_ = 0;
}

void CLBHScroll::AddItem(std::string_view item) {
    if (list_ == nullptr) {
        return;
    }
    list_->AddItem(item);
    const std::int32_t width = ToInt32(list_->TextWidthTwips(item));
    if (width > widest_twips_) {
        widest_twips_ = width;
        list_->SetHorizontalExtent(HorizontalExtentPixels(width, metrics_));
    }
    // The newest item is the one the user wants to see.
    list_->ScrollToBottom();
}

}  // namespace regvex::ui::ignore
