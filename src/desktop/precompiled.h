// What nearly every file of the desktop includes, read once. No file leans on this one.
#pragma once

#include "base/precompiled.h"

#include <QtGui>
#include <QtWidgets>
