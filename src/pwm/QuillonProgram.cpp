#include "pwm/QuillonProgram.h"

#include "base/Numbers.h"

#include <algorithm>
#include <typeinfo>

namespace corvane {

namespace {

constexpr std::string_view Prefix = "QuillonPWM";

/// A further block. It belongs to the program whose history holds it, whatever else goes on.
class QuillonUndoablePWMChange final : public UndoableChange {
  public:
    void Initialize(QuillonProgram& program, std::uint8_t value) {
        program_ = &program;
        value_ = value;
    }
    void Redo() override {
        AllOrNothing([this] { program_->AddBlock(access(), value_); },
                     [this] { program_->RemoveBlock(access()); });
    }
    void Undo() override {
        const std::uint8_t removed = program_->blocks().Data(program_->blocks().Length());
        AllOrNothing([this] { program_->RemoveBlock(access()); },
                     [this, removed] { program_->AddBlock(access(), removed); });
    }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
        prefix = Prefix;
        Data = {std::to_string(value_)};
    }
    [[nodiscard]] bool Deserialize(History& history, std::string_view,
                                   const std::vector<std::string>& Data) override {
        // There are tens of thousands of these in a file, and a comparison of types is quicker than
        // a search for one.
        HistoryHost& host = history.ManagingControl();
        if (typeid(host) != typeid(QuillonProgram) || Data.empty())
            return false;
        program_ = static_cast<QuillonProgram*>(&host);
        const int value = ReadInteger(Data[0]);
        value_ = static_cast<std::uint8_t>(value);
        return value == value_;
    }
    [[nodiscard]] bool isApplicable() const override {
        return program_ != nullptr && program_->blocks().Length() < QuillonProgram::MaxLength;
    }

  private:
    QuillonProgram* program_ = nullptr;
    std::uint8_t value_ = 0;
};

class QuillonHistoryLoader final : public HistoryLoader {
  public:
    [[nodiscard]] std::unique_ptr<UndoableChange> Load(std::string_view prefix) const override {
        return prefix == Prefix ? std::make_unique<QuillonUndoablePWMChange>() : nullptr;
    }
    [[nodiscard]] bool FitTogether(const UndoableChanges& changes) const override {
        if (changes.size() <= QuillonProgram::MaxLength)
            return true;
        return std::count_if(changes.begin(), changes.end(), [](const auto& change) {
                   return dynamic_cast<const QuillonUndoablePWMChange*>(change.get()) != nullptr;
               }) <= QuillonProgram::MaxLength;
    }
};

} // namespace

QuillonProgram::QuillonProgram(const History::Surroundings& surroundings)
    : history_(*this, surroundings) {
    history_.setFilter("Quillon Programs (*.Quillon)|*.Quillon");
    history_.setTypeCode("Quillon");
    history_.setVersionCode(1);
    history_.setLoader(std::make_unique<QuillonHistoryLoader>());
}

void QuillonProgram::AddBlock(WriteAccess, std::uint8_t value) {
    blocks_.Append(value);
    Changed.raise();
}

void QuillonProgram::RemoveBlock(WriteAccess) {
    blocks_.RemoveAtEnd();
    Changed.raise();
}

bool QuillonProgram::append(std::uint8_t value) {
    if (blocks_.Length() >= MaxLength)
        return false;
    auto change = std::make_unique<QuillonUndoablePWMChange>();
    change->Initialize(*this, value);
    return history_.Record(std::move(change), true);
}

} // namespace corvane
