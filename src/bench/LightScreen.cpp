#include "bench/LightScreen.h"

#include "bench/VirtualLink.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace corvane::bench {

namespace {

constexpr Time DrawingInterval = std::chrono::milliseconds(40);
constexpr int StickStep = 5;     // percent
constexpr int BarLength = 50;    // characters
constexpr int FullCurrent = 250; // mA

std::string filled(int length, const char* with) {
    std::string text;
    for (int i = 0; i < length; ++i)
        text += with;
    return text;
}

} // namespace

LightScreen::LightScreen(VirtualLink& link)
    : link_(link), lights_(*link.lights()), terminal_(::isatty(STDOUT_FILENO) != 0) {
    // A program in the background must not touch the keyboard.
    if (::isatty(STDIN_FILENO) == 0 || ::tcgetpgrp(STDIN_FILENO) != ::getpgrp())
        return;
    usual_ = std::make_unique<termios>();
    ::tcgetattr(STDIN_FILENO, usual_.get());
    termios raw = *usual_;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    ::tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    keyboard_ = STDIN_FILENO;
}

LightScreen::~LightScreen() {
    if (usual_)
        ::tcsetattr(STDIN_FILENO, TCSANOW, usual_.get());
    if (terminal_)
        std::fputs("\n", stdout);
}

bool LightScreen::readKeys(Time now) {
    std::array<char, 64> keys;
    const ssize_t count = ::read(keyboard_, keys.data(), keys.size());
    if (count <= 0) {
        keyboard_ = -1; // it has gone away
        return true;
    }
    for (ssize_t i = 0; i < count; ++i) {
        // Arrows come as three characters.
        const bool arrow = keys[static_cast<std::size_t>(i)] == '\x1b' && i + 2 < count;
        if (arrow)
            i += 2;
        const char key = keys[static_cast<std::size_t>(i)];
        if (!act(arrow && key == 'A' ? '+' : arrow && key == 'B' ? '-' : key, now))
            return false;
    }
    nextDrawing_ = now;
    return true;
}

bool LightScreen::act(char key, Time now) {
    switch (key) {
    case '+':
        lights_.setStick(lights_.stick() + StickStep, now);
        return true;
    case '-':
        lights_.setStick(lights_.stick() - StickStep, now);
        return true;
    case 's':
        lights_.setSignal(!lights_.signal(), now);
        return true;
    case 'p':
        link_.powerCycle();
        return true;
    case 'q':
        return false;
    default:
        return true;
    }
}

void LightScreen::draw(Time now) {
    if (now < nextDrawing_)
        return;
    nextDrawing_ = now + DrawingInterval;
    const Currents currents = lights_.currents(now);
    std::string text = terminal_ ? picture(currents) : line(currents, {});
    if (text == shown_)
        return;
    if (!terminal_)
        std::printf("%s\n", line(currents, now).c_str());
    else
        std::printf("%s%s", shown_.empty() ? "" : "\x1b[8F", text.c_str());
    std::fflush(stdout);
    shown_ = std::move(text);
}

std::string LightScreen::picture(const Currents& currents) const {
    std::string text;
    for (std::size_t c = 0; c < currents.size(); ++c) {
        const int length =
            std::min(BarLength, (currents[c] * BarLength + FullCurrent - 1) / FullCurrent);
        std::array<char, 32> value{};
        std::snprintf(value.data(), value.size(), " %3d mA\x1b[K\n", currents[c]);
        text += "Channel " + std::to_string(c + 1) + " " + filled(length, "█") +
                filled(BarLength - length, "·") + value.data();
    }
    text += "Stick " + std::to_string(lights_.stick()) + "%, " +
            (lights_.signal() ? "signal" : "no signal") + "\x1b[K\n";
    text += "Up, Down: stick   s: signal   p: power   q: end\x1b[K\n";
    return text;
}

std::string LightScreen::line(const Currents& currents, Time now) const {
    std::array<char, 32> time{};
    if (now != Time{})
        std::snprintf(time.data(), time.size(),
                      "%.2f s:", std::chrono::duration<double>(now).count());
    std::string text = time.data();
    for (const int current : currents)
        text += " " + std::to_string(current);
    return text;
}

} // namespace corvane::bench
