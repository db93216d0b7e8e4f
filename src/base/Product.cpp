#include "base/Product.h"

namespace corvane {

const char* const ProgramVersion = CORVANE_VERSION;

} // namespace corvane
