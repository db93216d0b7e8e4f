#pragma once

#include "base/FileDoor.h"
#include "base/Handle.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace corvane {

/// What a program that is gone did to a document and did not save. Held, so that no other program
/// takes it, as long as this lives.
class LostJournal {
  public:
    /// Reads it; a line that was not finished does not count.
    LostJournal(Handle file, std::filesystem::path path, FileDoor& files);

    /// Name of its file.
    [[nodiscard]] std::string Name() const { return path_.filename(); }
    [[nodiscard]] bool isAside() const;
    /// If not, the rest says nothing.
    [[nodiscard]] bool isSound() const { return sound_; }
    [[nodiscard]] const std::string& TypeCode() const { return typeCode_; }
    [[nodiscard]] int Length() const { return length_; } ///< Changes in all.
    /// When something was last done to it, in seconds since 1970; 0 if that can't be told.
    [[nodiscard]] std::int64_t Time() const;
    /// The document's file; empty for one that was never saved.
    [[nodiscard]] const std::string& documentPath() const { return documentPath_; }
    /// The same as long as that file is what the document was opened from or saved to, and
    /// otherwise empty.
    [[nodiscard]] std::string unchangedPath() const;
    /// Whether all that was done is in the file too, or was given up by the person.
    [[nodiscard]] bool isNothingLost() const;
    /// The document with all that was done to it, as a file of it would be.
    [[nodiscard]] const std::string& document() const { return document_; }

    void Remove() const;
    /// Keeps it for a week, without being offered again.
    void SetAside() const;

  private:
    [[nodiscard]] bool read(std::string_view bytes);

    Handle file_;
    std::filesystem::path path_;
    FileDoor* files_;
    bool sound_ = false;
    bool settled_ = false;
    std::string typeCode_;
    int length_ = 0;
    std::string documentPath_;
    std::string mark_; // of the file that the document was opened from or saved to
    std::string document_;
};

} // namespace corvane
