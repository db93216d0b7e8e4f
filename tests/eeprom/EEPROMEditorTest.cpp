#include "eeprom/EEPROMEditorControl.h"
#include "eeprom/EntryArrangement.h"
#include "support/ControlBench.h"
#include "support/Writing.h"

#include <gmock/gmock.h>

#include <numeric>
#include <random>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class EEPROMEditor : public testing::Test, public ControlBench<EEPROMEditorControl> {
  protected:
    KOEEPROMDocument& document = control.document;
    const std::string refused = "Error: Can't understand the file format (deserialization error).";

    void add(int address, int length, const ByteString& value = {}) {
        document.recordAdding(control.EntryCount() + 1, {address, length, {}, value, {}});
    }
    static void enter(TextBox& box, const std::string& text) {
        box.type(text);
        box.leave();
    }
    /// The addresses in the order of the rows; those that conflict with a mark.
    std::string shown() {
        std::string text;
        for (const int index : control.rows()) {
            const EEPROMEntry& entry = control.Entry(index);
            text += (text.empty() ? "" : " ") + std::to_string(entry.Address()) +
                    (entry.AddressConflicts() ? "!" : "");
        }
        return text;
    }
    std::vector<EEPROMVariable> variables() const {
        std::vector<EEPROMVariable> all;
        for (int index = 1; index <= document.EntryCount(); ++index)
            all.push_back(document.entry(index));
        return all;
    }
};

TEST_F(EEPROMEditor, EveryEditIsARecordedChangeThatIsAFileLine) {
    control.NewVariableButton.press();
    EEPROMEntry& entry = control.Entry(1);
    enter(entry.txtAddress, "007");
    EXPECT_EQ(entry.txtAddress.Text(), "7");
    enter(entry.txtAddress, "0007"); // the same
    for (const char* length : {"abc", "70000", "-1"})
        enter(entry.txtLength, length);
    enter(entry.txtComments, "level\tof light");
    enter(entry.ctlContents.txtData, "1 255");
    enter(entry.ctlContents.txtData, "256"); // refused
    entry.ctlContents.cmbDataType.choose("Hex");
    entry.ctlContents.cmbDataType.leave();
    EXPECT_EQ(lines(), "KOEEPROMListAdd\t1\t0\t1\t\t\t\nKOEEPROMText\t1\tAddress\t0\t7\n"
                       "KOEEPROMText\t1\tLength\t1\t0\nKOEEPROMText\t1\tLength\t0\t65535\n"
                       "KOEEPROMText\t1\tLength\t65535\t0\n"
                       "KOEEPROMText\t1\tComments\t\tlevel\\tof light\n"
                       "KOEEPROMText\t1\tData Value\t\t01FF\n"
                       "KOEEPROMText\t1\tData Type\tInteger (U8)\tHex\n");
    history.Undo();
    EXPECT_EQ(entry.ctlContents.Text(), "1 255");
}

TEST_F(EEPROMEditor, AnUndoneRemovalComesBackAtItsPlace) {
    for (const int address : {5, 5, 1})
        add(address, 1, {static_cast<std::uint8_t>(control.EntryCount())});
    EXPECT_EQ(control.rows()[1], 2); // the later one stands above
    const std::vector<EEPROMVariable> before = variables();
    control.Entry(2).RemoveButton.press();
    EXPECT_EQ(shown(), "1 5");
    history.Undo();
    EXPECT_EQ(variables(), before);
    EXPECT_EQ(shown(), "1 5! 5!");
    EXPECT_EQ(control.Entry(2).Name() + control.Entry(3).Name(), "EEPROMEntryID4EEPROMEntryID3");
}

TEST_F(EEPROMEditor, AVariableBeyondTheEndIsMarked) {
    add(65534, 2);
    EXPECT_FALSE(control.Entry(1).isBeyondEnd());
    enter(control.Entry(1).txtLength, "3");
    EXPECT_EQ(control.Entry(1).txtLength.Tint(), 255);
    EXPECT_THAT(control.Entry(1).txtAddress.ToolTipText(), HasSubstr("beyond address 65535"));
    add(65535, 2); // and overlaps it, which shows as ever
    EXPECT_EQ(control.Entry(1).txtLength.Tint(), 65535);
}

TEST_F(EEPROMEditor, RowsStandByAddressAndConflictsAreThoseOfAllPairs) {
    std::mt19937 random(3);
    for (int round = 0; round < 60; ++round) {
        const int count = static_cast<int>(random() % 12);
        while (document.EntryCount() > 0)
            document.RemoveField(Writing::access(), 1);
        for (int i = 0; i < count; ++i)
            document.AddField(
                Writing::access(), 1,
                {static_cast<int>(random() % 20), static_cast<int>(random() % 4), {}, {}, {}});
        const EntryArrangement arrangement = Arrange(document);
        const std::vector<EEPROMVariable> all = variables();
        for (std::size_t i = 0; i < all.size(); ++i) {
            bool conflict = false;
            for (std::size_t j = 0; j < all.size(); ++j)
                conflict =
                    conflict || (i != j && all[j].Address + all[j].Length - 1 >= all[i].Address &&
                                 all[j].Address <= all[i].Address + all[i].Length - 1);
            EXPECT_EQ(arrangement.conflicts[i], conflict);
        }
        std::vector<int> order(all.size());
        std::iota(order.rbegin(), order.rend(), 1); // of two at one place the later is above
        std::ranges::stable_sort(order, {},
                                 [this](int index) { return document.entry(index).Address; });
        EXPECT_EQ(arrangement.order, order);
    }
}

TEST_F(EEPROMEditor, ABurstOfChangesArrangesOnceAndScrollsByRows) {
    control.ResizeEntries({9000, 3000}, 240);
    int arranged = 0;
    const Connection onArranged = control.Rearranged.connect([&] { ++arranged; });
    std::string body;
    for (int i = 0; i < 100; ++i)
        body += "KOEEPROMListAdd\t1\t" + std::to_string(i) + "\t1\t\t\t\n";
    open("KOEEPROM\t100\t100\t0\t1\n" + body);
    EXPECT_EQ(arranged, 1);
    EXPECT_EQ(control.VScroll.Max(), 100 * 375 - 3000);
    EXPECT_EQ(control.rowWidth(), 9000 - 240 - 240);
    control.scrollTo(control.Entry(control.rows().back()));
    EXPECT_EQ(control.rowTop(99), 3000 - 375);
    EXPECT_EQ(control.EntryIfMade(50), nullptr); // nobody has looked at it
    EXPECT_EQ(control.Entry(50).txtAddress.Text(), "50");
    control.HistoryObject()->NewHistory();
    EXPECT_EQ(arranged, 2);
    EXPECT_FALSE(control.VScroll.Visible());
}

TEST_F(EEPROMEditor, UnsoundFilesAreRefusedAndNothingIsTouched) {
    add(3, 1);
    const std::string one = "KOEEPROMListAdd\t1\t0\t1\t\t\tHex\n";
    for (const std::string& body :
         {std::string("KOEEPROMListAdd\t2\t0\t1\t\t\t\n") + one,
          std::string("KOEEPROMListAdd\t0\t0\t1\t\t\t\n") + one,
          one + "KOEEPROMText\t2\tAddress\t0\t1\n", one + "KOEEPROMText\t0\tAddress\t0\t1\n",
          one + "KOEEPROMListRemove\t2\t0\t1\t\t\t\n", one + "KOEEPROMText\t1\tAddress\t0\n",
          one + "KOEEPROMText\t1\tData Type\tHex\tOctal\n",
          one + "KOEEPROMText\t1\tData Value\t0\t00\n",
          one + "KOEEPROMListAdd\t1\t0\t1\t\t0g\tHex\n",
          one + "KOEEPROMListAdd\t1\t0\t1\t\t\thex\n", one + "KOEEPROMListAdd\t1\t0\t1\t\t\n"}) {
        EXPECT_EQ(open("KOEEPROM\t2\t2\t0\t1\n" + body), refused) << body;
        EXPECT_EQ(open("KOEEPROM\t2\t0\t0\t1\n" + body), refused) << body;
        EXPECT_EQ(shown(), "3");
    }
}

TEST_F(EEPROMEditor, ProgramsAndReadsVariables) {
    plugIn("eeprom", {}, 1024);
    control.ProgramButton.press(); // nothing at all
    EXPECT_EQ(status(), "Programmed.");
    add(0, 2, {1, 2});
    add(250, 300, ByteString(300, 7)); // in two pieces
    add(600, 0);
    control.ProgramButton.press();
    EXPECT_EQ(status(), "Programmed.");
    EXPECT_THAT(memory(0, 3), ElementsAre(1, 2, 255));
    EXPECT_EQ(memory(250, 300), bench::Bytes(300, 7));
    EXPECT_EQ(memory(249, 1)[0] + memory(550, 1)[0], 2 * 255);
    EXPECT_EQ(desk.person.beeps, "rrrrr"); // one a variable, and one a run

    const int changes = history.Length();
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "Read.");
    EXPECT_EQ(history.Length(), changes); // all as it was
    enter(control.Entry(1).ctlContents.txtData, "9");
    enter(control.Entry(2).txtLength, "301");
    control.ReadSettingsButton.press();
    EXPECT_EQ(control.Entry(1).ctlContents.Text(), "1 2");
    EXPECT_EQ(control.Entry(2).DataValue().size(), 301U);
    EXPECT_TRUE(idle());
}

TEST_F(EEPROMEditor, AsksAboutLengthsThatDiffer) {
    add(0, 4, {1, 2});
    add(10, 1, {3, 4, 5});
    plugIn("eeprom");
    desk.person.answers = {Answer::Yes, Answer::Yes};
    control.ProgramButton.press();
    EXPECT_EQ(desk.person.takeMessage(),
              "Wrong Length: address 10:\r\n3 bytes supplied in a 1 byte field."
              "\r\n\r\nRemove bytes from the end?");
    EXPECT_EQ(desk.person.takeMessage(),
              "Wrong Length: address 0:\r\n2 bytes supplied in a 4 byte field."
              "\r\n\r\nPad the end with zeros?");
    EXPECT_THAT(memory(0, 5), ElementsAre(1, 2, 0, 0, 255));
    EXPECT_THAT(memory(10, 2), ElementsAre(3, 255));
    EXPECT_EQ(control.Entry(1).DataValue().size(), 2U);
    desk.person.answers = {Answer::No, Answer::No};
    control.ProgramButton.press();
    EXPECT_THAT(memory(10, 4), ElementsAre(3, 4, 5, 255));
    EXPECT_EQ(status(), "Programmed.");
}

TEST_F(EEPROMEditor, GoesOnAfterAFailedVariableAndTellsInTheEnd) {
    add(0, 1, {9});
    add(65535, 2, {1, 2}); // would come round to the beginning
    add(5, 1, {8});
    plugIn("eeprom");
    control.ProgramButton.press();
    EXPECT_EQ(status(), "! Programming failed!");
    EXPECT_EQ(desk.person.beeps, "rErE");
    EXPECT_EQ(memory(0, 1)[0] * 10 + memory(5, 1)[0], 98);
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "! Reading failed!");
    EXPECT_TRUE(desk.person.messages.empty());
}

TEST_F(EEPROMEditor, AProductThatIsPulledOutIsToldOfOnce) {
    for (int i = 0; i < 20; ++i)
        add(i, 1, {static_cast<std::uint8_t>(i)});
    const std::vector<EEPROMVariable> before = variables();
    plugIn("eeprom", "unplug-after=40");
    control.ProgramButton.press();
    EXPECT_EQ(status(), "! Programming failed!");
    EXPECT_EQ(variables(), before);
    EXPECT_FALSE(desk.bench.link.MaintainConnection());
    EXPECT_LE(desk.person.messages.size(), 2U); // and not one for each that follows
    EXPECT_THAT(desk.person.takeMessage(),
                testing::AnyOf(HasSubstr("Write timed out."), HasSubstr("Couldn't read back")));
}

TEST_F(EEPROMEditor, AReplyThatIsTooShortOrTooLateIsNotStored) {
    add(0, 2, {1, 2});
    add(4, 1, {3});
    int reads = 0;
    desk.bench.plugIn(scripted(
        [&reads](std::uint8_t, bench::ByteView data, bench::Reply& reply) {
            // The first variable's reply comes with the second one's request, and before its own.
            if (data[0] == 0 && ++reads == 1)
                return;
            if (data[0] == 0)
                return reply.send(80, bench::Bytes{9});
            if (reads == 1)
                reply.send(80, bench::Bytes{8, 8});
            reply.send(80, bench::Bytes{7});
        },
        {255, 1, 1, 0}));
    desk.bench.run(100);
    const std::vector<EEPROMVariable> before = variables();
    EXPECT_EQ(control.ReadSettings().reason, JobOutcome::Reason::Failed);
    EXPECT_EQ(status(), "! Reading failed!");
    EXPECT_EQ(variables(), before);
    EXPECT_EQ(control.ReadSettings().reason, JobOutcome::Reason::Failed);
    EXPECT_THAT(desk.person.takeMessage(),
                HasSubstr("Error: The product sent 1 byte where 2 were asked for."));
    EXPECT_EQ(variables()[0], before[0]);
    EXPECT_EQ(variables()[1].DataValue, ByteString{7});
}

TEST_F(EEPROMEditor, AsksBeforeItWritesIntoAProductOfAnotherKind) {
    add(0, 1, {9});
    plugIn("pactor-3.1");
    EXPECT_EQ(control.Program().reason, JobOutcome::Reason::Canceled);
    EXPECT_EQ(status(), "! Nothing was written into the Pactor 3.1.");
    EXPECT_EQ(desk.person.takeMessage(),
              "Another Product: The product behind the link is a Pactor 3.1. Variables would "
              "overwrite what it needs to work.\r\n\r\nProgram anyway?");
    desk.person.answers = {Answer::Yes};
    EXPECT_TRUE(control.Program().done());
    EXPECT_EQ(memory(0, 1).front(), 9);
    desk.person.messages.clear();
    EXPECT_TRUE(control.ReadSettings().done()); // reading harms nothing
    EXPECT_TRUE(desk.person.messages.empty());
}

} // namespace
} // namespace corvane
