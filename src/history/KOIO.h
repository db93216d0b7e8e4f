#pragma once

#include "kolib/KOText.h"

namespace corvane {

/// Reads a text file line by line. Only one reader or writer may be in use at a time.
class KOIOReader {
  public:
    explicit KOIOReader(KOText& text) : text_(text) { text_.SerReadClear(); }
    ~KOIOReader() { text_.SerReadClear(); }
    KOIOReader(const KOIOReader&) = delete;
    KOIOReader& operator=(const KOIOReader&) = delete;

    /// Once only. 0: loaded, 1: not found, anything else: no such file.
    [[nodiscard]] int Load(const std::string& path);
    [[nodiscard]] bool More() const { return Remaining() > 0; }
    /// Lines that have not been handed out.
    [[nodiscard]] int Remaining() const {
        return loaded_ ? text_.SerReadLineCount() - lineIndex_ : 0;
    }
    /// The next line, of which there must be one: its first argument and those behind it.
    void ReadArray(std::string& prefix, std::vector<std::string>& values);

  private:
    KOText& text_;
    bool loaded_ = false;
    int lineIndex_ = 0;
};

/// Writes a text file line by line. Only one reader or writer may be in use at a time.
class KOIOWriter {
  public:
    explicit KOIOWriter(KOText& text) : text_(text) { text_.SerWriteClear(); }
    ~KOIOWriter() { text_.SerWriteClear(); }
    KOIOWriter(const KOIOWriter&) = delete;
    KOIOWriter& operator=(const KOIOWriter&) = delete;

    void WriteArray(const std::string& prefix, const std::vector<std::string>& values);
    /// 0: saved. Anything else: the old file stands.
    [[nodiscard]] int Save(const std::string& path) { return text_.SerWriteSave(path); }

  private:
    KOText& text_;
};

} // namespace corvane
