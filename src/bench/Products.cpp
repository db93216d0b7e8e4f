#include "bench/Products.h"

#include "bench/LumoraFirmware.h"
#include "bench/PactorFirmware.h"
#include "bench/QuillonFirmware.h"

#include <algorithm>
#include <array>

namespace corvane::bench {

namespace {

constexpr std::string_view Blank = "blank";
constexpr std::string_view Silent = "silent";

const LinkStrings programmedLink{"Corvane", "Ortaline Works", "KO", "KO0000001"};
const LinkStrings stockChip{"FT232R USB UART", "FTDI", "FT", "FT0000001"};

template<class Product>
std::optional<Bench> withMemory(std::unique_ptr<Product> product, const Setup& setup,
                                std::string& error) {
    if (!setup.eepromFile.empty() && !product->keepIn(setup.eepromFile)) {
        error = "The memory file '" + setup.eepromFile.string() + "' can't be read and written.";
        return std::nullopt;
    }
    if (Outputs* outputs = product->outputs()) {
        outputs->setStick(setup.stick, Time{0});
        outputs->setSignal(setup.signal, Time{0});
    }
    return Bench{programmedLink, std::move(product)};
}

template<class Product>
std::optional<Bench> make(const Identity& identity, const Setup& setup, std::string& error) {
    if constexpr (std::is_constructible_v<Product, Identity, Time>)
        return withMemory(std::make_unique<Product>(identity, setup.writeTime), setup, error);
    else
        return withMemory(std::make_unique<Product>(identity), setup, error);
}

std::optional<Bench> makeEeprom(const Identity& identity, const Setup& setup, std::string& error) {
    const auto fault = EepromService::parse(setup.misbehaviour);
    if (!fault) {
        error = "'" + setup.misbehaviour + "' is nothing that an eeprom does wrong.";
        return std::nullopt;
    }
    return withMemory(
        std::make_unique<MemoryFirmware>(identity, setup.eepromSize, setup.writeTime, *fault),
        setup, error);
}

std::optional<Bench> makeQuillon(const Identity& identity, const Setup& setup, std::string& error) {
    const auto misbehaviour = QuillonFirmware::parse(setup.misbehaviour);
    if (!misbehaviour) {
        error = "'" + setup.misbehaviour + "' is nothing that a quillon does wrong.";
        return std::nullopt;
    }
    return withMemory(std::make_unique<QuillonFirmware>(identity, *misbehaviour), setup, error);
}

struct Row {
    std::string_view name;
    std::uint8_t major;
    std::uint8_t minor;
    std::optional<Bench> (*make)(const Identity&, const Setup&, std::string& error);
};

constexpr std::array products{
    Row{"lumora-1.1", 1, 1, make<OlderLumora>},
    Row{"lumora-1.2", 1, 2, make<NewerLumora>},
    Row{"pactor-2.1", 2, 1, make<PactorFirmware>},
    Row{"pactor-3.1", 3, 1, make<PactorFirmware>},
    Row{"eeprom", 255, 1, makeEeprom},
    Row{"quillon", 100, 1, makeQuillon},
};

} // namespace

const std::vector<std::string_view>& productNames() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> all;
        all.reserve(products.size() + 2);
        for (const Row& row : products)
            all.push_back(row.name);
        all.push_back(Blank);
        all.push_back(Silent);
        return all;
    }();
    return names;
}

std::optional<Bench> makeBench(std::string_view product, const Setup& setup, std::string& error) {
    if (product == Blank)
        return Bench{stockChip, nullptr};
    if (product == Silent)
        return Bench{programmedLink, nullptr};
    const auto row = std::find_if(products.begin(), products.end(),
                                  [&](const Row& candidate) { return candidate.name == product; });
    if (row == products.end()) {
        error = "There is no product '" + std::string(product) + "'.";
        return std::nullopt;
    }
    const Identity identity{row->major, row->minor, setup.firmwareMajor, setup.firmwareMinor};
    return row->make(identity, setup, error);
}

} // namespace corvane::bench
