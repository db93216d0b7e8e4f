#include "shell/Recovery.h"

#include "base/HeldFile.h"
#include "history/History.h"
#include "kolib/text/TextFiles.h"
#include "system/File.h"

#include <algorithm>

namespace corvane {

void Recovery::Offer() {
    if (place_.journals == nullptr)
        return;
    for (const LostJournal& lost : place_.journals->Lost())
        offer(lost);
}

void Recovery::offer(const LostJournal& lost) {
    if (!lost.isSound()) {
        place_.dialogs.ShowError(History::NotUnderstood);
        lost.SetAside();
        return;
    }
    if (lost.isNothingLost())
        return lost.Remove();
    // A program for other products offers it where it is at home.
    const KOProductProfile* product = place_.products.ByTypeCode(lost.TypeCode());
    if (product == nullptr)
        return;
    if (wanted(lost))
        giveBack(lost, product->Class);
    else
        lost.SetAside();
}

bool Recovery::wanted(const LostJournal& lost) const {
    const std::string name =
        lost.documentPath().empty() ? "a new document" : KOIOFilename(lost.documentPath());
    return place_.dialogs.Message({"Corvane",
                                   "Corvane did not close properly. Would you like to get back the "
                                   "changes made to " +
                                       name + "?",
                                   MessageBox::Icon::Question, MessageBox::Buttons::YesNo}) ==
           Answer::Yes;
}

void Recovery::giveBack(const LostJournal& lost, const std::string& className) {
    if (!ShowControl(className))
        return; // the next start offers it again
    History* history = freeHistory();
    if (history == nullptr || !history->ExitHistory())
        return;
    // What is not right with it is told as with any file of the kind.
    HeldFile held(lost.document(), place_.journals->files());
    TextFiles text(held);
    if (!history->Recover(text, lost.unchangedPath()))
        lost.SetAside();
    else if (history->isJournalUpToDate())
        lost.Remove();
}

/// One that holds nothing, if there is such a one.
History* Recovery::freeHistory() const {
    if (interface_.control() == nullptr)
        return nullptr;
    const std::vector<History*> all = interface_.control()->Histories();
    const auto empty = std::find_if(all.begin(), all.end(), [](const History* history) {
        return history->Length() == 0 && !history->SaveDirty();
    });
    if (empty != all.end())
        return *empty;
    return all.empty() ? nullptr : all.front();
}

bool Recovery::ShowControl(const std::string& className) {
    if (interface_.control() == nullptr) {
        interface_.Initialize(className);
        return true;
    }
    if (className.empty() || interface_.InterfaceClass() == className)
        return true;
    for (History* history : interface_.control()->Histories())
        if (!history->ExitHistory())
            return false;
    interface_.Show(className);
    return true;
}

} // namespace corvane
