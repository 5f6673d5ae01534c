#include "ui/taskpane/task_pane_colors.h"

#include <gtest/gtest.h>

namespace regvex::ui::taskpane {
namespace {

struct Scheme {
    const char* name;
    SystemColors colors;
};

// window, window text, highlight, highlight text, hot track
const Scheme kSchemes[] = {
    {"Windows default",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(0, 120, 215), Rgb(255, 255, 255), Rgb(0, 102, 204)}},
    {"Wine default: pale grey hot track",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(48, 150, 250), Rgb(255, 255, 255), Rgb(224, 224, 224)}},
    {"classic",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(10, 36, 106), Rgb(255, 255, 255), Rgb(0, 0, 128)}},
    {"high contrast black",
     {Rgb(0, 0, 0), Rgb(255, 255, 255), Rgb(26, 235, 255), Rgb(0, 0, 0), Rgb(255, 255, 0)}},
    {"high contrast white",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(55, 0, 110), Rgb(255, 255, 255), Rgb(0, 0, 159)}},
    {"pale highlight",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(200, 220, 255), Rgb(0, 0, 0), Rgb(0, 102, 204)}},
};

TEST(PanePalette, EveryTextIsReadableOnWhatItIsDrawnOver) {
    for (const Scheme& scheme : kSchemes) {
        const PanePalette p = MakePanePalette(scheme.colors);
        struct Pair {
            const char* what;
            ColorRef text;
            ColorRef ground;
            double at_least;
        };
        const Pair pairs[] = {
            {"link", p.link, p.body, 4.5},
            {"hovered link", p.link_hot, p.body, 4.5},
            {"plain text", p.plain_text, p.body, 4.5},
            {"caption, left", p.caption, p.header_left, 4.5},
            {"caption, right", p.caption, p.header_right, 4.5},
            {"hovered caption", p.caption_hot, p.header_right, 3.0},
            {"special caption", p.special_caption, p.special_left, 4.5},
            {"hovered special caption", p.special_caption_hot, p.special_left, 3.0},
        };
        for (const Pair& pair : pairs) {
            EXPECT_GE(ContrastRatio(pair.text, pair.ground), pair.at_least)
                << scheme.name << ": " << pair.what;
        }
    }
}

TEST(PanePalette, LinksKeepAReadableHotTrackColour) {
    EXPECT_EQ(MakePanePalette(kSchemes[0].colors).link, Rgb(0, 102, 204));
    EXPECT_EQ(MakePanePalette(kSchemes[2].colors).link, Rgb(0, 0, 128));
    // Too pale: the highlight's blue, darkened until it reads, rather than grey.
    const ColorRef pale = MakePanePalette(kSchemes[1].colors).link;
    EXPECT_GT((pale >> 16) & 0xFF, (pale & 0xFF) + 60) << "blue well above red";
}

TEST(ContrastRatio, MatchesTheGuidelinesFigures) {
    EXPECT_NEAR(ContrastRatio(Rgb(0, 0, 0), Rgb(255, 255, 255)), 21.0, 1e-9);
    EXPECT_NEAR(ContrastRatio(Rgb(255, 255, 255), Rgb(0, 0, 0)), 21.0, 1e-9);
    EXPECT_NEAR(ContrastRatio(Rgb(120, 30, 200), Rgb(120, 30, 200)), 1.0, 1e-9);
    EXPECT_NEAR(ContrastRatio(Rgb(118, 118, 118), Rgb(255, 255, 255)), 4.54, 0.01);
}

TEST(WithContrast, MovesAwayFromTheGroundOnlyWhenNeeded) {
    struct Case {
        ColorRef color;
        ColorRef ground;
        bool darker;  // expected to move towards black
    };
    const Case cases[] = {
        {Rgb(224, 224, 224), Rgb(255, 255, 255), true},
        {Rgb(40, 40, 40), Rgb(0, 0, 0), false},
        {Rgb(128, 128, 128), Rgb(200, 200, 200), true},
    };
    for (const Case& c : cases) {
        const ColorRef moved = WithContrast(c.color, c.ground, 4.5);
        EXPECT_GE(ContrastRatio(moved, c.ground), 4.5);
        EXPECT_EQ((moved & 0xFF) < (c.color & 0xFF), c.darker);
    }
    EXPECT_EQ(WithContrast(Rgb(0, 0, 0), Rgb(255, 255, 255), 4.5), Rgb(0, 0, 0));
}

}  // namespace
}  // namespace regvex::ui::taskpane
