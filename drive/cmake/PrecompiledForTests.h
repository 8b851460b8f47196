#pragma once

// The same for the test programs.

#include "Precompiled.h"

#include <gtest/gtest.h>
