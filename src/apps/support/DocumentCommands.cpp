#include "apps/support/DocumentCommands.h"

#include "apps/support/ConsoleDialogs.h"
#include "apps/support/ExitStatus.h"
#include "apps/support/SafeOutput.h"
#include "history/LostJournal.h"
#include "shell/ProductDocuments.h"
#include "system/File.h"

#include <algorithm>
#include <iostream>

namespace corvane {

namespace {

/// A document that a command works on, opened from a file.
class OpenedDocument {
  public:
    OpenedDocument(Program& program, const std::string& file) {
        const KOProductProfile* product = program.products.ByExtension(KOIOExtension(file));
        if (product != nullptr)
            document_ =
                ProductDocuments().create(product->Class, {dialogs, dialogs, program.files});
        if (document_ == nullptr)
            dialogs.ShowError("No product owns files like " + file + ".");
        else if (!document_->history().OpenHistory(file))
            document_.reset();
    }

    [[nodiscard]] bool opened() const { return document_ != nullptr; }
    [[nodiscard]] History& history() const { return document_->history(); }

    ConsoleDialogs dialogs;

  private:
    std::unique_ptr<ProductDocument> document_;
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
    const auto document =
        ProductDocuments().create(product->Class, {dialogs, dialogs, program.files});
    if (!document->history().Recover(lost->document(), {}) || !document->history().SaveHistoryAs())
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
