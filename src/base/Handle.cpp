#include "base/Handle.h"

#include <unistd.h>

namespace corvane {

Handle::~Handle() {
    if (valid())
        ::close(descriptor_);
}

} // namespace corvane
