#include "link/KOProductList.h"

namespace corvane {

std::string_view ProgramVendor() {
    return CORVANE_VENDOR;
}

} // namespace corvane
