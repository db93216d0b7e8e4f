#pragma once

#include "bench/Firmware.h"

#include <memory>
#include <string>

struct termios;

namespace corvane::bench {

class VirtualLink;

/// Shows a product's outputs in the terminal, live, and takes keys for what happens to it. Where
/// the output is no terminal it writes a line whenever one changes.
class OutputScreen {
  public:
    /// The link must have outputs and outlive the screen.
    explicit OutputScreen(VirtualLink& link);
    ~OutputScreen();
    OutputScreen(const OutputScreen&) = delete;
    OutputScreen& operator=(const OutputScreen&) = delete;

    /// To be watched for keys; -1 if there is no keyboard.
    [[nodiscard]] int keyboard() const { return keyboard_; }
    /// Acts on the keys that are waiting. False if the person wants to end it.
    [[nodiscard]] bool readKeys(Time now);
    /// Draws if it is time to and something has changed.
    void draw(Time now);
    [[nodiscard]] Time nextDrawing() const { return nextDrawing_; }

  private:
    [[nodiscard]] bool act(char key, Time now);
    [[nodiscard]] std::string picture(const std::vector<Output>& outputs) const;

    VirtualLink& link_;
    Outputs& outputs_;
    bool terminal_;
    int keyboard_ = -1;
    std::unique_ptr<termios> usual_; // how the keyboard was before
    std::string shown_;
    Time nextDrawing_{0};
};

} // namespace corvane::bench
