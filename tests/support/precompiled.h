// What nearly every test includes, read once. No file leans on this one.
#pragma once

#include "base/precompiled.h"

#include <gmock/gmock.h>
