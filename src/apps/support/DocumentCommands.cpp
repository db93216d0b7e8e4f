#include "apps/support/DocumentCommands.h"

#include "apps/support/ConsoleDialogs.h"
#include "apps/support/ExitStatus.h"
#include "shell/ProductDocuments.h"
#include "system/File.h"

#include <iostream>

namespace corvane {

namespace {

/// A document that a command works on, opened from a file.
class OpenedDocument {
  public:
    OpenedDocument(Program& program, const std::string& file) {
        const KOProductProfile* product = program.products.ByExtension(KOIOExtension(file));
        if (product != nullptr)
            document_ = ProductDocuments().create(product->Class, {dialogs, dialogs, program.text});
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

int ConvertDocument(Program& program, const std::string& from, const std::string& to) {
    OpenedDocument document(program, from);
    if (!document.opened())
        return ExitStatus::Failed;
    document.dialogs.setSaveName(to);
    return document.history().SaveHistoryAs() ? ExitStatus::Done : ExitStatus::Failed;
}

} // namespace corvane
