#include "bench/OutputScreen.h"

#include "bench/VirtualLink.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace corvane::bench {

namespace {

constexpr Time DrawingInterval = std::chrono::milliseconds(40);
constexpr int StickStep = 5;  // percent
constexpr int BarLength = 50; // characters
constexpr std::size_t NameWidth = 10;

std::string filled(int length, const char* with) {
    std::string text;
    for (int i = 0; i < length; ++i)
        text += with;
    return text;
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string values(const std::vector<Output>& outputs) {
    std::string text;
    for (const Output& output : outputs)
        text += " " + output.text;
    return text;
}

/// Moves the cursor to the beginning of what has been drawn.
std::string upOver(const std::string& drawn) {
    return "\x1b[" + std::to_string(std::count(drawn.begin(), drawn.end(), '\n')) + "F";
}

} // namespace

OutputScreen::OutputScreen(VirtualLink& link)
    : link_(link), outputs_(*link.outputs()), terminal_(::isatty(STDOUT_FILENO) != 0) {
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

OutputScreen::~OutputScreen() {
    if (usual_)
        ::tcsetattr(STDIN_FILENO, TCSANOW, usual_.get());
    if (terminal_)
        std::fputs("\n", stdout);
}

bool OutputScreen::readKeys(Time now) {
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

bool OutputScreen::act(char key, Time now) {
    switch (key) {
    case '+':
        outputs_.setStick(outputs_.stick() + StickStep, now);
        return true;
    case '-':
        outputs_.setStick(outputs_.stick() - StickStep, now);
        return true;
    case 's':
        outputs_.setSignal(!outputs_.signal(), now);
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

void OutputScreen::draw(Time now) {
    if (now < nextDrawing_)
        return;
    nextDrawing_ = now + DrawingInterval;
    const std::vector<Output> outputs = outputs_.at(now);
    std::string text = terminal_ ? picture(outputs) : values(outputs);
    if (text == shown_)
        return;
    if (terminal_)
        std::printf("%s%s", shown_.empty() ? "" : upOver(shown_).c_str(), text.c_str());
    else
        std::printf("%.2f s:%s\n", std::chrono::duration<double>(now).count(), text.c_str());
    std::fflush(stdout);
    shown_ = std::move(text);
}

std::string OutputScreen::picture(const std::vector<Output>& outputs) const {
    std::string text;
    for (const Output& output : outputs) {
        const int length = std::min(BarLength, (output.level * BarLength + output.fullLevel - 1) /
                                                   output.fullLevel);
        text += padded(output.name, NameWidth) + filled(length, "█") +
                filled(BarLength - length, "·") + " " + padded(output.text, 3) + output.unit +
                "\x1b[K\n";
    }
    text += "Stick " + std::to_string(outputs_.stick()) + "%, " +
            (outputs_.signal() ? "signal" : "no signal") + "\x1b[K\n";
    text += "Up, Down: stick   s: signal   p: power   q: end\x1b[K\n";
    return text;
}

} // namespace corvane::bench
