#pragma once

#include <optional>
#include <string>
#include <utility>

namespace corvane {

/// A question or message that stops everything until the person has answered.
struct MessageBox {
    enum class Icon { None, Information, Question, Warning, Critical };
    enum class Buttons { Ok, YesNo, YesNoCancel };

    std::string title;
    std::string text;
    Icon icon = Icon::Information;
    Buttons buttons = Buttons::Ok;
};

enum class Answer { Ok, Yes, No, Cancel };

/// The answer of a box that is closed without a choice.
[[nodiscard]] constexpr Answer DismissedAnswer(MessageBox::Buttons buttons) {
    switch (buttons) {
    case MessageBox::Buttons::Ok:
        return Answer::Ok;
    case MessageBox::Buttons::YesNo:
        return Answer::No;
    case MessageBox::Buttons::YesNoCancel:
        return Answer::Cancel;
    }
    return Answer::Cancel;
}

/// The dialogs that a person is shown. Each gives nothing when it is cancelled.
class Dialogs {
  public:
    virtual ~Dialogs() = default;
    /// Closing the box without a choice counts as `DismissedAnswer`.
    virtual Answer Message(const MessageBox& box) = 0;
    /// `filter` in the form "Name (*.x)|*.x|Other (*.y)|*.y". The file exists.
    [[nodiscard]] virtual std::optional<std::string> OpenFile(const std::string& filter,
                                                              const std::string& title) = 0;
    /// The folder exists, and the person has agreed to replace a file that does.
    [[nodiscard]] virtual std::optional<std::string> SaveFile(const std::string& filter,
                                                              const std::string& initialName) = 0;
    /// Colours are RGB values with red in the low byte.
    [[nodiscard]] virtual std::optional<int> PickColor(int initial, const std::string& title) = 0;
    [[nodiscard]] virtual std::optional<std::string>
    Input(const std::string& prompt, const std::string& title, const std::string& initial) = 0;

    /// A short sound: that of an error, or that of a plain report.
    virtual void Beep(bool error) = 0;

    void ShowError(const std::string& text) {
        Message({"Error", text, MessageBox::Icon::Critical, MessageBox::Buttons::Ok});
    }
};

/// The pointer that tells that the program is busy.
class BusyPointer {
  public:
    virtual ~BusyPointer() = default;
    virtual void set(bool busy) = 0;
};

/// Shows the busy pointer as long as its scope lasts, or until it is told otherwise.
class BusyScope {
  public:
    explicit BusyScope(BusyPointer& pointer) : pointer_(pointer) { pointer_.set(true); }
    ~BusyScope() { end(); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

    void end() {
        if (std::exchange(on_, false))
            pointer_.set(false);
    }

  private:
    BusyPointer& pointer_;
    bool on_ = true;
};

} // namespace corvane
