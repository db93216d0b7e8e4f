#include "desktop/EventLoop.h"
#include "support/OwnHome.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const corvane::OwnHome home;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    corvane::DesktopApplication desktop(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
