#pragma once

#include "base/Event.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvane {

/// A question or message that stops everything until the person has answered.
struct MessageBox {
    enum class Icon { None, Information, Question, Warning, Critical };
    enum class Buttons { Ok, YesNo, YesNoCancel };

    std::string title;
    std::string text;
    Icon icon = Icon::Information;
    Buttons buttons = Buttons::Ok;
    // What the buttons say instead of Yes and No.
    std::string yes = {};
    std::string no = {};
};

enum class Answer { Ok, Yes, No, Cancel };

/// A question about a list, of which a person picks some, with a button that goes on with these.
struct ListQuestion {
    struct Item {
        std::string text;
        bool picked = false;
        bool pickable = true;
    };

    std::string title;
    std::string text;
    std::vector<Item> items;
    std::string button;
};

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
    /// The folder exists. The file may exist too: whoever asks for a name asks before replacing it.
    [[nodiscard]] virtual std::optional<std::string> SaveFile(const std::string& filter,
                                                              const std::string& initialName) = 0;
    /// A question about the name that a file dialog has just given.
    virtual Answer AskAboutName(const MessageBox& box) { return Message(box); }
    /// Colours are RGB values with red in the low byte.
    [[nodiscard]] virtual std::optional<int> PickColor(int initial, const std::string& title) = 0;
    [[nodiscard]] virtual std::optional<std::string>
    Input(const std::string& prompt, const std::string& title, const std::string& initial) = 0;

    /// Which items were picked; nothing if the person would rather not answer.
    [[nodiscard]] virtual std::optional<std::vector<bool>> PickFromList(const ListQuestion&) {
        return std::nullopt;
    }

    /// A short sound: that of an error, or that of a plain report.
    virtual void Beep(bool error) = 0;

    void ShowError(const std::string& text) {
        Message({"Error", text, MessageBox::Icon::Critical, MessageBox::Buttons::Ok});
    }
};

/// The pointer that tells that the program is busy, and whether a job is what it is busy with.
class BusyPointer {
  public:
    virtual ~BusyPointer() = default;
    virtual void set(bool busy) = 0;

    /// A job has begun, or the last one has ended.
    Event<> JobChanged;
    /// The last job has ended, and whoever heard of that is done with it.
    Event<> JobsOver;
    [[nodiscard]] bool JobRuns() const { return jobs_ > 0; }

  private:
    friend class JobScope;
    void changeJobs(int by) {
        const bool ran = JobRuns();
        jobs_ += by;
        if (JobRuns() == ran)
            return;
        JobChanged.raise();
        if (ran)
            JobsOver.raise();
    }

    int jobs_ = 0;
};

/// A job that blocks the program lasts as long as its scope. Meanwhile nothing else can be begun,
/// and what a person does is thrown away; only questions of the job are answered.
class JobScope {
  public:
    explicit JobScope(BusyPointer& pointer) : pointer_(pointer) { pointer_.changeJobs(1); }
    ~JobScope() { pointer_.changeJobs(-1); }
    JobScope(const JobScope&) = delete;
    JobScope& operator=(const JobScope&) = delete;

  private:
    BusyPointer& pointer_;
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
