#include "base/Assert.h"
#include "base/ContentMark.h"
#include "base/Text.h"
#include "history/FreezeScope.h"
#include "history/History.h"
#include "system/File.h"

#include <filesystem>

namespace corvane {

void History::SaveHistory() {
    const Overwriting answer = savePath_.empty() ? Overwriting::SaveAs : mayOverwrite(savePath_);
    if (answer == Overwriting::SaveAs)
        SaveHistoryAs();
    else if (answer == Overwriting::Agreed)
        static_cast<void>(writeTo(savePath_)); // has told what went wrong
}

bool History::SaveHistoryAs() {
    Assert(!filter_.empty());
    while (const std::optional<std::string> path = askForName()) {
        const Overwriting answer = mayOverwrite(*path);
        if (answer != Overwriting::SaveAs)
            return answer == Overwriting::Agreed && writeTo(*path);
    }
    return false;
}

/// Whether another program has written the document's file since it was opened or saved here.
bool History::isChangedByAnother(const std::string& path) const {
    if (path != savePath_)
        return false;
    const std::string mark = FileMark(with_.files, path);
    return !mark.empty() && mark != fileMark_;
}

/// Whether what another program has written may go.
History::Overwriting History::mayOverwrite(const std::string& path) const {
    if (!isChangedByAnother(path))
        return Overwriting::Agreed;
    switch (with_.dialogs.Message(
        {"Corvane",
         KOIOFilename(path) + " was changed by another program.\r\n\r\nOverwrite puts your "
                              "document in its place. Save As keeps both.",
         MessageBox::Icon::Question, MessageBox::Buttons::YesNoCancel, "Save As", "Overwrite"})) {
    case Answer::Yes:
        return Overwriting::SaveAs;
    case Answer::No:
        return Overwriting::Agreed;
    default:
        return Overwriting::Refused;
    }
}

/// Asks until the person is content with the name, or cancels.
std::optional<std::string> History::askForName() const {
    std::optional<std::string> path = with_.dialogs.SaveFile(dialogFilter(), savePath_);
    while (path && !(completeName(*path) && mayReplace(*path)))
        path = with_.dialogs.SaveFile(dialogFilter(), *path);
    return path;
}

/// A file of another name would not show when files of this kind are looked for; so it is made only
/// if that is meant. False if the person would like to choose again.
bool History::completeName(std::string& path) const {
    std::string suffix = filter_.substr(filter_.find('|') + 1);
    suffix = suffix.substr(0, suffix.find_first_of(";|"));
    suffix.erase(0, suffix.find('.'));
    if (LowerCase(path).ends_with(LowerCase(suffix)))
        return true;
    const std::string name = KOIOFilename(path);
    const Answer answer = with_.dialogs.AskAboutName(
        {"Save As",
         "Save as '" + name + suffix + "'?\r\n\r\nYes gives it that name, No saves it as '" + name +
             "', and Cancel goes back.",
         MessageBox::Icon::Question, MessageBox::Buttons::YesNoCancel});
    if (answer == Answer::Yes)
        path += suffix;
    return answer == Answer::Yes || answer == Answer::No;
}

bool History::mayReplace(const std::string& path) const {
    std::error_code error;
    return !std::filesystem::exists(path, error) ||
           isChangedByAnother(path) || // which is another question
           with_.dialogs.AskAboutName(
               {"Save As",
                KOIOFilename(path) + " already exists.\r\n\r\nDo you want to replace it?",
                MessageBox::Icon::Warning, MessageBox::Buttons::YesNo}) == Answer::Yes;
}

bool History::OpenHistory(std::string filename) {
    bool opened = false;
    if (mayBeLost()) {
        Assert(!filter_.empty());
        if (filename.empty()) {
            const std::optional<std::string> chosen =
                with_.dialogs.OpenFile(dialogFilter(), "Open");
            if (!chosen)
                return false;
            filename = *chosen;
        }
        const BusyScope busy(with_.pointer);
        std::string bytes;
        if (isDone(read(filename, bytes))) {
            const std::string mark = ContentMark(bytes);
            opened = open(std::move(bytes), filename, mark, false);
        }
    }
    if (!opened && !filename.empty())
        FileOpenFailed.raise(filename);
    return opened;
}

std::string History::dialogFilter() const {
    return filter_ + "|All Files (*.*)|*.*";
}

bool History::Compose(std::string& target) const {
    bool good =
        DocumentHead{typeCode_, Length(), position_, undoStopPoint_, versionCode_}.write(target);
    KOIOWriter writer(target);
    std::string prefix;
    std::vector<std::string> data;
    for (const auto& change : changes_) {
        data.clear();
        change->Serialize(prefix, data);
        good = writer.WriteArray(prefix, data) && good;
    }
    return good;
}

bool History::writeTo(const std::string& path) {
    Assert(!typeCode_.empty());
    const std::string previousFilename = savePath_;
    std::string text;
    bool saved = false;
    {
        const BusyScope busy(with_.pointer);
        saved = Compose(text) && with_.files.ReplaceWhole(path, text);
    }
    if (!saved) {
        with_.dialogs.ShowError("Can't save the file.");
        return false;
    }
    saveDirty_ = false;
    savePath_ = path;
    fileVersion_.reset();
    fileMark_ = ContentMark(text);
    journal_.Saved(path, fileMark_);
    SaveStateChanged.raise();
    UndoStateChanged.raise();
    FileSaved.raise(savePath_, previousFilename);
    return true;
}

const char* History::inWords(Loading outcome) {
    switch (outcome) {
    case Loading::NotFound:
        return "File not found.";
    case Loading::NewerVersion:
        return "This file was made with a newer version of the program.\r\n\r\nYou will need to "
               "get the new version to view it.";
    case Loading::UnknownPrefix:
        return "Can't understand the file format (unrecognized prefix).";
    case Loading::Unfit:
        return "Can't understand the file format (deserialization error).";
    default:
        return NotUnderstood;
    }
}

/// Tells what is wrong, if something is.
bool History::isDone(Loading outcome) const {
    if (outcome == Loading::Done)
        return true;
    with_.pointer.set(false);
    with_.dialogs.ShowError(inWords(outcome));
    return false;
}

History::Loading History::read(const std::string& path, std::string& bytes) const {
    switch (with_.files.ReadWhole(path, bytes)) {
    case FileDoor::ReadResult::Done:
        return Loading::Done;
    case FileDoor::ReadResult::NotFound:
        return Loading::NotFound;
    default:
        return Loading::NotUnderstood;
    }
}

History::Loading History::load(std::string bytes, Loaded& loaded) {
    Assert(loader_ != nullptr && !typeCode_.empty());
    KOIOReader reader;
    DocumentHead& head = loaded.head;
    if (!reader.Load(std::move(bytes)) || !head.read(reader) || head.typeCode != typeCode_)
        return Loading::NotUnderstood;
    if (head.version > versionCode_)
        return Loading::NewerVersion;
    if (!head.isSound(reader.Remaining()))
        return Loading::NotUnderstood;
    std::string prefix;
    std::vector<std::string> data;
    loaded.changes.reserve(static_cast<std::size_t>(head.length));
    while (static_cast<int>(loaded.changes.size()) < head.length) {
        reader.ReadArray(prefix, data);
        std::unique_ptr<UndoableChange> change = emptyChange(prefix);
        if (change == nullptr)
            return Loading::UnknownPrefix;
        if (!change->Deserialize(*this, prefix, data))
            return Loading::Unfit;
        loaded.changes.push_back(std::move(change));
    }
    return loader_->FitTogether(loaded.changes) ? Loading::Done : Loading::Unfit;
}

std::unique_ptr<UndoableChange> History::emptyChange(std::string_view prefix) const {
    if (prefix == KODoNothingChange::Prefix)
        return std::make_unique<KODoNothingChange>();
    return loader_->Load(prefix);
}

/// Whether the change's line is one that its loader reads, and that is written again as it was.
bool History::comesBack(const UndoableChange& change) {
    std::string line;
    std::string prefix;
    std::vector<std::string> data;
    change.Serialize(prefix, data);
    KOIOReader reader;
    if (!KOIOWriter(line).WriteArray(prefix, data) || !reader.Load(line) || reader.Remaining() != 1)
        return false;
    reader.ReadArray(prefix, data);
    const std::unique_ptr<UndoableChange> read = emptyChange(prefix);
    if (read == nullptr || !read->Deserialize(*this, prefix, data))
        return false;
    data.clear();
    read->Serialize(prefix, data);
    std::string again;
    return KOIOWriter(again).WriteArray(prefix, data) && again == line;
}

/// Puts a document that is read in the place of what is there.
bool History::open(std::string bytes, const std::string& path, const std::string& mark, bool lost) {
    Loaded loaded;
    if (!isDone(load(std::move(bytes), loaded)))
        return false;
    const FreezeScope frozen(*this);
    replay(std::move(loaded), path);
    saveDirty_ = lost;
    fileMark_ = mark;
    journal_.Reset(path, mark);
    if (lost)
        journal_.Begin();
    UndoStateChanged.raise();
    SaveStateChanged.raise();
    if (!path.empty())
        FileOpened.raise(path);
    return true;
}

void History::replay(Loaded loaded, const std::string& path) {
    const ReplayScope replaying(*this);
    reset();
    savePath_ = path;
    fileVersion_ = loaded.head.version;
    saveDirty_ = false;
    changes_ = std::move(loaded.changes);
    while (position_ < loaded.head.position) {
        Redo(true);
        if (position_ == loaded.head.stopPoint)
            SetUndoStopPoint();
    }
}

bool History::Recover(std::string lost, const std::string& path) {
    const BusyScope busy(with_.pointer);
    return open(std::move(lost), path, FileMark(with_.files, path), true);
}

} // namespace corvane
