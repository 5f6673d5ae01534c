#pragma once
// CLBHScroll: a list box that grows its horizontal scroll range to its widest item, so
// long entries can be scrolled into view.

#include <cstdint>
#include <string_view>

#include "ui/base/controls.h"

namespace regvex::ui::ignore {

// What the extent is measured against: the screen's horizontal twips per pixel and the
// width of a vertical scroll bar (SM_CXVSCROLL), which the list's own bar takes away.
struct ScrollMetrics {
    int twips_per_pixel_x = 15;
    int vertical_scroll_width = 17;
};

// The extent for an item `width_twips` wide, in pixels: rounded half to even.
int HorizontalExtentPixels(std::int32_t width_twips, const ScrollMetrics& metrics);

class CLBHScroll {
  public:
    explicit CLBHScroll(ScrollMetrics metrics) : metrics_(metrics) {}

    void Init(ListBox& list);
    void AddItem(std::string_view item);

  private:
    ScrollMetrics metrics_;
    ListBox* list_ = nullptr;
    std::int32_t widest_twips_ = 0;
};

}  // namespace regvex::ui::ignore
