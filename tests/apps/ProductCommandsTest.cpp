#include "support/BenchProgram.h"

#include <map>
#include <sstream>

namespace corvane {
namespace {

TEST_F(BenchProgram, ChecksAndConvertsDocuments) {
    const std::string light = "Lumora\t2\t1\t0\t1\nLumoraTrackInsert\t1\t0\t1\t50\t0.5\n"
                              "LumoraTime\t1\t0\t1\t.5\t.6\n";
    const std::string file = folder.file("a.lumora", light);
    EXPECT_EQ(ctl({"check", file}).output,
              "type\tLumora\nversion\t1\nchanges\t2\nposition\t1\nstop point\t0\n");
    EXPECT_EQ(ctl({"convert", file, folder.path() / "b.lumora"}).status, 0);
    EXPECT_EQ(folder.content("b.lumora"), "Lumora\t2\t1\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.5\n"
                                          "LumoraTime\t1\t0\t1\t.5\t.6\n");
    const std::string pwm =
        folder.file("a.Quillon", "Quillon\t2\t1\t0\t1\r\nQuillonPWM\t 7 \r\nQuillonPWM\t255\r\n");
    EXPECT_EQ(ctl({"convert", pwm, folder.path() / "b.Quillon"}, "corvanectl-rq").status, 0);
    EXPECT_EQ(folder.content("b.Quillon"), "Quillon\t2\t1\t0\t1\nQuillonPWM\t7\nQuillonPWM\t255\n");
    const std::vector<std::pair<std::vector<std::string>, std::string>> failures{
        {{"check", "a.Quillon"}, "corvanectl: No product owns files like a.Quillon.\n"},
        {{"check", folder.path() / "none.lumora"}, "corvanectl: File not found.\n"},
        {{"check", folder.file("c.lumora", "?")},
         "corvanectl: Can't understand the file format.\n"},
        {{"check", folder.file("d.lumora", "Lumora\t0\t0\t0\t9\n")},
         "corvanectl: This file was made with a newer version of the program. You will need to get "
         "the new version to view it.\n"},
        {{"convert", file, "/nowhere/b.lumora"}, "corvanectl: Can't save the file.\n"},
    };
    for (const auto& [arguments, message] : failures) {
        const Ran failing = ctl(arguments);
        EXPECT_EQ(failing.status, 1);
        EXPECT_EQ(failing.errors, message);
        EXPECT_EQ(failing.output, "");
    }
}

TEST_F(BenchProgram, RecoverListsJournalsAndSavesWhatOneHolds) {
    const std::filesystem::path journals = folder.path() / "corvane" / "journals";
    ::setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
    EXPECT_EQ(ctl({"recover"}).output, "");
    std::filesystem::create_directories(journals);
    std::filesystem::permissions(journals, std::filesystem::perms(0700));
    folder.file("corvane/journals/1-1.journal",
                "CorvaneJournal\t1\t/of/a.lumora\t\nLumora\t0\t0\t0\t2\n"
                "Record\tLumoraTrackInsert\t1\t0\t1\t50\t0.5\nUndo\nRedo\nUndo\n");
    folder.file("corvane/journals/1-2.journal.aside", "torn");
    EXPECT_EQ(ctl({"recover"}).output,
              "1-1.journal\tLumora\t1\t/of/a.lumora\n1-2.journal.aside\tunsound\t0\t(new "
              "document)\n");
    const std::string out = folder.path() / "out.lumora";
    EXPECT_EQ(ctl({"recover", "1-1.journal"}).status, 2);
    EXPECT_EQ(ctl({"recover", "1-3.journal", out}).errors,
              "corvanectl: there is no journal 1-3.journal of a program that is gone\n");
    EXPECT_EQ(ctl({"recover", "1-2.journal.aside", out}).errors,
              "corvanectl: Can't understand the file format.\n");
    EXPECT_EQ(ctl({"recover", "1-1.journal", out}).status, 0);
    EXPECT_EQ(folder.content("out.lumora"),
              "Lumora\t1\t0\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.5\n");
    EXPECT_TRUE(std::filesystem::exists(journals / "1-1.journal.aside"));
}

TEST_F(BenchProgram, ProgramsALightControllerThatThenPlaysTheProgram) {
    const std::string memory = folder.path() / "memory";
    const std::string light =
        folder.file("a.lumora", "Lumora\t2\t2\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.2\t2\t0\t.1\n"
                                "LumoraTrackInsert2\t2\t0\t1\t100\t1\tP\t0\n");
    Process bench("corvane-bench", {"lumora-1.2", "--eeprom", memory, "--write-time", "0"});
    waitFor("lumora-1.2");
    EXPECT_EQ(ctl({"program", light}).output, "Programming complete.\n");
    EXPECT_EQ(ctl({"compile", light, "-o", folder.path() / "image"}).status, 0);
    EXPECT_EQ(folder.content("memory").substr(0, 255), folder.content("image"));
    EXPECT_EQ(ctl({"read", "25", "8"}).output, "20 50 10 0 100 0 100 251\n");
    EXPECT_EQ(ctl({"write", "0", "1", "2", "3"}).status, 0);
    EXPECT_EQ(ctl({"read", "0", "4"}).output, "1 2 3 127\n");
    bench.signal(SIGTERM);
    EXPECT_EQ(bench.wait(), 0);
    EXPECT_EQ(
        ctl({"play", folder.path() / "image", "--stick", "80", "--seconds", "0.4", "--step", "100"},
            "corvane-bench")
            .output,
        "seconds,1,2,3,4,5,6\n0.000,50,80,0,0,0,0\n0.100,50,80,0,0,0,0\n"
        "0.200,0,80,0,0,0,0\n0.300,50,80,0,0,0,0\n");
    Process watch("corvane-bench", {"lumora-1.2", "--eeprom", memory, "--watch", "--stick", "80"});
    EXPECT_TRUE(
        eventually([&] { return watch.output().find(" s: 50 80 0") != std::string::npos; }));
}

TEST_F(BenchProgram, PlaysAProgramWithoutAController) {
    const std::string light =
        folder.file("a.lumora", "Lumora\t2\t2\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.2\t2\t0\t.1\n"
                                "LumoraTrackInsert2\t2\t1\t1\t100\t1\tP\t0\n");
    const Ran played = ctl({"play", light, "--seconds", "0.4", "--step", "100", "--stick",
                            "80,0.3:20", "--png", folder.path() / "a.png"});
    EXPECT_EQ(played.status, 0) << played.errors;
    EXPECT_EQ(played.output, "seconds,1,2,3,4,5,6\n0.000,50,0,0,0,0,0\n0.100,50,0,0,0,0,0\n"
                             "0.200,0,0,0,0,0,0\n0.300,0,20,0,0,0,0\n");
    EXPECT_EQ(folder.content("a.png").substr(1, 3), "PNG");
    EXPECT_EQ(ctl({"play", light, "--no-signal", "--seconds", "0.1", "--stick", "20"}).output,
              "seconds,1,2,3,4,5,6\n0.000,50,0,0,0,0,0\n");
    // What plays at a time does not depend on which other times are printed.
    const std::string moves =
        folder.file("b.lumora", "Lumora\t3\t3\t0\t2\nLumoraText\t1\tHysteresis\t2\t10\n"
                                "LumoraTrackInsert\t1\t0\t1\t50\t.1\t2\t70\t.1\t3\t90\t.1\n"
                                "LumoraTrackInsert\t1\t1\t1\t10\t.07\t2\t20\t.07\n");
    std::map<std::string, std::string> rows; // by time
    for (const char* step : {"1", "7", "10", "40"}) {
        std::istringstream lines(ctl({"play", moves, "--hysteresis", "--seconds", "1.5", "--stick",
                                      "55,0.333:30,0.801:90", "--step", step})
                                     .output);
        for (std::string line; std::getline(lines, line);) {
            const std::string time = line.substr(0, line.find(','));
            EXPECT_EQ(rows.emplace(time, line).first->second, line) << step;
        }
    }
    EXPECT_EQ(rows["0.000"], "0.000,50,0,0,0,0,0"); // the stick comes from nowhere
    EXPECT_EQ(rows["0.300"], "0.300,50,0,0,0,0,0");
    EXPECT_EQ(rows["0.333"], "0.333,10,0,0,0,0,0");
    EXPECT_EQ(rows["0.403"], "0.403,20,0,0,0,0,0");
    for (const char* stick : {"101", "x", "50,60", "1:50", "50,2:10,1:20", ""})
        EXPECT_EQ(ctl({"play", light, "--stick", stick}).status, 2) << stick;
}

TEST_F(BenchProgram, AsksAboutTheOlderControllerOnlyWhenItMust) {
    const std::string plain =
        folder.file("a.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.2\n");
    EXPECT_EQ(ctl({"compile", "--device", "1.1", plain}).output.substr(0, 17),
              "6: 255\n5: 0 20 50");
    const std::string advanced =
        folder.file("b.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t100\t1\tP\t0\n");
    for (const auto& [words, status] : {std::pair(std::vector<std::string>{"1.1"}, 1),
                                        {{"1.1", "--no"}, 1},
                                        {{"1.1", "--yes"}, 0},
                                        {{"1.3"}, 2},
                                        {{"1.1", "--yes", "--no"}, 2}}) {
        std::vector<std::string> arguments{"compile", advanced, "--device"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        EXPECT_EQ(ctl(arguments).status, status) << words.back();
    }
    std::string many = "Lumora\t1\t1\t0\t2\nLumoraTrackInsert\t1\t0";
    for (int i = 1; i <= 96; ++i)
        many += "\t" + std::to_string(i) + "\t50\t.2";
    const Ran large = ctl({"compile", folder.file("c.lumora", many + "\n")});
    EXPECT_EQ(large.status, 1);
    EXPECT_EQ(large.errors, "corvanectl: The Lumora controller can only hold 106 segments. The "
                            "program needs 107.\n");
}

TEST_F(BenchProgram, ProgramsARelayThatThenSwitchesAndReadsItBack) {
    const std::string file = folder.file(
        "a.relay",
        "Pactor\t2\t2\t0\t1\nPactorText\t0\tTrip Point\t50\t30\nPactorText\t1\tRelay\t\tON\n");
    EXPECT_EQ(ctl({"compile", file}).output, "76 0 1 0 1 1 0\n");
    Process bench("corvane-bench", {"pactor-3.1", "--watch", "--stick", "20"});
    waitFor("pactor-3.1");
    EXPECT_EQ(ctl({"program", file}).output, "Programmed.\n");
    EXPECT_TRUE(eventually([&] { return bench.output().find(" s: off on") != std::string::npos; }));
    EXPECT_EQ(ctl({"read-settings", "relay", folder.path() / "b.relay"}).status, 0);
    EXPECT_EQ(folder.content("b.relay"), folder.content("a.relay"));
}

TEST_F(BenchProgram, ProgramsVariablesAndReadsThemBack) {
    const std::string file = folder.file(
        "a.ko_eeprom", "KOEEPROM\t2\t2\t0\t1\nKOEEPROMListAdd\t1\t65535\t1\tlast\t07\tHex\n"
                       "KOEEPROMListAdd\t2\t0\t2\t\t01\t\n");
    const Ran unplugged = ctl({"program", file});
    EXPECT_EQ(unplugged.status, 1);
    EXPECT_EQ(unplugged.errors, "corvanectl: No Corvane is connected. Plug in a Corvane link, then "
                                "try again.\n");
    Process bench("corvane-bench", {"eeprom", "--size", "65536"});
    waitFor("eeprom");
    const Ran asked = ctl({"program", file}); // No, where there is nobody to ask
    EXPECT_EQ(asked.status, 0);
    EXPECT_EQ(asked.errors, "corvanectl: address 0: 1 bytes supplied in a 2 byte field. Pad the "
                            "end with zeros?\n");
    EXPECT_EQ(ctl({"read", "65535", "1"}).output, "7\n");
    for (const auto& beyond : {std::vector<std::string>{"write", "65535", "9", "9"},
                               {"read", "65535", "2"},
                               {"read", "1", "65536"}}) {
        const Ran refused = ctl(beyond); // the product would go on at its first byte
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.errors.find("beyond address 65535"), std::string::npos);
        EXPECT_EQ(refused.output, "");
    }
    EXPECT_EQ(ctl({"read", "0", "2"}).output, "1 255\n");
    EXPECT_EQ(ctl({"program", file, "--yes"}).output, "Programmed.\n");
    EXPECT_EQ(ctl({"read-settings", "eeprom", file, folder.path() / "b.ko_eeprom"}).status, 0);
    EXPECT_EQ(folder.content("b.ko_eeprom"),
              "KOEEPROM\t3\t3\t0\t1\nKOEEPROMListAdd\t1\t65535\t1\tlast\t07\tHex\n"
              "KOEEPROMListAdd\t2\t0\t2\t\t01\t\nKOEEPROMText\t2\tData Value\t01\t0100\n");
    EXPECT_EQ(ctl({"read-settings", "toaster", "x"}).status, 2);
}

} // namespace
} // namespace corvane
