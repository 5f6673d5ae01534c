// The colour rules of the message boxes: which arguments count, which brushes the dialog
// gets, and how its subclass answers.

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ui/dialogs/mod_dialogs.h"

namespace regvex::ui::dialogs {
namespace {

using Args = std::array<DialogColor, 4>;
const DialogColor M = DialogColor::Missing();
const DialogColor O = DialogColor::Other();
DialogColor C(ColorRef color) {
    return DialogColor::Color(color);
}
DialogColor P(std::uintptr_t bitmap) {
    return DialogColor::Picture(bitmap);
}

ColorState After(const std::vector<Args>& calls) {
    ColorState state;
    for (const Args& a : calls) {
        RecordColors(state, a[0], a[1], a[2], a[3]);
    }
    return state;
}

TEST(RecordColors, KeepsOnlyTheKindsEachArgumentTakes) {
    const struct {
        Args args;
        std::array<bool, 4> present;
    } cases[] = {
        {{M, M, M, M}, {false, false, false, false}},
        {{C(1), C(2), C(3), C(4)}, {true, true, true, true}},
        {{P(1), P(2), P(3), P(4)}, {false, true, false, true}},
        {{O, O, O, O}, {false, false, false, false}},
        {{C(1), O, P(3), C(4)}, {true, false, false, true}},
    };
    for (const auto& c : cases) {
        const ColorState state = After({c.args});
        EXPECT_EQ(state.present, c.present) << ::testing::PrintToString(c.present);
    }
}

BrushRecipe None() {
    return {};
}
BrushRecipe Solid(ColorRef color) {
    return {BrushKind::kSolid, color, 0};
}
BrushRecipe Pattern(std::uintptr_t bitmap) {
    return {BrushKind::kPattern, 0, bitmap};
}
BrushRecipe Unchanged() {
    return {BrushKind::kUnchanged, 0, 0};
}

TEST(ChooseBrushes, EditBrushKindFollowsTheBackgroundArgument) {
    const ColorRef red = Rgb(200, 0, 0), blue = Rgb(0, 0, 200);
    const struct {
        const char* what;
        std::vector<Args> calls;
        BrushRecipe brush1, brush2;
    } cases[] = {
        {"colours", {{M, C(red), M, C(blue)}}, Solid(red), Solid(blue)},
        {"pictures", {{M, P(0x10), M, P(0x20)}}, Pattern(0x10), Pattern(0x20)},
        {"picture, colour", {{M, P(0x10), M, C(blue)}}, Pattern(0x10), Unchanged()},
        {"colour, picture", {{M, C(red), M, P(0x20)}}, Solid(red), Solid(0x20)},
        {"no background", {{M, M, M, C(blue)}}, None(), Solid(blue)},
        {"earlier picture background",
         {{M, P(0x10), M, M}, {M, M, M, P(0x20)}},
         None(),
         Pattern(0x20)},
        {"rejected background, earlier picture",
         {{M, P(0x10), M, M}, {M, O, M, C(blue)}},
         None(),
         Unchanged()},
        {"edit background of another kind", {{M, C(red), M, O}}, Solid(red), None()},
        {"second call wins",
         {{M, C(red), M, C(red)}, {M, C(blue), M, C(blue)}},
         Solid(blue),
         Solid(blue)},
        {"text colours only", {{C(red), M, C(blue), M}}, None(), None()},
    };
    for (const auto& c : cases) {
        const DialogBrushes brushes = ChooseBrushes(After(c.calls));
        EXPECT_EQ(brushes.brush1, c.brush1) << c.what;
        EXPECT_EQ(brushes.brush2, c.brush2) << c.what;
    }
}

TEST(AnswerMessage, EditsAndOtherControlsTakeTheirOwnColours) {
    const ColorRef text = 0x111111, edit_text = 0x222222;
    const std::optional<ColorRef> none;
    const std::optional<int> mode = kBackgroundMode, no_mode;
    const struct {
        unsigned message;
        bool text_given, edit_text_given, brush1, brush2;
        MessageAnswer answer;
    } cases[] = {
        {0x133, true, true, true, true, {edit_text, mode, Reply::kBrush2}},
        {0x133, true, false, true, false, {none, mode, Reply::kPreviousProcedure}},
        {0x136, true, true, true, true, {text, mode, Reply::kBrush1}},
        {0x138, false, true, true, true, {none, mode, Reply::kBrush1}},
        {0x131, true, false, false, true, {text, mode, Reply::kPreviousProcedure}},
        {0x132, false, true, false, true, {none, mode, Reply::kPreviousProcedure}},
        {0x130, true, true, true, true, {none, no_mode, Reply::kPreviousOrDefaultProcedure}},
        {0x139, true, true, true, true, {none, no_mode, Reply::kPreviousOrDefaultProcedure}},
        {0x002, true, true, true, true, {none, no_mode, Reply::kPreviousOrDefaultProcedure}},
    };
    for (const auto& c : cases) {
        const ColorState state =
            After({{c.text_given ? C(text) : M, M, c.edit_text_given ? C(edit_text) : M, M}});
        EXPECT_EQ(AnswerMessage(state, c.message, c.brush1, c.brush2), c.answer)
            << std::hex << c.message << " " << c.text_given << c.edit_text_given << c.brush1
            << c.brush2;
    }
}

}  // namespace
}  // namespace regvex::ui::dialogs
