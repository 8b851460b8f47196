#pragma once

// The same for the programs that hold test classes.

#include "Precompiled.h"

#include <QtDBus/QtDBus>
#include <QtTest/QtTest>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>
