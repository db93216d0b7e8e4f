#include "shell/Startup.h"

#include "base/Product.h"
#include "link/KOCommLink.h"
#include "system/File.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace corvane {
namespace {

TEST(CommandLine, KnowsItsOptionsInAnyCase) {
    EXPECT_TRUE(ReadCommandLine("-debug").modes.DebugMode);
    EXPECT_TRUE(ReadCommandLine("-DEBUG2").modes.DebugMode);
    EXPECT_TRUE(ReadCommandLine("-program").modes.ProgramMode);
    EXPECT_FALSE(ReadCommandLine("-program").modes.ProgramAnyDevice);
    EXPECT_TRUE(ReadCommandLine("-Program2").modes.ProgramMode);
    EXPECT_TRUE(ReadCommandLine("-program2").modes.ProgramAnyDevice);
    EXPECT_TRUE(ReadCommandLine("-eeprom").modes.EEPROMMode);
    EXPECT_TRUE(ReadCommandLine("-register").registerOnly);
    for (const char* option : {"-debug", "-slow", "-program2", "-register"})
        EXPECT_EQ(ReadCommandLine(option).fileToOpen, "") << option;
}

TEST(CommandLine, AnythingElseIsAFile) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"-debug -program", "-debug -program"},
        {" -debug", "-debug"},
        {"Night Flight.lumora", "Night Flight.lumora"},
        {"\"Night Flight.lumora\"", "Night Flight.lumora"},
        {"\" padded \"", "padded"},
        {"\"", "\""},
        {"\"\"", ""},
        {"   ", ""},
        {"", ""},
        {"./sub//x.lumora", "sub/x.lumora"},
        {"../x.lumora", "../x.lumora"},
    };
    for (const auto& [line, file] : cases) {
        const Launch launch = ReadCommandLine(line);
        // Whoever sees the name next may have another working folder.
        EXPECT_EQ(launch.fileToOpen,
                  file.empty() ? file : (std::filesystem::current_path() / file).string())
            << line;
        EXPECT_FALSE(launch.modes.DebugMode);
    }
}

TEST(CommandLine, TellsOfItself) {
    EXPECT_EQ(ReadCommandLine("--version").toTell, std::string("Corvane ") + ProgramVersion + "\n");
    const std::string help = ReadCommandLine("--HELP").toTell;
    for (const char* option :
         {"-program", "-program2", "-eeprom", "-debug", "-register", "--help", "--version"})
        EXPECT_NE(help.find(std::string("\n  ") + option + " "), std::string::npos) << option;
    EXPECT_EQ(ReadCommandLine("--help").fileToOpen, "");
}

TEST(CommandLine, DecidesTheFirstControl) {
    const RunModes modes;
    const KODebug debug(modes);
    const KOProductList products("KO", debug);
    const auto ofModes = [](const char* line) { return StartClass(ReadCommandLine(line).modes); };
    const auto ofFile = [&](const char* line) {
        return products.ClassOfFile(ReadCommandLine(line).fileToOpen);
    };
    EXPECT_EQ(ofModes(""), "Corvane.LumoraControl");
    EXPECT_EQ(ofModes("-program2"), "Corvane.DefaultControl");
    EXPECT_EQ(ofModes("-eeprom"), "Corvane.EEPROMEditorControl");
    EXPECT_EQ(ofFile("/home/me/a.RELAY"), "Corvane.PactorControl");
    EXPECT_EQ(ofFile("C:\\a.b\\x.ko_eeprom"), "Corvane.EEPROMEditorControl");
    EXPECT_EQ(ofFile("notes.txt"), "");
    EXPECT_EQ(StartClass({.ProgramMode = true, .EEPROMMode = true}), "Corvane.EEPROMEditorControl");
}

TEST(File, ComesApartAtEitherSeparator) {
    const File file("/home/me.old\\dir/night.flight.lumora");
    EXPECT_EQ(file.Directory(), "/home/me.old\\dir/");
    EXPECT_EQ(file.filename(), "night.flight.lumora");
    EXPECT_EQ(file.Extension(), "lumora");
    EXPECT_EQ(KOIOExtension("C:\\a.b\\name"), "");
    EXPECT_EQ(KOIOExtension("/a.b/name"), "");
    EXPECT_EQ(KOIODirectory("name"), "");
    EXPECT_EQ(KOIOFilename("name"), "name");
    EXPECT_EQ(KOIOExtension("name."), "");
}

} // namespace
} // namespace corvane
