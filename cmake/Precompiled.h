#pragma once

// What nearly every file of the project reads.

#if __has_include(<QCoro/QCoroTask>) // not for what waits for nothing
#include <QCoro/QCoroAsyncGenerator>
#include <QCoro/QCoroTask>
#endif
#include <QtCore/QtCore>

#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>
