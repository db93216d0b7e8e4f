#include "support/OwnHome.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    const corvane::OwnHome home;
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
