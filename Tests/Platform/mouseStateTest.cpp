#include "System/Platform/mouseState.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

TEST(MouseState, AnswersForEachButtonByItsOwnBit)
{
    // Before, now and held of one button, and what the four states and any other say of it.
    struct {
        bool before, now, held;
        bool answers[5];
    } const rows[] = {
        {false, false, false, {false, false, false, false, false}},
        {false, true, false, {true, true, false, false, false}},
        {true, true, false, {true, false, false, false, false}},
        {true, true, true, {true, false, false, true, false}},
        {true, false, true, {false, false, true, false, false}},
    };
    bool (MouseState::*const asks[])(KeyState)
        const = {&MouseState::isLeftDown, &MouseState::isRightDown, &MouseState::isMiddleDown};
    for (auto const &row : rows) {
        for (unsigned button = 0; button < 3; ++button) {
            for (unsigned state = 0; state < 5; ++state) {
                SCOPED_TRACE(testing::Message()
                             << "row " << &row - rows << " button " << button << " state " << state);
                unsigned const bit = 1u << button;
                auto const word = [bit](bool set) {
                    return static_cast<std::uint16_t>(set ? bit : 0xFFFFu & ~bit);
                };
                MouseState mouse;
                mouse.prevButtons = word(row.before);
                mouse.buttons = word(row.now);
                mouse.heldButtons = word(row.held);
                EXPECT_EQ((mouse.*asks[button])(static_cast<KeyState>(state)), row.answers[state]);
            }
        }
    }
}

TEST(MouseState, LimitsButtonsMasksAndTimes)
{
    MouseState mouse;
    mouse.buttons = 0x8004;
    EXPECT_EQ(mouse.isButtonDown(2), 4);
    EXPECT_EQ(mouse.isButtonDown(15), 0x8000);
    EXPECT_EQ(mouse.isButtonDown(16), 0);
    EXPECT_EQ(mouse.isButtonDown(255), 0);

    mouse.clickCount[0] = 1;
    mouse.clickCount[1] = 2;
    mouse.clickCount[2] = 3;
    unsigned const counts[] = {0, 1, 2, 0, 3, 0};
    for (unsigned mask = 0; mask < 6; ++mask) {
        EXPECT_EQ(mouse.getClickCount(static_cast<MouseMask>(mask)), counts[mask]) << mask;
    }

    mouse.holdStart[3] = mouse.lastClick[3] = 1.0f;
    EXPECT_FALSE(mouse._isHoldClick(3, 0.5f, 1.5f)) << "exactly the hold time";
    EXPECT_TRUE(mouse._isHoldClick(3, 0.5f, 1.75f));
    EXPECT_FALSE(mouse._isHoldClick(4, 0.5f, 100.0f));
    EXPECT_FALSE(mouse._isMultiClick(3, 0.5f, 1.5f)) << "exactly the gap";
    EXPECT_TRUE(mouse._isMultiClick(3, 0.5f, 1.25f));
    EXPECT_FALSE(mouse._isMultiClick(4, 100.0f, 0.0f));
}

} // namespace
} // namespace Qel
