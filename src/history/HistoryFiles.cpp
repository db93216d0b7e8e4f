#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "base/TextLines.h"
#include "history/FreezeScope.h"
#include "history/History.h"
#include "history/KOIO.h"
#include "system/File.h"

#include <filesystem>

namespace corvane {

namespace {

constexpr const char* NotForThisDocument =
    "Can't understand the file format (deserialization error).";

struct Header {
    std::int32_t length = 0;
    std::int32_t position = 0;
    std::int32_t stopPoint = 0;
    std::int32_t version = 0;
};

Header headerOf(const std::vector<std::string>& values) {
    return {ReadInteger(values[0]), ReadInteger(values[1]), ReadInteger(values[2]),
            ReadInteger(values[3])};
}

bool isSound(const Header& header, int lines) {
    return header.length >= 0 && header.length <= lines && header.position >= 0 &&
           header.position <= header.length;
}

} // namespace

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
    const std::string mark = with_.text.FileMark(path);
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
        if (std::optional<Loaded> loaded = readFrom(with_.text, filename)) {
            const std::string mark = with_.text.Mark();
            const FreezeScope frozen(*this);
            replay(std::move(*loaded), filename);
            fileMark_ = mark;
            journal_.Reset(filename, fileMark_);
            replayed(filename);
            opened = true;
        }
    }
    if (!opened && !filename.empty())
        FileOpenFailed.raise(filename);
    return opened;
}

std::string History::dialogFilter() const {
    return filter_ + "|All Files (*.*)|*.*";
}

std::vector<std::string> History::header() const {
    return {std::to_string(Length()), std::to_string(position_), std::to_string(undoStopPoint_),
            std::to_string(versionCode_)};
}

bool History::Compose(std::string& target) const {
    bool good = TextLines::append(target, typeCode_, header());
    std::string prefix;
    std::vector<std::string> data;
    for (const auto& change : changes_) {
        data.clear();
        change->Serialize(prefix, data);
        good = TextLines::append(target, prefix, data) && good;
    }
    return good;
}

bool History::writeTo(const std::string& path) {
    Assert(!typeCode_.empty());
    const std::string previousFilename = savePath_;
    int result = 0;
    {
        const BusyScope busy(with_.pointer);
        KOIOWriter writer(with_.text);
        writer.WriteArray(typeCode_, header());
        std::string prefix;
        std::vector<std::string> data;
        for (const auto& change : changes_) {
            data.clear();
            change->Serialize(prefix, data);
            writer.WriteArray(prefix, data);
        }
        result = writer.Save(path);
    }
    if (result != 0) {
        with_.dialogs.ShowError("Can't save the file.");
        return false;
    }
    saveDirty_ = false;
    savePath_ = path;
    fileVersion_.reset();
    fileMark_ = with_.text.Mark();
    journal_.Saved(path, fileMark_);
    SaveStateChanged.raise();
    UndoStateChanged.raise();
    FileSaved.raise(savePath_, previousFilename);
    return true;
}

std::optional<History::Loaded> History::readFrom(KOText& text, const std::string& path) {
    Assert(loader_ != nullptr && !typeCode_.empty());
    Loaded loaded;
    const std::string problem = parse(text, path, loaded);
    if (problem.empty())
        return loaded;
    with_.pointer.set(false);
    with_.dialogs.ShowError(problem);
    return std::nullopt;
}

std::string History::parse(KOText& text, const std::string& path, Loaded& loaded) {
    constexpr std::size_t headerValues = 4;
    KOIOReader reader(text);
    if (const int result = reader.Load(path); result != 0)
        return result == 1 ? "File not found." : NotUnderstood;
    std::string prefix;
    std::vector<std::string> data;
    if (!reader.More())
        return NotUnderstood;
    reader.ReadArray(prefix, data);
    if (data.size() < headerValues || prefix != typeCode_)
        return NotUnderstood;
    const Header header = headerOf(data);
    if (header.version > versionCode_)
        return "This file was made with a newer version of the program.\r\n\r\nYou will need to "
               "get the new version to view it.";
    if (!isSound(header, reader.Remaining()))
        return NotUnderstood;
    loaded.position = header.position;
    loaded.stopPoint = header.stopPoint;
    loaded.version = header.version;
    loaded.changes.reserve(static_cast<std::size_t>(header.length));
    while (static_cast<int>(loaded.changes.size()) < header.length) {
        reader.ReadArray(prefix, data);
        std::unique_ptr<UndoableChange> change = emptyChange(prefix);
        if (change == nullptr)
            return "Can't understand the file format (unrecognized prefix).";
        if (!change->Deserialize(*this, prefix, data))
            return NotForThisDocument;
        loaded.changes.push_back(std::move(change));
    }
    return loader_->FitTogether(loaded.changes) ? "" : NotForThisDocument;
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
    const auto lines =
        TextLines::append(line, prefix, data) ? TextLines::parse(line) : std::optional<TextLines>();
    if (!lines || lines->count() != 1)
        return false;
    lines->read(0, data);
    prefix = data.front();
    data.erase(data.begin());
    const std::unique_ptr<UndoableChange> read = emptyChange(prefix);
    if (read == nullptr || !read->Deserialize(*this, prefix, data))
        return false;
    data.clear();
    read->Serialize(prefix, data);
    std::string again;
    return TextLines::append(again, prefix, data) && again == line;
}

void History::replay(Loaded loaded, const std::string& filename) {
    const ReplayScope replaying(*this);
    reset();
    savePath_ = filename;
    fileVersion_ = loaded.version;
    saveDirty_ = false;
    changes_ = std::move(loaded.changes);
    while (position_ < loaded.position) {
        Redo(true);
        if (position_ == loaded.stopPoint)
            SetUndoStopPoint();
    }
}

void History::replayed(const std::string& filename) {
    UndoStateChanged.raise();
    SaveStateChanged.raise();
    if (!filename.empty())
        FileOpened.raise(filename);
}

bool History::Recover(KOText& lost, const std::string& path) {
    const BusyScope busy(with_.pointer);
    std::optional<Loaded> loaded = readFrom(lost, path);
    if (!loaded)
        return false;
    const FreezeScope frozen(*this);
    replay(std::move(*loaded), path);
    saveDirty_ = true;
    fileMark_ = with_.text.FileMark(path);
    journal_.Reset(path, fileMark_);
    journal_.Begin();
    replayed(path);
    return true;
}

} // namespace corvane
