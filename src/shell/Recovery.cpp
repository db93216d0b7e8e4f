#include "shell/Recovery.h"

#include "history/History.h"
#include "system/File.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace corvane {

namespace {

std::string LocalTime(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm parts{};
    ::localtime_r(&time, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &parts)};
}

} // namespace

void Recovery::Offer() {
    if (place_.journals == nullptr)
        return;
    std::vector<LostJournal> lost = place_.journals->Lost();
    std::vector<const LostJournal*> sound;
    std::vector<const LostJournal*> damaged;
    for (const LostJournal& journal : lost) {
        if (!journal.isSound())
            damaged.push_back(&journal);
        else if (journal.isNothingLost())
            journal.Remove();
        else if (productOf(journal) != nullptr) // the others are offered where they are at home
            sound.push_back(&journal);
    }
    if (damaged.empty() && sound.size() < 2) {
        for (const LostJournal* journal : sound)
            take(*journal, wanted(*journal));
        return;
    }
    const std::optional<std::vector<bool>> picked = pick(sound, damaged);
    // Put aside whatever the answer: they would come up at every start.
    for (const LostJournal* journal : damaged)
        journal->SetAside();
    for (std::size_t i = 0; picked && i < sound.size(); ++i)
        take(*sound[i], (*picked)[i]);
}

const KOProductProfile* Recovery::productOf(const LostJournal& lost) const {
    return place_.products.ByTypeCode(lost.TypeCode());
}

void Recovery::take(const LostJournal& lost, bool wanted) {
    if (wanted)
        giveBack(lost, productOf(lost)->Class);
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

/// One question for all of them. Which of the sound ones are wanted; nothing to ask later again.
std::optional<std::vector<bool>>
Recovery::pick(const std::vector<const LostJournal*>& sound,
               const std::vector<const LostJournal*>& damaged) const {
    const std::string folder = place_.journals->folder().string();
    ListQuestion question{
        "Corvane",
        "Corvane did not close properly. Which changes would you like to get back?\r\nThose that "
        "are not ticked, and those that are damaged, are kept for a week in " +
            folder + ".",
        {},
        "Get Back"};
    if (sound.empty()) {
        question.text = "Corvane did not close properly, and what it kept of your changes is "
                        "damaged.\r\nIt stays for a week in " +
                        folder + ".";
        question.button = "OK";
    }
    for (const LostJournal* journal : sound) {
        const std::string name = journal->documentPath().empty()
                                     ? "New document (" + productOf(*journal)->Name + ")"
                                     : KOIOFilename(journal->documentPath());
        question.items.push_back({name + ", " + LocalTime(journal->Time()) + ", " +
                                      std::to_string(journal->Length()) + " changes",
                                  journal == sound.back()}); // the last one, which is the newest
    }
    for (const LostJournal* journal : damaged)
        question.items.push_back(
            {"Damaged: " + journal->Name() + ", " + LocalTime(journal->Time()), false, false});
    const auto picked = place_.dialogs.PickFromList(question);
    if (!picked)
        return std::nullopt;
    return std::vector<bool>(picked->begin(),
                             picked->begin() + static_cast<std::ptrdiff_t>(sound.size()));
}

void Recovery::giveBack(const LostJournal& lost, const std::string& className) {
    if (!ShowControl(className))
        return; // the next start offers it again
    History* history = freeHistory();
    if (history == nullptr || !history->ExitHistory())
        return;
    // What is not right with it is told as with any file of the kind.
    if (!history->Recover(lost.document(), lost.unchangedPath()))
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
