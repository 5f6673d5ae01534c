#include "ui/taskpane/task_pane_model.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::ui::taskpane {

namespace {

PaneRect Union(const PaneRect& a, const PaneRect& b) {
    if (a.Empty()) {
        return b;
    }
    if (b.Empty()) {
        return a;
    }
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

bool IsPressable(const PaneHit& hit) {
    return hit.kind == PaneHit::Kind::kHeader || hit.kind == PaneHit::Kind::kLink;
}

}  // namespace

char32_t AcceleratorOf(std::string_view caption) {
    std::size_t pos = 0;
    while (pos < caption.size()) {
        if (caption[pos] != '&') {
            text::DecodeUtf8(caption, pos);
            continue;
        }
        ++pos;
        if (pos == caption.size()) {
            return 0;
        }
        if (caption[pos] == '&') {
            ++pos;
            continue;
        }
        return text::DecodeUtf8(caption, pos);
    }
    return 0;
}

void TaskPaneModel::SetMeasure(MeasureText measure) {
    measure_ = std::move(measure);
    Layout();
}

void TaskPaneModel::SetMetrics(const TaskPaneMetrics& metrics) {
    metrics_ = metrics;
    Layout();
}

void TaskPaneModel::SetWidth(int width) {
    width_ = std::max(width, 0);
    Layout();
}

void TaskPaneModel::SetGroups(std::vector<TaskGroup> groups) {
    groups_ = std::move(groups);
    hover_ = {};
    pressed_ = {};
    focus_.reset();
    scroll_top_ = 0;
    Layout();
}

void TaskPaneModel::Layout() {
    const TaskPaneMetrics& m = metrics_;
    const auto measure = [this](std::string_view text, int max_width) {
        return measure_ ? measure_(text, max_width) : TextExtent{};
    };
    const int line_height = measure("Ag", std::numeric_limits<int>::max() / 2).height;
    const int left = m.margin;
    const int right = std::max(left + 1, width_ - m.margin);

    places_.clear();
    places_.reserve(groups_.size());
    int y = m.margin;
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        const TaskGroup& group = groups_[g];
        if (g > 0) {
            y += m.group_gap;
        }
        GroupPlace place;
        place.header = {left, y, right, y + m.header_height};
        const int inset = std::max(0, (m.header_height - m.chevron_size) / 2);
        place.chevron = {right - inset - m.chevron_size, y + inset, right - inset,
                         y + inset + m.chevron_size};
        place.caption = {left + m.header_padding, y,
                         std::max(left + m.header_padding, place.chevron.left - m.icon_gap),
                         place.header.bottom};
        y = place.header.bottom;
        place.items.resize(group.items.size());
        if (group.collapsed) {
            place.body = {left, y, right, y};
            places_.push_back(std::move(place));
            continue;
        }
        const int body_top = y;
        y += m.body_padding_y;
        for (std::size_t i = 0; i < group.items.size(); ++i) {
            const TaskItem& item = group.items[i];
            ItemPlace& at = place.items[i];
            if (i > 0) {
                y += m.item_gap;
            }
            const bool has_icon = item.icon != kNoIcon;
            const int icon_left = left + m.body_padding_x;
            const int text_left = has_icon ? icon_left + m.icon_size + m.icon_gap : icon_left;
            const int text_room = std::max(1, right - m.body_padding_x - text_left);
            const TextExtent extent = measure(item.text, text_room);
            // The icon sits level with the text's first line, whichever of the two is taller.
            const int first_line = std::max(line_height, has_icon ? m.icon_size : 0);
            const int text_top = y + (first_line - line_height) / 2;
            at.text = {text_left, text_top, text_left + extent.width, text_top + extent.height};
            if (has_icon) {
                const int icon_top = y + (first_line - m.icon_size) / 2;
                at.icon = {icon_left, icon_top, icon_left + m.icon_size, icon_top + m.icon_size};
            }
            const int bottom = std::max({y + first_line, at.text.bottom, at.icon.bottom});
            at.row = {left + m.body_padding_x, y, right - m.body_padding_x, bottom};
            at.hot = item.IsLink() ? Union(at.icon, at.text) : at.text;
            y = bottom;
        }
        y += m.body_padding_y;
        place.body = {left, body_top, right, y};
        places_.push_back(std::move(place));
    }
    content_height_ = groups_.empty() ? 0 : y + m.margin;
}

PaneHit TaskPaneModel::HitTest(PanePoint point) const {
    for (std::size_t g = 0; g < places_.size(); ++g) {
        const GroupPlace& place = places_[g];
        const int group = static_cast<int>(g);
        if (place.header.Contains(point)) {
            return {PaneHit::Kind::kHeader, group, -1};
        }
        if (!place.body.Contains(point)) {
            continue;
        }
        for (std::size_t i = 0; i < place.items.size(); ++i) {
            if (place.items[i].hot.Contains(point)) {
                const bool link = groups_[g].items[i].IsLink();
                return {link ? PaneHit::Kind::kLink : PaneHit::Kind::kText, group,
                        static_cast<int>(i)};
            }
        }
        return {};
    }
    return {};
}

const TaskItem* TaskPaneModel::Item(ItemRef ref) const {
    if (ref.group < 0 || ref.group >= static_cast<int>(groups_.size())) {
        return nullptr;
    }
    const auto& items = groups_[static_cast<std::size_t>(ref.group)].items;
    if (ref.item < 0 || ref.item >= static_cast<int>(items.size())) {
        return nullptr;
    }
    return &items[static_cast<std::size_t>(ref.item)];
}

std::optional<ItemRef> TaskPaneModel::FindItem(std::string_view key) const {
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        const auto& items = groups_[g].items;
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (items[i].key == key) {
                return ItemRef{static_cast<int>(g), static_cast<int>(i)};
            }
        }
    }
    return std::nullopt;
}

int TaskPaneModel::FindGroup(std::string_view key) const {
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        if (groups_[g].key == key) {
            return static_cast<int>(g);
        }
    }
    return -1;
}

bool TaskPaneModel::SetCollapsed(int group, bool collapsed) {
    if (group < 0 || group >= static_cast<int>(groups_.size()) ||
        groups_[static_cast<std::size_t>(group)].collapsed == collapsed) {
        return false;
    }
    return Toggle(group);
}

bool TaskPaneModel::Toggle(int group) {
    TaskGroup& target = groups_[static_cast<std::size_t>(group)];
    target.collapsed = !target.collapsed;
    if (target.collapsed) {
        if (focus_ && focus_->group == group) {
            focus_.reset();
        }
        if (hover_.group == group && hover_.kind == PaneHit::Kind::kLink) {
            hover_ = {};
        }
        if (pressed_.group == group && pressed_.kind == PaneHit::Kind::kLink) {
            pressed_ = {};
        }
    }
    Layout();
    return true;
}

bool TaskPaneModel::MouseMove(PanePoint point) {
    PaneHit hit = HitTest(point);
    if (!IsPressable(hit)) {
        hit = {};
    }
    if (hit == hover_) {
        return false;
    }
    hover_ = hit;
    return true;
}

bool TaskPaneModel::MouseLeave() {
    if (hover_ == PaneHit{}) {
        return false;
    }
    hover_ = {};
    return true;
}

bool TaskPaneModel::MouseDown(PanePoint point) {
    const PaneHit hit = HitTest(point);
    if (!IsPressable(hit)) {
        pressed_ = {};
        return false;
    }
    pressed_ = hit;
    if (hit.kind == PaneHit::Kind::kLink) {
        focus_ = ItemRef{hit.group, hit.item};
    }
    return true;
}

PaneAction TaskPaneModel::MouseUp(PanePoint point) {
    const PaneHit pressed = std::exchange(pressed_, PaneHit{});
    if (!IsPressable(pressed) || HitTest(point) != pressed) {
        return {};
    }
    if (pressed.kind == PaneHit::Kind::kHeader) {
        Toggle(pressed.group);
        return {PaneAction::Kind::kToggle, pressed.group, -1};
    }
    return {PaneAction::Kind::kActivate, pressed.group, pressed.item};
}

void TaskPaneModel::CancelPress() {
    pressed_ = {};
}

bool TaskPaneModel::IsFocusable(ItemRef ref) const {
    const TaskItem* item = Item(ref);
    return item != nullptr && item->IsLink() &&
           !groups_[static_cast<std::size_t>(ref.group)].collapsed;
}

std::vector<ItemRef> TaskPaneModel::FocusOrder() const {
    std::vector<ItemRef> order;
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        for (std::size_t i = 0; i < groups_[g].items.size(); ++i) {
            const ItemRef ref{static_cast<int>(g), static_cast<int>(i)};
            if (IsFocusable(ref)) {
                order.push_back(ref);
            }
        }
    }
    return order;
}

bool TaskPaneModel::SetFocus(ItemRef ref) {
    if (!IsFocusable(ref) || focus_ == ref) {
        return false;
    }
    focus_ = ref;
    return true;
}

namespace {

// Where a move leads in `order` from `current` (an index, or -1 for no focus).
std::optional<std::size_t> MoveTarget(std::size_t count, int current, FocusMove move, bool wrap) {
    if (count == 0) {
        return std::nullopt;
    }
    const std::size_t last = count - 1;
    switch (move) {
        case FocusMove::kFirst:
            return 0;
        case FocusMove::kLast:
            return last;
        case FocusMove::kNext:
            if (current < 0) {
                return 0;
            }
            if (static_cast<std::size_t>(current) < last) {
                return static_cast<std::size_t>(current) + 1;
            }
            return wrap ? std::optional<std::size_t>(0) : std::nullopt;
        case FocusMove::kPrevious:
            if (current < 0) {
                return last;
            }
            if (current > 0) {
                return static_cast<std::size_t>(current) - 1;
            }
            return wrap ? std::optional<std::size_t>(last) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::optional<ItemRef> TaskPaneModel::FocusTarget(FocusMove move, bool wrap) const {
    const std::vector<ItemRef> order = FocusOrder();
    const auto found = focus_ ? std::find(order.begin(), order.end(), *focus_) : order.end();
    const int current = found == order.end() ? -1 : static_cast<int>(found - order.begin());
    const auto target = MoveTarget(order.size(), current, move, wrap);
    if (!target || static_cast<int>(*target) == current) {
        return std::nullopt;
    }
    return order[*target];
}

bool TaskPaneModel::MoveFocus(FocusMove move, bool wrap) {
    const auto target = FocusTarget(move, wrap);
    if (target) {
        focus_ = target;
    }
    return target.has_value();
}

bool TaskPaneModel::CanMoveFocus(FocusMove move) const {
    return FocusTarget(move, false).has_value();
}

bool TaskPaneModel::FocusAccelerator(char32_t letter) {
    const char32_t wanted = text::UpperCaseCodePoint(letter);
    if (wanted == 0) {
        return false;
    }
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        if (text::UpperCaseCodePoint(AcceleratorOf(groups_[g].caption)) != wanted) {
            continue;
        }
        const auto& items = groups_[g].items;
        const auto link = std::find_if(items.begin(), items.end(),
                                       [](const TaskItem& item) { return item.IsLink(); });
        if (link == items.end()) {
            continue;
        }
        const int group = static_cast<int>(g);
        if (groups_[g].collapsed) {
            Toggle(group);
        }
        focus_ = ItemRef{group, static_cast<int>(link - items.begin())};
        return true;
    }
    return false;
}

PaneAction TaskPaneModel::ActivateFocus() const {
    if (!focus_ || !IsFocusable(*focus_)) {
        return {};
    }
    return {PaneAction::Kind::kActivate, focus_->group, focus_->item};
}

void TaskPaneModel::SetView(int width, int height, int scroll_bar_width) {
    view_height_ = std::max(height, 0);
    SetWidth(width);
    if (content_height_ > view_height_) {
        SetWidth(width - scroll_bar_width);
    }
    scroll_top_ = ClampScroll(scroll_top_, view_height_, content_height_);
}

bool TaskPaneModel::ScrollTo(int top) {
    const int clamped = ClampScroll(top, view_height_, content_height_);
    if (clamped == scroll_top_) {
        return false;
    }
    scroll_top_ = clamped;
    return true;
}

bool TaskPaneModel::Scroll(ScrollCommand command, int line) {
    const int page = std::max(line, view_height_ - line);
    switch (command) {
        case ScrollCommand::kLineUp:
            return ScrollTo(scroll_top_ - line);
        case ScrollCommand::kLineDown:
            return ScrollTo(scroll_top_ + line);
        case ScrollCommand::kPageUp:
            return ScrollTo(scroll_top_ - page);
        case ScrollCommand::kPageDown:
            return ScrollTo(scroll_top_ + page);
        case ScrollCommand::kTop:
            return ScrollTo(0);
        case ScrollCommand::kBottom:
            return ScrollTo(content_height_);
    }
    return false;
}

bool TaskPaneModel::ScrollWheel(int delta, int step) {
    wheel_remainder_ += delta;
    const int notches = wheel_remainder_ / kWheelNotch;
    wheel_remainder_ %= kWheelNotch;
    // Turning the wheel away from the user moves the view up.
    return ScrollTo(scroll_top_ - notches * step);
}

bool TaskPaneModel::RevealFocus() {
    if (!focus_) {
        return false;
    }
    PaneRect target = places_[static_cast<std::size_t>(focus_->group)]
                          .items[static_cast<std::size_t>(focus_->item)]
                          .row;
    target.top -= metrics_.item_gap;
    target.bottom += metrics_.item_gap;
    return ScrollTo(ScrollToReveal(target, scroll_top_, view_height_, content_height_));
}

int ClampScroll(int top, int view_height, int content_height) {
    return std::max(0, std::min(top, content_height - view_height));
}

int ScrollToReveal(const PaneRect& target, int top, int view_height, int content_height) {
    int wanted = top;
    if (target.top < top || target.Height() > view_height) {
        wanted = target.top;
    } else if (target.bottom > top + view_height) {
        wanted = target.bottom - view_height;
    }
    return ClampScroll(wanted, view_height, content_height);
}

}  // namespace regvex::ui::taskpane
