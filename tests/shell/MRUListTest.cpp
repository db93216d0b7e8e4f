#include "shell/MRUList.h"

#include "support/Desk.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

class MRUListTest : public testing::Test {
  protected:
    Desk desk;
    KOInterface interface { desk.bench.link };
    std::unique_ptr<MRUList> list = opened();

    std::unique_ptr<MRUList> opened() {
        auto made = std::make_unique<MRUList>(desk.registry, desk.bench.products);
        made->Initialize(interface);
        return made;
    }
    Texts shown() {
        Texts files;
        for (int i = 1; i <= list->count(); ++i)
            files.push_back(list->filename(i));
        return files;
    }
    Texts stored() {
        list.reset();
        const auto key = desk.registry.OpenSettingsForReading();
        return key ? key->StringArrays("MRUList") : Texts{"nothing stored"};
    }
};

TEST_F(MRUListTest, KeepsFourOfEachProductAndShowsOne) {
    for (const char* file : {"a.lumora", "x.relay", "b.lumora", "c.LUMORA", "d.lumora", "n.txt",
                             "e.lumora", " B.lumora"})
        list->AddFile(file);
    EXPECT_THAT(shown(), IsEmpty());
    int changes = 0;
    const Connection onChanged = list->Changed.connect([&] { ++changes; });
    interface.SelectUI("Corvane.LumoraControl");
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(shown(), ElementsAre(" B.lumora", "e.lumora", "d.lumora", "c.LUMORA"));
    EXPECT_THAT(stored(),
                ElementsAre("x.relay", "c.LUMORA", "d.lumora", "n.txt", "e.lumora", " B.lumora"));
    list = opened();
    EXPECT_EQ(list->count(), 4);
}

TEST_F(MRUListTest, RenamesAndRemoves) {
    interface.SelectUI("Corvane.LumoraControl");
    for (const char* file : {"a.lumora", "b.lumora"})
        list->AddFile(file);
    list->RenameFile("a.lumora", "A.LUMORA"); // the same file
    EXPECT_THAT(shown(), ElementsAre("b.lumora", "a.lumora"));
    list->RenameFile("a.lumora", "c.lumora");
    EXPECT_THAT(shown(), ElementsAre("c.lumora", "b.lumora"));
    list->RenameFile("unknown", "b.lumora");
    list->RemoveFile("C.lumora");
    EXPECT_THAT(shown(), ElementsAre("b.lumora"));
    list->RemoveFile("b.lumora");
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(MRUListTest, IsStoredOnlyIfSomethingChanged) {
    EXPECT_EQ(stored(), Texts{"nothing stored"});
    list = opened();
    list->AddFile("a.lumora");
    EXPECT_THAT(stored(), ElementsAre("a.lumora"));
    list = opened();
    list->AddFile("a.lumora");
    desk.registry.OpenSettingsForWriting()->setStringArrays("MRUList", {"c.lumora"});
    EXPECT_THAT(stored(), ElementsAre("c.lumora"));
}

} // namespace
} // namespace corvane
