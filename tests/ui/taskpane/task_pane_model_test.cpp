#include "ui/taskpane/task_pane_model.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace regvex::ui::taskpane {
namespace {

// A fixed-pitch font: 6 pixels a character, 14 a line, words wrapped greedily.
constexpr int kCharWidth = 6;
constexpr int kLineHeight = 14;

TextExtent FakeMeasure(std::string_view text, int max_width) {
    std::istringstream words{std::string(text)};
    std::string word;
    int widest = 0;
    int lines = 0;
    int line = -1;  // characters on the current line, -1 before the first word
    while (words >> word) {
        const int length = static_cast<int>(word.size());
        if (line >= 0 && (line + 1 + length) * kCharWidth <= max_width) {
            line += 1 + length;
        } else {
            if (line >= 0) {
                widest = std::max(widest, line);
            }
            line = length;
            ++lines;
        }
    }
    if (line >= 0) {
        widest = std::max(widest, line);
    }
    return {widest * kCharWidth, std::max(lines, 1) * kLineHeight};
}

std::vector<TaskGroup> SampleGroups() {
    return {
        {"&Tasks",
         "TASKS",
         {{"A", "Alpha", "Tip A", 0}, {"B", "Bravo Charlie", "", 1}, {"", "note", "", kNoIcon}},
         true,
         false},
        {"&Info", "INFO", {{"", "Backups are created automatically", "", 6}}, false, false},
        {"&Details",
         "DETAILS",
         {{"C", "Cat", "", kNoIcon}, {"D", "Dog long", "", 2}},
         false,
         false},
    };
}

class TaskPaneModelTest : public ::testing::Test {
  protected:
    TaskPaneModelTest() {
        model.SetMeasure(FakeMeasure);
        model.SetWidth(200);
        model.SetGroups(SampleGroups());
    }

    std::string FocusKey() const {
        return model.focus() ? model.Item(*model.focus())->key : std::string("-");
    }

    TaskPaneModel model;
};

// With the default metrics and a pane 200 pixels wide, groups run from x 12 to 188.
TEST_F(TaskPaneModelTest, PlacesHeadersBodiesAndItemsDownThePane) {
    const auto& places = model.places();
    ASSERT_EQ(places.size(), 3u);
    struct Case {
        const char* what;
        PaneRect actual;
        PaneRect expected;
    };
    const Case cases[] = {
        {"header 0", places[0].header, {12, 12, 188, 37}},
        {"chevron 0", places[0].chevron, {166, 15, 185, 34}},
        {"caption 0", places[0].caption, {22, 12, 160, 37}},
        {"body 0", places[0].body, {12, 37, 188, 117}},
        // Icon and text: the text sits level with the taller icon.
        {"icon A", places[0].items[0].icon, {24, 47, 40, 63}},
        {"text A", places[0].items[0].text, {46, 48, 76, 62}},
        {"hot A", places[0].items[0].hot, {24, 47, 76, 63}},
        {"row B", places[0].items[1].row, {24, 70, 176, 86}},
        {"hot B", places[0].items[1].hot, {24, 70, 124, 86}},
        // Plain text without an icon starts where the icons do.
        {"text note", places[0].items[2].text, {24, 93, 48, 107}},
        {"hot note", places[0].items[2].hot, {24, 93, 48, 107}},
        {"header 1", places[1].header, {12, 129, 188, 154}},
        // Too long for 130 pixels: two lines, and a taller row.
        {"text info", places[1].items[0].text, {46, 165, 160, 193}},
        {"body 1", places[1].body, {12, 154, 188, 203}},
        {"header 2", places[2].header, {12, 215, 188, 240}},
        {"text C", places[2].items[0].text, {24, 250, 42, 264}},
        {"icon D", places[2].items[1].icon, {24, 271, 40, 287}},
        {"body 2", places[2].body, {12, 240, 188, 297}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.actual, c.expected) << c.what;
    }
    EXPECT_EQ(model.ContentHeight(), 309);
    EXPECT_TRUE(places[0].items[2].icon.Empty());
}

TEST_F(TaskPaneModelTest, NarrowerPaneWrapsMoreLinesAndGrowsTaller) {
    const int wide = model.ContentHeight();
    model.SetWidth(120);  // room for 58 pixels of text beside an icon
    const ItemPlace& bravo = model.places()[0].items[1];
    EXPECT_EQ(bravo.text.Height(), 2 * kLineHeight);
    EXPECT_EQ(bravo.text.Width(), 7 * kCharWidth);  // "Charlie" is the widest line
    EXPECT_GT(model.ContentHeight(), wide);
}

TEST_F(TaskPaneModelTest, HitTestsHeadersLinksAndPlainText) {
    using K = PaneHit::Kind;
    struct Case {
        PanePoint point;
        PaneHit expected;
        const char* what;
    };
    const Case cases[] = {
        {{100, 20}, {K::kHeader, 0, -1}, "caption bar"},
        {{170, 20}, {K::kHeader, 0, -1}, "chevron"},
        {{12, 12}, {K::kHeader, 0, -1}, "header's top left pixel"},
        {{187, 36}, {K::kHeader, 0, -1}, "header's bottom right pixel"},
        {{11, 20}, {}, "margin left of the header"},
        {{30, 55}, {K::kLink, 0, 0}, "icon of a link"},
        {{60, 55}, {K::kLink, 0, 0}, "text of a link"},
        {{42, 55}, {K::kLink, 0, 0}, "between icon and text"},
        {{100, 55}, {}, "right of a short link's text"},
        {{50, 66}, {}, "gap between two items"},
        {{30, 100}, {K::kText, 0, 2}, "plain text"},
        {{100, 185}, {K::kText, 1, 0}, "second line of wrapped text"},
        {{100, 125}, {}, "gap between groups"},
        {{30, 255}, {K::kLink, 2, 0}, "link without an icon"},
        {{50, 300}, {}, "bottom margin"},
        {{100, 400}, {}, "below everything"},
        {{-5, 20}, {}, "left of the pane"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(model.HitTest(c.point), c.expected) << c.what;
    }
}

TEST_F(TaskPaneModelTest, CollapsingAGroupEmptiesItsBodyAndMovesTheRestUp) {
    const int height = model.ContentHeight();
    const PaneRect info_header = model.places()[1].header;
    ASSERT_TRUE(model.SetCollapsed(0, true));
    EXPECT_FALSE(model.SetCollapsed(0, true)) << "already collapsed";

    const GroupPlace& tasks = model.places()[0];
    EXPECT_EQ(tasks.body.Height(), 0);
    for (const ItemPlace& item : tasks.items) {
        EXPECT_TRUE(item.hot.Empty());
    }
    const int shift = 80;  // the body was 80 pixels tall
    EXPECT_EQ(model.places()[1].header.top, info_header.top - shift);
    EXPECT_EQ(model.ContentHeight(), height - shift);
    // Where the first link was, the next group's caption bar now is.
    EXPECT_EQ(model.HitTest({60, 55}), (PaneHit{PaneHit::Kind::kHeader, 1, -1}));

    ASSERT_TRUE(model.SetCollapsed(0, false));
    EXPECT_EQ(model.ContentHeight(), height);
    EXPECT_EQ(model.HitTest({60, 55}), (PaneHit{PaneHit::Kind::kLink, 0, 0}));
}

TEST_F(TaskPaneModelTest, PressAndReleaseDecideWhatAClickDoes) {
    using A = PaneAction::Kind;
    const PanePoint icon_a{30, 55}, text_a{60, 55}, text_b{60, 78}, blank{100, 55}, note{30, 100},
        header{100, 20}, chevron{170, 20}, next_header{100, 140};
    struct Case {
        PanePoint down;
        PanePoint up;
        PaneAction expected;
        const char* what;
    };
    const Case cases[] = {
        {text_a, text_a, {A::kActivate, 0, 0}, "same link"},
        {icon_a, text_a, {A::kActivate, 0, 0}, "icon then text of one link"},
        {text_a, text_b, {}, "released on another link"},
        {text_a, blank, {}, "released beside the link"},
        {blank, text_a, {}, "pressed beside the link"},
        {note, note, {}, "plain text"},
        {header, chevron, {A::kToggle, 0, -1}, "header, anywhere on it"},
        {header, text_a, {}, "header then link"},
        {text_a, header, {}, "link then header"},
        {header, next_header, {}, "two headers"},
    };
    for (const Case& c : cases) {
        TaskPaneModel fresh;
        fresh.SetMeasure(FakeMeasure);
        fresh.SetWidth(200);
        fresh.SetGroups(SampleGroups());
        fresh.MouseDown(c.down);
        EXPECT_EQ(fresh.MouseUp(c.up), c.expected) << c.what;
        EXPECT_EQ(fresh.groups()[0].collapsed, c.expected.kind == A::kToggle) << c.what;
        EXPECT_EQ(fresh.pressed(), PaneHit{}) << c.what;
    }
}

TEST_F(TaskPaneModelTest, ReleaseWithoutPressOrAfterCancelDoesNothing) {
    EXPECT_EQ(model.MouseUp({60, 55}), PaneAction{});
    EXPECT_TRUE(model.MouseDown({60, 78}));
    EXPECT_EQ(FocusKey(), "B") << "pressing a link focuses it";
    model.CancelPress();
    EXPECT_EQ(model.MouseUp({60, 78}), PaneAction{});
    EXPECT_FALSE(model.MouseDown({30, 100})) << "plain text cannot be pressed";
}

TEST_F(TaskPaneModelTest, HoverFollowsLinksAndHeadersOnly) {
    using K = PaneHit::Kind;
    struct Step {
        PanePoint point;
        bool changed;
        PaneHit hover;
    };
    const Step steps[] = {
        {{60, 55}, true, {K::kLink, 0, 0}},
        {{65, 56}, false, {K::kLink, 0, 0}},
        {{60, 78}, true, {K::kLink, 0, 1}},
        {{30, 100}, true, {}},  // plain text is not hot
        {{100, 20}, true, {K::kHeader, 0, -1}},
        {{100, 125}, true, {}},
        {{100, 126}, false, {}},
    };
    for (const Step& step : steps) {
        EXPECT_EQ(model.MouseMove(step.point), step.changed) << step.point.x << "," << step.point.y;
        EXPECT_EQ(model.hover(), step.hover) << step.point.x << "," << step.point.y;
    }
    model.MouseMove({60, 55});
    EXPECT_TRUE(model.MouseLeave());
    EXPECT_FALSE(model.MouseLeave());
}

TEST_F(TaskPaneModelTest, CollapsingDropsHoverAndFocusInsideTheGroup) {
    model.MouseMove({60, 255});  // C
    model.SetFocus(*model.FindItem("D"));
    model.SetCollapsed(2, true);
    EXPECT_EQ(model.hover(), PaneHit{});
    EXPECT_FALSE(model.focus().has_value());

    model.SetCollapsed(2, false);
    model.SetFocus(*model.FindItem("A"));
    model.SetCollapsed(2, true);
    EXPECT_EQ(FocusKey(), "A") << "focus elsewhere stays";
}

TEST_F(TaskPaneModelTest, NewGroupsForgetHoverPressAndFocus) {
    model.MouseMove({60, 55});
    model.MouseDown({60, 55});
    ASSERT_TRUE(model.focus().has_value());
    model.SetView(200, 100, 0);
    model.ScrollTo(50);
    model.SetGroups(SampleGroups());
    EXPECT_EQ(model.hover(), PaneHit{});
    EXPECT_EQ(model.pressed(), PaneHit{});
    EXPECT_FALSE(model.focus().has_value());
    EXPECT_EQ(model.scroll_top(), 0);
}

// A move of the focus, or with a letter the accelerator of that letter.
struct FocusStep {
    FocusMove move = FocusMove::kNext;
    bool wrap = false;
    char32_t letter = 0;
};

struct FocusCase {
    const char* what;
    std::vector<int> collapsed;
    std::vector<FocusStep> steps;
    std::string expected;  // key, or "-" for no focus
    bool last_step_answer;
};

class FocusNavigationTest : public TaskPaneModelTest,
                            public ::testing::WithParamInterface<FocusCase> {};

TEST_P(FocusNavigationTest, EndsOnTheExpectedLink) {
    const FocusCase& c = GetParam();
    for (int group : c.collapsed) {
        model.SetCollapsed(group, true);
    }
    bool answer = false;
    for (const FocusStep& step : c.steps) {
        answer = step.letter != 0 ? model.FocusAccelerator(step.letter)
                                  : model.MoveFocus(step.move, step.wrap);
    }
    EXPECT_EQ(FocusKey(), c.expected) << c.what;
    EXPECT_EQ(answer, c.last_step_answer) << c.what;
}

const FocusStep kNext{FocusMove::kNext}, kPrevious{FocusMove::kPrevious},
    kNextWrap{FocusMove::kNext, true}, kPreviousWrap{FocusMove::kPrevious, true},
    kFirst{FocusMove::kFirst}, kLast{FocusMove::kLast};
FocusStep Letter(char32_t letter) {
    return {FocusMove::kNext, false, letter};
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FocusNavigationTest,
    ::testing::Values(
        FocusCase{"first move goes to the first link", {}, {kNext}, "A", true},
        FocusCase{"backwards from nothing goes to the last", {}, {kPrevious}, "D", true},
        FocusCase{"within a group", {}, {kNext, kNext}, "B", true},
        FocusCase{
            "across plain text and a group without links", {}, {kNext, kNext, kNext}, "C", true},
        FocusCase{"stops at the end", {}, {kLast, kNext}, "D", false},
        FocusCase{"stops at the start", {}, {kFirst, kPrevious}, "A", false},
        FocusCase{"wraps forwards", {}, {kLast, kNextWrap}, "A", true},
        FocusCase{"wraps backwards", {}, {kFirst, kPreviousWrap}, "D", true},
        FocusCase{"first when already first", {}, {kNext, kFirst}, "A", false},
        FocusCase{"skips a collapsed group", {2}, {kNext, kNext, kNext}, "B", false},
        FocusCase{"last of the expanded groups", {2}, {kLast}, "B", true},
        FocusCase{"nothing to focus when all are collapsed", {0, 2}, {kNext}, "-", false},
        FocusCase{"accelerator of the first group", {}, {Letter(U't')}, "A", true},
        FocusCase{"accelerator in upper case", {}, {Letter(U'D')}, "C", true},
        FocusCase{"accelerator of a group without links keeps the focus",
                  {},
                  {kNext, kNext, Letter(U'i')},
                  "B",
                  false},
        FocusCase{"no group has the letter", {}, {Letter(U'x')}, "-", false},
        FocusCase{"accelerator expands a collapsed group", {2}, {Letter(U'd')}, "C", true}));

TEST_F(TaskPaneModelTest, AcceleratorExpandsItsGroup) {
    model.SetCollapsed(2, true);
    ASSERT_TRUE(model.FocusAccelerator(U'd'));
    EXPECT_FALSE(model.groups()[2].collapsed);
    EXPECT_FALSE(model.places()[2].items[0].hot.Empty());
}

TEST_F(TaskPaneModelTest, CanMoveFocusAnswersWithoutMoving) {
    EXPECT_TRUE(model.CanMoveFocus(FocusMove::kNext));
    EXPECT_FALSE(model.focus().has_value());
    model.MoveFocus(FocusMove::kLast, false);
    EXPECT_FALSE(model.CanMoveFocus(FocusMove::kNext));
    EXPECT_TRUE(model.CanMoveFocus(FocusMove::kPrevious));
    EXPECT_EQ(FocusKey(), "D");
}

TEST_F(TaskPaneModelTest, EnterFollowsTheFocusedLinkOnly) {
    EXPECT_EQ(model.ActivateFocus(), PaneAction{});
    EXPECT_FALSE(model.SetFocus({0, 2})) << "plain text takes no focus";
    EXPECT_FALSE(model.SetFocus({5, 0}));
    ASSERT_TRUE(model.SetFocus({2, 1}));
    EXPECT_EQ(model.ActivateFocus(), (PaneAction{PaneAction::Kind::kActivate, 2, 1}));
}

TEST_F(TaskPaneModelTest, FindsItemsAndGroupsByKey) {
    EXPECT_EQ(model.FindItem("D"), (ItemRef{2, 1}));
    EXPECT_FALSE(model.FindItem("Z").has_value());
    EXPECT_EQ(model.FindGroup("INFO"), 1);
    EXPECT_EQ(model.FindGroup("Info"), -1) << "keys are compared exactly";
}

TEST(TaskPaneModelEmpty, HasNoHeightAndHitsNothing) {
    TaskPaneModel model;
    model.SetWidth(100);
    EXPECT_EQ(model.ContentHeight(), 0);
    EXPECT_EQ(model.HitTest({50, 20}), PaneHit{});
    EXPECT_FALSE(model.MoveFocus(FocusMove::kNext, true));
}

TEST(AcceleratorOf, FindsTheLetterAfterASingleAmpersand) {
    struct Case {
        const char* caption;
        char32_t expected;
    };
    const Case cases[] = {
        {"&Tasks", U'T'},  {"Save &As", U'A'}, {"&&Fish", 0},
        {"A&&B &C", U'C'}, {"Ends&", 0},       {"", 0},
        {"No marker", 0},  {"&&&X", U'X'},     {"\xC3\xA9&\xC3\x89t\xC3\xA9", U'\u00C9'},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(AcceleratorOf(c.caption), c.expected) << c.caption;
    }
}

// A view 100 pixels high over the 309 of the sample: the top runs from 0 to 209. Lines
// are 16 pixels, pages 84, wheel notches 48.
TEST(TaskPaneModelScroll, StaysWithinTheContent) {
    using Act = std::function<bool(TaskPaneModel&)>;
    const auto command = [](ScrollCommand c) {
        return Act([c](auto& m) { return m.Scroll(c, 16); });
    };
    const auto wheel = [](int delta) {
        return Act([delta](auto& m) { return m.ScrollWheel(delta, 48); });
    };
    const auto to = [](int top) { return Act([top](auto& m) { return m.ScrollTo(top); }); };
    const Act reveal_last = [](TaskPaneModel& m) {
        m.MoveFocus(FocusMove::kLast, false);
        return m.RevealFocus();
    };
    struct Case {
        const char* what;
        int start;
        Act act;
        int expected;
        bool moved;
    };
    using C = ScrollCommand;
    const Case cases[] = {
        {"line down", 0, command(C::kLineDown), 16, true},
        {"line up at the top", 0, command(C::kLineUp), 0, false},
        {"page down", 0, command(C::kPageDown), 84, true},
        {"page up", 150, command(C::kPageUp), 66, true},
        {"page down past the end", 200, command(C::kPageDown), 209, true},
        {"bottom", 0, command(C::kBottom), 209, true},
        {"top", 50, command(C::kTop), 0, true},
        {"beyond the end", 0, to(500), 209, true},
        {"before the start", 30, to(-3), 0, true},
        {"wheel towards the user", 0, wheel(-kWheelNotch), 48, true},
        {"wheel away, two notches", 100, wheel(2 * kWheelNotch), 4, true},
        {"half a notch waits", 0, wheel(-60), 0, false},
        {"half notches add up", 0,
         [](auto& m) { return m.ScrollWheel(-60, 48) || m.ScrollWheel(-60, 48); }, 48, true},
        {"reveal a link below", 0, reveal_last, 194, true},
        {"reveal a link in view", 200, reveal_last, 200, false},
    };
    for (const Case& c : cases) {
        TaskPaneModel fresh;  // no focus, no part of a wheel notch left over
        fresh.SetMeasure(FakeMeasure);
        fresh.SetGroups(SampleGroups());
        fresh.SetView(200, 100, 0);
        fresh.ScrollTo(c.start);
        EXPECT_EQ(c.act(fresh), c.moved) << c.what;
        EXPECT_EQ(fresh.scroll_top(), c.expected) << c.what;
    }
}

TEST_F(TaskPaneModelTest, ContentTallerThanTheViewGivesRoomToTheScrollBar) {
    model.SetView(200, 400, 17);
    EXPECT_EQ(model.width(), 200);
    model.SetView(200, 100, 17);
    EXPECT_EQ(model.width(), 183);
    // A taller view keeps the position within the content.
    model.SetView(200, 100, 0);
    model.ScrollTo(209);
    model.SetView(200, 299, 0);
    EXPECT_EQ(model.scroll_top(), 10);
}

TEST(ScrollToReveal, MovesAsLittleAsNeeded) {
    struct Case {
        PaneRect target;
        int top;
        int view;
        int content;
        int expected;
        const char* what;
    };
    const Case cases[] = {
        {{0, 50, 10, 70}, 0, 100, 300, 0, "already visible"},
        {{0, 150, 10, 170}, 0, 100, 300, 70, "below: its bottom at the view's bottom"},
        {{0, 10, 10, 30}, 50, 100, 300, 10, "above: its top at the view's top"},
        {{0, 100, 10, 250}, 0, 100, 300, 100, "taller than the view: its top"},
        {{0, 280, 10, 300}, 0, 100, 300, 200, "at the very end"},
        {{0, 0, 10, 20}, 30, 100, 80, 0, "content shorter than the view"},
        {{0, 290, 10, 320}, 0, 100, 300, 200, "sticking out of the content"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ScrollToReveal(c.target, c.top, c.view, c.content), c.expected) << c.what;
    }
}

}  // namespace
}  // namespace regvex::ui::taskpane
