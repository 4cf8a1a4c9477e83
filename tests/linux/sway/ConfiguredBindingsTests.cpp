// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/linux/sway/ConfiguredBindings.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::ConfiguredBindings;

using Modifiers = std::set<std::string>;

std::optional<std::string> altSpaceIn(const std::string& text) {
    return ConfiguredBindings(text, "/nowhere/config").commandOfSpace(Modifiers{"mod1"});
}

TEST(SwayConfiguration, NamesTheCommandOfACombination) {
    EXPECT_EQ(altSpaceIn("bindsym Mod1+space exec wofi"), "exec wofi");
    EXPECT_EQ(altSpaceIn("  bindsym   alt+Space  focus mode_toggle \r\n"), "focus mode_toggle");
    EXPECT_EQ(altSpaceIn("bindcode Mod1+65 kill"), "kill");
    EXPECT_EQ(altSpaceIn("bindsym --locked --release Mod1+space kill"), "kill");
    EXPECT_EQ(altSpaceIn("bindsym Group1+Mod1+space kill"), "kill");
    EXPECT_EQ(altSpaceIn("bindsym Mod1+\\\nspace kill"), std::nullopt);
    EXPECT_EQ(altSpaceIn("bindsym \\\n Mod1+space kill"), "kill");
}

TEST(SwayConfiguration, TellsOtherCombinationsApart) {
    EXPECT_EQ(altSpaceIn(""), std::nullopt);
    EXPECT_EQ(altSpaceIn("bindsym Mod4+space kill"), std::nullopt);
    EXPECT_EQ(altSpaceIn("bindsym Mod1+Shift+space kill"), std::nullopt);
    EXPECT_EQ(altSpaceIn("bindsym Mod1+a+space kill"), std::nullopt);
    EXPECT_EQ(altSpaceIn("bindsym Mod1+65 kill"), std::nullopt);
    EXPECT_EQ(altSpaceIn("bindcode Mod1+space kill"), std::nullopt);
    EXPECT_EQ(altSpaceIn("# bindsym Mod1+space kill"), std::nullopt);
    const ConfiguredBindings shifted("bindsym Shift+Mod1+space kill", "/nowhere/config");
    EXPECT_EQ(shifted.commandOfSpace(Modifiers{"mod1", "shift"}), "kill");
}

TEST(SwayConfiguration, FollowsVariables) {
    EXPECT_EQ(altSpaceIn("set $mod Mod1\nset $modifier Mod4\nset $menu exec wofi\n"
                         "bindsym $modifier+space kill\nbindsym $mod+space $menu --show"),
              "exec wofi --show");
    EXPECT_EQ(altSpaceIn("set $a Mod1\nset $b $a+space\nset $a Mod4\nbindsym $b kill"), "kill");
}

TEST(SwayConfiguration, FollowsBlocks) {
    EXPECT_EQ(altSpaceIn("bindsym {\n  Mod1+a nop\n  Mod1+space kill\n}\n"), "kill");
    EXPECT_EQ(altSpaceIn("bindsym --to-code {\n  Mod1+space kill\n}\n"), "kill");
    EXPECT_EQ(altSpaceIn("mode \"default\" {\n  bindsym Mod1+space kill\n}\n"), "kill");
    EXPECT_EQ(altSpaceIn("mode \"resize\" {\n  bindsym Mod1+space kill\n}\n"), std::nullopt);
    EXPECT_EQ(altSpaceIn("mode \"resize\" {\n  bindsym {\n  Mod1+space kill\n  }\n}\n"),
              std::nullopt);
    EXPECT_EQ(altSpaceIn("bar {\n  colors {\n  }\n}\nbindsym Mod1+space kill"), "kill");
    EXPECT_EQ(altSpaceIn("}\n}\nbindsym Mod1+space kill"), "kill");
}

TEST(SwayConfiguration, FollowsIncludedFiles) {
    const TemporaryFolder folder;
    const std::string path = (folder.path() / "config").string();
    std::ofstream(folder.path() / "keys.conf") << "bindsym $mod+space kill\ninclude keys.conf\n";
    EXPECT_EQ(ConfiguredBindings("set $mod Mod1\ninclude *.conf\n", path)
                  .commandOfSpace(Modifiers{"mod1"}),
              "kill");
    EXPECT_EQ(ConfiguredBindings("include " + (folder.path() / "missing").string(), path)
                  .commandOfSpace(Modifiers{"mod1"}),
              std::nullopt);
}

TEST(SwayConfiguration, PassesOverAFolderAmongIncludedFiles) {
    const TemporaryFolder folder;
    const std::string path = (folder.path() / "config").string();
    std::filesystem::create_directory(folder.path() / "a.conf");
    std::ofstream(folder.path() / "b.conf") << "bindsym Mod1+space kill\n";
    EXPECT_EQ(ConfiguredBindings("include *.conf\n", path).commandOfSpace(Modifiers{"mod1"}),
              "kill");
}

}  // namespace

}  // namespace tarvik::tests
