// Command lines of every release and their splitting without a shell.
#include "run/command_line.h"

#include <gtest/gtest.h>

namespace {

TEST(CommandLine, EveryReleaseHiddenAndVisible) {
    const std::string exe = "/opt/model dir/tellx";
    EXPECT_EQ(sb::modelCommandLine(1, exe, false), "\"/opt/model dir/tellx\" -s sb -n sb.bin -W sbNew.100");
    EXPECT_EQ(sb::modelCommandLine(1, exe, true), "\"/opt/model dir/tellx\" -s sb -n sb.bin -W sbNew.100");
    for (int version = 2; version <= 5; ++version) {
        EXPECT_EQ(sb::modelCommandLine(version, exe, false), "\"/opt/model dir/tellx\" -s sb -n sb");
        EXPECT_EQ(sb::modelCommandLine(version, exe, true), "\"/opt/model dir/tellx\" -s sb -n sb.bin");
        EXPECT_STREQ(sb::staleBinaryFile(version), "sb.bin");
    }
    EXPECT_EQ(sb::modelCommandLine(6, exe, false),
              "\"/opt/model dir/tellx\" -s sbsite.100 -m sb.sch -f sbfix.100 -o sb -i sb.ini -pp .");
    EXPECT_STREQ(sb::staleBinaryFile(6), "");
    EXPECT_EQ(sb::modelCommandLine(0, exe, false), "");
    EXPECT_EQ(sb::modelCommandLine(7, exe, true), "");
    EXPECT_EQ(sb::list100CommandLine(1, "/m/list100"), "\"/m/list100\" sb sb sb_outvars.txt");
    EXPECT_EQ(sb::list100CommandLine(5, "/m/list100"), "\"/m/list100\" sb sb sb_outvars.txt");
    EXPECT_EQ(sb::list100CommandLine(6, "/m/list100"), "");
}

TEST(CommandLine, SplitHonoursDoubleQuotes) {
    std::vector<std::string> args;
    ASSERT_TRUE(sb::splitCommandLine("\"/opt/model dir/tellx\" -s  sb -n sb", args));
    EXPECT_EQ(args, (std::vector<std::string>{"/opt/model dir/tellx", "-s", "sb", "-n", "sb"}));
    ASSERT_TRUE(sb::splitCommandLine("tellx a\"b c\"d \"\"", args));
    EXPECT_EQ(args, (std::vector<std::string>{"tellx", "ab cd", ""}));
    EXPECT_FALSE(sb::splitCommandLine("", args));
    EXPECT_FALSE(sb::splitCommandLine("\"\" -s sb", args));  // empty executable path
    EXPECT_FALSE(sb::splitCommandLine("\"/opt/unclosed -s sb", args));
    EXPECT_TRUE(args.empty());
}

// Whatever a model's path holds, its command line gives it back whole.
TEST(CommandLine, AnyPathComesBackWhole) {
    const std::string paths[] = {"/m/mo\"del/tellx", "/m/a\\\"b/tellx", "/m/dir\\", "/m/x\\y z/tellx", "/m/\"\""};
    for (const std::string& path : paths) {
        std::vector<std::string> args;
        ASSERT_TRUE(sb::splitCommandLine(sb::modelCommandLine(4, path, false), args)) << path;
        EXPECT_EQ(args, (std::vector<std::string>{path, "-s", "sb", "-n", "sb"})) << path;
        ASSERT_TRUE(sb::splitCommandLine(sb::list100CommandLine(4, path), args)) << path;
        EXPECT_EQ(args.front(), path);
    }
    EXPECT_EQ(sb::quoteArgument("/m/mo\"del\\"), "\"/m/mo\\\"del\\\\\"");
}

}  // namespace
