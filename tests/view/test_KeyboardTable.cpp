// The keyboard of the block view and the help that 'h' prints.

#include "TestSupport.h"
#include "view/KeyboardTable.h"

#include <gtest/gtest.h>

namespace
{
KeyPress key(int c, KeyPress::Special special = KeyPress::CHARACTER)
{
    KeyPress k;
    k.special = special;
    k.character = c;
    return k;
}
} // namespace

TEST(KeyboardTable, KeysGiveTheirCommands)
{
    struct Row
    {
        KeyPress key;
        ViewCommand command;
    };
    const Row rows[] = {
        {key('a'), ViewCommand::AERIAL_VIEW},
        {key('A'), ViewCommand::CODING_FACIES_GRAIN_AGE}, // case tells 'a' from 'A'
        {key('z'), ViewCommand::EXAGGERATION_DOWN},
        {key('Z'), ViewCommand::EXAGGERATION_UP},
        {key('$'), ViewCommand::Z_SLICE},
        {key('_'), ViewCommand::RULER},
        {key('/'), ViewCommand::TOGGLE_ZCUT},
        {key('8', KeyPress::KEYPAD), ViewCommand::GO_FRONT}, // the keypad navigates
        {key('8'), ViewCommand::UNKNOWN},                    // the main keyboard's digit does not
        {key('0', KeyPress::KEYPAD), ViewCommand::RESET_CAMERA},
        {key('0'), ViewCommand::UNKNOWN},
        {key('+', KeyPress::KEYPAD), ViewCommand::GO_UP},
        {key('+'), ViewCommand::UNKNOWN},
        {key('-', KeyPress::KEYPAD), ViewCommand::GO_DOWN},
        {key(0, KeyPress::MODIFIER), ViewCommand::NONE}, // modifiers are silent
        {key('b'), ViewCommand::UNKNOWN},                // unknown keys warn
        {key(0, KeyPress::OTHER), ViewCommand::UNKNOWN},
        {key(0, KeyPress::UP), ViewCommand::ARROW_UP},
        {key(0, KeyPress::LEFT), ViewCommand::ARROW_LEFT},
        {key(0, KeyPress::ESCAPE), ViewCommand::LEAVE_RULER},
    };
    for (const Row& r : rows)
        EXPECT_EQ(KeyboardTable::command(r.key), r.command)
            << "key " << r.key.character << " special " << r.key.special;
}

TEST(KeyboardTable, HelpListsEveryGroupAndKeyInOrder)
{
    const std::vector<std::string> lines = testing_support::lines_of(KeyboardTable::help());
    ASSERT_EQ(lines.size(), 56u);
    EXPECT_EQ(lines.front(), "  * view selection :");
    EXPECT_EQ(lines[1], "    'a' : Set the 2D aerial view");
    EXPECT_EQ(lines[17], "    Arrows : Move the cursor location");
    EXPECT_EQ(lines[18], "  * color coding :");
    EXPECT_EQ(lines.back(), "    'h' : Prints this help");
    EXPECT_NE(KeyboardTable::help().find("    '0' : reset 3D camera position\n"), std::string::npos);
    EXPECT_STREQ(KeyboardTable::freeRefusal(ViewCommand::TOGGLE_WELL_LABELS),
                 "Well conditioning not available in Free version");
    EXPECT_EQ(KeyboardTable::freeRefusal(ViewCommand::AERIAL_VIEW), nullptr);
}
