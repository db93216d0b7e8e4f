#include "bench/LinkServer.h"
#include "bench/VirtualLink.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>

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

    CLI::App app("A virtual link device with a product behind it, for work without hardware.");
    app.set_version_flag("--version", std::string("corvane-bench " CORVANE_VERSION));
    app.add_option("PRODUCT", product, productHelp())->required();
    app.add_option("--name", name, "Name of the link (default: the product)");
    app.add_option("--firmware", firmware, "Firmware version that it reports")
        ->capture_default_str();
    app.add_option("--eeprom", eepromFile, "File that keeps the product's memory across runs");
    app.add_option("--write-time", writeTime, "Milliseconds that writing one EEPROM byte takes")
        ->check(CLI::Range(0.0, 1000.0))
        ->capture_default_str();
    app.add_option("--baud", baud, "Pace the bytes as a wire of this speed would")
        ->check(CLI::Range(300, 12000000));
    app.add_option("--fault", faultText,
                   "drop=P,corrupt=P,delay=MS,mute-after=N,unplug-after=N for each frame");
    app.add_option("--seed", seed, "Start of the random numbers for the faults")
        ->capture_default_str();
    app.add_flag("--log", logFrames, "Print each frame in words");
    app.footer("SIGUSR1 pulls the plug of the link, and puts it back the next time.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }

    Setup setup;
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
    server.run();
    return 0;
}
