#include "shell/Startup.h"
#include "support/TemporaryFolder.h"
#include "system/DesktopFiles.h"
#include "system/DiskFiles.h"
#include "system/Programs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvane {
namespace {

using testing::HasSubstr;

class FileTypes : public testing::Test {
  protected:
    TemporaryFolder folder;
    DiskFiles files;
    SettingsStore store{folder.path() / "config", files};
    const RunModes modes{};
    const KODebug debug{modes};
    const KOProductList products{"KO", debug};
    DesktopProgram program{"/opt/corvane",
                           "<svg/>",
                           {{"relay", "Relay File", "relay", true, "<svg>r</svg>"},
                            {"memory", "Memory File", "memory", false, "<svg>m</svg>"}}};
    const std::filesystem::path share = folder.path() / "share";
    DesktopFiles desktop{share, files};
};

TEST_F(FileTypes, EachProductThatIsMeantToHasItsKeys) {
    RegisterAllFileAssociations(products, store);
    const auto current = [this](const std::string& path) {
        RegistryKey key(store);
        return key.OpenKey(RegistryRoot::CurrentUser, "Software\\Classes\\" + path, true)
                   ? key.Strings({})
                   : "no such key";
    };
    EXPECT_EQ(current(".lumora"), "Corvane.Lumora");
    EXPECT_EQ(current("Corvane.Lumora"), "Lumora File");
    EXPECT_EQ(current("Corvane.Lumora\\shell\\open\\command"),
              "\"" + KOIOExecutablePath() + "\" \"%1\"");
    EXPECT_EQ(current(".RELAY"), "Corvane.Pactor");
    EXPECT_EQ(current(".ko_eeprom"), "no such key");

    // What stands already is not written again.
    const auto written = std::filesystem::last_write_time(store.file());
    RegisterAllFileAssociations(products, store);
    EXPECT_EQ(std::filesystem::last_write_time(store.file()), written);
}

TEST_F(FileTypes, DesktopsGetAnEntryTypesAndIcons) {
    EXPECT_TRUE(desktop.Write(program));
    const std::string entry = folder.content("share/applications/example.ortaline.Corvane.desktop");
    EXPECT_THAT(entry, HasSubstr("\nExec=\"/opt/corvane\" %f\n"));
    EXPECT_THAT(entry, HasSubstr("\nMimeType=application/x-corvane-relay;\n"));
    const std::string types = folder.content("share/mime/packages/corvane.xml");
    EXPECT_THAT(types, HasSubstr("<glob pattern=\"*.memory\"/>"));
    EXPECT_EQ(folder.content("share/icons/hicolor/scalable/mimetypes/"
                             "application-x-corvane-memory.svg"),
              "<svg>m</svg>");
    EXPECT_FALSE(desktop.Write(program)); // nothing has changed

    program.command = R"(/opt/a "$b" 100%\c)";
    EXPECT_TRUE(desktop.Write(program));
    EXPECT_THAT(folder.content("share/applications/example.ortaline.Corvane.desktop"),
                HasSubstr(R"(Exec="/opt/a \\"\\$b\\" 100%%\\\\c" %f)"));

    const std::string own = folder.file("share/mime/packages/own.xml", "the person's");
    EXPECT_TRUE(desktop.Remove(program));
    EXPECT_FALSE(desktop.Remove(program));
    EXPECT_TRUE(std::filesystem::exists(own));
    EXPECT_EQ(folder.content("share/mime/packages/corvane.xml"), "");
}

TEST_F(FileTypes, AnInstalledProgramIsKnown) {
    const char* before = std::getenv("XDG_DATA_DIRS");
    const std::string old = before == nullptr ? "" : before;
    ::setenv("XDG_DATA_DIRS", ("/nowhere:" + share.string()).c_str(), 1);
    const auto installed = folder.path() / "lib/corvane/corvane";
    EXPECT_FALSE(IsInstalledForAll(installed));
    ASSERT_TRUE(desktop.Write(program));
    EXPECT_TRUE(IsInstalledForAll(installed));
    EXPECT_FALSE(IsInstalledForAll("/home/me/build/bin/corvane"));
    ::setenv("XDG_DATA_DIRS", old.c_str(), 1);
}

} // namespace
} // namespace corvane
