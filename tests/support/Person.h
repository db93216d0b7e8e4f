#pragma once

#include "controls/Dialogs.h"

#include <deque>
#include <vector>

namespace corvane {

/// Stands for the person at the screen: answers dialogs as arranged, and remembers them.
class Person final : public Dialogs, public BusyPointer {
  public:
    std::deque<Answer> answers; ///< Cancel when there are no more.
    std::deque<std::optional<std::string>> files;
    std::deque<std::optional<std::string>> inputs;
    std::deque<std::optional<int>> colors;
    std::deque<std::optional<std::vector<bool>>> picks;
    std::vector<ListQuestion> lists;
    std::vector<MessageBox> messages;
    std::vector<std::string> asked; ///< Filters and prompts with what stood there at first.
    std::string beeps;              ///< A letter a sound: r for a report, E for an error.
    bool thinksAboutNames = false;
    bool busy = false;
    bool sawBusyMessage = false;

    Answer Message(const MessageBox& box) override {
        messages.push_back(box);
        sawBusyMessage = sawBusyMessage || busy;
        return box.buttons == MessageBox::Buttons::Ok ? Answer::Ok : next(answers, Answer::Cancel);
    }
    std::optional<std::string> OpenFile(const std::string& filter,
                                        const std::string& title) override {
        asked.push_back((title == "Open" ? "open " : title + ": ") + filter);
        return next(files, {});
    }
    std::optional<std::string> SaveFile(const std::string& filter,
                                        const std::string& initialName) override {
        asked.push_back("save " + filter + " as " + initialName);
        return next(files, {});
    }
    /// Means every name as it was typed, unless told to think about it.
    Answer AskAboutName(const MessageBox& box) override {
        if (thinksAboutNames)
            return Message(box);
        return box.buttons == MessageBox::Buttons::YesNo ? Answer::Yes : Answer::No;
    }
    std::optional<int> PickColor(int initial, const std::string& title) override {
        asked.push_back(title + ": color " + std::to_string(initial));
        return next(colors, {});
    }
    std::optional<std::string> Input(const std::string& prompt, const std::string& title,
                                     const std::string& initial) override {
        asked.push_back(title + ": " + prompt + " " + initial);
        return next(inputs, {});
    }
    std::optional<std::vector<bool>> PickFromList(const ListQuestion& question) override {
        lists.push_back(question);
        return next(picks, {});
    }
    void Beep(bool error) override { beeps += error ? 'E' : 'r'; }
    void set(bool isBusy) override { busy = isBusy; }

    /// Title and text of the last message, and forgets it.
    std::string takeMessage() {
        if (messages.empty())
            return {};
        const MessageBox box = messages.back();
        messages.pop_back();
        return box.title + ": " + box.text;
    }

  private:
    template<class T>
    static T next(std::deque<T>& arranged, T otherwise) {
        if (arranged.empty())
            return otherwise;
        T value = std::move(arranged.front());
        arranged.pop_front();
        return value;
    }
};

} // namespace corvane
