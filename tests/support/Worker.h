#pragma once

#include "support/KeptWork.h"
#include "support/Person.h"
#include "support/RandomEdits.h"
#include "support/TemporaryFolder.h"
#include "system/DiskFiles.h"

#include <gtest/gtest.h>

namespace corvane {

/// All kinds of documents, for the tests of each.
using EveryDocument =
    testing::Types<LumoraDocument, PactorDocument, KOEEPROMDocument, QuillonProgram>;

/// A document at work, with its files and journals in a folder that others may work in as well.
template<class Document>
struct Worker {
    using Place = std::shared_ptr<const TemporaryFolder>;

    explicit Worker(Place at = std::make_shared<const TemporaryFolder>(), bool keepsJournal = true)
        : place(std::move(at)),
          document({person, person, files, keepsJournal ? &journals : nullptr}) {}

    /// One thing that a person does to it, which is no saving.
    void act(Random& random) {
        const int choice = random.below(8);
        if (choice < 2 && history.CanUndo())
            history.Undo();
        else if (choice < 4 && history.CanRedo())
            history.Redo();
        else
            editAtRandom(document, random);
    }
    [[nodiscard]] std::string whole() const { return WholeWork(history); }
    [[nodiscard]] std::string kept() const { return KeptWork(journals); }
    /// The document is what its changes make of a new one.
    void expectSound() {
        Document other({person, person, files});
        ASSERT_TRUE(other.HistoryObject().OpenHistory(place->file("twin", whole())));
        ASSERT_EQ(stateOf(document), stateOf(other));
    }

    Place place;
    Person person;
    DiskFiles files;
    Journals journals{place->path() / "journals", files};
    Document document;
    History& history = document.HistoryObject();
};

} // namespace corvane
