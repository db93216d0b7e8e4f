// Each entry of the menus has its answer in the manual.
#include "light/SegmentPopup.h"
#include "shell/MainForm.h"
#include "support/Desk.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

std::string plain(std::string caption) {
    std::erase(caption, '&');
    return caption;
}

void expectIn(const std::string& manual, const std::vector<MenuPlace>& places) {
    for (const MenuPlace& place : places) {
        if (place.item != nullptr && place.item->Caption() != "-") {
            EXPECT_NE(manual.find(plain(place.item->Caption())), std::string::npos)
                << plain(place.item->Caption());
        }
        expectIn(manual, place.submenu);
    }
}

TEST(Manual, AnswersForEachEntryOfTheMenus) {
    Desk desk;
    Application application(desk.programs, desk.person);
    const ProductControls controls(desk.place, desk.keys);
    MainForm form(desk.place, controls, application);
    form.Initialize("");
    std::string manual;
    ASSERT_EQ(desk.files.ReadWhole(CORVANE_MANUAL "/how-do-i.md", manual),
              FileDoor::ReadResult::Done);
    expectIn(manual, form.menu.layout());
    SegmentPopup popup;
    expectIn(manual, popup.layout());
}

} // namespace
} // namespace corvane
