#include "base/Assert.h"
#include "eeprom/EEPROMEditorControl.h"
#include "eeprom/EntryArrangement.h"
#include "support/ControlBench.h"
#include "support/Writing.h"

#include <gmock/gmock.h>

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
    std::vector<std::string> names() {
        std::vector<std::string> all;
        for (int index = 1; index <= control.EntryCount(); ++index)
            all.push_back(control.Entry(index).Name());
        return all;
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
    EXPECT_EQ(entry.Name(), "EEPROMEntryID1");
    EXPECT_EQ(entry.txtLength.Text(), "1");
    enter(entry.txtAddress, "007");
    EXPECT_EQ(entry.txtAddress.Text(), "7");
    enter(entry.txtAddress, "0007"); // the same
    enter(entry.txtLength, "abc");
    enter(entry.txtLength, "70000");
    enter(entry.txtLength, "-1");
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
    EXPECT_EQ(entry.DataType(), "Integer (U8)");
    EXPECT_EQ(entry.ctlContents.Text(), "1 255");
    history.Undo();
    EXPECT_TRUE(entry.DataValue().empty());
}

TEST_F(EEPROMEditor, AnUndoneRemovalComesBackAtItsPlace) {
    add(5, 1, {1});
    add(5, 2, {2});
    add(1, 1, {3});
    EXPECT_EQ(shown(), "1 5! 5!");
    EXPECT_EQ(control.rows()[1], 2); // the later one stands above
    const std::vector<EEPROMVariable> before = variables();
    control.Entry(2).RemoveButton.press();
    EXPECT_EQ(shown(), "1 5");
    history.Undo();
    EXPECT_EQ(variables(), before);
    EXPECT_THAT(names(), ElementsAre("EEPROMEntryID1", "EEPROMEntryID4", "EEPROMEntryID3"));
    EXPECT_EQ(shown(), "1 5! 5!");
    EXPECT_THROW(static_cast<void>(control.Entry(4)), AssertionFailed);
}

TEST_F(EEPROMEditor, RowsStandByAddressAndOverlapsAreMarked) {
    add(0, 4);
    add(4, 1); // touches
    add(10, 2);
    add(11, 1);
    EXPECT_EQ(shown(), "0 4 10! 11!");
    EXPECT_EQ(control.Entry(3).txtAddress.Tint(), 65535);
    enter(control.Entry(4).txtAddress, "12");
    EXPECT_EQ(shown(), "0 4 10 12");
    EXPECT_EQ(control.Entry(3).txtLength.Tint(), std::nullopt);
    enter(control.Entry(3).txtLength, "0"); // empty, and nobody spans it
    enter(control.Entry(4).txtAddress, "2");
    EXPECT_EQ(shown(), "0! 2! 4 10");
    enter(control.Entry(3).txtAddress, "1"); // empty, but within the first
    EXPECT_EQ(shown(), "0! 1! 2! 4");
    control.NewVariableButton.press();
    EXPECT_EQ(control.Entry(5).Address(), 5);
}

TEST_F(EEPROMEditor, AVariableBeyondTheEndIsMarked) {
    add(65534, 2);
    EXPECT_FALSE(control.Entry(1).isBeyondEnd());
    enter(control.Entry(1).txtLength, "3");
    EXPECT_EQ(control.Entry(1).txtLength.Tint(), 255);
    EXPECT_NE(control.Entry(1).txtAddress.ToolTipText().find("beyond address 65535"),
              std::string::npos);
    add(65535, 2); // and overlaps it, which shows as ever
    EXPECT_EQ(control.Entry(1).txtLength.Tint(), 65535);
    control.Entry(2).RemoveButton.press();
    enter(control.Entry(1).txtAddress, "65533");
    EXPECT_EQ(control.Entry(1).txtLength.Tint(), std::nullopt);
}

TEST_F(EEPROMEditor, ConflictsAreThoseOfAllPairs) {
    std::mt19937 random(3);
    for (int round = 0; round < 60; ++round) {
        const int count = static_cast<int>(random() % 12);
        open("KOEEPROM\t0\t0\t0\t1\n");
        for (int i = 0; i < count; ++i)
            document.AddField(
                Writing::access(), 1,
                {static_cast<int>(random() % 20), static_cast<int>(random() % 4), {}, {}, {}});
        const EntryArrangement arrangement = Arrange(document);
        for (int i = 1; i <= count; ++i) {
            bool conflict = false;
            for (int j = 1; j <= count; ++j) {
                const EEPROMVariable& a = document.entry(i);
                const EEPROMVariable& b = document.entry(j);
                conflict = conflict || (i != j && b.Address + b.Length - 1 >= a.Address &&
                                        b.Address <= a.Address + a.Length - 1);
            }
            EXPECT_EQ(arrangement.conflicts[static_cast<std::size_t>(i) - 1], conflict);
        }
        while (document.EntryCount() > 0)
            document.RemoveField(Writing::access(), 1);
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
    EXPECT_TRUE(control.VScroll.Visible());
    EXPECT_EQ(control.VScroll.Max(), 100 * 375 - 3000);
    EXPECT_EQ(control.rowWidth(), 9000 - 240 - 240);
    control.scrollTo(control.Entry(control.rows().back()));
    EXPECT_EQ(control.rowTop(99), 3000 - 375);
    control.scrollTo(control.Entry(control.rows().front()));
    EXPECT_EQ(control.rowTop(2), 750);
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
    add(0, 2, {1, 2});
    add(250, 300, ByteString(300, 7)); // in two pieces
    add(600, 0);
    plugIn("eeprom", {}, 1024);
    control.ProgramButton.press();
    EXPECT_EQ(status(), "Programmed.");
    EXPECT_THAT(memory(0, 3), ElementsAre(1, 2, 255));
    EXPECT_EQ(memory(249, 302).front(), 255);
    EXPECT_EQ(memory(250, 300), bench::Bytes(300, 7));
    EXPECT_EQ(memory(550, 1).front(), 255);
    EXPECT_EQ(desk.person.beeps, "rrrr");
    EXPECT_TRUE(idle());

    const int changes = history.Length();
    history.Undo();
    history.Redo();
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "Read.");
    EXPECT_EQ(history.Length(), changes); // all as it was
    enter(control.Entry(1).ctlContents.txtData, "9");
    enter(control.Entry(2).txtLength, "301");
    control.ReadSettingsButton.press();
    EXPECT_EQ(control.Entry(1).ctlContents.Text(), "1 2");
    EXPECT_EQ(control.Entry(2).DataValue().back(), 255);
    EXPECT_EQ(control.Entry(2).DataValue().size(), 301U);
    EXPECT_TRUE(history.SaveDirty());
    EXPECT_TRUE(idle());
}

TEST_F(EEPROMEditor, AsksAboutLengthsThatDiffer) {
    add(0, 4, {1, 2});
    add(10, 1, {3, 4, 5});
    plugIn("eeprom");
    desk.person.answers = {Answer::Yes, Answer::Yes};
    control.ProgramButton.press();
    ASSERT_EQ(desk.person.messages.size(), 2U);
    EXPECT_EQ(desk.person.messages[0].icon, MessageBox::Icon::None);
    EXPECT_EQ(desk.person.takeMessage(),
              "Wrong Length: address 10:\r\n3 bytes supplied in a 1 byte field."
              "\r\n\r\nRemove bytes from the end?");
    EXPECT_EQ(desk.person.takeMessage(),
              "Wrong Length: address 0:\r\n2 bytes supplied in a 4 byte field."
              "\r\n\r\nPad the end with zeros?");
    EXPECT_THAT(memory(0, 12), ElementsAre(1, 2, 0, 0, 255, 255, 255, 255, 255, 255, 3, 255));
    EXPECT_EQ(control.Entry(1).DataValue().size(), 2U);
    desk.person.answers = {Answer::No, Answer::No};
    control.ProgramButton.press();
    EXPECT_THAT(memory(10, 4), ElementsAre(3, 4, 5, 255));
    EXPECT_EQ(status(), "Programmed.");
    EXPECT_TRUE(idle());
}

TEST_F(EEPROMEditor, GoesOnAfterAFailedVariableAndTellsInTheEnd) {
    control.ProgramButton.press();
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("Error: No Corvane is connected."));
    add(0, 1, {9});
    add(65535, 2, {1, 2}); // would come round to the beginning
    add(5, 1, {8});
    plugIn("eeprom");
    control.ProgramButton.press();
    EXPECT_EQ(status(), "! Programming failed!");
    EXPECT_EQ(desk.person.beeps, "rErE");
    EXPECT_EQ(memory(0, 1).front(), 9);
    EXPECT_EQ(memory(5, 1).front(), 8);
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "! Reading failed!");
    EXPECT_TRUE(desk.person.messages.empty());
    EXPECT_TRUE(idle());
}

TEST_F(EEPROMEditor, SurvivesEveryFaultWithItsDocument) {
    for (int i = 0; i < 20; ++i)
        add(i, 1, {static_cast<std::uint8_t>(i)});
    const std::vector<EEPROMVariable> before = variables();
    for (const char* faults : {"unplug-after=40", "mute-after=40", "drop=0.2", "corrupt=0.2"}) {
        LinkBench::Plugged& product = plugIn("eeprom", faults);
        control.ProgramButton.press();
        EXPECT_THAT(status(), testing::AnyOf("Programmed.", "! Programming failed!", ""));
        EXPECT_FALSE(desk.bench.link.MaintainConnection());
        EXPECT_EQ(variables(), before);
        desk.bench.unplug(product);
        desk.bench.run(3000);
    }
    plugIn("eeprom", "unplug-after=40");
    desk.person.messages.clear();
    control.ProgramButton.press();
    EXPECT_EQ(status(), "! Programming failed!");
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
    desk.person.answers = {Answer::No, Answer::Yes};
    const JobOutcome outcome = control.Program();
    EXPECT_EQ(outcome.reason, JobOutcome::Reason::Canceled);
    EXPECT_EQ(status(), "! Nothing was written into the Pactor 3.1.");
    EXPECT_EQ(memory(0, 1).front(), 255);
    EXPECT_EQ(desk.person.takeMessage(),
              "Another Product: The product behind the link is a Pactor 3.1. Variables would "
              "overwrite what it needs to work.\r\n\r\nProgram anyway?");
    EXPECT_TRUE(control.Program().done());
    EXPECT_EQ(memory(0, 1).front(), 9);
    desk.person.messages.clear();
    EXPECT_TRUE(control.ReadSettings().done()); // reading harms nothing
    EXPECT_TRUE(desk.person.messages.empty());
    EXPECT_TRUE(idle());
}

TEST_F(EEPROMEditor, AnEmptyListIsProgrammed) {
    plugIn("eeprom");
    control.ProgramButton.press();
    EXPECT_EQ(status(), "Programmed.");
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "Read.");
}

} // namespace
} // namespace corvane
