#include "apps/support/DocumentCommands.h"

#include "apps/support/ConsoleDialogs.h"
#include "apps/support/ExitStatus.h"
#include "apps/support/SafeOutput.h"
#include "history/LostJournal.h"
#include "shell/ProductTable.h"

#include <algorithm>
#include <iostream>

namespace corvane {

namespace {

/// A document that a command works on, opened from a file.
class OpenedDocument {
  public:
    OpenedDocument(Program& program, const std::string& file)
        : history_(
              MakeDocument(program.products.ClassOfFile(file), {dialogs, dialogs, program.files})) {
        if (history_ == nullptr)
            dialogs.ShowError("No product owns files like " + file + ".");
        else if (!history_->OpenHistory(file))
            history_.reset();
    }

    [[nodiscard]] bool opened() const { return history_ != nullptr; }
    [[nodiscard]] History& history() const { return *history_; }

    ConsoleDialogs dialogs;

  private:
    std::shared_ptr<History> history_;
};

} // namespace

int CheckDocument(Program& program, const std::string& file) {
    const OpenedDocument document(program, file);
    if (!document.opened())
        return ExitStatus::Failed;
    const History& history = document.history();
    std::cout << "type\t" << history.TypeCode() << "\nversion\t" << history.fileVersion()
              << "\nchanges\t" << history.Length() << "\nposition\t" << history.position()
              << "\nstop point\t" << history.undoStopPoint() << '\n';
    return ExitStatus::Done;
}

int ListLostDocuments(Program& program) {
    for (const LostJournal& lost : program.journals.LostAndAside())
        std::cout << InOneField(lost.Name()) << '\t'
                  << (lost.isSound() ? lost.TypeCode() : std::string("unsound")) << '\t'
                  << lost.Length() << '\t'
                  << InOneField(lost.documentPath().empty() ? "(new document)"
                                                            : lost.documentPath())
                  << '\n';
    return ExitStatus::Done;
}

int RecoverDocument(Program& program, const std::string& name, const std::string& to) {
    std::vector<LostJournal> all = program.journals.LostAndAside();
    const auto lost = std::find_if(
        all.begin(), all.end(), [&](const LostJournal& journal) { return journal.Name() == name; });
    if (lost == all.end())
        return Fail("there is no journal " + name + " of a program that is gone");
    const KOProductProfile* product = program.products.ByTypeCode(lost->TypeCode());
    if (!lost->isSound() || product == nullptr)
        return Fail(History::NotUnderstood);
    ConsoleDialogs dialogs;
    dialogs.setSaveName(to);
    const auto history = MakeDocument(product->Class, {dialogs, dialogs, program.files});
    if (!history->Recover(lost->document(), {}) || !history->SaveHistoryAs())
        return ExitStatus::Failed;
    lost->SetAside();
    return ExitStatus::Done;
}

int ConvertDocument(Program& program, const std::string& from, const std::string& to) {
    OpenedDocument document(program, from);
    if (!document.opened())
        return ExitStatus::Failed;
    document.dialogs.setSaveName(to);
    return document.history().SaveHistoryAs() ? ExitStatus::Done : ExitStatus::Failed;
}

} // namespace corvane
