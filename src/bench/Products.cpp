#include "bench/Products.h"

#include "bench/LumoraFirmware.h"

#include <algorithm>
#include <array>

namespace corvane::bench {

namespace {

struct Row {
    std::string_view name;
    std::uint8_t major;
    std::uint8_t minor;
    std::size_t eepromSize; // of the part on a product that is only an EEPROM; 0 for others
};

constexpr std::array products{
    Row{"lumora-1.1", 1, 1, 0},   Row{"lumora-1.2", 1, 2, 0}, Row{"pactor-2.1", 2, 1, 128},
    Row{"pactor-3.1", 3, 1, 128}, Row{"eeprom", 255, 1, 256}, Row{"quillon", 100, 1, 0},
};
constexpr std::string_view Blank = "blank";
constexpr std::string_view Silent = "silent";

const LinkStrings programmedLink{"Corvane", "Ortaline Works", "KO", "KO0000001"};
const LinkStrings stockChip{"FT232R USB UART", "FTDI", "FT", "FT0000001"};

/// A product that knows the session and nothing else.
class PlainProduct : public Firmware {
  public:
    explicit PlainProduct(Identity identity) : identity_(identity) {}

    [[nodiscard]] Identity identity() const override { return identity_; }
    void powerOn(Time) override {}
    void packet(std::uint8_t, ByteView, Time, Reply&) override {}
    void tick(Time, Reply&) override {}
    [[nodiscard]] std::optional<Time> nextTick() const override { return std::nullopt; }

  private:
    Identity identity_;
};

/// A product whose EEPROM can be read and written.
class EepromProduct final : public PlainProduct {
  public:
    EepromProduct(Identity identity, std::size_t size, Time writeTime)
        : PlainProduct(identity), eeprom_(size), service_(eeprom_, writeTime) {}

    [[nodiscard]] bool keepIn(const std::filesystem::path& file) { return eeprom_.keepIn(file); }

    void powerOn(Time) override { service_.powerOff(); }
    void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) override {
        static_cast<void>(service_.packet(channel, data, now, reply));
    }
    void tick(Time now, Reply& reply) override { service_.tick(now, reply); }
    [[nodiscard]] std::optional<Time> nextTick() const override { return service_.nextTick(); }

  private:
    Eeprom eeprom_;
    EepromService service_;
};

template<class Product>
std::optional<Bench> withMemory(std::unique_ptr<Product> product, const Setup& setup,
                                std::string& error) {
    if (!setup.eepromFile.empty() && !product->keepIn(setup.eepromFile)) {
        error = "The memory file '" + setup.eepromFile.string() + "' can't be read and written.";
        return std::nullopt;
    }
    if (LightPlayer* lights = product->lights()) {
        lights->setStick(setup.stick, Time{0});
        lights->setSignal(setup.signal, Time{0});
    }
    return Bench{programmedLink, std::move(product)};
}

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
    if (row->name == "lumora-1.1")
        return withMemory(std::make_unique<OlderLumora>(identity), setup, error);
    if (row->name == "lumora-1.2")
        return withMemory(std::make_unique<NewerLumora>(identity, setup.writeTime), setup, error);
    if (row->eepromSize == 0)
        return Bench{programmedLink, std::make_unique<PlainProduct>(identity)};
    return withMemory(std::make_unique<EepromProduct>(identity, row->eepromSize, setup.writeTime),
                      setup, error);
}

} // namespace corvane::bench
