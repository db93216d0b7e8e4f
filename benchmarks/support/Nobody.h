#pragma once

#include "controls/Dialogs.h"

namespace corvane {

/// Nobody at the screen.
struct Nobody final : Dialogs, BusyPointer {
    Answer Message(const MessageBox&) override { return Answer::No; }
    std::optional<std::string> OpenFile(const std::string&, const std::string&) override {
        return {};
    }
    std::optional<std::string> SaveFile(const std::string&, const std::string&) override {
        return {};
    }
    std::optional<int> PickColor(int, const std::string&) override { return {}; }
    std::optional<std::string> Input(const std::string&, const std::string&,
                                     const std::string&) override {
        return {};
    }
    void Beep(bool) override {}
    void set(bool) override {}
};

} // namespace corvane
