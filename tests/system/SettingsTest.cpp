#include "support/TemporaryFolder.h"
#include "system/DiskFiles.h"
#include "system/KORegistry.h"
#include "system/UserFolders.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {
namespace {

using Texts = std::vector<std::string>;
constexpr RegistryRoot User = RegistryRoot::CurrentUser;

class Settings : public testing::Test {
  protected:
    TemporaryFolder folder;
    DiskFiles files;
    SettingsStore store{folder.path() / "config" / "corvane", files};
    RegistryKey key{store};
    bool created = false;

    RegistryKey reopened(bool readOnly = true) {
        RegistryKey other(store);
        EXPECT_TRUE(other.OpenKey(User, "Software\\Test", readOnly));
        return other;
    }
};

TEST_F(Settings, KeepValuesOfThreeTypes) {
    EXPECT_FALSE(key.OpenKey(User, "Software\\Test", true));
    ASSERT_TRUE(key.CreateKey(User, "Software\\Test", created));
    EXPECT_TRUE(created);
    key.setIntegers("number", -7);
    key.setStrings("text", "a\ttab and \\");
    key.setStringArrays("texts", {"a", "", "b\nc", ""});
    const RegistryKey other = reopened();
    EXPECT_EQ(other.Integers("NUMBER"), -7); // names mean the same in capitals
    EXPECT_EQ(other.Strings("text"), "a\ttab and \\");
    EXPECT_EQ(other.StringArrays("texts"), (Texts{"a", "", "b\nc", ""}));
    EXPECT_EQ(other.Integers("absent"), 0);
    EXPECT_EQ(other.Integers("text"), 0);
    EXPECT_EQ(other.Strings("number"), "");
    EXPECT_TRUE(key.CreateKey(User, "software\\TEST", created));
    EXPECT_FALSE(created);
    using namespace std::string_literals;
    for (const auto& [written, read] : std::vector<std::pair<Texts, Texts>>{
             {{}, {}}, {{""}, {}}, {{"", ""}, {"", ""}}, {{"a\0b"s, "c"}, {"a", "b", "c"}}}) {
        key.setStringArrays("list", written);
        EXPECT_EQ(key.StringArrays("list"), read);
    }
}

TEST_F(Settings, GoWhenTheyAreDeleted) {
    ASSERT_TRUE(key.CreateKey(User, "Software\\Test", created));
    key.setIntegers("a", 1);
    EXPECT_TRUE(key.DeleteValue("A"));
    EXPECT_FALSE(key.DeleteValue("a"));
    RegistryKey below(store);
    ASSERT_TRUE(below.CreateKey(User, "Software\\Test\\Below", created));
    ASSERT_TRUE(below.CreateKey(User, "Software\\Test2", created));
    EXPECT_TRUE(below.DeleteKey(User, "software\\test"));
    EXPECT_FALSE(below.DeleteKey(User, "Software\\Test"));
    EXPECT_FALSE(key.OpenKey(User, "Software\\Test\\Below", true));
    EXPECT_TRUE(key.OpenKey(User, "Software\\Test2", true));
}

TEST_F(Settings, WhatIsDamagedOrOddCostsThatValueOnly) {
    ASSERT_TRUE(key.CreateKey(User, "Software\\Test", created));
    const std::string good = "key\tHKEY_CURRENT_USER\\\\Software\\\\Test\ntext\ta\tkept\n";
    for (const std::string damage :
         {"integer\tx\n", "integer\ta b\n", "text\tn\t\xFF\n", "what\tis\tthis\n", "text\tb\t\\q\n",
          "key\tone\ttoo many\ninteger\tlost\t1\n"}) {
        std::ofstream(store.file()) << good + damage + good + "integer\tnumber\t7\n";
        EXPECT_EQ(reopened().Strings("a"), "kept") << damage;
        EXPECT_EQ(reopened().Integers("number"), 7) << damage;
        EXPECT_EQ(reopened().Integers("lost"), 0) << damage;
        std::ifstream aside(store.file().parent_path() / "settings.damaged");
        EXPECT_NE(std::string(std::istreambuf_iterator<char>(aside), {}).find(damage),
                  std::string::npos);
        key.setIntegers("a number", 5); // and the damage is gone
        std::filesystem::remove(store.file().parent_path() / "settings.damaged");
        EXPECT_EQ(reopened().Integers("a number"), 5);
        EXPECT_FALSE(std::filesystem::exists(store.file().parent_path() / "settings.damaged"));
    }
}

TEST_F(Settings, ThatCanNotBeWrittenAreNotFatal) {
    std::ofstream(folder.path() / "config") << "a file where the folder should be";
    EXPECT_FALSE(key.CreateKey(User, "Software\\Test", created));
    const KORegistry registry(store);
    EXPECT_FALSE(registry.OpenSettingsForWriting());
}

TEST_F(Settings, TwoProgramsLoseNothingOfEachOther) {
    constexpr int each = 50;
    ASSERT_TRUE(key.CreateKey(User, "Software\\Test", created));
    const pid_t child = ::fork();
    for (int i = 0; i < each; ++i)
        key.setIntegers((child == 0 ? "child" : "parent") + std::to_string(i), i + 1);
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    const RegistryKey both = reopened();
    for (int i = 0; i < each; ++i) {
        EXPECT_EQ(both.Integers("child" + std::to_string(i)), i + 1);
        EXPECT_EQ(both.Integers("parent" + std::to_string(i)), i + 1);
    }
}

TEST_F(Settings, TheOptionAsksForUpdatesUnlessToldNotTo) {
    const KORegistry registry(store);
    const KOOptions options(registry);
    EXPECT_FALSE(options.AutopatchEnabled()); // no settings yet
    EXPECT_TRUE(registry.OpenSettingsForWriting());
    EXPECT_TRUE(options.AutopatchEnabled());
    options.setAutopatchEnabled(false);
    EXPECT_FALSE(options.AutopatchEnabled());
    EXPECT_EQ(registry.OpenSettingsForReading()->Integers("NoAutopatch"), 1);
    struct stat status {};
    ::stat(store.file().parent_path().c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST(UserFolders, FollowTheEnvironment) {
    ::setenv("XDG_CONFIG_HOME", "/somewhere/config", 1);
    EXPECT_EQ(ConfigurationFolder(), "/somewhere/config/corvane");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", "/home/me", 1);
    EXPECT_EQ(ConfigurationFolder(), "/home/me/.config/corvane");
}

} // namespace
} // namespace corvane
