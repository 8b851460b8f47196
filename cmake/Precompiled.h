#pragma once

// What nearly every file of the project reads.

#include <QCoro/QCoroAsyncGenerator>
#include <QCoro/QCoroTask>
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
