#pragma once

#include "base/Event.h"
#include "base/FileDoor.h"
#include "system/AppendedFile.h"
#include "system/BackgroundSync.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>

namespace corvane {

class LostJournal;

/// The folder of the journals: what is done to open documents and has not been saved. Each is
/// written by one running program, which holds it locked; one that nobody holds has been lost with
/// its program. Where the folder can't be had or written nothing is kept, and that is told once.
class Journals {
  public:
    static constexpr const char* Ending = ".journal";
    static constexpr const char* AsideEnding = ".aside"; ///< Behind the other one.
    static constexpr int DaysAside = 7;

    /// The folder is made when something is first written.
    Journals(std::filesystem::path folder, FileDoor& files)
        : folder_(std::move(folder)), files_(files) {}

    /// Whoever shows the work sets this and calls `WriteOut` before any of it can be seen: what is
    /// done at one go is then written in one piece. Otherwise each thing is written at once.
    bool InPieces = false;
    void WriteOut() {
        if (std::exchange(holdsBack_, false))
            WritingOut.raise();
    }
    /// To those who write journals: what they have held back is to be written.
    Event<> WritingOut;
    /// To be asked for each line: whether it may be held back.
    [[nodiscard]] bool MayHoldBack() { return holdsBack_ = InPieces; }

    /// After a failure, how long until the next try.
    std::chrono::milliseconds RetryAfter{10000};
    /// Why journals can't be written. Raised once, from within a change or a look.
    Event<const std::string&> Failed;
    /// Something else has removed or cut a journal, and another one holds all again. Raised once.
    Event<> Replaced;
    /// There is something to look after.
    Event<> Begun;
    /// To those who write journals: look whether they are there still, and say if there are any.
    Event<bool&> Looking;
    /// To be called now and then while there is something to look after, which the result tells.
    bool Look();

    /// A new journal that begins with this; nothing if it can't be had.
    [[nodiscard]] std::shared_ptr<AppendedFile> Begin(std::string_view content);
    /// Appends whole lines. False, and the journal stands as it was, if that can't be.
    [[nodiscard]] bool Append(const std::shared_ptr<AppendedFile>& journal, std::string_view lines);

    /// To be called when a journal was found to be gone.
    void tellReplaced();
    /// To be called when a journal can't be kept up; `errno` says why.
    void tell();

    /// What programs that are gone have left, oldest first; the caller holds these journals then.
    /// What they had put aside longer than a week ago goes.
    [[nodiscard]] std::vector<LostJournal> Lost();
    /// The same with what has been put aside, and without anything going.
    [[nodiscard]] std::vector<LostJournal> LostAndAside();

    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

  private:
    template<class Take>
    void look(Take take);

    std::filesystem::path folder_;
    FileDoor& files_;
    BackgroundSync sync_;
    bool holdsBack_ = false;
    bool told_ = false;
    bool toldReplaced_ = false;
};

} // namespace corvane
