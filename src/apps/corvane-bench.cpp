#include "base/Product.h"
#include "bench/LightPlayer.h"
#include "bench/LinkServer.h"
#include "bench/VirtualLink.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>

namespace {

using namespace corvane::bench;

std::string productHelp() {
    std::string text = "What hangs on the link:";
    for (const std::string_view name : productNames())
        (text += ' ') += name;
    return text;
}

bool parseFirmware(const std::string& text, Setup& setup) {
    unsigned major = 0;
    unsigned minor = 0;
    int end = 0;
    if (std::sscanf(text.c_str(), "%3u.%3u%n", &major, &minor, &end) != 2 ||
        text.size() != static_cast<std::size_t>(end) || major > 255 || minor > 255)
        return false;
    setup.firmwareMajor = static_cast<std::uint8_t>(major);
    setup.firmwareMinor = static_cast<std::uint8_t>(minor);
    return true;
}

struct PlayRequest {
    std::string image;
    int stick = 50;
    bool noSignal = false;
    double seconds = 1;
    int step = 100; // ms
};

/// Prints the currents of a stored image over time, one line a step.
int play(const PlayRequest& request) {
    std::ifstream file(request.image, std::ios::binary);
    const std::vector<char> content((std::istreambuf_iterator<char>(file)), {});
    if (content.size() < ImageLength) {
        std::cerr << "corvane-bench: " << request.image << " is no image of 255 bytes.\n";
        return 1;
    }
    LightPlayer player;
    player.setStick(request.stick, Time{0});
    player.setSignal(!request.noSignal, Time{0});
    player.start(readImage(Bytes(content.begin(), content.end())), Time{0});
    std::cout << "seconds,1,2,3,4,5,6\n";
    const auto end = static_cast<long>(request.seconds * 1000);
    for (long ms = 0; ms < end; ms += request.step) {
        std::printf("%ld.%03ld", ms / 1000, ms % 1000);
        for (const int current : player.currents(std::chrono::milliseconds(ms)))
            std::printf(",%d", current);
        std::printf("\n");
    }
    return 0;
}

int usageError(const std::string& text) {
    std::cerr << "corvane-bench: " << text << '\n';
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    std::string product;
    std::string name;
    std::string firmware = "3.7";
    std::string eepromFile;
    std::string faultText;
    double writeTime = 4;
    int baud = 0;
    unsigned seed = 1;
    bool logFrames = false;
    int stick = 50;
    bool noSignal = false;
    bool watch = false;
    PlayRequest request;
    Setup setup;

    CLI::App app("A virtual link device with a product behind it, for work without hardware.");
    app.set_version_flag("--version", std::string("corvane-bench ") + corvane::ProgramVersion);
    app.add_option("PRODUCT", product, productHelp());
    app.add_option("--name", name, "Name of the link (default: the product)");
    app.add_option("--firmware", firmware, "Firmware version that it reports")
        ->capture_default_str();
    app.add_option("--eeprom", eepromFile, "File that keeps the product's memory across runs");
    app.add_option("--size", setup.eepromSize, "Bytes of memory that the product 'eeprom' has")
        ->check(CLI::Range(1, 65536))
        ->capture_default_str();
    app.add_option(
        "--misbehave", setup.misbehaviour,
        "What a quillon does wrong: wrong-slot, wrong-offset, too-short, too-long, or "
        "silent=CHANNEL for a request from 178 to 184 that it does not answer; or what an "
        "eeprom does wrong when it is read: too-short, too-long, wrong-kind");
    app.add_option("--write-time", writeTime, "Milliseconds that writing one EEPROM byte takes")
        ->check(CLI::Range(0.0, 1000.0))
        ->capture_default_str();
    app.add_option("--baud", baud, "Pace the bytes as a wire of this speed would")
        ->check(CLI::Range(300, 12000000));
    app.add_option("--fault", faultText,
                   "drop=P,corrupt=P,delay=MS,mute-after=N,unplug-after=N for each frame, "
                   "drop-bytes=P,damage-bytes=P for each byte");
    app.add_option("--seed", seed, "Start of the random numbers for the faults")
        ->capture_default_str();
    app.add_option("--stick", stick, "Stick position that the product sees at first, percent")
        ->check(CLI::Range(0, 100))
        ->capture_default_str();
    app.add_flag("--no-signal", noSignal, "It hears no transmitter at first");
    app.add_flag("--watch", watch, "Show its outputs in the terminal, with keys for the stick");
    CLI::App* playing =
        app.add_subcommand("play", "Print the currents that a controller's image gives, in mA");
    playing->add_option("IMAGE", request.image, "File with the 255 bytes")->required();
    playing->add_option("--stick", request.stick, "Stick position, percent")
        ->check(CLI::Range(0, 100))
        ->capture_default_str();
    playing->add_flag("--no-signal", request.noSignal, "Without a signal from the transmitter");
    playing->add_option("--seconds", request.seconds, "How long")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    playing->add_option("--step", request.step, "Milliseconds from line to line")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    app.add_flag("--log", logFrames, "Print each frame in words");
    app.footer("SIGUSR1 pulls the plug of the link, and puts it back the next time.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }

    if (playing->parsed())
        return play(request);
    if (product.empty())
        return usageError("Name a product.\n" + productHelp());
    setup.stick = stick;
    setup.signal = !noSignal;
    setup.eepromFile = eepromFile;
    setup.writeTime = Time(static_cast<std::int64_t>(writeTime * 1000));
    if (!parseFirmware(firmware, setup))
        return usageError("'" + firmware + "' is no firmware version such as 3.7.");
    const std::optional<Faults> faults = parseFaults(faultText);
    if (!faults)
        return usageError("'" + faultText + "' is no list of faults.");
    if (name.find('/') != std::string::npos)
        return usageError("The name of a link holds no slash.");
    std::string error;
    std::optional<Bench> bench = makeBench(product, setup, error);
    if (!bench)
        return usageError(error);

    VirtualLink::Log log;
    if (logFrames)
        log = [](const std::string& line) { std::cout << line << std::endl; };
    VirtualLink link(std::move(*bench), *faults, baud, seed, log);
    LinkServer server(link, LinkServer::userFolder(), name.empty() ? product : name);
    if (const std::string problem = server.start(); !problem.empty()) {
        std::cerr << "corvane-bench: " << problem << '\n';
        return 1;
    }
    std::optional<OutputScreen> screen;
    if (watch && link.outputs() != nullptr)
        server.setScreen(screen.emplace(link));
    server.run();
    return 0;
}
