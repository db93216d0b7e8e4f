#include "apps/support/ControlCommands.h"
#include "apps/support/DocumentCommands.h"
#include "apps/support/ExitStatus.h"
#include "apps/support/LightCommands.h"
#include "apps/support/MemoryCommands.h"
#include "apps/support/PickedDevice.h"
#include "apps/support/PlayCommand.h"
#include "apps/support/Program.h"
#include "apps/support/SafeOutput.h"
#include "base/Assert.h"
#include "base/Product.h"
#include "kolib/devices/VirtualLinkSource.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>

namespace {

using namespace corvane;

struct Options {
    DevicePick pick;
    bool debug = false;
};

/// What a command works with: the program's core, its log on the error output.
class Session {
  public:
    explicit Session(const Options& options)
        : program_(RunModes{.DebugMode = options.debug}, doorFor(options)),
          onLine_(program_.debugger.WritingLine.connect(
              [](const std::string& line) { std::cerr << line << '\n'; })) {}

    Program& program() { return program_; }

  private:
    static Program::DeviceDoor doorFor(const Options& options) {
        if (options.pick.any())
            return {};
        return [pick = options.pick](KODevice& devices) {
            return std::make_unique<PickedDevice>(devices, pick);
        };
    }

    Program program_;
    Connection onLine_;
};

/// What the commands do with the documents of a product.
struct ProductCommands {
    const char* className;
    int (*compile)(Program&, const DocumentJob&);
    int (*program)(Program&, const DocumentJob&);
};

// What can't be compiled goes the way of the light programs, which refuses it.
constexpr std::array productCommands{
    ProductCommands{ControlClass::Lumora, CompileLight, ProgramLight},
    ProductCommands{ControlClass::Pactor, CompileRelay, ProgramRelay},
    ProductCommands{ControlClass::EEPROMEditor, CompileLight, ProgramEEPROM},
    ProductCommands{ControlClass::Quillon, CompileLight, ProgramQuillon},
};

/// Those of the light programs for a file of no product.
const ProductCommands& commandsFor(const Program& program, const std::string& file) {
    const std::string className = program.products.ClassOfFile(file);
    const auto* found =
        std::find_if(productCommands.begin(), productCommands.end(),
                     [&](const ProductCommands& row) { return row.className == className; });
    return found == productCommands.end() ? productCommands.front() : *found;
}

int listDevices(const Options& options) {
    constexpr std::int32_t answerTime = 1000; // ms
    Session session({.pick = {}, .debug = options.debug});
    Program& program = session.program();
    const std::uint32_t start = program.clock.now();
    do {
        program.device.EnumerateDevices();
        program.pause();
    } while (program.device.EnumerationPending() &&
             Elapsed(program.clock.now(), start) < answerTime);
    program.device.EnumerateDevices();
    for (int index = 0; index < program.device.GetDeviceCount(); ++index) {
        if (!options.pick.fits(program.device, index))
            continue;
        const DeviceInfo info = program.device.GetDeviceInfo(index);
        std::cout << index;
        for (const std::string* text :
             {&info.Description, &info.Manufacturer, &info.ManufacturerID, &info.SerialNumber})
            std::cout << '\t' << InOneField(*text);
        std::cout << '\n';
    }
    return ExitStatus::Done;
}

void tellOfHiddenLinks() {
    const std::string problem = VirtualLinkSource::ProblemWith(VirtualLinkSource::userFolder());
    if (!problem.empty())
        static_cast<void>(Fail(problem));
}

int identify(const Options& options) {
    Session session(options);
    Program& program = session.program();
    const JobOutcome reached = ReachAny(program);
    const AttachedProduct product = program.link.Product();
    program.link.DisconnectAndBlock(false);
    if (!reached.done())
        return Report(reached);
    if (product.profile == nullptr)
        return Fail("Unrecognized product.");
    std::cout << product.profile->Name << '\t' << product.deviceType.ToString() << '\t'
              << product.firmwareVersion.ToString() << '\n';
    return ExitStatus::Done;
}

} // namespace

int main(int argc, char** argv) {
    const SafeOutput output(std::cout);
    const SafeOutput errors(std::cerr);
    Options options;
    int result = ExitStatus::Done;
    std::string file;
    std::string target;
    std::string deviceType = "1.2";
    PlaySetup playing;
    bool yes = false;
    bool no = false;
    int address = 0;
    int length = 0;
    std::size_t slot = 1;
    std::vector<int> bytes;

    CLI::App app("Works with Corvane links and the products behind them, for scripts and "
                 "production benches.");
    app.set_version_flag("--version", std::string("corvanectl ") + ProgramVersion);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--device", options.pick.index,
                   "Index of the link to use, as 'devices' lists it")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--serial", options.pick.serial, "Serial number of the link to use");
    app.add_flag("--debug", options.debug, "Write the log of the link to the error output");
    app.footer("Exit status: 0 done, 1 failed with the reason on the error output, 2 wrong usage.");

    app.add_subcommand("devices", "List the links that are plugged in: index, description, "
                                  "manufacturer, manufacturer ID, serial number")
        ->callback([&] {
            result = listDevices(options);
            tellOfHiddenLinks();
        });
    app.add_subcommand("identify", "Print name, device type and firmware of the product")
        ->callback([&] { result = identify(options); });

    CLI::App* check = app.add_subcommand(
        "check", "Open a document and print its type, version, number of changes, position and "
                 "stop point");
    check->add_option("FILE", file)->required();
    check->callback([&] { result = CheckDocument(Session(options).program(), file); });
    CLI::App* convert = app.add_subcommand("convert", "Open a document and save it as another");
    convert->add_option("IN", file)->required();
    convert->add_option("OUT", target)->required();
    convert->callback([&] { result = ConvertDocument(Session(options).program(), file, target); });

    CLI::App* recover = app.add_subcommand(
        "recover", "List the journals of programs that did not close properly: name, type, number "
                   "of changes, file. With a name: save what was lost as a document");
    CLI::Option* journalName = recover->add_option("NAME", file);
    recover->add_option("OUT", target)->needs(journalName);
    recover->callback([&] {
        if (!file.empty() && target.empty())
            throw CLI::RequiredError("OUT");
        Session session(options);
        result = file.empty() ? ListLostDocuments(session.program())
                              : RecoverDocument(session.program(), file, target);
    });

    const auto answer = [&] { return yes || no ? std::optional(yes) : std::nullopt; };
    const auto addAnswers = [&](CLI::App* command) {
        CLI::Option* saysYes = command->add_flag("--yes", yes, "Answer questions with Yes");
        command->add_flag("--no", no, "Answer questions with No")->excludes(saysYes);
    };
    CLI::App* compile = app.add_subcommand(
        "compile", "Print the bytes that a light program or a relay file is for the product");
    compile->add_option("FILE", file)->required();
    compile->add_option("--device", deviceType, "Device type of the controller")
        ->check(CLI::IsMember({"1.1", "1.2"}))
        ->capture_default_str();
    compile->add_option("-o", target, "Write raw bytes to a file (1.1: the lines)");
    addAnswers(compile);
    compile->callback([&] {
        Session session(options);
        result = commandsFor(session.program(), file)
                     .compile(session.program(), {file, target, deviceType == "1.1", answer()});
    });
    CLI::App* programming =
        app.add_subcommand("program", "Put a document into the product on the link, and verify it");
    programming->add_option("FILE", file)->required();
    programming->add_option("--slot", slot, "Which program of a Quillon it becomes")
        ->check(CLI::Range(1, 2))
        ->capture_default_str();
    addAnswers(programming);
    programming->callback([&] {
        Session session(options);
        result = commandsFor(session.program(), file)
                     .program(session.program(), {file, {}, false, answer(), slot - 1});
    });
    CLI::App* readingSettings =
        app.add_subcommand("read-settings", "Read the product on the link into a document");
    readingSettings->require_subcommand(1);
    CLI::App* readingRelay =
        readingSettings->add_subcommand("relay", "Save what is in the relay as a document");
    readingRelay->add_option("OUT", target)->required();
    readingRelay->callback([&] { result = ReadRelay(Session(options).program(), target); });
    CLI::App* readingEEPROM = readingSettings->add_subcommand(
        "eeprom", "Read the values of a document's variables, and save it as another");
    readingEEPROM->add_option("IN", file)->required();
    readingEEPROM->add_option("OUT", target)->required();
    readingEEPROM->callback([&] { result = ReadEEPROM(Session(options).program(), file, target); });
    CLI::App* play = app.add_subcommand(
        "play", "Print the brightness that a light program gives on six channels over time");
    play->add_option("FILE", file)->required();
    play->add_option("--seconds", playing.seconds, "How long")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    play->add_option("--step", playing.step, "Milliseconds from line to line")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    play->add_option_function<std::string>(
        "--stick",
        [&](const std::string& text) {
            const auto moves = ParseStick(text);
            if (!moves)
                throw CLI::ValidationError("--stick", "'" + text + "' is not P[,T:P...]");
            playing.stick = *moves;
        },
        "Stick position in percent, and positions from times in seconds: P[,T:P...]");
    play->add_flag("--no-signal", playing.noSignal, "Without a signal from the transmitter");
    play->add_flag("--hysteresis", playing.hysteresis, "With the hysteresis of each channel");
    play->add_option("--png", playing.png, "Draw it into this file");
    play->callback([&] { result = PlayLight(Session(options).program(), file, playing); });
    constexpr int lastAddress = 65535;
    CLI::App* reading = app.add_subcommand("read", "Print bytes of the product's EEPROM");
    reading->add_option("ADDRESS", address)->required()->check(CLI::Range(0, lastAddress));
    reading->add_option("LENGTH", length)->required()->check(CLI::Range(1, lastAddress + 1));
    // The product would go on at its first byte.
    const auto requireEnd = [](const char* what, int start, std::size_t count) {
        if (static_cast<std::size_t>(start) + count > lastAddress + 1)
            throw CLI::ValidationError(what, "Some of these bytes would lie beyond address " +
                                                 std::to_string(lastAddress));
    };
    reading->callback([&] {
        requireEnd("LENGTH", address, static_cast<std::size_t>(length));
        result = ReadMemory(Session(options).program(), address, length);
    });
    CLI::App* writing =
        app.add_subcommand("write", "Write bytes into the product's EEPROM, and verify them");
    writing->add_option("ADDRESS", address)->required()->check(CLI::Range(0, lastAddress));
    writing->add_option("BYTE", bytes)->required()->check(CLI::Range(0, 255));
    writing->callback([&] {
        requireEnd("BYTE", address, bytes.size());
        result = WriteMemory(Session(options).program(), address, bytes);
    });

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitStatus::Done : ExitStatus::WrongUsage;
    } catch (const AssertionFailed& failure) {
        // Caught so that the link is let go on this way out as well.
        return Fail(failure.what());
    }
    return result;
}
