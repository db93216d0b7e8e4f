#pragma once

#include "controls/Dialogs.h"

namespace corvane {

/// Stands for the dialogs where nobody looks at a screen: messages go to the error output, one line
/// each, and every question is answered with Cancel or No.
class ConsoleDialogs : public Dialogs, public BusyPointer {
  public:
    Answer Message(const MessageBox& box) override;
    std::optional<std::string> OpenFile(const std::string&, const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> SaveFile(const std::string&, const std::string&) override {
        return std::exchange(saveName_, std::nullopt);
    }
    /// A name on a command line is meant as it stands, and its file may be replaced.
    Answer AskAboutName(const MessageBox& box) override {
        return box.buttons == MessageBox::Buttons::YesNo ? Answer::Yes : Answer::No;
    }
    std::optional<int> PickColor(int, const std::string&) override { return std::nullopt; }
    std::optional<std::string> Input(const std::string&, const std::string&,
                                     const std::string&) override {
        return std::nullopt;
    }
    void Beep(bool) override {}
    void set(bool) override {}

    /// The answer to the next question for a name to save under.
    void setSaveName(const std::string& name) { saveName_ = name; }

  private:
    std::optional<std::string> saveName_;
};

} // namespace corvane
