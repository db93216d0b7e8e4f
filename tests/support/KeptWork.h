#pragma once

#include "history/History.h"
#include "history/LostJournal.h"
#include "system/DiskFiles.h"

#include <gtest/gtest.h>

namespace corvane {

/// A document as its file would be.
inline std::string WholeWork(const History& history) {
    std::string bytes;
    EXPECT_TRUE(history.Compose(bytes));
    return bytes;
}

/// What would come back if the program were killed now: the documents that the journals hold.
inline std::string KeptWork(const Journals& journals) {
    DiskFiles files;
    std::string documents;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(journals.folder(), error))
        documents += LostJournal(Handle(), entry.path(), files).document();
    return documents;
}

} // namespace corvane
