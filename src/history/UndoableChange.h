#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

class History;

/// Lets write a document. Only changes have one.
class WriteAccess {
    friend class UndoableChange;
    WriteAccess() = default;
};

/// One change of a document, which can be taken back and written as a line of a file. It lives in
/// its history until the document ends. `Redo` and `Undo` are done whole or, if they throw, not at
/// all.
class UndoableChange {
  public:
    virtual ~UndoableChange() = default;
    virtual void Redo() = 0;
    virtual void Undo() = 0;
    /// How the change is written: the line's prefix and the arguments behind it.
    virtual void Serialize(std::string& prefix, std::vector<std::string>& Data) const = 0;
    /// Fills a new change from a line. False if the line is none for this change. Touches nothing
    /// that the change applies to.
    [[nodiscard]] virtual bool Deserialize(History& history, std::string_view prefix,
                                           const std::vector<std::string>& Data) = 0;
    /// Whether a file may hold the change as it is and what it applies to is in the document now:
    /// what `Deserialize` and `FitTogether` would say of its line. Asked before each recording, so
    /// it costs next to nothing.
    [[nodiscard]] virtual bool isApplicable() const = 0;

  protected:
    [[nodiscard]] static WriteAccess access() { return {}; }
};

/// Does a step of taking something back, for which the way has failed already that it is on.
template<class Step>
void Despite(Step step) noexcept {
    try {
        step();
    } catch (...) { // what was thrown first is what is told
    }
}

/// Lets `act` change a document. If it throws, `takeBack` brings back what was there before. A
/// document has done what it is told to do also when a listener throws.
template<class Act, class TakeBack>
void AllOrNothing(Act act, TakeBack takeBack) {
    try {
        act();
    } catch (...) {
        Despite(takeBack);
        throw;
    }
}

using UndoableChanges = std::vector<std::unique_ptr<UndoableChange>>;

/// Knows the changes of one product's files.
class HistoryLoader {
  public:
    virtual ~HistoryLoader() = default;
    /// A new empty change for the prefix, which is compared exactly; nothing for an unknown one.
    [[nodiscard]] virtual std::unique_ptr<UndoableChange> Load(std::string_view prefix) const = 0;
    /// Whether each of a file's changes finds what it applies to when all are applied in order to
    /// the default state.
    [[nodiscard]] virtual bool FitTogether(const UndoableChanges&) const { return true; }
};

/// A change that does nothing and marks a place in a file.
class KODoNothingChange final : public UndoableChange {
  public:
    static constexpr std::string_view Prefix = "Marker";

    void Redo() override {}
    void Undo() override {}
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
        prefix = Prefix;
        Data = {"Nothing"};
    }
    [[nodiscard]] bool Deserialize(History&, std::string_view,
                                   const std::vector<std::string>&) override {
        return true;
    }
    [[nodiscard]] bool isApplicable() const override { return true; }
};

} // namespace corvane
